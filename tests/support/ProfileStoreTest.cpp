#include "support/ProfileStoreTest.h"

#include <stdlib.h>

#include "profiles/JSONFileStore.h"
#include "support/TemporaryFolder.h"

namespace orvane::test {
namespace {

/// Fixes the store's place before the first test, whichever that is.
class StoreEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    setenv("XDG_DATA_HOME", data_.path().c_str(), 1);
    ASSERT_EQ(JSONFileStore::folder().path(), data_ / "Orvane");
  }

 private:
  TemporaryFolder data_;
};

[[maybe_unused]] const auto* const environment =
    testing::AddGlobalTestEnvironment(new StoreEnvironment);

}  // namespace

ProfileStoreTest::ProfileStoreTest() { std::filesystem::remove_all(folder()); }

std::filesystem::path ProfileStoreTest::folder() { return JSONFileStore::folder().path(); }

std::filesystem::path ProfileStoreTest::file() { return folder() / "exportProfiles.json"; }

void ProfileStoreTest::writeProfiles(std::string_view json) {
  std::filesystem::create_directories(folder());
  writeFile(file(), json);
}

std::string ProfileStoreTest::profilesText() {
  const Bytes bytes = readFile(file());
  return std::string(bytes.begin(), bytes.end());
}

}  // namespace orvane::test
