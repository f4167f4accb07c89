#include "tests/support/fault_injector.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace ostra::test {

#if defined(__x86_64__)
namespace {

struct NamedCall {
  long number;
  std::string_view name;
};

/// Every call that looks at, opens, writes, moves or removes files.
constexpr std::array kFileCalls = {
    NamedCall{SYS_open, "open"},
    NamedCall{SYS_openat, "openat"},
    NamedCall{SYS_read, "read"},
    NamedCall{SYS_pread64, "pread64"},
    NamedCall{SYS_write, "write"},
    NamedCall{SYS_pwrite64, "pwrite64"},
    NamedCall{SYS_writev, "writev"},
    NamedCall{SYS_close, "close"},
    NamedCall{SYS_fstat, "fstat"},
    NamedCall{SYS_newfstatat, "newfstatat"},
    NamedCall{SYS_statx, "statx"},
    NamedCall{SYS_lseek, "lseek"},
    NamedCall{SYS_ftruncate, "ftruncate"},
    NamedCall{SYS_fallocate, "fallocate"},
    NamedCall{SYS_fsync, "fsync"},
    NamedCall{SYS_fdatasync, "fdatasync"},
    NamedCall{SYS_mkdir, "mkdir"},
    NamedCall{SYS_mkdirat, "mkdirat"},
    NamedCall{SYS_rmdir, "rmdir"},
    NamedCall{SYS_unlink, "unlink"},
    NamedCall{SYS_unlinkat, "unlinkat"},
    NamedCall{SYS_rename, "rename"},
    NamedCall{SYS_renameat, "renameat"},
    NamedCall{SYS_renameat2, "renameat2"},
    NamedCall{SYS_link, "link"},
    NamedCall{SYS_linkat, "linkat"},
    NamedCall{SYS_symlink, "symlink"},
    NamedCall{SYS_readlink, "readlink"},
    NamedCall{SYS_readlinkat, "readlinkat"},
    NamedCall{SYS_access, "access"},
    NamedCall{SYS_faccessat, "faccessat"},
    NamedCall{SYS_faccessat2, "faccessat2"},
    NamedCall{SYS_chmod, "chmod"},
    NamedCall{SYS_fchmod, "fchmod"},
    NamedCall{SYS_fchmodat, "fchmodat"},
    NamedCall{SYS_chown, "chown"},
    NamedCall{SYS_fchown, "fchown"},
    NamedCall{SYS_fchownat, "fchownat"},
    NamedCall{SYS_getxattr, "getxattr"},
    NamedCall{SYS_fgetxattr, "fgetxattr"},
    NamedCall{SYS_setxattr, "setxattr"},
    NamedCall{SYS_fsetxattr, "fsetxattr"},
    NamedCall{SYS_listxattr, "listxattr"},
    NamedCall{SYS_flistxattr, "flistxattr"},
    NamedCall{SYS_removexattr, "removexattr"},
    NamedCall{SYS_fremovexattr, "fremovexattr"},
    NamedCall{SYS_getdents64, "getdents64"},
    NamedCall{SYS_utimensat, "utimensat"},
    NamedCall{SYS_ioctl, "ioctl"},
    NamedCall{SYS_mmap, "mmap"},
    NamedCall{SYS_copy_file_range, "copy_file_range"},
    NamedCall{SYS_statfs, "statfs"},
    NamedCall{SYS_fstatfs, "fstatfs"},
};

std::optional<std::string_view> fileCall(const user_regs_struct& registers) {
  const long number = static_cast<long>(registers.orig_rax);
  // Anonymous memory is no file.
  if (number == SYS_mmap && static_cast<int>(registers.r8) < 0) return std::nullopt;
  for (const NamedCall& call : kFileCalls) {
    if (call.number == number) return call.name;
  }
  return std::nullopt;
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

constexpr auto kPatience = std::chrono::seconds(30);

/// Ends a program that hangs, so that a test fails instead of waiting for ever.
class Watchdog {
 public:
  explicit Watchdog(pid_t program) : thread_([this, program] { watch(program); }) {}
  ~Watchdog() {
    {
      const std::lock_guard lock(mutex_);
      over_ = true;
    }
    ended_.notify_one();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void watch(pid_t program) {
    std::unique_lock lock(mutex_);
    if (!ended_.wait_for(lock, kPatience, [this] { return over_; })) kill(program, SIGABRT);
  }

  std::mutex mutex_;
  std::condition_variable ended_;
  bool over_ = false;
  std::thread thread_;
};

/// Watches one program to its end.
class Tracer {
 public:
  Tracer(pid_t program, std::string armedBy, const std::optional<Fault>& fault)
      : program_(program), armedBy_(std::move(armedBy)), fault_(fault) {}

  FaultedRun run() {
    while (true) {
      int status = 0;
      const pid_t tracee = waitpid(-1, &status, __WALL);
      if (tracee < 0) {
        if (errno == EINTR) continue;
        return run_;
      }
      if (WIFSTOPPED(status)) {
        resume(tracee, stopped(tracee, WSTOPSIG(status), status >> 16));
      } else if (tracee == program_) {
        run_.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      }
    }
  }

 private:
  struct Thread {
    bool inCall = false;
    std::optional<int> pretend;  // the error that the skipped call gives back
    bool seen = false;
  };

  static void resume(pid_t tracee, int signal) { ptrace(PTRACE_SYSCALL, tracee, nullptr, signal); }

  // The signal to hand on.
  int stopped(pid_t tracee, int signal, int event) {
    Thread& thread = threads_[tracee];
    const bool first = !std::exchange(thread.seen, true);
    if (signal == (SIGTRAP | 0x80)) {
      thread.inCall = !thread.inCall;
      thread.inCall ? entered(tracee, thread) : left(tracee, thread);
      return 0;
    }
    if (event != 0 || signal == SIGTRAP || (first && signal == SIGSTOP)) return 0;
    return signal;
  }

  void entered(pid_t tracee, Thread& thread) {
    user_regs_struct registers{};
    if (ptrace(PTRACE_GETREGS, tracee, nullptr, &registers) != 0) return;
    const auto call = fileCall(registers);
    if (!call) return;
    if (!armed_) armed_ = *call == "openat" && textAt(tracee, registers.rsi).ends_with(armedBy_);
    if (!armed_) return;
    const std::size_t index = run_.calls.size();
    run_.calls.emplace_back(*call);
    if (!fault_ || fault_->at != index) return;
    if (!fault_->error) {
      kill(program_, SIGKILL);
      return;
    }
    thread.pretend = fault_->error;
    registers.orig_rax = static_cast<unsigned long long>(-1);  // no such call: the kernel does nothing
    ptrace(PTRACE_SETREGS, tracee, nullptr, &registers);
  }

  static void left(pid_t tracee, Thread& thread) {
    const auto pretend = std::exchange(thread.pretend, std::nullopt);
    if (!pretend) return;
    user_regs_struct registers{};
    if (ptrace(PTRACE_GETREGS, tracee, nullptr, &registers) != 0) return;
    registers.rax = static_cast<unsigned long long>(-*pretend);
    ptrace(PTRACE_SETREGS, tracee, nullptr, &registers);
  }

  pid_t program_;
  std::string armedBy_;
  std::optional<Fault> fault_;
  bool armed_ = false;
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

FaultedRun runWithFault(const std::vector<std::string>& arguments, const std::string& armedBy,
                        const std::optional<Fault>& fault, const ProgramOptions& options) {
  const TemporaryFolder folder;
  const pid_t program = fork();
  if (program < 0) throw std::runtime_error("cannot fork");
  if (program == 0) becomeTracee(arguments, options, folder.path("err"));
  int status = 0;
  waitpid(program, &status, 0);
  constexpr long kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK |
                            PTRACE_O_TRACEVFORK | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
  ptrace(PTRACE_SETOPTIONS, program, nullptr, kOptions);
  ptrace(PTRACE_SYSCALL, program, nullptr, 0);
  const Watchdog watchdog(program);
  FaultedRun run = Tracer(program, armedBy, fault).run();
  const Bytes errors = readFile(folder.path("err"));
  run.errors.assign(errors.begin(), errors.end());
  return run;
}

#else
bool canInjectFaults() { return false; }
FaultedRun runWithFault(const std::vector<std::string>&, const std::string&, const std::optional<Fault>&,
                        const ProgramOptions&) {
  throw std::runtime_error("this machine's calls cannot be changed");
}
#endif

}  // namespace ostra::test
