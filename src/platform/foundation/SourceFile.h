#pragma once

#include <cstdint>
#include <string>

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Descriptor.h"

namespace orvane {

/// A file that is open for reading, once and from its beginning.
class SourceFile {
 public:
  static constexpr std::uint64_t maximumBytes = std::uint64_t{2} << 30;

  /// Opens it. A FIFO whose writer does not come within a second is an error (ETIMEDOUT), and so is
  /// a size past `maximumBytes` (EFBIG). Throws FileError.
  static SourceFile open(const std::string& path);

  /// A file that another process has opened, with the size that it found.
  SourceFile(Descriptor descriptor, std::uint64_t size)
      : descriptor_(std::move(descriptor)), size_(size) {}

  int descriptor() const { return descriptor_.number(); }

  /// Size of a regular file in bytes; 0 for anything else, such as a pipe.
  std::uint64_t size() const { return size_; }

  /// The rest of the file: by its size, or until its end where it has none. Throws FileError; its
  /// number is EFBIG for more than `maximumBytes`, ENOMEM when memory is short.
  Bytes readWhole() const;

 private:
  std::size_t fill(Bytes& bytes, std::size_t at) const;
  std::size_t fillToTheEnd(Bytes& bytes) const;

  Descriptor descriptor_;
  std::uint64_t size_;
};

}  // namespace orvane
