#include "desktop/extensions/conversion_start.h"

#include <cerrno>

#include <gio/gio.h>
#include <sys/mman.h>
#include <unistd.h>

#include "desktop/extensions/glib_memory.h"

namespace ostra::menu {
namespace {

bool writeAll(int descriptor, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return lseek(descriptor, 0, SEEK_SET) == 0;
}

/// A file in memory rather than a pipe: nobody has to be there to feed it, and a program that outlives its
/// file manager has all the names, not half of one.
int memoryFileWith(const std::string& text) {
  const int descriptor = memfd_create("ostra-paths", MFD_CLOEXEC);
  if (descriptor < 0 || writeAll(descriptor, text)) return descriptor;
  const int error = errno;
  close(descriptor);
  errno = error;
  return -1;
}

void tell(const std::string& program, const char* reason) {
  g_printerr("ostra: %s cannot be started: %s\n", program.c_str(), reason);
}

}  // namespace

void startConversion(const Menu& menu, const Entry& entry, const std::string& paths) {
  const int names = memoryFileWith(paths);
  if (names < 0) return tell(menu.program, g_strerror(errno));
  const Object<GSubprocessLauncher> launcher(g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE));
  g_subprocess_launcher_take_stdin_fd(launcher.get(), names);
  GError* failure = nullptr;
  const Object<GSubprocess> program(
      g_subprocess_launcher_spawn(launcher.get(), &failure, menu.program.c_str(), "--ui=desktop", "--bundle",
                                  entry.bundle.c_str(), "--files-from=-", nullptr));
  if (program) return;
  const Error error(failure);
  tell(menu.program, error->message);
}

}  // namespace ostra::menu
