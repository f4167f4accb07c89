#include "tests/support/fault_injector.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/orphans.h"
#include "tests/support/system_calls.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/watchdog.h"

namespace ostra::test {

#if defined(__x86_64__)
namespace {

constexpr std::chrono::seconds kPatience(30);

using Registers = user_regs_struct;

long numberOf(const Registers& registers) { return static_cast<long>(registers.orig_rax); }

/// Whether the call is one on the program's own input, output or error.
bool isOnTerminal(const Registers& registers) {
  const long number = numberOf(registers);
  return (number == SYS_write || number == SYS_writev || number == SYS_read || number == SYS_fstat ||
          number == SYS_newfstatat || number == SYS_ioctl || number == SYS_close) &&
         registers.rdi <= STDERR_FILENO;
}

/// Whether the call wakes or waits for a thread through an event descriptor: the kernel never fails that.
bool isOnEvent(pid_t tracee, const Registers& registers) {
  if (numberOf(registers) != SYS_write && numberOf(registers) != SYS_read) return false;
  std::error_code none;
  const std::string link = "/proc/" + std::to_string(tracee) + "/fd/" + std::to_string(registers.rdi);
  return std::filesystem::read_symlink(link, none).native().starts_with("anon_inode:");
}

/// Empty for a call that is none on a file.
std::string nameOfFileCall(pid_t tracee, const Registers& registers) {
  const long number = numberOf(registers);
  // Anonymous memory is no file.
  if (number == SYS_mmap && static_cast<int>(registers.r8) < 0) return {};
  std::string name(fileCallName(number));
  if (isOnEvent(tracee, registers)) return {};
  if (!name.empty() && isOnTerminal(registers)) name += " of the terminal";
  return name;
}

std::string nameOf(pid_t tracee, const Registers& registers, bool ofAnyCall) {
  std::string name = nameOfFileCall(tracee, registers);
  if (name.empty() && ofAnyCall) name = "number " + std::to_string(numberOf(registers));
  return name;
}

bool isExchange(const Registers& registers) {
  return numberOf(registers) == SYS_renameat2 && (registers.r8 & RENAME_EXCHANGE) != 0;
}

std::string textAt(pid_t tracee, unsigned long address) {
  std::array<char, 4096> text{};
  const std::size_t toPageEnd = 4096 - address % 4096;
  iovec local{text.data(), text.size() - 1};
  std::array<iovec, 2> remote = {iovec{reinterpret_cast<void*>(address), toPageEnd},
                                 iovec{reinterpret_cast<void*>(address + toPageEnd), 4095 - toPageEnd}};
  if (process_vm_readv(tracee, &local, 1, remote.data(), 2, 0) < 0) return {};
  return text.data();
}

/// Watches one program to its end.
class Tracer {
 public:
  Tracer(pid_t program, const Injection& injection) : program_(program), injection_(injection) {}

