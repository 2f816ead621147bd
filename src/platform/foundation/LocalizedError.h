#pragma once

#include <exception>
#include <string>
#include <utility>

namespace orvane {

/// An error whose description is a sentence for the user. `what()` and `localizedDescription()`
/// are that sentence.
class LocalizedError : public std::exception {
 public:
  const std::string& localizedDescription() const noexcept { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 protected:
  explicit LocalizedError(std::string description) : description_(std::move(description)) {}

 private:
  std::string description_;
};

}  // namespace orvane
