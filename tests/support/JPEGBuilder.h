#pragma once

#include <cstdint>
#include <cstdio>  // jpeglib.h needs it before itself
#include <optional>
#include <string_view>
#include <vector>

#include <jpeglib.h>

#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane::test {

/// A marker segment without its length field (ITU-T T.81 B.1.1.4).
struct JPEGSegment {
  int marker;  ///< 0xE1 is APP1
  Bytes data;
};

/// How to code a JPEG file. libjpeg's defaults hold for all that is not named here.
struct JPEGRecipe {
  J_COLOR_SPACE stored = JCS_YCbCr;
  int quality = 95;
  int horizontalSampling = 1;  ///< of the first component; the others have 1
  int verticalSampling = 1;
  bool isProgressive = false;
  bool isArithmetic = false;
  unsigned restartInterval = 0;  ///< in MCUs; 0 is none
  std::optional<bool> hasAdobeMarker;
  std::optional<bool> hasJFIFMarker;
  std::vector<JPEGSegment> segments;  ///< before the tables
  std::vector<jpeg_scan_info> scans;  ///< libjpeg's script; they decide whether it is progressive
};

/// Codes a gray, rgba or cmyk picture of 8 bits, or a grayAlpha one as JCS_UNKNOWN. Throws
/// std::runtime_error.
Bytes buildJPEG(const Image& image, const JPEGRecipe& recipe = {});

/// A progressive script for one component: `count` scans, 1 to 630, each of them valid.
std::vector<jpeg_scan_info> manyScans(int count);

/// Where the marker 0xFF, `code` first stands at or after `from`, which must be a place between
/// segments or in entropy-coded data. Throws std::runtime_error when there is none.
std::size_t findMarker(ByteView file, int code, std::size_t from = 2);

/// Where the entropy-coded data of the first scan begins.
std::size_t firstScanData(ByteView file);

Bytes inserted(ByteView file, std::size_t at, ByteView bytes);
Bytes without(ByteView file, std::size_t at, std::size_t count);

enum class ByteOrder { little, big };

/// A TIFF structure whose only tag is this orientation. `type` is TIFF's, 3 for SHORT.
Bytes exifBlock(std::uint32_t orientation, ByteOrder order = ByteOrder::big, int type = 3);

/// The APP1 segment that holds it.
JPEGSegment exifSegment(std::uint32_t orientation, int type = 3);

/// `profile` as APP2 segments of at most `partSize` bytes each.
std::vector<JPEGSegment> profileSegments(ByteView profile, std::size_t partSize);

}  // namespace orvane::test
