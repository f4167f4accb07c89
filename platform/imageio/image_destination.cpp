#include "platform/imageio/image_destination.h"

#include <cerrno>
#include <new>
#include <utility>

#include "platform/foundation/error.h"
#include "platform/foundation/service.h"
#include "platform/imageio/codec_door.h"
#include "platform/imageio/writable_pixels.h"

namespace ostra {
namespace {

/// Too little memory or time refuses nothing: whoever tries again with less to write would leave out what
/// could have been written.
void throwIfNoRefusal(const Fault& fault) {
  if (fault.limit == LimitName::decodedBytes) throw std::bad_alloc();
  if (fault.limit == LimitName::seconds) throw NSError(std::string(NSPOSIXErrorDomain), ETIME);
}

class DoorImageDestination : public CGImageDestination {
 public:
  DoorImageDestination(Bytes& data, std::string_view type) : data_(data), type_(type) { data_.clear(); }

  void addImage(const CGImageRef& image, const Properties* properties) override {
    tooMany_ = tooMany_ || image_ != nullptr;
    image_ = image;
    if (properties != nullptr) properties_ = *properties;
  }

  bool finalize() override {
    if (image_ == nullptr || tooMany_) return false;
    const auto pixels = writablePixels(*image_);
    if (!pixels) return false;
    auto answer = Service<CodecDoor>::current().encode(type_, *pixels, properties_ ? &*properties_ : nullptr);
    if (const auto* fault = std::get_if<Fault>(&answer)) throwIfNoRefusal(*fault);
    auto* file = std::get_if<Bytes>(&answer);
    if (file == nullptr || file->empty()) return false;
    data_ = std::move(*file);
    return true;
  }

 private:
  Bytes& data_;
  std::string type_;
  CGImageRef image_;
  std::optional<Properties> properties_;
  bool tooMany_ = false;
};

class DoorCreation : public ImageDestinationCreation {
 public:
  std::optional<std::vector<std::string>> typeIdentifiers() override {
    const auto types = Service<CodecDoor>::current().writable();
    return std::vector<std::string>(types.begin(), types.end());
  }
  std::unique_ptr<CGImageDestination> create(Bytes& data, std::string_view typeIdentifier,
                                             std::size_t count) override {
    const auto types = Service<CodecDoor>::current().writable();
    if (count != 1 || types.count(std::string(typeIdentifier)) == 0) return nullptr;
    return std::make_unique<DoorImageDestination>(data, typeIdentifier);
  }
};

}  // namespace

std::optional<std::vector<std::string>> CGImageDestinationCopyTypeIdentifiers() {
  return Service<ImageDestinationCreation>::current().typeIdentifiers();
}

std::unique_ptr<CGImageDestination> CGImageDestination::createWithData(Bytes& data,
                                                                       std::string_view typeIdentifier,
                                                                       std::size_t count) {
  return Service<ImageDestinationCreation>::current().create(data, typeIdentifier, count);
}

ImageDestinationCreation& ImageDestinationCreation::standard() {
  static DoorCreation creation;
  return creation;
}

}  // namespace ostra
