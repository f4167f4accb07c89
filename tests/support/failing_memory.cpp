// A library to load before a program: lets one allocation of its work on a picture fail.
//
//   OSTRA_TEST_PICTURE  how the name of the picture ends; the program counts from its first opening on
//   OSTRA_TEST_MEMORY   the file that the count is kept in: see failing_memory.h
//
// The program is told apart from the processes that it forks: its child's children are its decoders, which
// count from their beginning.

// The names that stand in libraries, not those that a header puts in their place.
#undef _FILE_OFFSET_BITS

#include "tests/support/failing_memory.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

// The C library's own names of what is replaced here.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using ostra::test::MemoryCount;

constexpr int kDecoder = 2;  // generations below the program

MemoryCount* shared = nullptr;
int generation = 0;
std::atomic<bool> armed{false};

[[gnu::constructor]] void connect() {
  const char* path = std::getenv("OSTRA_TEST_MEMORY");
  if (path == nullptr) return;
  const long file = syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC, 0);
  if (file < 0) return;
  void* memory =
      mmap(nullptr, sizeof(MemoryCount), PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(file), 0);
  close(static_cast<int>(file));
  if (memory != MAP_FAILED) shared = static_cast<MemoryCount*>(memory);
}

bool fails() {
  if (!armed.load(std::memory_order_relaxed)) return false;
  const std::uint64_t number = shared->calls.fetch_add(1) + 1;
  if (number != shared->failing) return false;
  shared->failed = 1;
  errno = ENOMEM;
  return true;
}

void armIfPicture(const char* path) {
  if (shared == nullptr || shared->inDecoder || generation != 0 || armed) return;
  const char* ending = std::getenv("OSTRA_TEST_PICTURE");
  const std::size_t size = std::strlen(path), length = ending == nullptr ? 0 : std::strlen(ending);
  if (length > 0 && size >= length && std::strcmp(path + size - length, ending) == 0) armed = true;
}

int opened(int folder, const char* path, int flags, unsigned mode) {
  armIfPicture(path);
  return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) { return fails() ? nullptr : __libc_calloc(count, size); }
void* realloc(void* memory, std::size_t size) { return fails() ? nullptr : __libc_realloc(memory, size); }
void* memalign(std::size_t alignment, std::size_t size) {
  return fails() ? nullptr : __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }
int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  void* found = memalign(alignment, size);
  if (found == nullptr) return ENOMEM;
  *memory = found;
  return 0;
}

int open(const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  const unsigned mode = va_arg(list, unsigned);
  va_end(list);
  return opened(AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  const unsigned mode = va_arg(list, unsigned);
  va_end(list);
  return opened(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  const unsigned mode = va_arg(list, unsigned);
  va_end(list);
  return opened(folder, path, flags, mode);
}
int openat64(int folder, const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  const unsigned mode = va_arg(list, unsigned);
  va_end(list);
  return opened(folder, path, flags, mode);
}

pid_t fork() {
  static const auto next = reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "fork"));
  const pid_t id = next();
  if (id != 0) return id;
  armed = false;
  ++generation;
  if (shared != nullptr && shared->inDecoder && generation == kDecoder) armed = true;
  return id;
}

}  // extern "C"
