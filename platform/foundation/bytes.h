#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ostra {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Immutable bytes with shared ownership; copying shares, never copies the bytes. `owner` keeps `view` alive:
/// a vector, a mapped file, the memory of a drawing surface.
struct SharedBytes {
  std::shared_ptr<const void> owner;
  ByteView view;

  static SharedBytes adopt(Bytes bytes);
};

}  // namespace ostra
