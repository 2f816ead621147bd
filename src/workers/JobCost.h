#pragma once

#include <cstdint>

#include "codecs/ImageSource.h"
#include "picture/ImageFormat.h"

/// Estimates of what a file costs, on the generous side: a file that exceeds its limits fails.
namespace orvane::JobCost {

/// Bytes that a worker takes beside its pictures: tables, stacks of codec threads, scratch memory.
inline constexpr std::uint64_t baseMemory = std::uint64_t{48} << 20;

/// Bytes that a picture of up to about 100 000 pixels takes.
inline constexpr std::uint64_t smallPicture = baseMemory + (std::uint64_t{8} << 20);

/// Seconds of processor time that reading a file and its header may take, or all of the work on a
/// small picture.
inline constexpr std::uint64_t smallSeconds = 60;

/// Bytes that the work on so many threads takes at its most, beside the file's own.
std::uint64_t memory(const ImageSource& source, ImageFormat format, int threads);

/// Seconds of processor time for all of the work: ten times what two cores of 2020 were seen to
/// take, and at least `smallSeconds`.
std::uint64_t seconds(const ImageSource& source, ImageFormat format);

}  // namespace orvane::JobCost
