#pragma once

#include <optional>
#include <span>
#include <string>

#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// The operands of the profile command are wrong. The description is the whole message.
class ProfileCommandError : public LocalizedError {
 public:
  explicit ProfileCommandError(std::string description) : LocalizedError(std::move(description)) {}
};

/// Creates the profile `name`, or replaces the first stored one of that name. The arguments are the
/// texts as typed. Returns the confirmation for the user, even when the list could not be saved.
/// Throws ProfileCommandError before anything is written.
std::string createProfile(const std::string& name, const std::optional<std::string>& formatRaw,
                          const std::optional<std::string>& qualityRaw,
                          const std::optional<std::string>& outputRaw);

/// Reads the operands in `arguments`, whose first element is "--create-profile", and calls
/// `createProfile`.
std::string runProfileCommand(std::span<const std::string> arguments);

}  // namespace orvane
