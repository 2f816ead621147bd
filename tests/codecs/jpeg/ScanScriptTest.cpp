#include "codecs/jpeg/ScanScript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace orvane {
namespace {

/// How many scans of a script hold means, and how many hold other coefficients of each component.
struct ScanCounts {
  std::size_t means = 0;
  std::array<std::size_t, 3> bands{};
};

ScanCounts countScans(const ScanScript& script) {
  ScanCounts counts;
  for (const jpeg_scan_info& scan : script) {
    ++(scan.Ss == 0 ? counts.means
                    : counts.bands.at(static_cast<std::size_t>(scan.component_index[0])));
  }
  return counts;
}

TEST(ScanScript, hasAtMostTenScansInEveryJoin) {
  for (const std::size_t components : {1u, 3u}) {
    ScanCounts most;
    for (const ScanScript& script : scanScripts(components)) {
      const ScanCounts counts = countScans(script);
      most.means = std::max(most.means, counts.means);
      for (std::size_t c = 0; c < 3; ++c) {
        most.bands.at(c) = std::max(most.bands.at(c), counts.bands.at(c));
      }
    }
    EXPECT_LE(most.means + most.bands[0] + most.bands[1] + most.bands[2], 10u);
  }
}

/// How many bits of each coefficient a script still has to send; none is sent twice.
TEST(ScanScript, sendsEveryBitOnce) {
  constexpr int unsent = -1;
  for (const std::size_t components : {1u, 3u}) {
    for (const ScanScript& script : scanScripts(components)) {
      std::array<std::array<int, 64>, 3> bitsLeft;
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
      for (std::size_t c = 0; c < components; ++c) {
        EXPECT_EQ(std::ranges::count(bitsLeft.at(c), 0), 64);
      }
    }
  }
}

constexpr std::uint8_t luma = 1;
constexpr std::uint8_t chroma = 2;

/// A scan of `size` bytes of data, after a table.
void appendScan(Bytes& file, std::uint8_t component, std::uint8_t first, std::size_t size) {
  file.insert(file.end(), {0xFF, 0xC4, 0, 3, component});
  file.insert(file.end(), {0xFF, 0xDA, 0, 8, 1, component, 0, first, first, 0});
  file.insert(file.end(), size, component);
  file.insert(file.end(), {0xFF, 0});  // a number of the data, not a marker
}

/// A file's frame, its luma's mean, and the scans given as {component, size}.
struct ScanSize {
  std::uint8_t component;
  std::size_t size;
};
Bytes fileOf(std::initializer_list<ScanSize> scans) {
  Bytes file{0xFF, 0xD8, 0xFF, 0xC2, 0, 4, 7, 7};
  appendScan(file, luma, 0, 5);
  for (const ScanSize scan : scans) appendScan(file, scan.component, 1, scan.size);
  file.insert(file.end(), {0xFF, 0xD9});
  return file;
}

TEST(ScanScript, joinsTheSmallestScansOfEachComponent) {
  const std::array files{fileOf({{luma, 50}, {luma, 60}, {chroma, 10}}),
                         fileOf({{luma, 80}, {chroma, 5}, {chroma, 20}}),
                         fileOf({{luma, 100}, {chroma, 8}})};
  EXPECT_EQ(joinSmallestScans(files), fileOf({{luma, 80}, {chroma, 8}}));
}

TEST(ScanScript, takesTheFirstOfEqualScans) {
  const std::array files{fileOf({{luma, 7}, {luma, 3}}), fileOf({{luma, 3}, {luma, 7}})};
  EXPECT_EQ(joinSmallestScans(files), files[0]);
}

TEST(ScanScript, leavesAFileWithoutRivals) {
  const std::array files{fileOf({{luma, 7}, {chroma, 3}})};
  EXPECT_EQ(joinSmallestScans(files), files[0]);
}

}  // namespace
}  // namespace orvane
