// first_frame PROGRAM [ARGUMENT...]: starts a program on a screen without a window manager and prints how
// many milliseconds later its first window shows a pixel in its middle. Ends the program.
#include <chrono>
#include <csignal>
#include <cstdio>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kSeconds = 20;
constexpr int kSmallest = 100;  // helpers' windows are smaller

/// Whether the middle of the window has a colour; a window that nobody has drawn in is black.
bool isDrawn(Display* display, Window window, int width, int height) {
  XImage* image = XGetImage(display, window, width / 2, height / 2, 1, 1, AllPlanes, ZPixmap);
  if (image == nullptr) return false;
  const bool drawn = (XGetPixel(image, 0, 0) & 0xFFFFFF) != 0;
  XDestroyImage(image);
  return drawn;
}

/// The first window that is shown, and its size.
bool waitForWindow(Display* display, Clock::time_point limit, XWindowAttributes& size, Window& window) {
  while (Clock::now() < limit) {
    while (XPending(display) > 0) {
      XEvent event;
      XNextEvent(display, &event);
      if (event.type != MapNotify) continue;
      window = event.xmap.window;
      if (XGetWindowAttributes(display, window, &size) != 0 && size.width >= kSmallest) return true;
    }
    usleep(200);
  }
  return false;
}

bool waitForFrame(Display* display, Clock::time_point limit) {
  XWindowAttributes size{};
  Window window = 0;
  if (!waitForWindow(display, limit, size, window)) return false;
  while (!isDrawn(display, window, size.width, size.height)) {
    if (Clock::now() >= limit) return false;
    usleep(200);
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  Display* display = argc > 1 ? XOpenDisplay(nullptr) : nullptr;
  if (display == nullptr) return 2;
  XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
  XSync(display, False);
  XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });  // a window may go away between two calls

  const auto start = Clock::now();
  const pid_t program = fork();
  if (program == 0) {
    execv(argv[1], argv + 1);
    _exit(127);
  }
  const bool shown = waitForFrame(display, start + std::chrono::seconds(kSeconds));
  const std::chrono::duration<double, std::milli> took = Clock::now() - start;
  kill(program, SIGKILL);
  waitpid(program, nullptr, 0);
  if (!shown) return 1;
  std::printf("%.2f\n", took.count());
  return 0;
}
