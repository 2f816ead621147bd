#include <algorithm>
#include <array>
#include <cstdlib>

#include "codecs/Exif.h"
#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "codecs/jpeg/JPEGLibrary.h"
#include "platform/foundation/Handle.h"

namespace orvane {
namespace {

/// Decoding so many pixels takes half a minute. Encoders write about ten scans.
constexpr std::uint64_t maximumScannedPixels = 16 * ImageLimits::maximumPixels;

constexpr int exifMarker = JPEG_APP0 + 1;
constexpr int profileMarker = JPEG_APP0 + 2;

/// The colours that libjpeg decodes a file to.
struct Output {
  J_COLOR_SPACE colors;
  ChannelLayout layout;
  ColorSpace::Model model;
};

Output outputOf(J_COLOR_SPACE stored) {
  switch (stored) {
    case JCS_GRAYSCALE:
      return {JCS_GRAYSCALE, ChannelLayout::gray, ColorSpace::Model::gray};
    case JCS_YCbCr:
    case JCS_RGB:
      return {JCS_EXT_RGBA, ChannelLayout::rgba, ColorSpace::Model::rgb};
    case JCS_CMYK:
    case JCS_YCCK:
      return {JCS_CMYK, ChannelLayout::cmyk, ColorSpace::Model::cmyk};
    default:
      throw UnreadableImage("components of unknown meaning");
  }
}

class JPEGSource final : public ImageSource {
 public:
  explicit JPEGSource(ByteView file);

  Image image() override;

 private:
  template <typename Call>
  void run(const Call& call) {
    errors_.run<UnreadableImage>(call);
  }

  void readHeader();
  int orientationInHeader() const;
  ColorSpacePtr colorSpaceInHeader(ColorSpace::Model model);
  std::size_t coefficientBytesPerPixel();
  void requireEveryScan() const;
  void readRows(std::uint8_t* pixels, std::size_t bytesPerRow);

  static void countScans(j_common_ptr info);
  static void judgeMessage(j_common_ptr info, int level);
  bool isHarmless(int warning);
  bool skippedOnlyPadding() const;

