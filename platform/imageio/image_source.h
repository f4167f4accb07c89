#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/url.h"
#include "platform/graphics/image.h"
#include "platform/imageio/properties.h"

namespace ostra {

/// Whether decoded pixels are kept for a second question, and whether decoding is done at once. This platform
/// never keeps and always decodes at once; the options say what the caller relies on.
struct CGImageSourceOptions {
  bool kCGImageSourceShouldCache = true;
  bool kCGImageSourceShouldCacheImmediately = false;
};

/// A picture file being read. One owner, one thread at a time.
class CGImageSource {
 public:
  /// Null when the file cannot be opened or is not a regular file. A file of any other content gives a
  /// source; one that no reader knows has no type and a count of 0.
  static std::unique_ptr<CGImageSource> createWithURL(const URL& url, const CGImageSourceOptions& options);

  virtual ~CGImageSource() = default;
  /// The type identifier of the file's format, decided by its bytes; or nothing.
  virtual std::optional<std::string> type() const = 0;
  virtual std::int64_t count() const = 0;
  /// The properties of one picture, or nothing. Damaged metadata is left out, never an error.
  virtual std::optional<Properties> copyPropertiesAtIndex(std::size_t index) = 0;
  /// The whole decoded picture, or null: a damaged or incomplete one is not decoded at all.
  virtual CGImageRef createImageAtIndex(std::size_t index, const CGImageSourceOptions& options) = 0;
};

/// Who opens image sources. Replaceable through `Service<ImageSourceOpening>`.
class ImageSourceOpening {
 public:
  virtual ~ImageSourceOpening() = default;
  virtual std::unique_ptr<CGImageSource> open(const URL& url, const CGImageSourceOptions& options) = 0;
  static ImageSourceOpening& standard();
};

}  // namespace ostra
