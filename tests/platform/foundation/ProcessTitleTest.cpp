#include "platform/foundation/ProcessTitle.h"

#include <gtest/gtest.h>

#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <array>
#include <vector>

namespace orvane {
namespace {

/// The arguments of a program, one behind the other as the kernel puts them, between other bytes.
class Arguments {
 public:
  explicit Arguments(const std::vector<std::string>& arguments) {
    std::vector<std::size_t> starts;
    for (const std::string& argument : arguments) {
      starts.push_back(bytes_.size());
      bytes_ += argument + '\0';
    }
    size_ = bytes_.size();
    bytes_ += "HOME=/";
    for (const std::size_t start : starts) pointers_.push_back(bytes_.data() + start);
    pointers_.push_back(nullptr);
  }

  int count() const { return static_cast<int>(pointers_.size()) - 1; }
  char** pointers() { return pointers_.data(); }

  /// The bytes that ps shows: all but the zeros at the end.
  std::string shown() const {
    return bytes_.substr(0, bytes_.find_last_not_of('\0', size_ - 1) + 1);
  }
  std::string behind() const { return bytes_.substr(size_); }

 private:
  std::string bytes_;
  std::size_t size_ = 0;
  std::vector<char*> pointers_;
};

#ifdef __linux__

std::string processName() {
  std::array<char, 16> name{};
  prctl(PR_GET_NAME, name.data());
  return name.data();
}

struct ProcessTitleTest : testing::Test {
  std::string ownName = processName();
  Arguments arguments{{"/usr/bin/tool", "photos/IMG_01.heic", "--output", "out"}};
  ProcessTitle title{arguments.count(), arguments.pointers()};

  ~ProcessTitleTest() override { prctl(PR_SET_NAME, ownName.c_str()); }
};

TEST_F(ProcessTitleTest, beginsAsTheProgramsName) {
  EXPECT_EQ(arguments.shown(), "tool");
  EXPECT_EQ(processName(), "tool");
}

TEST_F(ProcessTitleTest, isTheProgramsNameAndAText) {
  title.show("IMG_01.heic");
  EXPECT_EQ(arguments.shown(), "tool IMG_01.heic");
  title.show("12/200");
  EXPECT_EQ(arguments.shown(), "tool 12/200");
  EXPECT_EQ(processName(), "tool 12/200");
  title.show("");
  EXPECT_EQ(arguments.shown(), "tool");
  EXPECT_EQ(processName(), "tool");
}

TEST_F(ProcessTitleTest, hasRoomForAsMuchAsTheArgumentsHad) {
  const std::size_t room = std::string("/usr/bin/tool photos/IMG_01.heic --output out").size();
  title.show(std::string(1000, 'a'));
  EXPECT_EQ(arguments.shown(), "tool " + std::string(room - 5, 'a'));
  title.show(std::string(100000, 'a'));
  EXPECT_EQ(arguments.shown(), "tool " + std::string(room - 5, 'a'));
  EXPECT_EQ(arguments.behind(), "HOME=/");
}

TEST_F(ProcessTitleTest, endsWithAWholeCharacter) {
  title.show(std::string(39, 'a') + "é");  // its last byte has no room
  EXPECT_EQ(arguments.shown(), "tool " + std::string(39, 'a'));
  title.show("123456789é");
  EXPECT_EQ(processName(), "tool 123456789");
}

TEST_F(ProcessTitleTest, cutsNoTotalInTheProcessesName) {
  title.show("1234/56789");
  EXPECT_EQ(processName(), "tool 1234/56789");
  title.show("12345/67890");
  EXPECT_EQ(processName(), "tool 12345");
  title.show("IMG_20260101.heic");
  EXPECT_EQ(processName(), "tool IMG_202601");
}

TEST_F(ProcessTitleTest, leavesAloneWhatLiesApart) {
  Arguments apart({"tool", "a", "b"});
  std::string other = "elsewhere";
  apart.pointers()[1] = other.data();
  ProcessTitle(apart.count(), apart.pointers()).show("long text");
  EXPECT_EQ(apart.shown(), std::string("tool\0a\0b", 8));
  EXPECT_EQ(other, "elsewhere");
  EXPECT_EQ(processName(), "tool long text");
}

TEST(ProcessTitle, isNotShownWithoutArguments) {
  const std::string before = processName();
  char* none = nullptr;
  ProcessTitle(0, &none).show("text");
  ProcessTitle().show("text");
  EXPECT_EQ(processName(), before);
}

#else

TEST(ProcessTitle, isNotShown) {
  Arguments arguments({"tool", "a"});
  ProcessTitle(arguments.count(), arguments.pointers()).show("text");
  EXPECT_EQ(arguments.shown(), std::string("tool\0a", 6));
}

#endif

}  // namespace
}  // namespace orvane
