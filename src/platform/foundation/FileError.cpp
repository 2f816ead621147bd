#include "platform/foundation/FileError.h"

#include <string.h>

#include <array>

namespace orvane {
namespace {

// There are two strerror_r: GNU's returns the text, POSIX's an error number with the text in the
// buffer. The overload that is not this system's goes unused.
[[maybe_unused]] std::string text(const char* message, const char* /*buffer*/) { return message; }
[[maybe_unused]] std::string text(int /*error*/, const char* buffer) { return buffer; }

std::string systemText(int errorNumber) {
  std::array<char, 256> buffer{};
  return text(strerror_r(errorNumber, buffer.data(), buffer.size()), buffer.data());
}

}  // namespace

FileError::FileError(int errorNumber)
    : LocalizedError(systemText(errorNumber)), errorNumber_(errorNumber) {}

FileError::FileError(int errorNumber, const std::string& path)
    : LocalizedError(path + " : " + systemText(errorNumber)), errorNumber_(errorNumber) {}

}  // namespace orvane
