#include "codecs/jpeg/VisualMask.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "codecs/Plane.h"

namespace orvane {
namespace {

/// Luma at a part of a picture's resolution, 0…255.
using LumaPlane = Plane<std::uint8_t>;

/// Luma of ITU-T T.871, in 256ths.
unsigned lumaIn256ths(const std::uint8_t* pixel) {
  return 77U * pixel[0] + 150U * pixel[1] + 29U * pixel[2];
}

void halveRows(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width,
               std::uint8_t* halved) {
  for (std::size_t x = 0; x < width / 2; ++x) {
    const unsigned sum = lumaIn256ths(upper + x * 8) + lumaIn256ths(upper + x * 8 + 4) +
                         lumaIn256ths(lower + x * 8) + lumaIn256ths(lower + x * 8 + 4);
    halved[x] = static_cast<std::uint8_t>((sum + 512) / 1024);
  }
  if (width % 2 == 0) return;
  const unsigned sum =
      lumaIn256ths(upper + (width - 1) * 4) + lumaIn256ths(lower + (width - 1) * 4);
  halved[width / 2] = static_cast<std::uint8_t>((sum + 256) / 512);
}

LumaPlane halfOf(OpaqueRows& rows) {
  LumaPlane half((rows.width() + 1) / 2, (rows.height() + 1) / 2);
  for (std::size_t y = 0; y < half.height; ++y) {
    const auto pair = rows.read(y * 2, 2);
    halveRows(pair.front(), pair.back(), rows.width(), half.row(y));
  }
  return half;
}

LumaPlane halfOf(const LumaPlane& plane) {
  LumaPlane half((plane.width + 1) / 2, (plane.height + 1) / 2);
  for (std::size_t y = 0; y < half.height; ++y) {
    const std::uint8_t* const upper = plane.row(y * 2);
    const std::uint8_t* const lower = plane.row(std::min(y * 2 + 1, plane.height - 1));
    for (std::size_t x = 0; x < half.width; ++x) {
      const std::size_t left = x * 2;
      const std::size_t right = std::min(left + 1, plane.width - 1);
      half.row(y)[x] = static_cast<std::uint8_t>(
          (upper[left] + upper[right] + lower[left] + lower[right] + 2) / 4);
    }
  }
  return half;
}

/// A Gaussian of a standard deviation of 1.5 samples, in 256ths.
constexpr std::array<std::uint32_t, 9> window{2, 9, 28, 55, 68, 55, 28, 9, 2};
constexpr std::size_t reach = window.size() / 2;

/// The windowed mean of numbers that are in 256ths already.
float windowed(const std::uint32_t* numbers) {
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < window.size(); ++i) sum += window[i] * numbers[i];
  return static_cast<float>(static_cast<std::int32_t>(sum / 4)) / 16384;
}

/// The windowed moments of one row of a plane.
class Moments {
 public:
  explicit Moments(const LumaPlane& plane)
      : plane_(plane), sums_(plane.width + 2 * reach), squares_(plane.width + 2 * reach) {}

  /// Writes the visibility of an error at each sample of row `y`.
  void measure(std::size_t y, float* visibility) {
    gatherColumns(y);
    const std::uint32_t* const sums = sums_.data();
    const std::uint32_t* const squares = squares_.data();
    for (std::size_t x = 0; x < plane_.width; ++x) {
      const float mean = windowed(sums + x);
      const float variance = windowed(squares + x) - mean * mean;
      visibility[x] = 243 / (2 * variance + 56.7F);
    }
  }

 private:
  void gatherColumns(std::size_t y);

  const LumaPlane& plane_;
  std::vector<std::uint32_t> sums_;  ///< of the window's columns, with those beyond the sides
  std::vector<std::uint32_t> squares_;
};

void Moments::gatherColumns(std::size_t y) {
  std::ranges::fill(sums_, 0);
  std::ranges::fill(squares_, 0);
  std::uint32_t* const sums = sums_.data() + reach;
  std::uint32_t* const squares = squares_.data() + reach;
  for (std::size_t i = 0; i < window.size(); ++i) {
    const std::size_t at = std::min(y + i - std::min(y + i, reach), plane_.height - 1);
    const std::uint8_t* const row = plane_.row(at);
    for (std::size_t x = 0; x < plane_.width; ++x) {
      const std::uint32_t weighted = window[i] * row[x];
      sums[x] += weighted;
      squares[x] += weighted * row[x];
    }
  }
  for (auto* const moments : {&sums_, &squares_}) {
    std::fill_n(moments->begin(), reach, (*moments)[reach]);
    std::fill_n(moments->end() - reach, reach, (*moments)[reach + plane_.width - 1]);
  }
}

/// The mean visibility in each block of `side` × `side` samples.
std::vector<float> visibilityByBlock(const LumaPlane& plane, std::size_t side) {
  const std::size_t columns = (plane.width + side - 1) / side;
  const std::size_t rows = (plane.height + side - 1) / side;
  std::vector<float> means(columns * rows);
  std::vector<float> visibility(plane.width);
  Moments moments(plane);
  for (std::size_t y = 0; y < plane.height; ++y) {
    moments.measure(y, visibility.data());
    float* const row = means.data() + y / side * columns;
    for (std::size_t x = 0; x < plane.width; ++x) row[x / side] += visibility[x];
  }
  for (std::size_t i = 0; i < means.size(); ++i) {
    const std::size_t width = std::min(side, plane.width - i % columns * side);
    const std::size_t height = std::min(side, plane.height - i / columns * side);
    means[i] /= static_cast<float>(width * height);
  }
  return means;
}

/// value^(7/16). Square roots are the same on every processor; std::pow is not.
float compressed(float value) {
  const float quarter = std::sqrt(std::sqrt(value));
  const float eighth = std::sqrt(quarter);
  return quarter * eighth * std::sqrt(eighth);
}

}  // namespace

VisualMask::VisualMask(OpaqueRows& rows)
    : columns_((rows.width() + 7) / 8), rows_((rows.height() + 7) / 8) {
  const LumaPlane half = halfOf(rows);
  fine_ = visibilityByBlock(half, 4);
  coarse_ = visibilityByBlock(halfOf(half), 2);
}

ErrorVisibility VisualMask::at(std::size_t x, std::size_t y, std::size_t count) const {
  float fine = 0;
  float coarse = 0;
  const std::size_t right = std::min(x + count, columns_);
  const std::size_t bottom = std::min(y + count, rows_);
  for (std::size_t row = y; row < bottom; ++row) {
    for (std::size_t i = row * columns_ + x; i < row * columns_ + right; ++i) {
      fine += fine_[i];
      coarse += coarse_[i];
    }
  }
  const auto blocks = static_cast<float>((right - x) * (bottom - y));
  const float root = compressed(coarse / blocks);
  return {.fine = compressed(fine / blocks), .coarse = root * root};
}

}  // namespace orvane
