#include "codecs/jpeg/ScanScript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace orvane {
namespace {

/// How many scans of a script hold other coefficients than means, of its component `component`.
std::size_t countBands(const ScanScript& script, int component) {
  return static_cast<std::size_t>(
      std::ranges::count_if(script, [component](const jpeg_scan_info& scan) {
        return scan.Ss > 0 && scan.component_index[0] == component;
      }));
}

std::size_t mostBands(const std::vector<ScanScript>& scripts, int component) {
  std::size_t most = 0;
  for (const ScanScript& script : scripts) most = std::max(most, countBands(script, component));
  return most;
}

TEST(ScanScripts, haveAtMostTenScansInEveryJoin) {
  constexpr std::size_t meansOfLumaAndOfChroma = 2;
  for (const ScanScripts& scripts : {ScanScripts::toTry(), ScanScripts::quickest()}) {
    EXPECT_LE(meansOfLumaAndOfChroma + mostBands(scripts.luma, 0) + mostBands(scripts.chroma, 0) +
                  mostBands(scripts.chroma, 1),
              10u);
  }
}

/// How many bits of each coefficient a script still has to send; none is sent twice.
void expectEveryBitOnce(const ScanScript& script, std::size_t components) {
  constexpr int unsent = -1;
  std::array<std::array<int, 64>, 2> bitsLeft;
  for (auto& component : bitsLeft) component.fill(unsent);
  for (const jpeg_scan_info& scan : script) {
    for (int c = 0; c < scan.comps_in_scan; ++c) {
      for (int i = scan.Ss; i <= scan.Se; ++i) {
        int& left = bitsLeft.at(static_cast<std::size_t>(scan.component_index[c]))
                        .at(static_cast<std::size_t>(i));
        EXPECT_EQ(left, scan.Ah == 0 ? unsent : scan.Ah);
        left = scan.Al;
      }
    }
  }
  for (std::size_t c = 0; c < components; ++c) EXPECT_EQ(std::ranges::count(bitsLeft.at(c), 0), 64);
}

TEST(ScanScripts, sendEveryBitOnce) {
  for (const ScanScripts& scripts : {ScanScripts::toTry(), ScanScripts::quickest()}) {
    for (const ScanScript& script : scripts.luma) expectEveryBitOnce(script, 1);
    for (const ScanScript& script : scripts.chroma) expectEveryBitOnce(script, 2);
  }
}

}  // namespace
}  // namespace orvane
