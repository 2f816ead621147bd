#include "support/TemporaryFolder.h"

#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace orvane::test {

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "orvane-test.XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::names() const {
  std::vector<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    found.push_back(entry.path().filename().string());
  }
  std::ranges::sort(found);
  return found;
}

Bytes readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void writeFile(const std::filesystem::path& path, ByteView bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

void writeFile(const std::filesystem::path& path, std::string_view text) {
  writeFile(path, ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

}  // namespace orvane::test
