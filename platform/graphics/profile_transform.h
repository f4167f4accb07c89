#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/foundation/bytes.h"
#include "platform/graphics/image.h"

namespace ostra {

/// Whether the colour library can convert from a profile, whose table of tags has been checked. Throws
/// `std::bad_alloc` when it lacked the memory to tell.
bool libraryConvertsFrom(ByteView profile);

/// A conversion between two profiles of any kind by the colour library, without its optimisations: they are
/// wrong by up to 4 of 255 and 1346 of 65535. Immutable; any number of threads may run one at once.
///
/// The standard intent is perceptual. Black points are not matched, except where the library must: between
/// table profiles of version 4, whose perceptual tables are defined with it.
class ProfileTransform {
 public:
  /// Null when the profiles make no transform. Throws `std::bad_alloc`.
  static std::shared_ptr<const ProfileTransform> create(ByteView source, ByteView destination,
                                                        CGColorRenderingIntent intent);
  ProfileTransform();
  virtual ~ProfileTransform() = default;
  /// Of this transform among all there ever were, from 1.
  std::uint64_t number() const { return number_; }
  /// Components of a pixel.
  virtual int sourceComponents() const = 0;
  virtual int destinationComponents() const = 0;
  /// Interleaved 16-bit values, 0 to 65535.
  virtual void run(const std::uint16_t* source, std::uint16_t* destination, std::size_t pixels) const = 0;

 private:
  std::uint64_t number_;
};

}  // namespace ostra
