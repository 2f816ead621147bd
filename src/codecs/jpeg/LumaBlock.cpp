#include "codecs/jpeg/LumaBlock.h"

#include <algorithm>
#include <cstddef>

namespace orvane {
namespace {

constexpr float black = -127.5F;
constexpr float white = 126.5F;
constexpr int rounds = 3;

/// Whether a block has black or white pixels, and others.
bool mayOvershoot(const Block& luma) {
  const auto [least, greatest] = std::ranges::minmax(luma);
  return (least <= black || greatest >= white) && greatest - least > 1;
}

/// Moves the clipped pixels of `target` to where a decoder's numbers have gone beyond them.
void follow(const Block& luma, const Block& decoded, Block& target) {
  for (std::size_t i = 0; i < luma.size(); ++i) {
    if (luma[i] >= white) target[i] = std::max(luma[i], decoded[i]);
    if (luma[i] <= black) target[i] = std::min(luma[i], decoded[i]);
  }
}

}  // namespace

void codeLumaBlock(const Block& luma, ErrorVisibility visibility, const Quantizer& quantizer,
                   std::int16_t* levels) {
  Block coefficients = luma;
  transformForward(coefficients);
  quantizer.quantize(coefficients, visibility, levels);
  if (!mayOvershoot(luma)) return;
  Block target = luma;
  for (int round = 0; round < rounds; ++round) {
    Block decoded = quantizer.restore(levels);
    transformBack(decoded);
    follow(luma, decoded, target);
    coefficients = target;
    transformForward(coefficients);
    quantizer.quantize(coefficients, visibility, levels);
  }
}

}  // namespace orvane
