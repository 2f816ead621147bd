#pragma once

#include <span>
#include <string>
#include <string_view>

namespace orvane {

/// The title of this process, "program text". ps and top show it in place of the command line and
/// of the process's name. Linux only; elsewhere the class does nothing. Copies write to the same
/// place. One thread at a time.
class ProcessTitle {
 public:
  /// Shows nothing.
  ProcessTitle() = default;

  /// Takes the room of main()'s arguments, whose strings are lost, and shows the program's name.
  ProcessTitle(int argc, char** argv);

  /// Shows the program's name and `text`, or the name alone when it is empty. Never fails: what has
  /// no room is cut off, at a whole character. The name of the process and of the calling thread
  /// has room for 15 bytes; where the title is longer, it ends before the last "/", so that
  /// "12/200" becomes "12" rather than "12/2".
  void show(std::string_view text) const noexcept;

 private:
  std::string program_;
  std::span<char> room_;  ///< of the command line; its last byte stays 0
};

}  // namespace orvane
