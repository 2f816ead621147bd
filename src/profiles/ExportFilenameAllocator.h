#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace orvane {

/// Gives each output of one run a name of its own, also where the file system ignores letter case.
/// Knows nothing of the files that lie in the folder already.
class ExportFilenameAllocator {
 public:
  /// "base.ext" as given, or else the first of "base-2.ext", "base-3.ext"… that is still free.
  std::string filename(std::string_view baseName, std::string_view fileExtension);

 private:
  /// Whether `name` was free, letter case aside; from now on it is not.
  bool take(const std::string& name);

  std::unordered_set<std::string> usedNames_;  ///< lower-cased

  /// By unnumbered name: the next number to try. All below it are taken for good, so that thousands
  /// of files of one name are not counted from 2 each time.
  std::unordered_map<std::string, std::uint64_t> nextNumbers_;
};

}  // namespace orvane
