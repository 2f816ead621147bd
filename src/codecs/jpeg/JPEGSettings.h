#pragma once

#include <array>
#include <cstddef>

namespace orvane {

/// A JPEG encoder's settings for one quality.
struct JPEGSettings {
  /// Quantisation steps of the 64 coefficients, 1…255, row by row.
  using Steps = std::array<unsigned, 64>;

  enum class Chroma {
    full,    ///< 4:4:4
    halved,  ///< 4:2:0
  };

  Steps lumaSteps;
  Steps chromaSteps;

  /// The numbers, of any size, that the steps of the lowest frequencies are rounded from.
  double lumaScale;
  double chromaScale;

  Chroma chroma;

  /// `quality` is 0…1, `chromaEdgeShare` is PictureMeasurements::chromaEdgeShare.
  static JPEGSettings forPicture(double quality, double chromaEdgeShare);
};

/// The side, in pixels, of the square that a block of chroma covers.
constexpr std::size_t unitSide(JPEGSettings::Chroma chroma) {
  return chroma == JPEGSettings::Chroma::halved ? 16 : 8;
}

}  // namespace orvane
