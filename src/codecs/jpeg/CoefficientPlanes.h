#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codecs/jpeg/JPEGLibrary.h"
#include "codecs/jpeg/JPEGSettings.h"

namespace orvane {

/// The quantised coefficients of a picture's components: one of luma, or luma, Cb and Cr. They lie
/// in memory of libjpeg's, which several compressors may read in turn.
class CoefficientPlanes {
 public:
  /// For a picture of `width` × `height` pixels. Throws UnwritableImage, std::bad_alloc.
  CoefficientPlanes(std::size_t width, std::size_t height, std::size_t count,
                    JPEGSettings::Chroma chroma);

  std::size_t count() const { return count_; }
  std::size_t columns(std::size_t component) const { return planes_[component].columns; }
  std::size_t rows(std::size_t component) const { return planes_[component].rows; }

  /// The 64 levels of one block, row by row.
  std::int16_t* block(std::size_t component, std::size_t row, std::size_t column) const {
    return planes_[component].blocks[row][column];
  }

  /// As jpeg_write_coefficients takes them.
  jvirt_barray_ptr* arrays() { return arrays_.data(); }

 private:
  struct Plane {
    std::size_t columns = 0;
    std::size_t rows = 0;
    JBLOCKARRAY blocks = nullptr;
  };

  void allocate();

  JPEGErrors errors_;
  JPEGCompressor owner_;
  std::size_t count_;
  std::array<Plane, 3> planes_;
  std::array<jvirt_barray_ptr, 3> arrays_{};
};

}  // namespace orvane
