#include "support/Processes.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace orvane::test {

std::vector<pid_t> childrenOf(pid_t parent) {
  std::vector<pid_t> children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    std::ifstream stat(entry.path() / "stat");
    pid_t process = 0;
    pid_t itsParent = 0;
    std::string name, state;
    if (stat >> process >> name >> state >> itsParent && itsParent == parent && state != "Z") {
      children.push_back(process);
    }
  }
  return children;
}

}  // namespace orvane::test
