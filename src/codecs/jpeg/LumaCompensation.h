#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "codecs/jpeg/DecodedChroma.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/PixelStrip.h"
#include "codecs/jpeg/StripSampling.h"

namespace orvane {

/// Takes from luma what the error of the decoded chroma adds to the luminance that a display shows.
/// The eye sees luminance sharpest, and chroma is coded coarsest. Takes sRGB's transfer curve and
/// the weights of ITU-R BT.709 for every picture, which is an approximation for other RGB spaces.
class LumaCompensation {
 public:
  LumaCompensation(std::size_t pictureWidth, std::size_t pictureHeight,
                   JPEGSettings::Chroma chroma);

  /// Changes the luma of the strip whose upper row is `first` in the picture. `decoded` must hold
  /// this strip and its neighbours.
  void apply(const PixelStrip& pixels, std::size_t first, const DecodedChroma& decoded,
             LumaStrip& luma);

 private:
  void applyToRow(const PixelStrip& pixels, std::size_t y, const DecodedChroma::Rows& chroma,
                  float* luma) const;

  std::size_t width_;
  std::size_t height_;
  JPEGSettings::Chroma chroma_;
  std::array<std::vector<std::uint8_t>, 2> doubled_;  ///< a row of Cb and of Cr
};

}  // namespace orvane
