#pragma once

#include <optional>
#include <span>
#include <string>

#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// The profile command was not used as it is meant to be. The description is the whole message.
class ProfileCommandError : public LocalizedError {
 public:
  explicit ProfileCommandError(std::string description) : LocalizedError(std::move(description)) {}
};

/// Creates the profile `name`, or replaces the first stored one of that name, from what was typed.
/// Returns the confirmation for the user; a list that could not be saved is not noticed. Throws
/// ProfileCommandError before anything is written.
std::string createProfile(const std::string& name, const std::optional<std::string>& formatRaw,
                          const std::optional<std::string>& qualityRaw,
                          const std::optional<std::string>& outputRaw);

/// Runs the command that `arguments`, "--create-profile" first, spell out: reads its operands and
/// calls `createProfile`.
std::string runProfileCommand(std::span<const std::string> arguments);

}  // namespace orvane
