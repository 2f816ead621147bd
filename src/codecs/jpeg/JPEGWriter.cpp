#include <algorithm>

#include "codecs/ImageDestination.h"
#include "codecs/OpaqueRows.h"
#include "codecs/jpeg/CoefficientCoder.h"
#include "codecs/jpeg/CoefficientPlanes.h"
#include "codecs/jpeg/JPEGLibrary.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/ScanScript.h"

namespace orvane {
namespace {

/// Compressed bytes, growing as libjpeg fills them.
class Output : public jpeg_destination_mgr {
 public:
  explicit Output(std::size_t firstSize) : jpeg_destination_mgr{}, bytes_(firstSize) {
    init_destination = [](j_compress_ptr info) { of(info).offer(0); };
    empty_output_buffer = [](j_compress_ptr info) -> boolean {
      if (!of(info).grow()) ERREXIT1(info, JERR_OUT_OF_MEMORY, 0);
      return TRUE;
    };
    term_destination = [](j_compress_ptr info) {
      Output& output = of(info);
      output.bytes_.resize(output.bytes_.size() - output.free_in_buffer);
    };
  }

  Bytes takeBytes() {
    bytes_.shrink_to_fit();
    return std::move(bytes_);
  }

 private:
  static Output& of(j_compress_ptr info) { return *static_cast<Output*>(info->dest); }

  /// Gives libjpeg the bytes after the first `used` to fill.
  void offer(std::size_t used) {
    next_output_byte = bytes_.data() + used;
    free_in_buffer = bytes_.size() - used;
  }

  /// libjpeg calls this, and no exception may pass through its C code.
  bool grow() noexcept try {
    const std::size_t used = bytes_.size();
    bytes_.resize(used * 2);
    offer(used);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }

  Bytes bytes_;
};

/// Writes one file from coefficients. A new one is needed for another file.
class FileWriter {
 public:
  FileWriter(const OpaqueRows& rows, const JPEGSettings& settings, CoefficientPlanes& planes)
      : rows_(rows),
        settings_(settings),
        planes_(planes),
        output_(std::max<std::size_t>(rows.width() * rows.height() / 8, 4096)) {
    info_.err = &errors_;
    errors_.run<UnwritableImage>([this] { jpeg_create_compress(&info_); });
    info_.dest = &output_;
  }

  Bytes write(const ScanScript& scans) {
    errors_.run<UnwritableImage>([&] {
      configure();
      info_.scan_info = scans.data();
      info_.num_scans = static_cast<int>(scans.size());
      jpeg_write_coefficients(&info_, planes_.arrays());
      if (!rows_.colorSpace()->isSRGB()) writeProfile(rows_.colorSpace()->iccData());
      jpeg_finish_compress(&info_);
    });
    return output_.takeBytes();
  }

 private:
  void configure();
  void writeProfile(ByteView profile);

  const OpaqueRows& rows_;
  const JPEGSettings& settings_;
  CoefficientPlanes& planes_;
  Output output_;
  JPEGErrors errors_;
  JPEGCompressor info_;
};

void FileWriter::configure() {
  info_.image_width = static_cast<JDIMENSION>(rows_.width());
  info_.image_height = static_cast<JDIMENSION>(rows_.height());
  info_.input_components = static_cast<int>(planes_.count());
  info_.in_color_space = planes_.count() == 1 ? JCS_GRAYSCALE : JCS_YCbCr;
  jpeg_set_defaults(&info_);
  constexpr int asTheyAre = 100;
  jpeg_add_quant_table(&info_, 0, settings_.lumaSteps.data(), asTheyAre, TRUE);
  if (planes_.count() > 1) {
    jpeg_add_quant_table(&info_, 1, settings_.chromaSteps.data(), asTheyAre, TRUE);
  }
  const int lumaSampling = static_cast<int>(unitSide(settings_.chroma) / 8);
  info_.comp_info[0].h_samp_factor = lumaSampling;
  info_.comp_info[0].v_samp_factor = lumaSampling;
  info_.optimize_coding = TRUE;
}

void FileWriter::writeProfile(ByteView profile) {
  // ICC.1:2010 annex B.4 allows 255 segments. libjpeg would write more, with wrong numbers.
  constexpr std::size_t longest = std::size_t{255} * 65'519;
  if (profile.size() > longest) ERREXIT(&info_, JERR_BAD_LENGTH);
  jpeg_write_icc_profile(&info_, profile.data(), static_cast<unsigned>(profile.size()));
}

Bytes encode(const Image& image, const PictureMeasurements& measurements, double quality) {
  OpaqueRows rows(image);
  // A profile for RGB says nothing about one component.
  const bool gray = measurements.isGray && rows.colorSpace()->isSRGB();
  auto settings = JPEGSettings::forPicture(quality, measurements.chromaEdgeShare);
  if (gray) settings.chroma = JPEGSettings::Chroma::full;  // A unit of one component is a block.
  CoefficientPlanes planes(rows.width(), rows.height(), gray ? 1 : 3, settings.chroma);
  CoefficientCoder(rows, settings, planes).code();
  std::vector<Bytes> files;
  for (const ScanScript& scans : scanScripts(planes.count())) {
    files.push_back(FileWriter(rows, settings, planes).write(scans));
  }
  return joinSmallestScans(files);
}

}  // namespace

const ImageDestination jpegDestination{
    .alpha = ImageDestination::Alpha::none, .maximumQuality = 1, .encode = encode};

}  // namespace orvane
