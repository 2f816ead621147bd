#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "platform/foundation/Descriptor.h"
#include "workers/Message.h"

namespace orvane {

/// One end of a connection between two processes of this program, which passes whole messages, each
/// with at most one descriptor. One thread at a time.
class Channel {
 public:
  /// Both ends. Throws std::system_error.
  static std::pair<Channel, Channel> makePair();

  explicit Channel(Descriptor socket) : socket_(std::move(socket)) {}

  /// Whether the other end still takes messages. The descriptor is copied.
  bool send(const Message& message, int descriptor = -1) const;

  struct Received {
    Message message;
    Descriptor descriptor;
  };
  /// Waits for the next message; nothing once the other end is gone.
  std::optional<Received> receive() const;

  int descriptor() const { return socket_.number(); }

 private:
  Descriptor socket_;
};

}  // namespace orvane
