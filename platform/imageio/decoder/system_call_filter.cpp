#include "platform/imageio/decoder/system_call_filter.h"

#include <cerrno>
#include <initializer_list>
#include <memory>
#include <system_error>

#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/foundation/unique_fd.h"
#include "platform/imageio/decoder/confinement.h"

namespace ostra {
namespace {

void check(int result, const char* what) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), what);
}

/// Memory, threads, time, and the two descriptors that are read. None of them names a path or a process.
constexpr std::initializer_list<int> kAllowed{
    SCMP_SYS(read),           SCMP_SYS(pread64),       SCMP_SYS(lseek),
    SCMP_SYS(fstat),          SCMP_SYS(close),         SCMP_SYS(brk),
    SCMP_SYS(munmap),         SCMP_SYS(mremap),        SCMP_SYS(madvise),
    SCMP_SYS(futex),          SCMP_SYS(exit),          SCMP_SYS(exit_group),
    SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),  SCMP_SYS(set_robust_list),
    SCMP_SYS(rseq),           SCMP_SYS(sched_yield),   SCMP_SYS(sched_getaffinity),
    SCMP_SYS(getrandom),      SCMP_SYS(clock_gettime), SCMP_SYS(clock_nanosleep),
    SCMP_SYS(gettid),         SCMP_SYS(getpid),        SCMP_SYS(restart_syscall),
    SCMP_SYS(sysinfo),
};

/// Paths: as if there were none that may be opened.
constexpr std::initializer_list<int> kAnsweredWithNoAccess{
    SCMP_SYS(openat), SCMP_SYS(open),     SCMP_SYS(access),     SCMP_SYS(faccessat),  SCMP_SYS(stat),
    SCMP_SYS(statx),  SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(getdents64), SCMP_SYS(newfstatat),
};

/// What libraries ask for and can do without.
constexpr std::initializer_list<int> kAnsweredWithNoPermission{
    SCMP_SYS(ioctl),
    SCMP_SYS(sched_setaffinity),
    SCMP_SYS(sched_setscheduler),
    SCMP_SYS(sched_setparam),
    SCMP_SYS(sched_getparam),
    SCMP_SYS(sched_getscheduler),
    SCMP_SYS(get_mempolicy),
    SCMP_SYS(set_mempolicy),
    SCMP_SYS(mbind),
    SCMP_SYS(setpriority),
    SCMP_SYS(getpriority),
    SCMP_SYS(uname),
    SCMP_SYS(prlimit64),
    SCMP_SYS(getrusage),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(getcpu),
    SCMP_SYS(fcntl),
    SCMP_SYS(prctl),
    SCMP_SYS(tgkill),
};

/// The library's own macros for these are of C99.
scmp_arg_cmp argument(unsigned index, scmp_compare comparison, std::uint64_t first,
                      std::uint64_t second = 0) {
  return {index, comparison, first, second};
}

class Filter {
 public:
  Filter() : context_(seccomp_init(SCMP_ACT_KILL_PROCESS), seccomp_release) {
    if (!context_) throw std::system_error(ENOMEM, std::generic_category(), "seccomp_init");
  }

  void answer(std::uint32_t action, std::initializer_list<int> calls) {
    for (const int call : calls) add(action, call, {});
  }
  void add(std::uint32_t action, int call, std::initializer_list<scmp_arg_cmp> conditions) {
    check(seccomp_rule_add_array(context_.get(), action, call, static_cast<unsigned>(conditions.size()),
                                 conditions.begin()),
          "seccomp_rule_add");
  }

  std::vector<sock_filter> program() const {
    const UniqueFd file(memfd_create("filter", MFD_CLOEXEC));
    check(file ? 0 : -errno, "memfd_create");
    check(seccomp_export_bpf(context_.get(), file.get()), "seccomp_export_bpf");
    std::vector<sock_filter> program(static_cast<std::size_t>(lseek(file.get(), 0, SEEK_END)) /
                                     sizeof(sock_filter));
    const std::size_t size = program.size() * sizeof(sock_filter);
    const ssize_t count = pread(file.get(), program.data(), size, 0);
    check(count == static_cast<ssize_t>(size) ? 0 : -EIO, "pread");
    return program;
  }

 private:
  std::unique_ptr<void, void (*)(scmp_filter_ctx)> context_;
};

}  // namespace

std::vector<sock_filter> decoderSystemCallFilter() {
  Filter filter;
  filter.answer(SCMP_ACT_ALLOW, kAllowed);
  filter.answer(SCMP_ACT_ERRNO(EACCES), kAnsweredWithNoAccess);

  const scmp_arg_cmp notExecutable = argument(2, SCMP_CMP_MASKED_EQ, PROT_EXEC, 0);
  filter.add(SCMP_ACT_ALLOW, SCMP_SYS(mmap), {notExecutable});
  filter.add(SCMP_ACT_ALLOW, SCMP_SYS(mprotect), {notExecutable});
  filter.add(SCMP_ACT_ALLOW, SCMP_SYS(ftruncate), {argument(0, SCMP_CMP_EQ, kPixelsDescriptor)});
  filter.add(SCMP_ACT_ALLOW, SCMP_SYS(write), {argument(0, SCMP_CMP_EQ, kChannelDescriptor)});

  // A thread and no process. The newer call hides its flags behind a pointer, which no filter can follow: the
  // C library takes the older one when it is told that there is none.
  constexpr std::uint64_t kThread = CLONE_THREAD | CLONE_VM;
  filter.add(SCMP_ACT_ALLOW, SCMP_SYS(clone), {argument(0, SCMP_CMP_MASKED_EQ, kThread, kThread)});
  filter.answer(SCMP_ACT_ERRNO(ENOSYS), {SCMP_SYS(clone3)});
  filter.answer(SCMP_ACT_ERRNO(EPERM), kAnsweredWithNoPermission);
  filter.add(SCMP_ACT_ERRNO(EBADF), SCMP_SYS(write), {argument(0, SCMP_CMP_NE, kChannelDescriptor)});
  return filter.program();
}

}  // namespace ostra
