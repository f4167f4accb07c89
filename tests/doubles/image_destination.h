#pragma once
#include <atomic>
#include <set>

#include "platform/imageio/image_destination.h"
#include "tests/doubles/call_log.h"
#include "tests/doubles/failing_step.h"

namespace ostra::test {

/// What one destination was given.
struct Encoding {
  std::string type;
  std::size_t count = 0;
  CGImageRef image;
  std::optional<Properties> properties;
};

/// Makes "files" that consist of their type identifier. Keeps what every destination was given.
class RecordingImageDestinationCreation : public ImageDestinationCreation {
 public:
  explicit RecordingImageDestinationCreation(CallLog& log) : log_(log) {}

  std::optional<std::vector<std::string>> typeIdentifiers() override {
    ++timesAsked;
    return writable;
  }

  std::unique_ptr<CGImageDestination> create(Bytes& data, std::string_view typeIdentifier,
                                             std::size_t count) override {
    log_.add("encode " + std::string(typeIdentifier));
    if (unwritable.count(typeIdentifier) > 0) return nullptr;
    return std::make_unique<Destination>(*this, data,
                                         Encoding{std::string(typeIdentifier), count, nullptr, {}});
  }

  std::optional<std::vector<std::string>> writable{{"public.png", "public.jpeg", "public.tiff",
                                                    "com.compuserve.gif", "public.heic", "public.heif",
                                                    "public.avif", "public.JPEG"}};
  std::set<std::string, std::less<>> unwritable;
  /// Counts the finished destinations.
  FailingStep finalizing;
  /// From the first one on, none is finished.
  bool failsAlways = false;
  std::vector<Encoding> encodings;
  /// Over all objects of the process.
  inline static std::atomic<int> timesAsked{0};

 private:
  class Destination : public CGImageDestination {
   public:
    Destination(RecordingImageDestinationCreation& owner, Bytes& data, Encoding encoding)
        : owner_(owner), data_(data), encoding_(std::move(encoding)) {}
    void addImage(const CGImageRef& image, const Properties* properties) override {
      encoding_.image = image;
      if (properties != nullptr) encoding_.properties = *properties;
    }
    bool finalize() override {
      owner_.encodings.push_back(encoding_);
      if (owner_.finalizing.refuses() || owner_.failsAlways) return false;
      data_.assign(encoding_.type.begin(), encoding_.type.end());
      return true;
    }

   private:
    RecordingImageDestinationCreation& owner_;
    Bytes& data_;
    Encoding encoding_;
  };

  CallLog& log_;
};

}  // namespace ostra::test
