#pragma once
#include <map>
#include <set>

#include "tests/doubles/failing_step.h"
#include "tests/doubles/memory_surface.h"

namespace ostra::test {

/// Makes surfaces that are plain memory, and refuses what it is told to refuse. Spaces are the real ones.
class RecordingGraphicsCreation : public GraphicsCreation {
 public:
  explicit RecordingGraphicsCreation(CallLog& log) : log_(log) {}

  CGColorSpaceRef colorSpaceWithName(std::string_view name) override {
    log_.add("space " + std::string(name));
    if (missingSpaces.count(name) > 0) return nullptr;
    const auto substitute = substituteSpaces.find(name);
    return substitute != substituteSpaces.end() ? substitute->second : realSpace(name);
  }

  std::unique_ptr<CGBitmapContext> bitmapContext(std::size_t width, std::size_t height,
                                                 std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                                 CGColorSpaceRef space, CGBitmapInfo bitmapInfo) override {
    const auto model = space->model();
    log_.add("surface " + std::to_string(width) + "x" + std::to_string(height) + " model " +
             std::to_string(static_cast<int>(model)) + " bits " + std::to_string(bitsPerComponent) +
             " info " + std::to_string(bitmapInfo) + (bytesPerRow != 0 ? " with a pitch" : ""));
    if (surfaceSteps.refuses() || (bitsPerComponent == 16 && refuse16Bits)) return nullptr;
    const std::size_t components = model == CGColorSpaceModel::monochrome ? 1 : 4;
    return std::make_unique<MemorySurface>(log_,
                                           CGImage::Format{.width = width,
                                                           .height = height,
                                                           .bitsPerComponent = bitsPerComponent,
                                                           .bitsPerPixel = components * bitsPerComponent,
                                                           .bytesPerRow = 0,
                                                           .bitmapInfo = bitmapInfo},
                                           std::move(space), paint);
  }

  CGImageRef image(const CGImage::Format& format, CGColorSpaceRef space, SharedBytes provider,
                   bool shouldInterpolate, CGColorRenderingIntent intent) override {
    log_.add("image of " + std::to_string(provider.view.size()) + " bytes, bits " +
             std::to_string(format.bitsPerComponent) + "/" + std::to_string(format.bitsPerPixel) + " row " +
             std::to_string(format.bytesPerRow) + " info " + std::to_string(format.bitmapInfo) +
             (shouldInterpolate ? " interpolated" : "") + " intent " +
             std::to_string(static_cast<int>(intent)));
    if (imageSteps.refuses()) return nullptr;
    return std::make_shared<const CGImage>(format, std::move(space), std::move(provider), intent);
  }

  Paint paint;
  bool refuse16Bits = false;
  FailingStep surfaceSteps;
  FailingStep imageSteps;
  std::set<std::string, std::less<>> missingSpaces;
  std::map<std::string, CGColorSpaceRef, std::less<>> substituteSpaces;
  /// Who knows the named spaces.
  std::function<CGColorSpaceRef(std::string_view)> realSpace = [](std::string_view name) {
    return GraphicsCreation::standard().colorSpaceWithName(name);
  };

 private:
  CallLog& log_;
};

}  // namespace ostra::test
