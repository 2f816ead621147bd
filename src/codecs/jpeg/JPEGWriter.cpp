#include <algorithm>

#include "codecs/ImageDestination.h"
#include "codecs/OpaqueRows.h"
#include "codecs/jpeg/JPEGLibrary.h"
#include "codecs/jpeg/JPEGSettings.h"

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

  Bytes takeBytes() { return std::move(bytes_); }

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

class Encoder {
 public:
  explicit Encoder(OpaqueRows& rows)
      : rows_(rows), output_(std::max<std::size_t>(rows.width() * rows.height() / 8, 4096)) {
    info_.err = &errors_;
    errors_.run<UnwritableImage>([this] { jpeg_create_compress(&info_); });
    info_.dest = &output_;
  }

  Bytes encode(J_COLOR_SPACE colors, const JPEGSettings& settings) {
    errors_.run<UnwritableImage>([&] {
      configure(colors, settings);
      jpeg_start_compress(&info_, TRUE);
      if (!rows_.colorSpace()->isSRGB()) writeProfile(rows_.colorSpace()->iccData());
      writeRows();
      jpeg_finish_compress(&info_);
    });
    return output_.takeBytes();
  }

 private:
  void configure(J_COLOR_SPACE colors, const JPEGSettings& settings);
  void writeProfile(ByteView profile);
  void writeRows();

  OpaqueRows& rows_;
  Output output_;
  JPEGErrors errors_;
  JPEGCompressor info_;
};

void Encoder::configure(J_COLOR_SPACE colors, const JPEGSettings& settings) {
  info_.image_width = static_cast<JDIMENSION>(rows_.width());
  info_.image_height = static_cast<JDIMENSION>(rows_.height());
  info_.input_components = 4;
  info_.in_color_space = JCS_EXT_RGBX;
  jpeg_set_defaults(&info_);
  jpeg_set_colorspace(&info_, colors);
  constexpr int asTheyAre = 100;
  jpeg_add_quant_table(&info_, 0, settings.lumaSteps.data(), asTheyAre, TRUE);
  jpeg_add_quant_table(&info_, 1, settings.chromaSteps.data(), asTheyAre, TRUE);
  const int lumaSampling =
      colors == JCS_YCbCr && settings.chroma == JPEGSettings::Chroma::halved ? 2 : 1;
  info_.comp_info[0].h_samp_factor = lumaSampling;
  info_.comp_info[0].v_samp_factor = lumaSampling;
  info_.optimize_coding = TRUE;
  jpeg_simple_progression(&info_);
}

void Encoder::writeProfile(ByteView profile) {
  // ICC.1:2010 annex B.4 allows 255 segments. libjpeg would write more, with wrong numbers.
  constexpr std::size_t longest = std::size_t{255} * 65'519;
  if (profile.size() > longest) ERREXIT(&info_, JERR_BAD_LENGTH);
  jpeg_write_icc_profile(&info_, profile.data(), static_cast<unsigned>(profile.size()));
}

void Encoder::writeRows() {
  while (info_.next_scanline < info_.image_height) {
    const auto rows = rows_.read(info_.next_scanline);
    jpeg_write_scanlines(&info_, const_cast<JSAMPARRAY>(rows.data()),
                         static_cast<JDIMENSION>(rows.size()));
  }
}

Bytes encode(const Image& image, const PictureMeasurements& measurements, double quality) {
  OpaqueRows rows(image);
  // A profile for RGB says nothing about one component.
  const bool gray = measurements.isGray && rows.colorSpace()->isSRGB();
  const auto settings = JPEGSettings::forPicture(quality, measurements.chromaEdgeShare);
  return Encoder(rows).encode(gray ? JCS_GRAYSCALE : JCS_YCbCr, settings);
}

}  // namespace

const ImageDestination jpegDestination{
    .alpha = ImageDestination::Alpha::none, .maximumQuality = 1, .encode = encode};

}  // namespace orvane
