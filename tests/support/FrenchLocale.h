#pragma once

#include <string>

#include "support/TemporaryFolder.h"

namespace orvane::test {

/// France's locale, whose decimal point is a comma, compiled for the environment variable LOCPATH,
/// as few systems have it installed.
class FrenchLocale {
 public:
  /// `charset` as localedef knows it: "UTF-8", "ISO-8859-1".
  explicit FrenchLocale(const std::string& charset);

  /// False where this system has no localedef or not what it compiles: tests then skip.
  bool exists() const;

  const std::string& name() const { return name_; }
  std::string locpath() const { return folder_.path().string(); }

 private:
  std::string name_;
  TemporaryFolder folder_;
};

}  // namespace orvane::test
