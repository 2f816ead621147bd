#pragma once

#include <cstddef>
#include <cstdint>

namespace orvane::ImageLimits {

inline constexpr std::uint64_t maximumSide = 1'000'000;  ///< pixels
inline constexpr std::uint64_t maximumPixels = std::uint64_t{1} << 30;
inline constexpr std::size_t maximumICCBytes = std::size_t{8} << 20;
inline constexpr int maximumProgressiveScans = 500;

/// Throws UnreadableImage when a picture of this size is empty or past a limit: a side, the pixel
/// count, or half of the memory that the process may use. To be called before any pixel memory is
/// taken.
void check(std::uint64_t width, std::uint64_t height, std::size_t bytesPerPixel);

/// Throws UnreadableImage when an ICC profile of this size is past the limit.
void checkICC(std::size_t bytes);

}  // namespace orvane::ImageLimits
