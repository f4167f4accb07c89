#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/platform/imageio/decoder/confined.h"

namespace ostra {
namespace {

using test::Confined;

enum Layer : unsigned { kSeccomp = 1, kLandlock = 2, kLimits = 4, kDescriptors = 8 };

/// Something that a decoder must not be able to do, and what alone must already stop it. `succeeds` is true
/// when it could do it.
struct Act {
  const char* name;
  unsigned stoppedBy;
  std::function<bool()> succeeds;
};

bool works(long result) { return result >= 0; }

const std::vector<Act>& acts() {
  static const std::vector<Act> all{
      {"read a file", kSeccomp | kLandlock, [] { return works(open("/etc/passwd", O_RDONLY)); }},
      {"create a file", kSeccomp | kLandlock,
       [] { return works(open("/tmp/ostra-forbidden-acts", O_WRONLY | O_CREAT, 0600)); }},
      {"list a folder", kSeccomp | kLandlock, [] { return works(open("/", O_RDONLY | O_DIRECTORY)); }},
      {"open by openat2", kSeccomp | kLandlock,
       [] {
         std::uint64_t how[3] = {};
         return works(syscall(SYS_openat2, AT_FDCWD, "/etc/passwd", how, sizeof how));
       }},
      {"remove a file", kSeccomp | kLandlock, [] { return works(unlink("/tmp/ostra-forbidden-acts")); }},
      {"rename a file", kSeccomp | kLandlock,
       [] { return works(rename("/tmp/ostra-forbidden-acts", "/tmp/ostra-forbidden-acts-2")); }},
      {"make a folder", kSeccomp | kLandlock,
       [] { return works(mkdir("/tmp/ostra-forbidden-acts-folder", 0700)); }},
      {"make a link", kSeccomp | kLandlock,
       [] { return works(symlink("/", "/tmp/ostra-forbidden-acts-link")); }},
      {"look for a file", kSeccomp, [] { return works(access("/etc/passwd", F_OK)); }},
      {"change a mode", kSeccomp, [] { return works(chmod("/tmp/ostra-forbidden-acts", 0666)); }},
      {"run a program", kSeccomp | kLandlock,
       [] {
         char name[] = "/bin/true";
         char* arguments[] = {name, nullptr};
         return works(execve(name, arguments, nullptr));
       }},
      {"fork", kSeccomp, [] { return works(fork()); }},
      {"vfork by clone", kSeccomp, [] { return works(syscall(SYS_clone, SIGCHLD, nullptr, 0, 0, 0)); }},
      {"fork by clone3", kSeccomp,
       [] {
         std::uint64_t arguments[11] = {};
         arguments[4] = SIGCHLD;
         return works(syscall(SYS_clone3, arguments, sizeof arguments));
       }},
      {"make a socket", kSeccomp, [] { return works(socket(AF_INET, SOCK_STREAM, 0)); }},
      {"make a local socket", kSeccomp, [] { return works(socket(AF_UNIX, SOCK_STREAM, 0)); }},
      {"make a pipe", kSeccomp,
       [] {
         int ends[2];
         return works(pipe(ends));
       }},
      {"signal the parent", kSeccomp, [] { return works(kill(getppid(), 0)); }},
      {"trace the parent", kSeccomp, [] { return works(ptrace(PTRACE_SEIZE, getppid(), nullptr, nullptr)); }},
      {"read another's memory", kSeccomp,
       [] { return works(syscall(SYS_process_vm_readv, getppid(), nullptr, 0, nullptr, 0, 0)); }},
      {"write another's memory", kSeccomp,
       [] { return works(syscall(SYS_process_vm_writev, getppid(), nullptr, 0, nullptr, 0, 0)); }},
      {"map executable memory", kSeccomp,
       [] {
         return mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) !=
                MAP_FAILED;
       }},
      {"make memory executable", kSeccomp,
       [] {
         void* page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
         return mprotect(page, 4096, PROT_READ | PROT_EXEC) == 0;
       }},
      {"set up io_uring", kSeccomp,
       [] { return works(syscall(SYS_io_uring_setup, 4, nullptr)) || errno == EFAULT; }},
      {"mount", kSeccomp, [] { return works(mount("none", "/mnt", "tmpfs", 0, nullptr)); }},
      {"leave for a user namespace", kSeccomp, [] { return works(unshare(CLONE_NEWUSER)); }},
      {"use a keyring", kSeccomp, [] { return works(syscall(SYS_keyctl, 0, -3, 1)); }},
      {"load a kernel program", kSeccomp,
       [] { return works(syscall(SYS_bpf, 0, nullptr, 0)) || errno == EFAULT || errno == EINVAL; }},
      {"watch performance counters", kSeccomp,
       [] { return works(syscall(SYS_perf_event_open, nullptr, 0, -1, -1, 0)) || errno == EFAULT; }},
      {"handle page faults itself", kSeccomp, [] { return works(syscall(SYS_userfaultfd, 0)); }},
      {"raise a limit", kSeccomp,
       [] {
         const rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
         return works(setrlimit(RLIMIT_AS, &limit));
       }},
      {"become another user", kSeccomp, [] { return works(setuid(0)); }},
      {"change the root", kSeccomp, [] { return works(chroot("/tmp")); }},
      {"write to the terminal", kSeccomp | kDescriptors, [] { return works(write(STDERR_FILENO, "x", 1)); }},
      {"write into the picture", kSeccomp | kDescriptors,
       [] { return works(pwrite(kInputDescriptor, "x", 1, 0)); }},
      {"use what the parent had open", kDescriptors, [] { return works(lseek(20, 0, SEEK_CUR)); }},
  };
  return all;
}

constexpr int kDenied = 40, kDone = 41;

/// Whether an attempt under these layers was denied, or the process stopped for it.
bool isDenied(const Act& act, KernelConfinement kernel) {
  test::writeFile("/tmp/ostra-forbidden-acts", "x");
  Confined confined(
      [&act](const DecoderTask&, const Confinement& confinement) {
        if (!confinement.apply()) _exit(kDone);
        _exit(act.succeeds() ? kDone : kDenied);
      },
      kernel);
  const UniqueFd input = test::fileOf(Bytes(10));
  const UniqueFd pixels(memfd_create("pixels", MFD_CLOEXEC));
  const auto decoder = confined.zygote.decoderFor(input.get(), pixels.get(), DecoderTask{});
  if (!decoder) return false;
  const auto status = decoder->end(std::chrono::steady_clock::now() + std::chrono::seconds(20));
  if (!status) return false;
  if (WIFSIGNALED(*status)) return WTERMSIG(*status) == SIGSYS;
  return WEXITSTATUS(*status) == kDenied;
}

class ForbiddenActsTest : public testing::Test {
 protected:
  void SetUp() override {
    // Something of the parent's at a number that the zygote inherits.
    ASSERT_EQ(dup3(STDERR_FILENO, 20, 0), 20);
  }
  void TearDown() override {
    close(20);
    for (const char* name : {"", "-2", "-folder", "-link"}) {
      std::filesystem::remove(std::string("/tmp/ostra-forbidden-acts") + name);
    }
  }