  ByteView file_;
  JPEGErrors errors_;
  jpeg_progress_mgr progress_{};
  JPEGDecompressor info_;
  bool endIsMissing_ = false;  ///< the file ended before its EOI marker
};

JPEGSource::JPEGSource(ByteView file) : ImageSource(ImageFormat::jpeg), file_(file) {
  errors_.emit_message = judgeMessage;
  progress_.progress_monitor = countScans;
  info_.err = &errors_;
  info_.client_data = this;
  run([this] {
    jpeg_create_decompress(&info_);
    jpeg_save_markers(&info_, exifMarker, 0xFFFF);
    jpeg_save_markers(&info_, profileMarker, 0xFFFF);
  });
  info_.progress = &progress_;
  readHeader();
  setOrientation(orientationInHeader());
}

/// Starts over at the beginning of the file.
void JPEGSource::readHeader() {
  endIsMissing_ = false;
  run([this] {
    jpeg_abort_decompress(&info_);
    jpeg_mem_src(&info_, file_.data(), static_cast<unsigned long>(file_.size()));
    jpeg_read_header(&info_, TRUE);
  });
  if (info_.data_precision != 8) throw UnreadableImage("not 8 bits per sample");
  const Output output = outputOf(info_.jpeg_color_space);
  info_.out_color_space = output.colors;
  setSize(info_.image_width, info_.image_height,
          channelCount(output.layout) + coefficientBytesPerPixel());
}

int JPEGSource::orientationInHeader() const {
  for (const auto* segment = info_.marker_list; segment != nullptr; segment = segment->next) {
    const ByteView data(segment->data, segment->data_length);
    const bool isExif = segment->marker == exifMarker && Exif::hasIdentifier(data);
    if (isExif) return Exif::orientation(data);
  }
  return 1;
}

/// Reads the profile in the APP2 segments (ICC.1:2010 annex B.4). A broken sequence of segments
/// counts as no profile.
ColorSpacePtr JPEGSource::colorSpaceInHeader(ColorSpace::Model model) {
  JOCTET* data = nullptr;
  unsigned size = 0;
  run([&] { jpeg_read_icc_profile(&info_, &data, &size); });
  const Handle<JOCTET, std::free> owner(data);
  ImageLimits::checkICC(size);
  return ColorSpace::fromICC({data, size}, model);
}

/// libjpeg holds the coefficients of a picture of several scans until it has read the last scan.
/// Returns their bytes per pixel, rounded up.
std::size_t JPEGSource::coefficientBytesPerPixel() {
  if (!jpeg_has_multiple_scans(&info_)) return 0;
  int samples = 0;
  for (int c = 0; c < info_.num_components; ++c) {
    samples += info_.comp_info[c].h_samp_factor * info_.comp_info[c].v_samp_factor;
  }
  const int pixels = info_.max_h_samp_factor * info_.max_v_samp_factor;
  constexpr int sampleSize = sizeof(JCOEF);
  return static_cast<std::size_t>((samples * sampleSize + pixels - 1) / pixels);
}

Image JPEGSource::image() {
  readHeader();
  const Output output = outputOf(info_.jpeg_color_space);
  Image image{.width = info_.image_width,
              .height = info_.image_height,
              .layout = output.layout,
              .colorSpace = colorSpaceInHeader(output.model)};
  run([this] { jpeg_start_decompress(&info_); });
  requireEveryScan();
  std::uint8_t* pixels = allocatePackedRows(image);
  run([&] {
    readRows(pixels, image.bytesPerRow);
    jpeg_finish_decompress(&info_);
  });
  return image;
}

/// libjpeg does not warn when a file lacks a scan or ends between two scans. Call this after
/// jpeg_start_decompress, which reads all scans of a picture of several.
void JPEGSource::requireEveryScan() const {
  for (int c = 0; c < info_.num_components; ++c) {
    // libjpeg sets the table when the component's first scan begins.
    if (info_.comp_info[c].quant_table == nullptr) throw UnreadableImage("a component is missing");
    if (!endIsMissing_ || info_.coef_bits == nullptr) continue;
    const auto& missingBits = info_.coef_bits[c];
    if (std::ranges::any_of(missingBits, [](int bits) { return bits != 0; })) {
      throw UnreadableImage("the last scans are missing");
    }
  }
}

void JPEGSource::readRows(std::uint8_t* pixels, std::size_t bytesPerRow) {
  // Adobe's CMYK files store 255 less the ink.
  const bool isInverted = info_.out_color_space == JCS_CMYK && info_.saw_Adobe_marker != 0;
  std::array<JSAMPROW, 16> rows;
  while (info_.output_scanline < info_.output_height) {
    std::uint8_t* first = pixels + info_.output_scanline * bytesPerRow;
    const auto count = std::min<JDIMENSION>(static_cast<JDIMENSION>(rows.size()),
                                            info_.output_height - info_.output_scanline);
    for (JDIMENSION y = 0; y < count; ++y) rows[y] = first + y * bytesPerRow;
    const JDIMENSION read = jpeg_read_scanlines(&info_, rows.data(), count);
    if (!isInverted) continue;
    std::transform(first, first + read * bytesPerRow, first,
                   [](std::uint8_t light) { return static_cast<std::uint8_t>(255 - light); });
  }
}

/// Limits the scans, since one of a few bytes can cost a pass over the whole picture.
void JPEGSource::countScans(j_common_ptr info) {
  auto* source = static_cast<JPEGSource*>(info->client_data);
  const jpeg_decompress_struct& header = source->info_;
  const auto scans = static_cast<std::uint64_t>(header.input_scan_number);
  const std::uint64_t scannedPixels = scans * header.image_width * header.image_height;
  if (scans > ImageLimits::maximumProgressiveScans || scannedPixels > maximumScannedPixels) {
    source->errors_.fail("too many scans");
  }
}

void JPEGSource::judgeMessage(j_common_ptr info, int level) {
  const bool isWarning = level < 0;
  if (!isWarning) return;
  auto* source = static_cast<JPEGSource*>(info->client_data);
  if (!source->isHarmless(info->err->msg_code)) info->err->error_exit(info);
}

/// Whether the picture may be complete in spite of the warning. After others libjpeg makes up the
/// pixels that it cannot read.
bool JPEGSource::isHarmless(int warning) {
  switch (warning) {
    case JWRN_ADOBE_XFORM:
    case JWRN_JFIF_MAJOR:
    case JWRN_NOT_SEQUENTIAL:  // a sequential scan does not use the numbers that are wrong
    case JWRN_BOGUS_ICC:       // the profile is left out
      return true;
    case JWRN_JPEG_EOF:
      // If Huffman-coded data is missing, JWRN_HIT_MARKER follows. Arithmetic decoding reads zeros
      // instead, without a warning (ITU-T T.81 D.2.6).
      endIsMissing_ = true;
      return info_.arith_code == 0;
    case JWRN_EXTRANEOUS_DATA:
      // Between the segments of the header any bytes are harmless. In or after a scan they are
      // data that the scan should have used.
      return info_.input_scan_number == 0 || skippedOnlyPadding();
    default:
      return false;
  }
}

/// Whether the bytes that libjpeg has skipped to find a marker are all 0 or 255.
bool JPEGSource::skippedOnlyPadding() const {
  if (endIsMissing_) return false;  // the bytes are libjpeg's own, not the file's
  const JOCTET* end = info_.src->next_input_byte;
  return std::all_of(end - info_.err->msg_parm.i[0], end,
                     [](JOCTET byte) { return byte == 0 || byte == 0xFF; });
}

}  // namespace

const ImageReader jpegReader{[](ByteView file) {
                               return file.size() >= 3 && file[0] == 0xFF && file[1] == 0xD8 &&
                                      file[2] == 0xFF;
                             },
                             openAs<JPEGSource>};

}  // namespace orvane
