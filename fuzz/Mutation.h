#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "Random.h"
#include "platform/foundation/Bytes.h"

/// libFuzzer's own changes, which know no structure. Returns the new size.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size,
                                        std::size_t mostBytes);

namespace orvane::fuzz {

/// Changes bytes or text as libFuzzer does, to at most a few dozen bytes more.
template <class Content>
void changeBytes(Content& content) {
  constexpr std::size_t growth = 32;
  const std::size_t size = content.size();
  content.resize(size + growth);
  auto* const data = reinterpret_cast<std::uint8_t*>(content.data());
  content.resize(LLVMFuzzerMutate(data, size, content.size()));
}

/// Removes, repeats or exchanges elements of a row.
template <class Element>
void changeOrder(std::vector<Element>& row, Random& random) {
  if (row.empty()) return;
  const std::size_t at = random.below(row.size());
  switch (random.below(3)) {
    case 0:
      row.erase(row.begin() + static_cast<std::ptrdiff_t>(at));
      break;
    case 1:
      row.insert(row.begin() + static_cast<std::ptrdiff_t>(at), Element(row[at]));
      break;
    default:
      std::swap(row[at], random.oneOf(row));
  }
}

/// A file of ISO boxes with changed boxes, items, references or properties and right sizes; absent
/// for other files.
std::optional<Bytes> changedBoxes(ByteView file, Random& random);

/// A PNG file with changed chunks and right lengths and CRCs; absent for other files and for those
/// whose framing is broken.
std::optional<Bytes> changedPNG(ByteView file, Random& random);

/// A WebP file with changed bytes and the right size in its RIFF header; absent for other files.
std::optional<Bytes> changedWebP(ByteView file, Random& random);

}  // namespace orvane::fuzz