  void expectAllDenied(KernelConfinement kernel, unsigned layers) {
    for (const Act& act : acts()) {
      if ((act.stoppedBy & (layers | kDescriptors)) == 0) continue;
      EXPECT_TRUE(isDenied(act, kernel)) << act.name;
    }
  }
};

TEST_F(ForbiddenActsTest, AreAllDeniedByBothLayers) {
  const KernelConfinement kernel = KernelConfinement::detect();
  if (!kernel.complete()) GTEST_SKIP() << "this kernel has not both Landlock and seccomp";
  EXPECT_GE(acts().size(), 25u);
  expectAllDenied(kernel, kSeccomp | kLandlock);
}

TEST_F(ForbiddenActsTest, AreAllDeniedBySeccompAlone) {
  KernelConfinement kernel = KernelConfinement::detect();
  if (!kernel.seccomp) GTEST_SKIP() << "this kernel has no seccomp";
  kernel.landlockAbi = 0;
  expectAllDenied(kernel, kSeccomp);
}

TEST_F(ForbiddenActsTest, ThatNamePathsAreDeniedByLandlockOfDebiansKernelAlone) {
  KernelConfinement kernel = KernelConfinement::detect();
  if (kernel.landlockAbi < 2) GTEST_SKIP() << "this kernel has no Landlock of the second version";
  kernel.landlockAbi = 2;
  kernel.seccomp = false;
  expectAllDenied(kernel, kLandlock);
}

TEST_F(ForbiddenActsTest, WouldSucceedWithoutAnyLayer) {
  for (const Act& act : acts()) {
    if ((act.stoppedBy & kLandlock) == 0) continue;
    if (std::string_view(act.name) == "run a program") continue;  // it would not come back to tell
    EXPECT_FALSE(isDenied(act, KernelConfinement{})) << act.name;
  }
}

}  // namespace
}  // namespace ostra
