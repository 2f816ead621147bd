#include "platform/foundation/ProcessTitle.h"

#ifdef __linux__

#include <sys/prctl.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace orvane {
namespace {

constexpr std::size_t longestProgram = 64;  ///< bytes
constexpr std::size_t longestTitle = 1024;  ///< bytes
constexpr std::size_t longestName = 15;  ///< bytes, the kernel's TASK_COMM_LEN without the final 0

/// The strings of `argv` as far as they lie one behind the other, as the kernel puts them.
std::span<char> roomOf(int argc, char** argv) {
  if (argc < 1) return {};
  char* end = argv[0];
  for (int i = 0; i < argc && argv[i] == end; ++i) end += std::strlen(end) + 1;
  return {argv[0], end};
}

std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

/// At most `size` bytes of `text`, in whole characters of UTF-8.
std::string_view cut(std::string_view text, std::size_t size) {
  if (text.size() <= size) return text;
  const auto continuesACharacter = [&] { return (text[size] & 0xC0) == 0x80; };
  while (size > 0 && continuesACharacter()) --size;
  return text.substr(0, size);
}

/// Of the process and of the calling thread (proc(5), /proc/PID/comm).
void setName(std::string_view title) {
  if (title.size() > longestName) title = cut(title.substr(0, title.rfind('/')), longestName);
  std::array<char, longestName + 1> name{};
  title.copy(name.data(), longestName);
  prctl(PR_SET_NAME, name.data());
}

}  // namespace

ProcessTitle::ProcessTitle(int argc, char** argv) : room_(roomOf(argc, argv)) {
  if (room_.empty()) return;
  program_ = cut(lastComponent(argv[0]), longestProgram);
  std::ranges::fill(room_, '\0');
  show({});
}

// Allocates nothing: it is called by processes that may have no memory left.
void ProcessTitle::show(std::string_view text) const noexcept {
  if (room_.empty()) return;
  std::array<char, longestTitle> title{};
  std::size_t size = program_.copy(title.data(), longestProgram);
  if (!text.empty()) {
    title[size++] = ' ';
    size += text.copy(title.data() + size, title.size() - size);
  }
  const std::string_view whole(title.data(), size);
  setName(whole);
  const std::span<char> room = room_.first(std::min(room_.size(), title.size()));
  const std::size_t shown = cut(whole, room.size() - 1).size();
  std::fill(std::copy_n(whole.begin(), shown, room.begin()), room.end(), '\0');
}

}  // namespace orvane

#else

namespace orvane {
ProcessTitle::ProcessTitle(int, char**) {}
void ProcessTitle::show(std::string_view) const noexcept {}
}  // namespace orvane

#endif
