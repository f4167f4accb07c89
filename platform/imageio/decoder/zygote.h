#pragma once
#include <cstdint>
#include <functional>
#include <optional>

#include <sys/types.h>

#include "platform/foundation/unique_fd.h"
#include "platform/imageio/decoder/channel.h"
#include "platform/imageio/decoder/confinement.h"
#include "platform/imageio/decoder/worker.h"

namespace ostra {

/// One decoder: the way to talk to it, and the word of its end. Destroying it ends the process, and lets it
/// be reaped; until then its number belongs to nobody else.
struct DecoderProcess {
  pid_t id = -1;
  Channel channel;
  Channel life;

  /// How the process ended, as `waitpid` says it; waits until then. Nothing when that cannot be known, or not
  /// in time.
  std::optional<int> end(Channel::Deadline deadline) const;
};

/// The small single-threaded process that the decoders are forked from, so that each of them is small, holds
/// nothing of other pictures, and costs little to make. It ends with its owner, however that ends.
class Zygote {
 public:
  using Serve = std::function<void(const DecoderTask& task, const Confinement& confinement)>;

  /// Forks. Call it before the process has a second thread, opened any file, or loaded a toolkit. `serve`
  /// runs in each decoder. Throws `std::system_error`.
  explicit Zygote(KernelConfinement kernel, Serve serve = serveTask);
  ~Zygote();
  Zygote(const Zygote&) = delete;
  Zygote& operator=(const Zygote&) = delete;

  /// A decoder for an open file, writing pixels to a memory file; or an encoder of the samples in it. Nothing
  /// when none can be made. Any thread.
  std::optional<DecoderProcess> decoderFor(int file, int pixelFile, const DecoderTask& task) const;

 private:
  pid_t id_ = -1;
  UniqueFd requests_;
};

}  // namespace ostra
