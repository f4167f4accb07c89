#include "host/finished_work.h"

#include "platform/appkit/renderer.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

using namespace std::chrono_literals;

constexpr auto kLong = 10s;

std::string sentence(std::size_t items) {
  return items == 1 ? "The picture is done." : "All " + std::to_string(items) + " pictures are done.";
}

}  // namespace

void tellOnDesktop(const RequestEnd& end, const FinishedWork& work) {
  if (end.error || !work.wasPutAway || work.duration <= kLong) return;
  Service<Renderer>::current().notify(work.title, sentence(work.items));
}

}  // namespace ostra
