#include "codecs/jpeg/ComponentFile.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "codecs/ImageDestination.h"
#include "codecs/jpeg/JPEGLibrary.h"

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
    bytes_.resize(used + used / 2);
    offer(used);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }

  Bytes bytes_;
};

/// Writes one file. A new one is needed for another.
class Writer {
 public:
  explicit Writer(const ComponentFile& file)
      : file_(file), output_(std::max<std::size_t>(first().width() * first().height() / 8, 4096)) {
    std::ranges::transform(file.planes, arrays_.begin(), &CoefficientPlane::array);
    info_.err = &errors_;
    errors_.run<UnwritableImage>([this] { jpeg_create_compress(&info_); });
    info_.dest = &output_;
  }

  Bytes write(const ScanScript& scans) {
    errors_.run<UnwritableImage>([&] {
      configure();
      info_.scan_info = scans.data();
      info_.num_scans = static_cast<int>(scans.size());
      jpeg_write_coefficients(&info_, arrays_.data());
      if (!file_.profile.empty()) writeProfile();
      jpeg_finish_compress(&info_);
    });
    return output_.takeBytes();
  }

 private:
  const CoefficientPlane& first() const { return file_.planes.front(); }
  void configure();
  void writeProfile();

  const ComponentFile& file_;
  std::array<jvirt_barray_ptr, 2> arrays_{};
  Output output_;
  JPEGErrors errors_;
  JPEGCompressor info_;
};

void Writer::configure() {
  const bool isLuma = file_.planes.size() == 1;
  info_.image_width = static_cast<JDIMENSION>(first().width());
  info_.image_height = static_cast<JDIMENSION>(first().height());
  info_.input_components = static_cast<int>(file_.planes.size());
  info_.in_color_space = isLuma ? JCS_GRAYSCALE : JCS_UNKNOWN;
  jpeg_set_defaults(&info_);
  const int table = isLuma ? 0 : 1;
  constexpr int asTheyAre = 100;
  jpeg_add_quant_table(&info_, table, file_.steps.data(), asTheyAre, TRUE);
  for (int i = 0; i < info_.num_components; ++i) {
    jpeg_component_info& component = info_.comp_info[i];
    component.component_id = 1 + table + i;
    component.h_samp_factor = component.v_samp_factor = file_.sampling;
    component.quant_tbl_no = component.dc_tbl_no = component.ac_tbl_no = table;
  }
  info_.optimize_coding = TRUE;
}

void Writer::writeProfile() {
  // ICC.1:2010 annex B.4 allows 255 segments. libjpeg would write more, with wrong numbers.
  constexpr std::size_t longest = std::size_t{255} * 65'519;
  if (file_.profile.size() > longest) ERREXIT(&info_, JERR_BAD_LENGTH);
  jpeg_write_icc_profile(&info_, file_.profile.data(), static_cast<unsigned>(file_.profile.size()));
}

}  // namespace

Bytes ComponentFile::write(const ScanScript& scans) const { return Writer(*this).write(scans); }

}  // namespace orvane
