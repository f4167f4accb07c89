#pragma once
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/foundation/bytes.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {

/// Messages over one end of a pair of connected stream sockets: a 64-bit length, then the bytes. One reader
/// and one writer at a time.
class Channel {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  Channel() = default;
  explicit Channel(UniqueFd socket) : socket_(std::move(socket)) {}
  /// Two ends that hear each other; both are closed in a program that is started. Throws `std::system_error`.
  static std::array<Channel, 2> pair();

  /// False when the other end is gone.
  bool send(ByteView message) const;

  enum class Silence { none, closed, late, malformed };
  struct Received {
    Bytes message;
    Silence silence = Silence::none;
  };
  /// The next message, of at most `most` bytes; otherwise why there is none.
  Received receive(std::size_t most, std::optional<Deadline> deadline = std::nullopt) const;

  int descriptor() const { return socket_.get(); }
  UniqueFd release() && { return std::move(socket_); }

 private:
  Silence read(void* into, std::size_t size, std::optional<Deadline> deadline) const;

  UniqueFd socket_;
};

/// Sends a few bytes together with descriptors, which stay the sender's; false when the other end is gone.
bool sendDescriptors(int socket, ByteView bytes, std::span<const int> descriptors);

/// What `sendDescriptors` sent: at most `most` bytes and four descriptors, closed in a program that is
/// started. Nothing when the other end is gone.
struct ReceivedDescriptors {
  Bytes bytes;
  std::array<UniqueFd, 4> descriptors;
};
std::optional<ReceivedDescriptors> receiveDescriptors(int socket, std::size_t most);

}  // namespace ostra
