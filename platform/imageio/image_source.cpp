#include "platform/imageio/image_source.h"

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/foundation/service.h"
#include "platform/imageio/codec_door.h"
#include "platform/imageio/decoding_notice.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

// Not waiting on a pipe, not taking a terminal over; nothing unless it is a regular file.
UniqueFd openRegularFile(const URL& url) {
  if (!url.isFileURL()) return {};
  UniqueFd file(open(url.path().c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  return file;
}

CGImageRef imageOfPixels(Pixels pixels) {
  const Layout& layout = pixels.layout;
  CGImage::Format format;
  format.width = layout.width;
  format.height = layout.height;
  format.bitsPerComponent = layout.bitsPerComponent;
  format.bitsPerPixel = layout.bitsPerPixel;
  format.bytesPerRow = layout.bytesPerRow;
  format.bitmapInfo = layout.bitmapInfo;
  CGColorSpaceRef space = statedSpace(pixels.profile, layout.model);
  if (space == nullptr) space = defaultSpace(layout.model);
  return CGImage::create(format, std::move(space), std::move(pixels.bytes), true,
                         CGColorRenderingIntent::standard);
}

// Every fault is "nothing" to the caller. Of what may not be the file's own damage people are told: a limit
// can stop a good file, and one that brings its decoder down may be meant to.
void notice(const URL& url, const Fault& fault) {
  if (fault.kind == FaultKind::notImage || fault.kind == FaultKind::damaged) return;
  Service<DecodingNotice>::current().pictureStopped(url, fault);
}

class DoorImageSource : public CGImageSource {
 public:
  DoorImageSource(URL url, std::unique_ptr<Reader> reader)
      : url_(std::move(url)), reader_(std::move(reader)) {}

  std::optional<std::string> type() const override {
    if (reader_ == nullptr) return std::nullopt;
    return reader_->opened().type;
  }
  std::int64_t count() const override {
    return reader_ == nullptr ? 0 : std::int64_t{reader_->opened().count};
  }

  std::optional<Properties> copyPropertiesAtIndex(std::size_t index) override {
    if (!has(index)) return std::nullopt;
    return value(reader_->properties(static_cast<std::uint32_t>(index)));
  }
  CGImageRef createImageAtIndex(std::size_t index, const CGImageSourceOptions&) override {
    if (!has(index)) return nullptr;
    auto pixels = value(reader_->decode(static_cast<std::uint32_t>(index)));
    return pixels ? imageOfPixels(std::move(*pixels)) : nullptr;
  }

 private:
  bool has(std::size_t index) const { return index < static_cast<std::uint64_t>(count()); }

  template <class T>
  std::optional<T> value(Answer<T> answer) const {
    if (T* found = std::get_if<T>(&answer)) return std::move(*found);
    notice(url_, std::get<Fault>(answer));
    return std::nullopt;
  }

  URL url_;
  std::unique_ptr<Reader> reader_;  // null: no reader knows the file
};

class DoorOpening : public ImageSourceOpening {
 public:
  std::unique_ptr<CGImageSource> open(const URL& url, const CGImageSourceOptions&) override {
    UniqueFd file = openRegularFile(url);
    if (!file) return nullptr;
    auto answer = Service<CodecDoor>::current().open(std::move(file), Limits{});
    std::unique_ptr<Reader> reader;
    if (auto* opened = std::get_if<std::unique_ptr<Reader>>(&answer)) {
      reader = std::move(*opened);
    } else {
      notice(url, std::get<Fault>(answer));
    }
    return std::make_unique<DoorImageSource>(url, std::move(reader));
  }
};

}  // namespace

std::unique_ptr<CGImageSource> CGImageSource::createWithURL(const URL& url,
                                                            const CGImageSourceOptions& options) {
  return Service<ImageSourceOpening>::current().open(url, options);
}

ImageSourceOpening& ImageSourceOpening::standard() {
  static DoorOpening opening;
  return opening;
}

}  // namespace ostra
