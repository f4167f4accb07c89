#include "platform/graphics/library_memory.h"

#include <cstdlib>
#include <new>

#include <lcms2_plugin.h>

namespace ostra {
namespace {

/// What the library itself takes for too much: no profile needs it.
constexpr cmsUInt32Number most = 512u << 20;

void* orThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void* allocate(cmsContext, cmsUInt32Number size) {
  return size == 0 || size > most ? nullptr : orThrow(std::malloc(size));
}

void* reallocate(cmsContext, void* memory, cmsUInt32Number size) {
  return size == 0 || size > most ? nullptr : orThrow(std::realloc(memory, size));
}

void release(cmsContext, void* memory) { std::free(memory); }

cmsContext makeContext() {
  cmsPluginMemHandler memory{};
  memory.base.Magic = cmsPluginMagicNumber;
  memory.base.ExpectedVersion = 2060;  // the first version whose handlers look like these
  memory.base.Type = cmsPluginMemHandlerSig;
  memory.MallocPtr = allocate;
  memory.FreePtr = release;
  memory.ReallocPtr = reallocate;
  const cmsContext context = cmsCreateContext(&memory, nullptr);
  if (context == nullptr) throw std::bad_alloc();
  return context;
}

}  // namespace

void* colorLibrary() {
  static const cmsContext context = makeContext();
  return context;
}

}  // namespace ostra
