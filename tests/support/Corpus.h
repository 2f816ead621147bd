#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace orvane::test {

/// The folder of foreign pictures that ORVANE_CORPUS names; empty when there is none.
inline std::filesystem::path corpusFolder() {
  const char* folder = std::getenv("ORVANE_CORPUS");
  return folder == nullptr ? std::filesystem::path() : std::filesystem::path(folder);
}

}  // namespace orvane::test

/// For tests that need foreign pictures: visible in the summary when they are not there.
#define ORVANE_REQUIRE_CORPUS() \
  if (::orvane::test::corpusFolder().empty()) GTEST_SKIP() << "ORVANE_CORPUS names no folder"
