#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace orvane {

/// Gives each output of one run a name of its own, also for file systems that ignore letter case.
/// It does not look at the files that are in the folder already.
class ExportFilenameAllocator {
 public:
  /// Returns "base.ext" when it is free, else the first free name of "base-2.ext", "base-3.ext"…
  std::string filename(std::string_view baseName, std::string_view fileExtension);

 private:
  /// Takes `name`, letter case ignored. Returns whether it was free.
  bool take(const std::string& name);

  std::unordered_set<std::string> usedNames_;  ///< lower-cased

  /// The next number to try for each unnumbered name. All lower numbers are taken; without this,
  /// thousands of files of one name would each count from 2 again.
  std::unordered_map<std::string, std::uint64_t> nextNumbers_;
};

}  // namespace orvane
