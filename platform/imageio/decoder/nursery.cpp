#include "platform/imageio/decoder/nursery.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/file_contents.h"

namespace ostra {
namespace {

constexpr int kNotSet = 4;

bool send(const Channel& life, int number) {
  Bytes bytes(sizeof number);
  std::memcpy(bytes.data(), &number, sizeof number);
  return life.send(bytes);
}

/// Puts descriptors into their places. They are moved out of the way first: one of them may stand where
/// another belongs.
bool place(std::array<UniqueFd, 4>& descriptors) {
  constexpr std::array kPlaces{kInputDescriptor, kPixelsDescriptor, kChannelDescriptor};
  std::array<int, kPlaces.size()> high{};
  for (std::size_t i = 0; i < kPlaces.size(); ++i) {
    high[i] = fcntl(descriptors[i].get(), F_DUPFD, kChannelDescriptor + 1);
    if (high[i] < 0) return false;
  }
  for (std::size_t i = 0; i < kPlaces.size(); ++i) {
    if (dup2(high[i], kPlaces[i]) < 0) return false;
  }
  return true;
}

/// A worker without what it needs says so itself.
void prepareFor(const ReceivedDescriptors& request) {
  DecoderTask task;
  std::memcpy(&task, request.bytes.data(), sizeof task);
  try {
    if (task.encodes) {
      functionsOf(allCodecs()[*task.encodes]);
    } else {
      loadCodecsFor(readBeginning(request.descriptors[0].get(), kSignatureBytes));
    }
  } catch (const std::bad_alloc&) {
  }
}

int waitStatus(const siginfo_t& info) {
  return info.si_code == CLD_EXITED ? W_EXITCODE(info.si_status, 0) : W_EXITCODE(0, info.si_status);
}

}  // namespace

void Nursery::run() {
  for (;;) {
    std::vector<pollfd> events{{requests_.get(), POLLIN, 0}};
    for (const Child& child : children_) {
      events.push_back({child.ended ? -1 : child.process.get(), POLLIN, 0});
      events.push_back({child.life.descriptor(), 0, 0});  // a hang-up is told unasked
    }
    if (poll(events.data(), events.size(), -1) < 0) continue;
    for (std::size_t i = 0; i < children_.size(); ++i) {
      if (events[2 * i + 1].revents != 0) tellEnd(children_[i]);
      if (events[2 * i + 2].revents != 0 && children_[i].id >= 0) letGo(children_[i]);
    }
    std::erase_if(children_, [](const Child& child) { return child.id < 0; });
    if (events[0].revents != 0 && !serveRequest()) break;
  }
  for (Child& child : children_) letGo(child);
}

bool Nursery::serveRequest() {
  auto request = receiveDescriptors(requests_.get(), sizeof(DecoderTask));
  if (!request) return false;
  const bool whole = request->bytes.size() == sizeof(DecoderTask) &&
                     std::all_of(request->descriptors.begin(), request->descriptors.end(),
                                 [](const UniqueFd& descriptor) { return static_cast<bool>(descriptor); });
  // Here and not in the decoder, which may open nothing; and once for all decoders.
  if (whole) prepareFor(*request);
  if (whole) fork(std::move(*request));
  return true;
}

void Nursery::fork(ReceivedDescriptors request) {
  const pid_t id = ::fork();
  if (id == 0) become(std::move(request));
  Channel life(std::move(request.descriptors[3]));
  if (id < 0) return;  // closing tells it
  Child child{id, UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, id, 0))), std::move(life)};
  if (!child.process || !send(child.life, id)) return letGo(child);
  children_.push_back(std::move(child));
}

void Nursery::become(ReceivedDescriptors request) const {
  DecoderTask task;
  std::memcpy(&task, request.bytes.data(), sizeof task);
  if (!place(request.descriptors)) _exit(kNotSet);
  serve_(task, confinement_);
  _exit(kNotSet);
}

/// The process stays a zombie: its number must not be given to another while the other side may use it.
void Nursery::tellEnd(Child& child) {
  siginfo_t info{};
  if (waitid(P_PID, static_cast<id_t>(child.id), &info, WEXITED | WNOWAIT) != 0) return;
  child.ended = true;
  if (!send(child.life, waitStatus(info))) letGo(child);
}

void Nursery::letGo(Child& child) {
  if (!child.ended) kill(child.id, SIGKILL);
  waitpid(child.id, nullptr, 0);
  child.id = -1;
}

}  // namespace ostra
