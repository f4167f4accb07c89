#pragma once
#include <string>

#include "platform/foundation/unique_fd.h"
#include "platform/log/log.h"

namespace ostra {

/// Sends each line to the system's journal as one structured record, in its native datagram protocol:
/// `FIELD=value` lines, or for a value of several lines the name, its length (64 bits, little-endian) and the
/// bytes. Never blocks, never raises a signal; a line that the journal does not take is lost.
class JournalSink : public LogSink {
 public:
  explicit JournalSink(std::string socketPath = "/run/systemd/journal/socket");

  /// Errors are always worth making; the rest is when somebody listens: the journal, or a verbose run's user.
  bool isEnabled(LogLevel level) override;
  void write(const std::string& subsystem, const std::string& category, LogLevel level,
             const LogMessage& message) override;

 private:
  bool journalIsThere() const;
  void send(const std::string& record) const;

  const std::string socketPath_;
  const UniqueFd socket_;
};

/// The record of one line, as it goes through the socket.
std::string journalRecord(const std::string& subsystem, const std::string& category, LogLevel level,
                          const LogMessage& message);

}  // namespace ostra
