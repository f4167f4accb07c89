#include "tests/support/system_calls.h"

#include <array>

#include <sys/syscall.h>

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
    NamedCall{SYS_syncfs, "syncfs"},
    NamedCall{SYS_sync_file_range, "sync_file_range"},
    NamedCall{SYS_preadv, "preadv"},
    NamedCall{SYS_pwritev, "pwritev"},
    NamedCall{SYS_readv, "readv"},
    NamedCall{SYS_sendfile, "sendfile"},
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

}  // namespace

std::string_view fileCallName(long number) {
  for (const NamedCall& call : kFileCalls) {
    if (call.number == number) return call.name;
  }
  return {};
}

bool isFlush(long number) {
  return number == SYS_fsync || number == SYS_fdatasync || number == SYS_syncfs ||
         number == SYS_sync_file_range;
}

bool isCountedWrite(long number) { return number == SYS_write || number == SYS_pwrite64; }
#else
std::string_view fileCallName(long) { return {}; }
bool isFlush(long) { return false; }
bool isCountedWrite(long) { return false; }
#endif

}  // namespace ostra::test
