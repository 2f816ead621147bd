#pragma once

#include <string>

#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// A file-system call failed. The description is the system's own text for the error number.
class FileError : public LocalizedError {
 public:
  explicit FileError(int errorNumber);

  /// The description is "path : " and the system's text. For failures that the user would else
  /// put down to another file.
  FileError(int errorNumber, const std::string& path);

  int errorNumber() const noexcept { return errorNumber_; }

 private:
  int errorNumber_;
};

}  // namespace orvane
