#include "codecs/look/WindowedMoments.h"

#include <algorithm>

namespace orvane {
namespace {

/// The measure's window, nearly a Gaussian of a standard deviation of 1.5 samples: the taps that
/// its published recursive filter has (D. Charalampidis, 2016).
constexpr std::size_t reach = 4;
constexpr std::array<float, 2 * reach + 1> window{0.00941436781F, 0.0360111147F, 0.109335373F,
                                                  0.212928592F,   0.264621105F,  0.212928592F,
                                                  0.109335373F,   0.0360111147F, 0.00941436781F};

/// Samples that processors work on at once.
constexpr std::size_t lanes = 8;

/// Weighted sums of two planes' samples, of their squares and of their products, along columns.
struct ColumnSums {
  std::array<std::array<float, lanes>, 5> moments;

  void add(const float* source, const float* coded, std::size_t count, float weight) {
    // Compilers vectorize the loop when its count is constant.
    if (count == lanes) return addSamples(source, coded, lanes, weight);
    addSamples(source, coded, count, weight);
  }

 private:
  void addSamples(const float* source, const float* coded, std::size_t count, float weight) {
    for (std::size_t i = 0; i < count; ++i) {
      const float weightedSource = weight * source[i];
      const float weightedCoded = weight * coded[i];
      moments[0][i] += weightedSource;
      moments[1][i] += weightedCoded;
      moments[2][i] += weightedSource * source[i];
      moments[3][i] += weightedCoded * coded[i];
      moments[4][i] += weightedSource * coded[i];
    }
  }
};

}  // namespace

WindowedMoments::WindowedMoments(const Plane<float>& source, const Plane<float>& coded)
    : source_(source), coded_(coded) {
  for (auto& columns : columns_) columns.resize(source.width + 2 * reach);
  for (auto& moments : moments_) moments.resize(source.width);
}

void WindowedMoments::measure(std::size_t y) {
  gatherColumns(y);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const float* const columns = columns_[i].data();
    float* const moments = moments_[i].data();
    for (std::size_t x = 0; x < source_.width; ++x) {
      float sum = window[reach] * columns[x + reach];
      for (std::size_t at = 0; at < reach; ++at) {
        sum += window[at] * (columns[x + at] + columns[x + 2 * reach - at]);
      }
      moments[x] = sum;
    }
  }
}

void WindowedMoments::gatherColumns(std::size_t y) {
  const std::size_t first = y - std::min(y, reach);
  const std::size_t last = std::min(y + reach, source_.height - 1);
  for (std::size_t x = 0; x < source_.width; x += lanes) {
    const std::size_t samples = std::min(lanes, source_.width - x);
    ColumnSums sums{};
    for (std::size_t at = first; at <= last; ++at) {
      sums.add(source_.row(at) + x, coded_.row(at) + x, samples, window[at + reach - y]);
    }
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      std::copy_n(sums.moments[i].begin(), samples,
                  columns_[i].begin() + static_cast<std::ptrdiff_t>(reach + x));
    }
  }
}

}  // namespace orvane
