#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvane {

/// The outcome of one input file.
struct ImageCompressionResult {
  std::string path;  ///< as it was given
  std::int64_t originalSizeBytes = 0;
  std::optional<std::int64_t> compressedSizeBytes;
  std::optional<double> ratio;             ///< fraction saved; negative when the output is larger
  std::optional<std::string> destination;  ///< path of the written file
  std::optional<std::string> error;        ///< present exactly when the file failed

  bool operator==(const ImageCompressionResult&) const = default;
};

}  // namespace orvane
