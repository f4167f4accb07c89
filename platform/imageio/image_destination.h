#pragma once
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/graphics/image.h"
#include "platform/imageio/properties.h"

namespace ostra {

/// The type identifiers that can be written on this machine; nothing when they cannot be told.
std::optional<std::vector<std::string>> CGImageDestinationCopyTypeIdentifiers();

/// A picture file being made in memory. One owner, one thread.
class CGImageDestination {
 public:
  /// Writes into `data`, which must outlive the destination. Null for a type that cannot be written, or a
  /// count that the format does not hold.
  static std::unique_ptr<CGImageDestination> createWithData(Bytes& data, std::string_view typeIdentifier,
                                                            std::size_t count);

  virtual ~CGImageDestination() = default;
  /// `properties` may be null. The image is read when the destination is finalized.
  virtual void addImage(const CGImageRef& image, const Properties* properties) = 0;
  /// True when the bytes of a complete file are in the buffer; false, the image or its properties being none
  /// that the format takes, leaves it empty. Throws `std::bad_alloc` when there is not the memory.
  virtual bool finalize() = 0;
};

/// Who makes destinations. Replaceable through `Service<ImageDestinationCreation>`.
class ImageDestinationCreation {
 public:
  virtual ~ImageDestinationCreation() = default;
  virtual std::optional<std::vector<std::string>> typeIdentifiers() = 0;
  virtual std::unique_ptr<CGImageDestination> create(Bytes& data, std::string_view typeIdentifier,
                                                     std::size_t count) = 0;
  static ImageDestinationCreation& standard();
};

}  // namespace ostra
