#include "codecs/jpeg/LumaSampling.h"

#include <algorithm>

#include "codecs/jpeg/TransferCurve.h"

namespace orvane {
namespace {

/// A larger change would show by itself.
constexpr float largestChange = 40;

/// What the error of a pixel's decoded chroma adds to its luminance, in steps of luma. ITU-R BT.709
/// has the weights of the channels in luminance, ITU-T T.871 those of Cb and Cr in the channels.
float addedLuma(float red, float green, float blue, const std::array<float, 3>& slopes, float cb,
                float cr) {
  const float cbError = cb - (-0.168736F * red - 0.331264F * green + 0.5F * blue);
  const float crError = cr - (0.5F * red - 0.418688F * green - 0.081312F * blue);
  const float redWeight = 0.2126F * slopes[0];
  const float greenWeight = 0.7152F * slopes[1];
  const float blueWeight = 0.0722F * slopes[2];
  const float added = redWeight * (1.402F * crError) -
                      greenWeight * (0.344136F * cbError + 0.714136F * crError) +
                      blueWeight * (1.772F * cbError);
  return std::clamp(added / (redWeight + greenWeight + blueWeight), -largestChange, largestChange);
}

}  // namespace

void sampleLuma(const PixelStrip& pixels, LumaStrip& result) {
  result.resize(pixels.width() * pixels.height());
  const std::uint8_t* const red = pixels.row(0, 0);
  const std::uint8_t* const green = pixels.row(1, 0);
  const std::uint8_t* const blue = pixels.row(2, 0);
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = 0.299F * static_cast<float>(red[i]) + 0.587F * static_cast<float>(green[i]) +
                0.114F * static_cast<float>(blue[i]);
  }
}

LumaCompensation::LumaCompensation(std::size_t pictureWidth, std::size_t pictureHeight,
                                   std::size_t stripWidth, JPEGSettings::Chroma chroma)
    : width_(pictureWidth),
      height_(pictureHeight),
      chroma_(chroma),
      cb_(stripWidth),
      cr_(stripWidth) {}

void LumaCompensation::apply(const PixelStrip& pixels, std::size_t first,
                             const DecodedChroma& decoded, LumaStrip& luma) {
  const std::size_t rows = std::min(pixels.height(), height_ - first);
  for (std::size_t y = 0; y < rows; ++y) {
    float* const row = luma.data() + y * pixels.width();
    if (chroma_ == JPEGSettings::Chroma::full) {
      applyToRow(pixels, y, decoded.row(0, first + y), decoded.row(1, first + y), row);
    } else {
      decoded.doubleRow(0, first + y, cb_.data());
      decoded.doubleRow(1, first + y, cr_.data());
      applyToRow(pixels, y, cb_.data(), cr_.data(), row);
    }
    std::fill(row + width_, row + pixels.width(), row[width_ - 1]);
  }
  for (std::size_t y = rows; y < pixels.height(); ++y) {
    std::copy_n(luma.data() + (y - 1) * pixels.width(), pixels.width(),
                luma.data() + y * pixels.width());
  }
}

void LumaCompensation::applyToRow(const PixelStrip& pixels, std::size_t y, const std::uint8_t* cb,
                                  const std::uint8_t* cr, float* luma) {
  const auto& slopes = TransferCurve::sRGB().slopes();
  const std::uint8_t* const red = pixels.row(0, y);
  const std::uint8_t* const green = pixels.row(1, y);
  const std::uint8_t* const blue = pixels.row(2, y);
  for (std::size_t x = 0; x < width_; ++x) {
    luma[x] -=
        addedLuma(red[x], green[x], blue[x], {slopes[red[x]], slopes[green[x]], slopes[blue[x]]},
                  static_cast<float>(cb[x]) - 128, static_cast<float>(cr[x]) - 128);
  }
}

}  // namespace orvane
