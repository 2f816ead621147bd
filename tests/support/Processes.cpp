#include "support/Processes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace orvane::test {

std::vector<pid_t> childrenOf(pid_t parent) {
  std::vector<pid_t> children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream stat(entry.path() / "stat");
    std::string text;
    std::getline(stat, text, '\0');
    // "process (name) state parent …"; the name may hold anything (proc(5)).
    std::istringstream behindTheName(text.substr(std::min(text.rfind(')') + 1, text.size())));
    pid_t itsParent = 0;
    std::string state;
    if (behindTheName >> state >> itsParent && itsParent == parent && state != "Z") {
      children.push_back(std::stoi(text));
    }
  }
  return children;
}

std::string nameOf(pid_t process) {
  std::ifstream comm("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(comm, name);
  return name;
}

}  // namespace orvane::test
