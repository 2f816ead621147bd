#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "codecs/jpeg/JPEGLibrary.h"

namespace orvane {

/// The quantised coefficients of one component of a picture. They lie in memory of libjpeg's, which
/// several compressors may read in turn.
class CoefficientPlane {
 public:
  /// For a component of `width` × `height` samples, all levels 0. Throws UnwritableImage,
  /// std::bad_alloc.
  CoefficientPlane(std::size_t width, std::size_t height);

  std::size_t width() const { return width_; }    ///< samples
  std::size_t height() const { return height_; }  ///< samples
  std::size_t columns() const { return (width_ + 7) / 8; }
  std::size_t rows() const { return (height_ + 7) / 8; }

  /// The 64 levels of one block, row by row.
  std::int16_t* block(std::size_t row, std::size_t column) const { return blocks_[row][column]; }

  /// As jpeg_write_coefficients takes it.
  jvirt_barray_ptr array() const { return array_; }

 private:
  /// Owns the memory. It stays where it is when the plane moves.
  struct Owner {
    JPEGErrors errors;
    JPEGCompressor compressor;
  };

  void allocate();

  std::size_t width_;
  std::size_t height_;
  std::unique_ptr<Owner> owner_;
  jvirt_barray_ptr array_ = nullptr;
  JBLOCKARRAY blocks_ = nullptr;
};

}  // namespace orvane
