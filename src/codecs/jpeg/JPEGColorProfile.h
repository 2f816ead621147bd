#pragma once

#include <cstdio>  // jpeglib.h needs it before itself

#include <jpeglib.h>

#include "platform/foundation/Bytes.h"

/// ICC profiles in JPEG files: a sequence of numbered APP2 segments (ICC.1:2010 annex B.4).
namespace orvane::JPEGColorProfile {

/// The profile in `segments`, in whatever order they stand; empty when there is none, or when
/// the sequence is broken (a segment missing, twice there, misnumbered). Throws UnreadableImage
/// past ImageLimits::maximumICCBytes, and std::bad_alloc.
Bytes assembled(const jpeg_marker_struct* segments);

/// Writes `profile` as such segments, after jpeg_start_compress and before the first row. Leaves as
/// libjpeg does, also when `profile` is longer than the 255 segments that there can be.
void write(jpeg_compress_struct& info, ByteView profile);

}  // namespace orvane::JPEGColorProfile
