#pragma once

#include <string>
#include <string_view>

namespace orvane::LocalizedString {

/// Makes the user's locale the process's own. Messages, the system's too, come in UTF-8 whatever
/// the locale's character set. To be called before any thread is started.
void takeUsersLocale();

/// The translation of `key` in the message catalogue `orvane-cli`, or `defaultText` where there is
/// none. An environment without a catalogue therefore speaks the tool's own language, French.
std::string lookUp(const char* key, std::string_view defaultText);

/// `format` with its first "%@" replaced by `value`.
std::string substituting(std::string_view format, std::string_view value);

}  // namespace orvane::LocalizedString
