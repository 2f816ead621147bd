#pragma once

#include <string>
#include <vector>

#include "platform/foundation/Bytes.h"

/// PNG files taken apart without the code under test.
namespace orvane::test {

struct PNGChunk {
  std::string type;
  Bytes payload;

  bool operator==(const PNGChunk&) const = default;
};

/// The chunks of a file, in order. Throws std::runtime_error unless the signature, the framing and
/// every CRC are right and nothing follows the last chunk.
std::vector<PNGChunk> pngChunks(ByteView file);

/// "IHDR PLTE IDAT IEND"
std::string chunkTypes(const std::vector<PNGChunk>& chunks);

/// The payload of the first chunk of a type. Throws std::runtime_error when there is none.
Bytes chunkPayload(const std::vector<PNGChunk>& chunks, const std::string& type);

/// One chunk as it stands in a file.
Bytes pngChunk(const PNGChunk& chunk);

/// The content of a zlib stream. Throws std::runtime_error when the stream is broken.
Bytes inflated(ByteView stream);

struct PNGPixels {
  std::size_t width = 0;
  std::size_t height = 0;
  Bytes rgba;  ///< straight, packed
};

/// The pixels that libpng reads. Throws std::runtime_error at its first error or warning.
PNGPixels readPNG(ByteView file);

}  // namespace orvane::test
