#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/foundation/Bytes.h"
#include "profiles/ExportProfile.h"

/// A list of profiles as JSON text (RFC 8259).
namespace orvane::ExportProfileJSON {

/// Writes the array on one line without spaces. Returns no value when a quality is NaN or infinite.
std::optional<std::string> encode(std::span<const ExportProfile> profiles);

/// Reads an array in UTF-8, in any layout and any order of keys; unknown keys are ignored. Returns
/// no value when any part is malformed, missing or of the wrong type.
std::optional<std::vector<ExportProfile>> decode(ByteView bytes);

}  // namespace orvane::ExportProfileJSON
