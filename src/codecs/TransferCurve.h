#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvane {

/// sRGB's transfer curve (IEC 61966-2-1) in tables. Entries are rounded to steps that are coarse
/// beside the last digits of std::pow, which differ between processors.
class TransferCurve {
 public:
  static const TransferCurve& sRGB();

  /// The linear light, 0…1, of a channel's value, 0…1 (IEC 61966-2-1).
  static double lightOf(double number);

  /// The mean of four pixels' numbers of one channel in linear light, as a number 0…255.
  float meanOf(const std::array<std::uint8_t, 4>& numbers) const {
    return meanOf(numbers, {1, 1, 1, 1}, 4);
  }

  /// The same, weighted. `sum` is the sum of the weights, 1…1020.
  float meanOf(const std::array<std::uint8_t, 4>& numbers,
               const std::array<std::uint8_t, 4>& weights, unsigned sum) const {
    unsigned light = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) light += light_[numbers[i]] * weights[i];
    return number_[light * 4 / sum / (lightSum / (number_.size() - 1))];
  }

  /// Linear light that one step of a channel's number adds, at each number. Relative.
  const std::array<float, 256>& slopes() const { return slopes_; }

 private:
  TransferCurve();

  static constexpr unsigned lightSum = 65536;  ///< of four white pixels

  std::array<std::uint16_t, 256> light_{};
  std::array<float, 8193> number_{};
  std::array<float, 256> slopes_{};
};

}  // namespace orvane
