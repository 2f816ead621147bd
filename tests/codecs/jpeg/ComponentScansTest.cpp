#include "codecs/jpeg/ComponentScans.h"

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>

namespace orvane {
namespace {

constexpr std::uint8_t luma = 1;
constexpr std::uint8_t blue = 2;
constexpr std::uint8_t red = 3;

/// A scan of `size` bytes of data, after a table.
void appendScan(Bytes& file, std::uint8_t component, std::uint8_t first, std::size_t size) {
  file.insert(file.end(), {0xFF, 0xC4, 0, 3, component});
  file.insert(file.end(), {0xFF, 0xDA, 0, 8, 1, component, 0, first, first, 0});
  file.insert(file.end(), size, component);
  file.insert(file.end(), {0xFF, 0});  // a number of the data, not a marker
}

void appendFrame(Bytes& file, std::initializer_list<std::uint8_t> components) {
  const auto count = static_cast<std::uint8_t>(components.size());
  file.insert(file.end(),
              {0xFF, 0xC2, 0, static_cast<std::uint8_t>(8 + 3 * count), 8, 0, 20, 0, 30, count});
  for (const std::uint8_t component : components) {
    file.insert(file.end(), {component, 0x11, static_cast<std::uint8_t>(component > luma ? 1 : 0)});
  }
}

Bytes beginning(std::uint8_t table) { return {0xFF, 0xD8, 0xFF, 0xDB, 0, 3, table}; }

/// A file's frame, its means, and the scans given as {component, size}.
struct ScanSize {
  std::uint8_t component;
  std::size_t size;
};
using ScanSizes = std::initializer_list<ScanSize>;

void appendScans(Bytes& file, ScanSizes scans) {
  for (const ScanSize scan : scans) appendScan(file, scan.component, 1, scan.size);
}

Bytes lumaFile(ScanSizes scans) {
  Bytes file = beginning(0);
  appendFrame(file, {luma});
  appendScan(file, luma, 0, 5);
  appendScans(file, scans);
  file.insert(file.end(), {0xFF, 0xD9});
  return file;
}

Bytes chromaFile(ScanSizes scans) {
  Bytes file = beginning(1);
  appendFrame(file, {blue, red});
  appendScan(file, blue, 0, 9);
  appendScans(file, scans);
  file.insert(file.end(), {0xFF, 0xD9});
  return file;
}

Bytes joinOne(const ComponentScans& scans) { return join({&scans, 1}); }

TEST(ComponentScans, leavesAFileAlone) {
  const Bytes file = lumaFile({{luma, 7}, {luma, 3}});
  EXPECT_EQ(joinOne(ComponentScans(file)), file);
}

TEST(ComponentScans, takesTheSmallerScansOfEachComponent) {
  ComponentScans scans(chromaFile({{blue, 50}, {blue, 60}, {red, 10}}));
  scans.improveWith(chromaFile({{blue, 80}, {red, 5}, {red, 20}}));
  scans.improveWith(chromaFile({{blue, 100}, {red, 8}}));
  EXPECT_EQ(joinOne(scans), chromaFile({{blue, 80}, {red, 8}}));
}

TEST(ComponentScans, takesTheFirstOfEqualScans) {
  const Bytes file = lumaFile({{luma, 7}, {luma, 3}});
  ComponentScans scans(file);
  scans.improveWith(lumaFile({{luma, 3}, {luma, 7}}));
  EXPECT_EQ(joinOne(scans), file);
}

TEST(ComponentScans, joinsLumaAndChroma) {
  Bytes joined = beginning(0);
  joined.insert(joined.end(), {0xFF, 0xDB, 0, 3, 1});
  appendFrame(joined, {luma, blue, red});
  appendScan(joined, luma, 0, 5);
  appendScan(joined, blue, 0, 9);
  appendScans(joined, {{luma, 4}, {luma, 2}, {blue, 6}, {red, 8}});
  joined.insert(joined.end(), {0xFF, 0xD9});
  const std::array groups{ComponentScans(lumaFile({{luma, 4}, {luma, 2}})),
                          ComponentScans(chromaFile({{blue, 6}, {red, 8}}))};
  EXPECT_EQ(join(groups), joined);
}

}  // namespace
}  // namespace orvane
