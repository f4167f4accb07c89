#include "platform/appkit/gtk/main_loop.h"

#include <algorithm>

#include <glib-unix.h>

#include "platform/dispatch/main_loop.h"

namespace ostra::gtk {
namespace {

std::vector<ModalRun*>& modalRuns() {
  static std::vector<ModalRun*> runs;
  return runs;
}

}  // namespace

void attachMainQueue() {
  // The descriptor only wakes: whoever turns the context looks after the queue.
  g_unix_fd_add(
      MainLoop::descriptor(), G_IO_IN,
      [](gint, GIOCondition, gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  MainLoop::setWaiting([] { g_main_context_iteration(nullptr, TRUE); });
}

ModalRun::ModalRun() { modalRuns().push_back(this); }

ModalRun::~ModalRun() { modalRuns().erase(std::find(modalRuns().begin(), modalRuns().end(), this)); }

void ModalRun::wait() {
  while (!ended_) {
    g_main_context_iteration(nullptr, TRUE);
    MainLoop::drain();
  }
}

void ModalRun::cancelAll() {
  for (ModalRun* run : modalRuns()) {
    run->cancelled_ = true;
    run->end();
  }
}

}  // namespace ostra::gtk
