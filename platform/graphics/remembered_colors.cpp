#include "platform/graphics/remembered_colors.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>

#include <pthread.h>

namespace ostra {
namespace {

constexpr int slotBits = 16;

std::size_t slotNumber(std::uint64_t color) { return (color * 0x9E3779B97F4A7C15u) >> (64 - slotBits); }

std::uint64_t pack(const std::uint16_t* words, std::size_t components) {
  std::uint64_t packed = 0;
  std::memcpy(&packed, words, components * sizeof(std::uint16_t));
  return packed;
}

void unpack(std::uint64_t packed, std::uint16_t* words, std::size_t components) {
  std::memcpy(words, &packed, components * sizeof(std::uint16_t));
}

std::optional<pthread_key_t> makeKey() {
  pthread_key_t key = 0;
  const auto end = [](void* memory) { delete static_cast<RememberedColors*>(memory); };
  return pthread_key_create(&key, end) == 0 ? std::optional(key) : std::nullopt;
}

}  // namespace

RememberedColors::RememberedColors() : colors_(std::size_t{1} << slotBits) { forget(); }

/// An empty slot holds a colour that belongs into another.
void RememberedColors::forget() {
  std::fill(colors_.begin(), colors_.end(), Color{0, 0});
  colors_[slotNumber(0)].source = 1;
}

RememberedColors::Color& RememberedColors::slotOf(std::uint64_t color) { return colors_[slotNumber(color)]; }

std::size_t RememberedColors::collectUnknown(const std::uint16_t* source, std::size_t components,
                                             std::size_t pixels) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < pixels; ++i) {
    const std::uint64_t color = pack(source + i * components, components);
    const Color& known = slotOf(color);
    results_[i] = known.destination;
    if (known.source == color) continue;
    unpack(color, unknown_.data() + count * components, components);
    unknownAt_[count++] = i;
  }
  return count;
}

void RememberedColors::run(const ProfileTransform& transform, const std::uint16_t* source,
                           std::uint16_t* destination, std::size_t pixels) {
  if (transform_ != transform.number()) forget();
  transform_ = transform.number();
  const auto in = static_cast<std::size_t>(transform.sourceComponents());
  const auto out = static_cast<std::size_t>(transform.destinationComponents());
  const std::size_t unknown = collectUnknown(source, in, pixels);
  transform.run(unknown_.data(), converted_.data(), unknown);
  for (std::size_t i = 0; i < unknown; ++i) {
    const std::uint64_t color = pack(unknown_.data() + i * in, in);
    slotOf(color) = {color, pack(converted_.data() + i * out, out)};
    results_[unknownAt_[i]] = slotOf(color).destination;
  }
  for (std::size_t i = 0; i < pixels; ++i) unpack(results_[i], destination + i * out, out);
}

RememberedColors* RememberedColors::ofThisThread() {
  // Not thread_local: to register a destructor for that takes memory, and the process ends where it lacks.
  static const std::optional<pthread_key_t> key = makeKey();
  if (!key) return nullptr;
  if (void* known = pthread_getspecific(*key)) return static_cast<RememberedColors*>(known);
  try {
    auto memory = std::make_unique<RememberedColors>();
    return pthread_setspecific(*key, memory.get()) == 0 ? memory.release() : nullptr;
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace ostra
