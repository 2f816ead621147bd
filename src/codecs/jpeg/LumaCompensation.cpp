#include "codecs/jpeg/LumaCompensation.h"

#include <algorithm>

#include "codecs/Luminance.h"
#include "codecs/TransferCurve.h"
#include "codecs/YCbCr.h"

namespace orvane {

LumaCompensation::LumaCompensation(std::size_t pictureWidth, std::size_t pictureHeight,
                                   JPEGSettings::Chroma chroma)
    : width_(pictureWidth), height_(pictureHeight), chroma_(chroma) {
  for (auto& row : doubled_) row.resize(pictureWidth + 1);
}

void LumaCompensation::apply(const PixelStrip& pixels, std::size_t first,
                             const DecodedChroma& decoded, LumaStrip& luma) {
  const std::size_t rows = std::min(pixels.height(), height_ - first);
  for (std::size_t y = 0; y < rows; ++y) {
    float* const row = luma.data() + y * pixels.width();
    if (chroma_ == JPEGSettings::Chroma::full) {
      applyToRow(pixels, y, decoded.rows(first + y), row);
    } else {
      for (std::size_t i : {0, 1}) decoded.doubleRow(i, first + y, doubled_[i].data());
      applyToRow(pixels, y, {doubled_[0].data(), doubled_[1].data()}, row);
    }
    std::fill(row + width_, row + pixels.width(), row[width_ - 1]);
  }
  for (std::size_t y = rows; y < pixels.height(); ++y) {
    float* const row = luma.data() + y * pixels.width();
    std::copy_n(row - pixels.width(), pixels.width(), row);
  }
}

void LumaCompensation::applyToRow(const PixelStrip& pixels, std::size_t y,
                                  const DecodedChroma::Rows& chroma, float* luma) const {
  const auto& slopes = TransferCurve::sRGB().slopes();
  const std::uint8_t* const red = pixels.row(0, y);
  const std::uint8_t* const green = pixels.row(1, y);
  const std::uint8_t* const blue = pixels.row(2, y);
  for (std::size_t x = 0; x < width_; ++x) {
    const Color color{static_cast<float>(red[x]), static_cast<float>(green[x]),
                      static_cast<float>(blue[x])};
    luma[x] -= lumaChangeFor(color, {slopes[red[x]], slopes[green[x]], slopes[blue[x]]},
                             static_cast<float>(chroma[0][x]) - 128,
                             static_cast<float>(chroma[1][x]) - 128);
  }
}

}  // namespace orvane
