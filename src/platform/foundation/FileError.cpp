#include "platform/foundation/FileError.h"

#include <system_error>

namespace orvane {
namespace {

std::string systemText(int errorNumber) { return std::generic_category().message(errorNumber); }

}  // namespace

FileError::FileError(int errorNumber)
    : LocalizedError(systemText(errorNumber)), errorNumber_(errorNumber) {}

FileError::FileError(int errorNumber, const std::string& path)
    : LocalizedError(path + " : " + systemText(errorNumber)), errorNumber_(errorNumber) {}

}  // namespace orvane
