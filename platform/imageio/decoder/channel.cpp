#include "platform/imageio/decoder/channel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

namespace ostra {
namespace {

constexpr std::size_t kMostDescriptors = 4;

int remaining(std::optional<Channel::Deadline> deadline) {
  if (!deadline) return -1;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1'000'000));
}

// A confined process may write and read, and nothing of sockets; SIGPIPE is ignored in every process of ours.
bool writeAll(int socket, const void* data, std::size_t size) {
  const auto* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t count = write(socket, bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

union DescriptorSpace {
  cmsghdr header;
  char bytes[CMSG_SPACE(kMostDescriptors * sizeof(int))];
};

void takeDescriptors(msghdr& message, std::array<UniqueFd, kMostDescriptors>& into) {
  for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
    if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) continue;
    const std::size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
      int descriptor = -1;
      std::memcpy(&descriptor, CMSG_DATA(header) + i * sizeof(int), sizeof descriptor);
      UniqueFd owned(descriptor);
      if (i < into.size()) into[i] = std::move(owned);
    }
  }
}

}  // namespace

std::array<Channel, 2> Channel::pair() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  return {Channel(UniqueFd(ends[0])), Channel(UniqueFd(ends[1]))};
}

bool Channel::send(ByteView message) const {
  const std::uint64_t size = message.size();
  return writeAll(socket_.get(), &size, sizeof size) &&
         writeAll(socket_.get(), message.data(), message.size());
}

Channel::Silence Channel::read(void* into, std::size_t size, std::optional<Deadline> deadline) const {
  auto* bytes = static_cast<char*>(into);
  while (size > 0) {
    // Without a deadline the read itself waits: a confined process has no poll.
    pollfd event{socket_.get(), POLLIN, 0};
    const int ready = deadline ? poll(&event, 1, remaining(deadline)) : 1;
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return Silence::late;
    const ssize_t count = ::read(socket_.get(), bytes, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return Silence::closed;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return Silence::none;
}

Channel::Received Channel::receive(std::size_t most, std::optional<Deadline> deadline) const {
  std::uint64_t size = 0;
  if (const Silence silence = read(&size, sizeof size, deadline); silence != Silence::none)
    return {{}, silence};
  if (size > most) return {{}, Silence::malformed};
  Bytes message(static_cast<std::size_t>(size));
  const Silence silence = read(message.data(), message.size(), deadline);
  return {std::move(message), silence};
}

bool sendDescriptors(int socket, ByteView bytes, std::span<const int> descriptors) {
  iovec part{const_cast<std::uint8_t*>(bytes.data()), bytes.size()};
  DescriptorSpace space{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = space.bytes;
  message.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
  cmsghdr* header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(descriptors.size_bytes());
  std::memcpy(CMSG_DATA(header), descriptors.data(), descriptors.size_bytes());
  ssize_t sent = 0;
  do sent = sendmsg(socket, &message, MSG_NOSIGNAL);
  while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(bytes.size());
}

std::optional<ReceivedDescriptors> receiveDescriptors(int socket, std::size_t most) {
  ReceivedDescriptors received;
  received.bytes.resize(most);
  iovec part{received.bytes.data(), most};
  DescriptorSpace space{};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = space.bytes;
  message.msg_controllen = sizeof space;
  ssize_t count = 0;
  do count = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
  while (count < 0 && errno == EINTR);
  if (count <= 0) return std::nullopt;
  takeDescriptors(message, received.descriptors);
  received.bytes.resize(static_cast<std::size_t>(count));
  return received;
}

}  // namespace ostra
