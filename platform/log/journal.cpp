#include "platform/log/journal.h"

#include <atomic>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/foundation/printable.h"

namespace ostra {
namespace {

std::atomic<bool> verbose{false};

/// One datagram: bytes, or a descriptor that holds them.
struct Datagram {
  std::string bytes;
  int descriptor = -1;
};

/// Answers 0 or the errno.
int sendDatagram(int socket, const std::string& path, Datagram datagram) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return ENAMETOOLONG;
  std::memcpy(address.sun_path, path.data(), path.size());

  iovec part{datagram.bytes.data(), datagram.bytes.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr message{};
  message.msg_name = &address;
  message.msg_namelen = sizeof address;
  if (datagram.descriptor < 0) {
    message.msg_iov = &part;
    message.msg_iovlen = 1;
  } else {
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &datagram.descriptor, sizeof(int));
  }
  return sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT) < 0 ? errno : 0;
}

/// A sealed memory file with these bytes, which the journal accepts in place of a datagram; none on any
/// failure.
UniqueFd sealedCopy(const std::string& bytes) {
  UniqueFd file(memfd_create("ostra-log", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file || ::write(file.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
    return {};
  const int seals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
  if (fcntl(file.get(), F_ADD_SEALS, seals) != 0) return {};
  return file;
}

void writeLineToStandardError(const std::string& text) {
  const std::string line = printable(text) + "\n";
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

JournalSink::JournalSink(std::string socketPath)
    : socketPath_(std::move(socketPath)), socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}

bool JournalSink::isEnabled(LogLevel level) {
  return level == LogLevel::error || verbose || journalIsThere();
}

void JournalSink::write(const std::string& subsystem, const std::string& category, LogLevel level,
                        const LogMessage& message) {
  if (verbose) writeLineToStandardError(message.text);
  if (journalIsThere()) send(journalRecord(subsystem, category, level, message));
}

bool JournalSink::journalIsThere() const { return socket_ && access(socketPath_.c_str(), W_OK) == 0; }

void JournalSink::send(const std::string& record) const {
  const int error = sendDatagram(socket_.get(), socketPath_, {record});
  if (error != EMSGSIZE && error != ENOBUFS) return;
  const UniqueFd copy = sealedCopy(record);
  if (copy) sendDatagram(socket_.get(), socketPath_, {"", copy.get()});
}

// Never destroyed: a background thread may still log while the process ends.
LogSink& LogSink::standard() {
  static JournalSink* const sink = new JournalSink;
  return *sink;
}

void setLogVerbose(bool on) { verbose = on; }

}  // namespace ostra
