#include "codecs/jpeg/BlockTransform.h"

#include <cstddef>
#include <utility>

namespace orvane {
namespace {

// cos(kπ/16) / 2, and √½ / 2 for k = 4.
constexpr float c1 = 0.4903926402F;
constexpr float c2 = 0.4619397663F;
constexpr float c3 = 0.4157348062F;
constexpr float c4 = 0.3535533906F;
constexpr float c5 = 0.2777851165F;
constexpr float c6 = 0.1913417162F;
constexpr float c7 = 0.0975451610F;

/// Transforms the eight columns. Sums of mirrored samples give the even frequencies, differences
/// the odd ones.
void transformColumns(Block& block) {
  for (std::size_t x = 0; x < 8; ++x) {
    float* const v = block.data() + x;
    const float s0 = v[0] + v[56], s1 = v[8] + v[48], s2 = v[16] + v[40], s3 = v[24] + v[32];
    const float d0 = v[0] - v[56], d1 = v[8] - v[48], d2 = v[16] - v[40], d3 = v[24] - v[32];
    v[0] = c4 * ((s0 + s3) + (s1 + s2));
    v[8] = c1 * d0 + c3 * d1 + c5 * d2 + c7 * d3;
    v[16] = c2 * (s0 - s3) + c6 * (s1 - s2);
    v[24] = c3 * d0 - c7 * d1 - c1 * d2 - c5 * d3;
    v[32] = c4 * ((s0 + s3) - (s1 + s2));
    v[40] = c5 * d0 - c1 * d1 + c7 * d2 + c3 * d3;
    v[48] = c6 * (s0 - s3) - c2 * (s1 - s2);
    v[56] = c7 * d0 - c5 * d1 + c3 * d2 - c1 * d3;
  }
}

void transformColumnsBack(Block& block) {
  for (std::size_t x = 0; x < 8; ++x) {
    float* const v = block.data() + x;
    const float sum = c4 * (v[0] + v[32]), difference = c4 * (v[0] - v[32]);
    const float outer = c2 * v[16] + c6 * v[48], inner = c6 * v[16] - c2 * v[48];
    const float e0 = sum + outer, e1 = difference + inner;
    const float e2 = difference - inner, e3 = sum - outer;
    const float o0 = c1 * v[8] + c3 * v[24] + c5 * v[40] + c7 * v[56];
    const float o1 = c3 * v[8] - c7 * v[24] - c1 * v[40] - c5 * v[56];
    const float o2 = c5 * v[8] - c1 * v[24] + c7 * v[40] + c3 * v[56];
    const float o3 = c7 * v[8] - c5 * v[24] + c3 * v[40] - c1 * v[56];
    v[0] = e0 + o0, v[56] = e0 - o0;
    v[8] = e1 + o1, v[48] = e1 - o1;
    v[16] = e2 + o2, v[40] = e2 - o2;
    v[24] = e3 + o3, v[32] = e3 - o3;
  }
}

void transpose(Block& block) {
  for (std::size_t y = 1; y < 8; ++y) {
    for (std::size_t x = 0; x < y; ++x) std::swap(block[y * 8 + x], block[x * 8 + y]);
  }
}

}  // namespace

void transformForward(Block& block) {
  transformColumns(block);
  transpose(block);
  transformColumns(block);
  transpose(block);
}

void transformBack(Block& block) {
  transformColumnsBack(block);
  transpose(block);
  transformColumnsBack(block);
  transpose(block);
}

}  // namespace orvane
