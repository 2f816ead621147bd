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

/// Bytes for the decoded picture and its rendering.
std::uint64_t decodingMemory(const ImageSource& source);

/// Bytes from then on: the picture and the encoder. Of the source's header only the size counts.
std::uint64_t encodingMemory(const ImageSource& source, ImageFormat format, bool hasAlpha);

/// Processor time of decoding and encoding: ten times what two cores of 2020 were seen to take, and
/// at least half a minute.
std::uint64_t seconds(const ImageSource& source, ImageFormat format);

/// Processor time for reading a file and its header.
inline constexpr std::uint64_t openingSeconds = 30;

}  // namespace orvane::JobCost
