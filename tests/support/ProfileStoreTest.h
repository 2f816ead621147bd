#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace orvane::test {

/// Tests that use the store of this process: a temporary folder, which the whole test program has
/// in place of the user's own. It does not exist when a test starts.
struct ProfileStoreTest : testing::Test {
  ProfileStoreTest();

  static std::filesystem::path folder();
  static std::filesystem::path file();
  static void writeProfiles(std::string_view json);
  static std::string profilesText();
};

}  // namespace orvane::test
