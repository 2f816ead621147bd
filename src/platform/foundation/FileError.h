#pragma once

#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// A file-system call failed. The description is the system's own text for the error number.
class FileError : public LocalizedError {
 public:
  explicit FileError(int errorNumber);

  int errorNumber() const noexcept { return errorNumber_; }

 private:
  int errorNumber_;
};

}  // namespace orvane
