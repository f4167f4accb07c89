#pragma once
#include <map>

#include "platform/imageio/image_source.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// What a file of the tests is, once opened.
struct SourceContents {
  std::optional<std::string> type = "public.png";
  std::int64_t count = 1;
  std::optional<Properties> properties{};
  CGImageRef image{};
  /// Thrown by the decoding, where there is one.
  std::exception_ptr failure{};
};

class StubImageSource : public CGImageSource {
 public:
  StubImageSource(CallLog& log, SourceContents contents) : log_(log), contents_(std::move(contents)) {}
  ~StubImageSource() override { log_.add("source released"); }
  StubImageSource(const StubImageSource&) = delete;
  StubImageSource& operator=(const StubImageSource&) = delete;

  std::optional<std::string> type() const override { return contents_.type; }
  std::int64_t count() const override { return contents_.count; }
  std::optional<Properties> copyPropertiesAtIndex(std::size_t index) override {
    log_.add("properties " + std::to_string(index));
    return contents_.properties;
  }
  CGImageRef createImageAtIndex(std::size_t index, const CGImageSourceOptions& options) override {
    log_.add("decode " + std::to_string(index) +
             (options.kCGImageSourceShouldCacheImmediately ? " at once" : ""));
    if (contents_.failure) std::rethrow_exception(contents_.failure);
    return contents_.image;
  }

 private:
  CallLog& log_;
  SourceContents contents_;
};

/// Opens the files that it was given, by path; every other one is no file.
class RecordingImageSourceOpening : public ImageSourceOpening {
 public:
  explicit RecordingImageSourceOpening(CallLog& log) : log_(log) {}

  std::unique_ptr<CGImageSource> open(const URL& url, const CGImageSourceOptions& options) override {
    log_.add("open " + url.path() + (options.kCGImageSourceShouldCache ? "" : " uncached"));
    const auto file = files.find(url.path());
    return file != files.end() ? std::make_unique<StubImageSource>(log_, file->second) : nullptr;
  }

  std::map<std::string, SourceContents> files;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
