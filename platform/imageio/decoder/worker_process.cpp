#include "platform/imageio/decoder/worker_process.h"

#include <new>

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/imageio/decoder/address_space.h"

namespace ostra {
namespace {

constexpr int kNotConfined = 2;
constexpr int kParentGone = 3;

}  // namespace

void beConfined(const DecoderTask& task, const Confinement& confinement) {
  // Each arena of the allocator takes its share of the address space.
  mallopt(M_ARENA_MAX, 2);
  limitOpening(task.fileSize);
  if (!confinement.apply()) _exit(kNotConfined);
}

FileBytes mapInput(const DecoderTask& task) {
  if (task.fileSize == 0) return {};
  void* memory = mmap(nullptr, task.fileSize, PROT_READ, MAP_PRIVATE, kInputDescriptor, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return {static_cast<const std::uint8_t*>(memory), task.fileSize};
}

void tell(const Channel& parent, const Bytes& message) {
  if (!parent.send(message)) _exit(kParentGone);
}

}  // namespace ostra