  FaultedRun run() {
    while (!ended_) {
      int status = 0;
      const pid_t tracee = waitpid(-1, &status, __WALL);
      if (tracee < 0 && errno == EINTR) continue;
      if (tracee < 0) break;
      if (WIFSTOPPED(status)) {
        resume(tracee, stopped(tracee, WSTOPSIG(status), status >> 16));
        continue;
      }
      threads_.erase(tracee);
      if (tracee != program_) continue;
      ended_ = true;
      run_.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    run_.leftBehind = Orphanage::endChildren();
    return run_;
  }

 private:
  struct Thread {
    std::optional<int> pretend;  // what the call gives back, whatever it did
    bool seen = false;
    bool interrupted = false;  // when the fault last met it
  };

  // Every stop costs two switches between processes: calls are looked at only as long as one may count.
  void resume(pid_t tracee, int signal) {
    const bool mustAnswer = threads_[tracee].pretend.has_value();
    ptrace(mustAnswer || looksAtCalls() ? PTRACE_SYSCALL : PTRACE_CONT, tracee, nullptr, signal);
  }

  bool looksAtCalls() const {
    if (injection_.armsInThread && !hasThreads_) return false;
    const bool isOver = run_.struck && !injection_.fault->lasting;
    return !isOver || injection_.flushesAreEmpty || injection_.exchangeIsUnknown;
  }

  static bool isEntering(pid_t tracee) {
    __ptrace_syscall_info call{};
    const auto size = reinterpret_cast<void*>(sizeof call);
    return ptrace(PTRACE_GET_SYSCALL_INFO, tracee, size, &call) > 0 && call.op == PTRACE_SYSCALL_INFO_ENTRY;
  }

  // The signal to hand on.
  int stopped(pid_t tracee, int signal, int event) {
    Thread& thread = threads_[tracee];
    const bool first = !std::exchange(thread.seen, true);
    if (signal == (SIGTRAP | 0x80)) {
      isEntering(tracee) ? entered(tracee, thread) : left(tracee, thread);
      return 0;
    }
    if (event == PTRACE_EVENT_CLONE) hasThreads_ = true;
    if (event != 0 || signal == SIGTRAP || (first && signal == SIGSTOP)) return 0;
    return signal;
  }

  void entered(pid_t tracee, Thread& thread) {
    Registers registers{};
    if (ptrace(PTRACE_GETREGS, tracee, nullptr, &registers) != 0) return;
    const std::string name = nameOf(tracee, registers, injection_.countsAllCalls);
    if (!armed_) {
      armed_ = name.starts_with("open") &&
               textAt(tracee, name == "open" ? registers.rdi : registers.rsi).ends_with(injection_.armedBy);
    }
    if (armed_ && !name.empty() && isStruck(name, registers)) return strike(tracee, thread, registers);
    if (injection_.flushesAreEmpty && isFlush(numberOf(registers))) skip(tracee, thread, registers, 0);
    if (injection_.exchangeIsUnknown && isExchange(registers)) skip(tracee, thread, registers, -EINVAL);
  }

  // Counts the call.
  bool isStruck(const std::string& name, const Registers& registers) {
    run_.calls.push_back(name);
    if (!injection_.fault) return false;
    const Fault& fault = *injection_.fault;
    if (!fault.call.empty() && fault.call != name) return false;
    const std::size_t index = counted_++;
    return fault.lasting ? index >= fault.at && !isOnTerminal(registers) : index == fault.at;
  }

  void strike(pid_t tracee, Thread& thread, Registers& registers) {
    const Fault& fault = *injection_.fault;
    switch (fault.kind) {
      case Fault::Kind::death:
        run_.struck = true;
        kill(program_, SIGKILL);
        return;
      case Fault::Kind::error:
        if (fault.lasting && fault.error == EINTR && std::exchange(thread.interrupted, !thread.interrupted))
          return;
        run_.struck = true;
        skip(tracee, thread, registers, -fault.error);
        return;
      case Fault::Kind::shortWrite:
        if (!isCountedWrite(numberOf(registers)) || registers.rdx < 2) return;
        run_.struck = true;
        registers.rdx /= 2;
        ptrace(PTRACE_SETREGS, tracee, nullptr, &registers);
        return;
      case Fault::Kind::pause:
        run_.struck = true;
        fault.meanwhile(program_);
        return;
    }
  }

  static void skip(pid_t tracee, Thread& thread, Registers& registers, int answer) {
    thread.pretend = answer;
    // A descriptor is free after a closing that failed, too.
    if (numberOf(registers) == SYS_close) return;
    registers.orig_rax = static_cast<unsigned long long>(-1);  // no such call: the kernel does nothing
    ptrace(PTRACE_SETREGS, tracee, nullptr, &registers);
  }

  static void left(pid_t tracee, Thread& thread) {
    const auto pretend = std::exchange(thread.pretend, std::nullopt);
    if (!pretend) return;
    Registers registers{};
    if (ptrace(PTRACE_GETREGS, tracee, nullptr, &registers) != 0) return;
    registers.rax = static_cast<unsigned long long>(*pretend);
    ptrace(PTRACE_SETREGS, tracee, nullptr, &registers);
  }

  pid_t program_;
  const Injection& injection_;
  bool hasThreads_ = false;
  bool armed_ = false;
  bool ended_ = false;
  std::size_t counted_ = 0;
  std::map<pid_t, Thread> threads_;
  FaultedRun run_;
};

[[noreturn]] void becomeTracee(const std::vector<std::string>& arguments, const ProgramOptions& options,
                               const std::string& errorsPath) {
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  const int errors = open(errorsPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (dup2(null, 0) < 0 || dup2(null, 1) < 0 || dup2(errors, 2) < 0) _exit(126);
  for (const std::string& pair : options.environment) putenv(const_cast<char*>(pair.c_str()));
  std::vector<char*> words;
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  raise(SIGSTOP);
  execvp(words[0], words.data());
  _exit(127);
}

}  // namespace

bool canInjectFaults() {
  const pid_t child = fork();
  if (child == 0) _exit(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

FaultedRun runWithFault(const std::vector<std::string>& arguments, const Injection& injection,
                        const ProgramOptions& options) {
  const TemporaryFolder folder;
  const Orphanage orphanage;
  const pid_t program = fork();
  if (program < 0) throw std::runtime_error("cannot fork");
  if (program == 0) becomeTracee(arguments, options, folder.path("err"));
  int status = 0;
  waitpid(program, &status, 0);
  constexpr long kOptions =
      PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
  ptrace(PTRACE_SETOPTIONS, program, nullptr, kOptions);
  ptrace(injection.armsInThread ? PTRACE_CONT : PTRACE_SYSCALL, program, nullptr, 0);
  const Watchdog watchdog(program, kPatience);
  FaultedRun run = Tracer(program, injection).run();
  const Bytes errors = readFile(folder.path("err"));
  run.errors.assign(errors.begin(), errors.end());
  return run;
}

#else
bool canInjectFaults() { return false; }
FaultedRun runWithFault(const std::vector<std::string>&, const Injection&, const ProgramOptions&) {
  throw std::runtime_error("this machine's calls cannot be changed");
}
#endif

}  // namespace ostra::test
