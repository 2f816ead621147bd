#include "workers/Channel.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <type_traits>
#include <utility>

namespace orvane {
namespace {

static_assert(std::is_trivially_copyable_v<Message>);

/// Room for one descriptor beside a message (cmsg(3)).
union Control {
  char bytes[CMSG_SPACE(sizeof(int))];
  cmsghdr alignment;
};

Descriptor descriptorIn(msghdr& header) {
  const cmsghdr* control = CMSG_FIRSTHDR(&header);
  if (control == nullptr || control->cmsg_type != SCM_RIGHTS) return {};
  int number = -1;
  std::memcpy(&number, CMSG_DATA(control), sizeof number);
  return Descriptor(number);
}

template <typename Call>
ssize_t repeatedWhenInterrupted(const Call& call) {
  ssize_t result = 0;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

}  // namespace

std::pair<Channel, Channel> Channel::makePair() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return {Channel(Descriptor(ends[0])), Channel(Descriptor(ends[1]))};
}

bool Channel::send(const Message& message, int descriptor, ByteView payload) const {
  std::array<iovec, 2> parts{{{const_cast<Message*>(&message), sizeof message},
                              {const_cast<std::uint8_t*>(payload.data()), payload.size()}}};
  msghdr header{};
  header.msg_iov = parts.data();
  header.msg_iovlen = parts.size();
  Control control{};
  if (descriptor >= 0) {
    header.msg_control = control.bytes;
    header.msg_controllen = sizeof control.bytes;
    cmsghdr* rights = CMSG_FIRSTHDR(&header);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(rights), &descriptor, sizeof descriptor);
  }
  return repeatedWhenInterrupted([&] {
           return sendmsg(socket_.number(), &header, MSG_NOSIGNAL);
         }) == static_cast<ssize_t>(sizeof message + payload.size());
}

bool Channel::waitFor(std::chrono::milliseconds time) const {
  pollfd waiting{socket_.number(), POLLIN, 0};
  return poll(&waiting, 1, static_cast<int>(time.count())) > 0;
}

std::optional<Channel::Received> Channel::receive(std::span<std::uint8_t> room) const {
  Received received;
  std::array<iovec, 2> parts{
      {{&received.message, sizeof received.message}, {room.data(), room.size()}}};
  Control control{};
  msghdr header{};
  header.msg_iov = parts.data();
  header.msg_iovlen = parts.size();
  header.msg_control = control.bytes;
  header.msg_controllen = CMSG_LEN(sizeof(int));  // CMSG_SPACE has room for two descriptors
  const ssize_t size =
      repeatedWhenInterrupted([&] { return recvmsg(socket_.number(), &header, MSG_CMSG_CLOEXEC); });
  if (size < 0) return std::nullopt;
  received.descriptor = descriptorIn(header);
  const bool isWhole = std::cmp_greater_equal(size, sizeof received.message) &&
                       (header.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0;
  if (!isWhole) return std::nullopt;
  received.payloadSize = static_cast<std::size_t>(size) - sizeof received.message;
  return received;
}

}  // namespace orvane
