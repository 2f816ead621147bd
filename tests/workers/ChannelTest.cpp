#include "workers/Channel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace orvane {
namespace {

TEST(Channel, passesMessagesInTheirOrder) {
  const auto [left, right] = Channel::makePair();
  EXPECT_TRUE(left.send({.kind = Message::Kind::need, .value = 7}));
  EXPECT_TRUE(left.send({.kind = Message::Kind::decoded}));
  const auto first = right.receive();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->message.kind, Message::Kind::need);
  EXPECT_EQ(first->message.value, 7);
  EXPECT_FALSE(first->descriptor);
  EXPECT_EQ(right.receive()->message.kind, Message::Kind::decoded);
}

TEST(Channel, copiesADescriptor) {
  const auto [left, right] = Channel::makePair();
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const Descriptor reading(ends[0]);
  left.send({.kind = Message::Kind::job}, Descriptor(ends[1]).number());
  const auto received = right.receive();
  ASSERT_TRUE(received && received->descriptor);
  ASSERT_EQ(::write(received->descriptor.number(), "x", 1), 1);
  char letter = 0;
  ASSERT_EQ(read(reading.number(), &letter, 1), 1);
  EXPECT_EQ(letter, 'x');
}

TEST(Channel, endsWithItsOtherEnd) {
  auto ends = Channel::makePair();
  ends.second = Channel(Descriptor());
  EXPECT_FALSE(ends.first.receive());
  EXPECT_FALSE(ends.first.send({.kind = Message::Kind::start}));
}

}  // namespace
}  // namespace orvane
