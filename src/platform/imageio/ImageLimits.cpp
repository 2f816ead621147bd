#include "platform/imageio/ImageLimits.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <string>

#include "platform/imageio/ImageSource.h"

namespace orvane::ImageLimits {
namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

/// The number in a control-group file; "max" and a missing file mean no limit.
std::uint64_t controlGroupLimit(const char* path) {
  std::ifstream file(path);
  std::uint64_t bytes = 0;
  return file >> bytes ? bytes : unlimited;
}

std::uint64_t readUsableMemory() {
  const auto pages = sysconf(_SC_PHYS_PAGES);
  const auto pageSize = sysconf(_SC_PAGESIZE);
  const auto physical = pages > 0 && pageSize > 0 ? static_cast<std::uint64_t>(pages) *
                                                        static_cast<std::uint64_t>(pageSize)
                                                  : unlimited;
  return std::min({physical, controlGroupLimit("/sys/fs/cgroup/memory.max"),
                   controlGroupLimit("/sys/fs/cgroup/memory/memory.limit_in_bytes")});
}

}  // namespace

std::uint64_t usableMemory() {
  static const std::uint64_t bytes = readUsableMemory();
  return bytes;
}

void check(std::uint64_t width, std::uint64_t height, std::size_t bytesPerPixel) {
  if (width == 0 || height == 0) throw UnreadableImage("an empty picture");
  if (width > maximumSide || height > maximumSide) throw UnreadableImage("a side is too long");
  if (width * height > maximumPixels) throw UnreadableImage("too many pixels");
  if (width * height * bytesPerPixel > usableMemory() / 2) throw UnreadableImage("too many bytes");
}

}  // namespace orvane::ImageLimits
