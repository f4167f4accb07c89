#pragma once
#include <vector>

#include <sys/types.h>

#include "platform/imageio/decoder/zygote.h"

namespace ostra {

/// What the zygote does all its life: forks a decoder for each request, tells how each ended, and reaps it
/// once the other side has let go of it; one that is let go of while it still runs is killed.
class Nursery {
 public:
  Nursery(UniqueFd requests, const Confinement& confinement, Zygote::Serve serve)
      : requests_(std::move(requests)), confinement_(confinement), serve_(std::move(serve)) {}

  /// Returns when the other side of the requests is gone; every decoder has ended then.
  void run();

 private:
  struct Child {
    pid_t id;
    UniqueFd process;  // becomes readable when it has ended
    Channel life;
    bool ended = false;
  };

  bool serveRequest();
  void fork(ReceivedDescriptors request);
  /// Ends in the child.
  [[noreturn]] void become(ReceivedDescriptors request) const;
  void watch();
  static void tellEnd(Child& child);
  static void letGo(Child& child);

  UniqueFd requests_;
  const Confinement& confinement_;
  const Zygote::Serve serve_;
  std::vector<Child> children_;
};

}  // namespace ostra
