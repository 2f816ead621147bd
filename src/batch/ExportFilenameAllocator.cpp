#include "batch/ExportFilenameAllocator.h"

#include "platform/foundation/Text.h"

namespace orvane {

std::string ExportFilenameAllocator::filename(std::string_view baseName,
                                              std::string_view fileExtension) {
  const std::string base(baseName);
  const std::string ending = "." + std::string(fileExtension);
  std::string unnumbered = base + ending;
  if (take(unnumbered)) return unnumbered;

  std::uint64_t& number = nextNumbers_.try_emplace(unnumbered, 2).first->second;
  while (true) {
    std::string numbered = base + "-" + std::to_string(number++) + ending;
    if (take(numbered)) return numbered;
  }
}

bool ExportFilenameAllocator::take(const std::string& name) {
  return usedNames_.insert(Text::nameKey(name)).second;
}

}  // namespace orvane
