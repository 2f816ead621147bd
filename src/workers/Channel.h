#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <utility>

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Descriptor.h"
#include "workers/Message.h"

namespace orvane {

/// One end of a connection between two processes of this program, which passes whole messages, each
/// with at most one descriptor. Any thread may send; one at a time receives.
class Channel {
 public:
  /// Both ends. Throws std::system_error.
  static std::pair<Channel, Channel> makePair();

  explicit Channel(Descriptor socket) : socket_(std::move(socket)) {}

  /// Bytes that may go with a message. It costs less to copy so few than to share memory.
  static constexpr std::size_t maximumPayload = 32768;

  /// Whether the other end still takes messages. The descriptor is copied.
  bool send(const Message& message, int descriptor = -1, ByteView payload = {}) const;

  /// Whether there is a message, or the other end is gone, within this time.
  bool waitFor(std::chrono::milliseconds time) const;

  struct Received {
    Message message;
    Descriptor descriptor;
    std::size_t payloadSize = 0;
  };
  /// Waits for the next message; nothing once the other end is gone, and for anything that is not a
  /// message. The payload is put into `room`; a larger one makes no message.
  std::optional<Received> receive(std::span<std::uint8_t> room = {}) const;

  int descriptor() const { return socket_.number(); }

 private:
  Descriptor socket_;
};

}  // namespace orvane
