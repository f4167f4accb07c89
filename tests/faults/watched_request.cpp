#include "tests/faults/watched_request.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/foundation/unique_fd.h"
#include "tests/support/orphans.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

using Clock = std::chrono::steady_clock;

/// Understands what the program says, a line at a time.
class Listener {
 public:
  Listener(const WatchedRequest& request, RequestEnd& end) : action_(request.action + ": "), end_(end) {
    for (std::size_t i = 0; i < request.names.size(); ++i) indices_[request.names[i]] = i;
    end_.files.resize(request.names.size());
  }

  /// Whether a file has ended with that.
  bool hear(std::string_view text) {
    end_.errors += text;
    open_ += text;
    bool progress = false;
    for (std::size_t end = open_.find('\n'); end != std::string::npos; end = open_.find('\n')) {
      progress = hearLine(open_.substr(0, end)) || progress;
      open_.erase(0, end + 1);
    }
    return progress;
  }

 private:
  bool hearLine(const std::string& line) {
    constexpr std::string_view kWrote = "wrote ", kInList = "  ";
    if (line.starts_with(action_)) {
      const std::string rest = line.substr(action_.size());
      if (rest.starts_with(kWrote)) return hearConverted(rest.substr(kWrote.size()));
      return hearOfFile(rest, true);
    }
    if (line.starts_with(kInList)) {
      const std::string rest = line.substr(kInList.size());
      if (const std::size_t colon = rest.find(": ");
          colon != std::string::npos && indices_.contains(rest.substr(0, colon)))
        end_.toldAsFailed.push_back(rest.substr(0, colon));
      return false;
    }
    return hearOfFile(line, false);
  }

  // The files are served in their order, so it is the first one that has not ended.
  bool hearConverted(const std::string& rest) {
    if (next_ == end_.files.size()) throw std::runtime_error("more was written than asked for: " + rest);
    FileEnd& file = end_.files[next_++];
    file.kind = FileEnd::Kind::converted;
    file.written = rest.substr(0, rest.find(" ("));
    return true;
  }

  /// "NAME: sentence", the failure or a notice about the file in work.
  bool hearOfFile(const std::string& line, bool failed) {
    const std::size_t colon = line.find(": ");
    const auto found = indices_.find(line.substr(0, colon));
    if (colon == std::string::npos || found == indices_.end()) return false;
    FileEnd& file = end_.files[found->second];
    const std::string sentence = line.substr(colon + 2);
    if (!failed) {
      file.decoderCrashed = file.decoderCrashed || sentence == "not decoded, its decoder broke down.";
      file.decoderWasForbidden =
          file.decoderWasForbidden ||
          sentence == "not decoded, its decoder asked the system for something forbidden.";
      return false;
    }
    file.kind = FileEnd::Kind::refused;
    file.reason = sentence;
    next_ = found->second + 1;
    return true;
  }

  const std::string action_;
  RequestEnd& end_;
  std::map<std::string, std::size_t> indices_;
  std::size_t next_ = 0;
  std::string open_;  // a line that has not ended yet
};

[[noreturn]] void become(const WatchedRequest& request, const std::string& list, int errors) {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (dup2(nothing, 0) < 0 || dup2(nothing, 1) < 0 || dup2(errors, 2) < 0) _exit(126);
  for (const std::string& pair : request.environment) putenv(const_cast<char*>(pair.c_str()));
  std::vector<std::string> words{request.program, "--verbose", "--ui=none", "--files-from=" + list,
                                 request.action};
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

/// Until the program closes its standard error. False when no file ended in time.
bool listen(int errors, Listener& listener, std::chrono::seconds patience) {
  std::array<char, 65536> buffer{};
  auto deadline = Clock::now() + patience;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd event{errors, POLLIN, 0};
    const int ready = left > 0 ? poll(&event, 1, static_cast<int>(left)) : 0;
    if (ready == 0) return false;
    if (ready < 0) continue;
    const ssize_t count = read(errors, buffer.data(), buffer.size());
    if (count == 0) return true;
    if (count > 0 && listener.hear({buffer.data(), static_cast<std::size_t>(count)}))
      deadline = Clock::now() + patience;
  }
}

}  // namespace

RequestEnd WatchedRequest::run(std::chrono::seconds patience) const {
  RequestEnd end;
  Listener listener(*this, end);
  const TemporaryFolder desk;
  std::string list;
  for (const std::string& name : names) list += folder + "/" + name + '\0';
  writeFile(desk.path("list"), list);

  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  UniqueFd ours(ends[0]), theirs(ends[1]);
  const Orphanage orphanage;
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) become(*this, desk.path("list"), theirs.get());
  theirs = UniqueFd();
  end.hung = !listen(ours.get(), listener, patience);
  if (end.hung) kill(child, SIGKILL);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  end.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  end.leftBehind = Orphanage::endChildren();
  return end;
}

}  // namespace ostra::test
