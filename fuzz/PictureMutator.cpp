// How libFuzzer changes pictures: mostly within the structure of their formats.

#include <algorithm>
#include <array>

#include "Mutation.h"

namespace orvane::fuzz {
namespace {

std::optional<Bytes> changed(ByteView file, Random& random) {
  for (const auto change : {changedPNG, changedBoxes, changedWebP}) {
    if (auto result = change(file, random)) return result;
  }
  return std::nullopt;
}

}  // namespace
}  // namespace orvane::fuzz

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t mostBytes, unsigned seed) {
  orvane::fuzz::Random random(seed);
  const bool keepsStructure = random.below(8) != 0;
  const auto result = keepsStructure ? orvane::fuzz::changed({data, size}, random) : std::nullopt;
  if (!result || result->size() > mostBytes) return LLVMFuzzerMutate(data, size, mostBytes);
  std::ranges::copy(*result, data);
  return result->size();
}
