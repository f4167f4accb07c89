#pragma once
#include <gtest/gtest.h>

#include "engine/engine.h"
#include "front/error.h"
#include "tests/doubles/image.h"
#include "tests/doubles/workbench.h"

namespace ostra::test {

using Kind = OstraQuickActionKind;
using Strings = std::vector<std::string>;

/// What `work` throws, described; empty when it throws nothing.
template <class Work>
std::string failureOf(const Work& work) {
  try {
    work();
    return "";
  } catch (...) {
    return localizedDescription(std::current_exception());
  }
}

inline std::shared_ptr<OstraQuickActionEngine> makeEngine(Kind kind, CGColorSpaceRef target = nullptr) {
  return std::make_shared<OstraQuickActionEngine>(kind, std::move(target), kLossyQuality);
}

inline NSError posixError(std::int64_t code) {
  return NSError(NSPOSIXErrorDomain, code, {{std::string(NSLocalizedDescriptionKey), "posix words"}});
}
inline NSError cocoaError(std::int64_t code) {
  return NSError(NSCocoaErrorDomain, code, {{std::string(NSLocalizedDescriptionKey), "cocoa words"}});
}

/// Tests of the engine over doubles alone.
class EngineOverDoubles : public testing::Test {
 protected:
  /// A named space, without a line in the log.
  static CGColorSpaceRef space(std::string_view name) {
    return GraphicsCreation::standard().colorSpaceWithName(name);
  }
  static CGColorSpaceRef sRGB() { return space(kCGColorSpaceSRGB); }
  static CGColorSpaceRef gray() { return space(kCGColorSpaceGenericGrayGamma2_2); }
  static CGColorSpaceRef cmyk() { return space(kCGColorSpaceDeviceCMYK); }

  static CGImageRef opaqueImage() {
    return makeImage(packedFormat(1, 1, 8, 4, CGImageAlphaInfo::noneSkipLast), sRGB());
  }
  static CGImageRef transparentImage() {
    return makeImage(packedFormat(1, 1, 8, 4, CGImageAlphaInfo::premultipliedLast), sRGB());
  }

  void addFile(const std::string& path, const std::string& type = "public.png",
               CGImageRef image = opaqueImage(), std::int64_t count = 1) {
    bench_.sources.files[path] = {.type = type, .count = count, .image = std::move(image)};
  }
  /// The drawing calls so far, from the asking for a surface on.
  Strings drawing() const {
    return bench_.log.callsBeginningWith(
        {"surface", "fill", "clear", "interpolation", "draw", "image", "make image"});
  }

  Workbench bench_;
};

}  // namespace ostra::test
