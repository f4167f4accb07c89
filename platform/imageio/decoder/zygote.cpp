#include "platform/imageio/decoder/zygote.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <system_error>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/imageio/decoder/nursery.h"

namespace ostra {
namespace {

constexpr std::size_t kMostLifeBytes = 16;
// A fork takes a millisecond; a machine that swaps, seconds.
constexpr std::chrono::seconds kBirth(30);

template <class T>
ByteView bytesOf(const T& value) {
  return {reinterpret_cast<const std::uint8_t*>(&value), sizeof value};
}

std::optional<int> numberOf(const Channel::Received& received) {
  int number = 0;
  if (received.silence != Channel::Silence::none || received.message.size() != sizeof number)
    return std::nullopt;
  std::memcpy(&number, received.message.data(), sizeof number);
  return number;
}

// A terminal sends its interrupt to every process of the group; the parent decides when decoding ends. A
// parent that is gone, and a memory file that may not grow, are errors of the call.
void ignoreSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGPIPE, SIGXFSZ}) {
    std::signal(signal, SIG_IGN);
  }
}

}  // namespace

std::optional<int> DecoderProcess::end(Channel::Deadline deadline) const {
  return numberOf(life.receive(kMostLifeBytes, deadline));
}

Zygote::Zygote(KernelConfinement kernel, Serve serve) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  requests_ = UniqueFd(ends[0]);
  UniqueFd theirs(ends[1]);
  const Confinement confinement(kernel);
  id_ = fork();
  if (id_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (id_ > 0) return;

  requests_ = UniqueFd();
  ignoreSignals();
  tzset();  // a library that asks for the time zone later finds no file
  Nursery nursery(std::move(theirs), confinement, std::move(serve));
  nursery.run();
  _exit(0);
}

Zygote::~Zygote() {
  // Nothing of it is worth a farewell: its decoders end with it.
  kill(id_, SIGKILL);
  while (waitpid(id_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::optional<DecoderProcess> Zygote::decoderFor(int file, int pixelFile, const DecoderTask& task) const {
  auto [channel, theirChannel] = Channel::pair();
  auto [life, theirLife] = Channel::pair();
  const std::array descriptors{file, pixelFile, theirChannel.descriptor(), theirLife.descriptor()};
  if (!sendDescriptors(requests_.get(), bytesOf(task), descriptors)) return std::nullopt;
  theirChannel = Channel();
  theirLife = Channel();
  const auto id = numberOf(life.receive(kMostLifeBytes, std::chrono::steady_clock::now() + kBirth));
  if (!id || *id <= 0) return std::nullopt;
  return DecoderProcess{*id, std::move(channel), std::move(life)};
}

}  // namespace ostra
