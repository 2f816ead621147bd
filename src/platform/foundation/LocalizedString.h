#pragma once

#include <string>
#include <string_view>

namespace orvane::LocalizedString {

/// Sets the process's locale to the user's. All messages, the system's included, come in UTF-8
/// whatever the locale's character set is. Must be called before any thread is started.
void takeUsersLocale();

/// The translation of `key` in the message catalogue `orvane-cli`, or `defaultText`, which is
/// French, when there is none.
std::string lookUp(const char* key, std::string_view defaultText);

/// `format` with its first "%@" replaced by `value`.
std::string substituting(std::string_view format, std::string_view value);

}  // namespace orvane::LocalizedString
