#include "workers/Channel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvane {
namespace {

TEST(Channel, passesMessagesInTheirOrder) {
  const auto [left, right] = Channel::makePair();
  EXPECT_TRUE(left.send({.kind = Message::Kind::need, .bytes = 7}));
  EXPECT_TRUE(left.send({.kind = Message::Kind::decoded}));
  const auto first = right.receive();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->message.kind, Message::Kind::need);
  EXPECT_EQ(first->message.bytes, 7u);
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

TEST(Channel, passesAPayloadThatHasRoom) {
  const auto [left, right] = Channel::makePair();
  const Bytes payload(Channel::maximumPayload, 5);
  Bytes room(Channel::maximumPayload);
  EXPECT_TRUE(left.send({.kind = Message::Kind::done}, -1, payload));
  const auto received = right.receive(room);
  ASSERT_TRUE(received);
  EXPECT_EQ(received->payloadSize, payload.size());
  EXPECT_EQ(room, payload);

  EXPECT_TRUE(left.send({.kind = Message::Kind::done}, -1, payload));
  EXPECT_FALSE(right.receive({room.data(), room.size() - 1}));
}

TEST(Channel, knowsWhetherThereIsAMessage) {
  auto [left, right] = Channel::makePair();
  EXPECT_FALSE(right.waitFor(std::chrono::milliseconds(1)));
  left.send({.kind = Message::Kind::start});
  EXPECT_TRUE(right.waitFor(std::chrono::hours(1)));
  right.receive();
  left = Channel(Descriptor());
  EXPECT_TRUE(right.waitFor(std::chrono::hours(1)));
}

/// The lowest number that is free.
int nextDescriptor() { return Descriptor(dup(STDERR_FILENO)).number(); }

/// A worker that its picture has taken over may send any bytes and descriptors.
TEST(Channel, keepsNothingOfWhatIsNoMessage) {
  const auto [left, right] = Channel::makePair();
  const int before = nextDescriptor();
  Message message;
  iovec part{&message, sizeof message};
  alignas(cmsghdr) char control[CMSG_SPACE(2 * sizeof(int))]{};
  msghdr header{};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  header.msg_control = control;
  header.msg_controllen = sizeof control;
  cmsghdr* const rights = CMSG_FIRSTHDR(&header);
  rights->cmsg_level = SOL_SOCKET;
  rights->cmsg_type = SCM_RIGHTS;
  for (const std::size_t descriptors : {1, 2}) {
    rights->cmsg_len = CMSG_LEN(descriptors * sizeof(int));
    header.msg_controllen = rights->cmsg_len;
    part.iov_len = descriptors == 2 ? sizeof message : sizeof message - 1;
    ASSERT_GT(sendmsg(left.descriptor(), &header, 0), 0);
    EXPECT_FALSE(right.receive());
    EXPECT_EQ(nextDescriptor(), before);
  }
}

TEST(Channel, endsWithItsOtherEnd) {
  auto ends = Channel::makePair();
  ends.second = Channel(Descriptor());
  EXPECT_FALSE(ends.first.receive());
  EXPECT_FALSE(ends.first.send({.kind = Message::Kind::start}));
}

}  // namespace
}  // namespace orvane
