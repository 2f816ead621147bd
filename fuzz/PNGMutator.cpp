#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include "Mutation.h"
#include "support/PNGBuilder.h"

namespace orvane::fuzz {
namespace {

using test::PNGChunk;

constexpr std::array<std::string_view, 16> types{"IHDR", "PLTE", "IDAT", "IEND", "tRNS", "cHRM",
                                                 "gAMA", "iCCP", "sRGB", "cICP", "eXIf", "acTL",
                                                 "fcTL", "fdAT", "sBIT", "tEXt"};

/// Bytes before the zlib stream of a chunk; absent where a chunk has no stream.
std::optional<std::size_t> streamOffset(const PNGChunk& chunk) {
  if (chunk.type == "IDAT") return 0;
  if (chunk.type != "iCCP") return std::nullopt;
  constexpr std::size_t zeroAndMethod = 2;
  const auto zero = std::ranges::find(chunk.payload, 0);
  const auto offset = static_cast<std::size_t>(zero - chunk.payload.begin()) + zeroAndMethod;
  return offset > chunk.payload.size() ? std::nullopt : std::optional(offset);
}

/// Changes what the zlib stream of a chunk holds. Throws std::runtime_error where it is broken.
void changeContent(PNGChunk& chunk, std::size_t offset) {
  const auto start = chunk.payload.begin() + static_cast<std::ptrdiff_t>(offset);
  Bytes content = test::inflated({start, chunk.payload.end()});
  changeBytes(content);
  const Bytes stream = test::zlibStream(content);
  chunk.payload.erase(start, chunk.payload.end());
  chunk.payload.insert(chunk.payload.end(), stream.begin(), stream.end());
}

void change(std::vector<PNGChunk>& chunks, Random& random) {
  PNGChunk& chunk = random.oneOf(chunks);
  const auto stream = streamOffset(chunk);
  switch (random.below(4)) {
    case 0:
      changeOrder(chunks, random);
      break;
    case 1:
      chunk.type = random.oneOf(types);
      break;
    case 2:
      if (stream) {
        changeContent(chunk, *stream);
        break;
      }
      [[fallthrough]];
    default:
      changeBytes(chunk.payload);
  }
}

}  // namespace

std::optional<Bytes> changedPNG(ByteView file, Random& random) try {
  std::vector<PNGChunk> chunks = test::pngChunks(file);
  if (chunks.empty()) return std::nullopt;
  change(chunks, random);
  return test::assemblePNG(chunks);
} catch (const std::runtime_error&) {
  return std::nullopt;
}

}  // namespace orvane::fuzz
