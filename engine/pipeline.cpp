#include <set>

#include "engine/engine.h"
#include "engine/log.h"
#include "front/error.h"
#include "platform/imageio/image_destination.h"
#include "platform/types/ut_type.h"

namespace ostra {
namespace {

/// Asked of the platform once in the life of the process.
const std::set<std::string>& writableTypeIdentifiers() {
  static const std::set<std::string> identifiers = [] {
    const auto list = CGImageDestinationCopyTypeIdentifiers();
    return list ? std::set<std::string>(list->begin(), list->end()) : std::set<std::string>();
  }();
  return identifiers;
}

bool isJPEG(const std::string& typeIdentifier) {
  const std::optional<UTType> type = UTType::withIdentifier(typeIdentifier);
  return type && type->conformsTo(UTType::jpeg());
}

URL sibling(const URL& url, std::string_view extension) {
  return url.deletingPathExtension().appendingPathExtension(extension);
}

/// An unknown alpha layout counts as alpha: keeping one too many loses nothing.
bool hasAlpha(CGImageAlphaInfo alpha) {
  switch (alpha) {
    case CGImageAlphaInfo::none:
    case CGImageAlphaInfo::noneSkipLast:
    case CGImageAlphaInfo::noneSkipFirst:
      return false;
    default:
      return true;
  }
}

void logOutcome(OstraQuickActionKind kind, const OstraQuickActionEngine::Outcome& outcome) {
  try {
    logWritten(kind, outcome.destination.lastPathComponent(), outcome.inPlace);
  } catch (...) {  // a line that cannot be written is no failure of the picture
  }
}

struct OpenedSource {
  std::unique_ptr<CGImageSource> source;
  std::string type;
  std::int64_t count;
};

OpenedSource openSource(const URL& url, const std::string& fileName) {
  auto source = CGImageSource::createWithURL(url, {.kCGImageSourceShouldCache = false});
  const std::optional<std::string> type = source ? source->type() : std::nullopt;
  const std::int64_t count = type ? source->count() : 0;
  if (count <= 0) throw OstraQuickActionError(fileName, "not an image ImageIO can read.");
  return {std::move(source), *type, count};
}

}  // namespace

OstraQuickActionEngine::Outcome OstraQuickActionEngine::convertFile(const URL& url) const {
  const std::string fileName = url.lastPathComponent();
  OpenedSource opened = openSource(url, fileName);
  const Plan plan = makePlan(url, opened.type, opened.count);

  CGImageRef image = opened.source->createImageAtIndex(0, {.kCGImageSourceShouldCacheImmediately = true});
  if (!image) throw OstraQuickActionError(fileName, "the image could not be decoded.");
  // Compared as a string, unlike the source's type in the plan: only the plain JPEG type is written without
  // alpha.
  const bool keepAlpha = plan.uti != UTType::jpeg().identifier() && hasAlpha(image->alphaInfo());
  image = transformImage(image, keepAlpha, fileName);

  const Properties properties = destinationProperties(*opened.source, plan.uti);
  const Bytes data = encodeWithRetry(image, plan.uti, properties, fileName);
  image.reset();  // the pixels need not wait for the disk
  // Made before: what is written must not be told as a failure.
  Outcome outcome{url, plan.destination, plan.inPlace};
  writeResult(data, plan, url, fileName);

  logOutcome(kind(), outcome);
  return outcome;
}

OstraQuickActionEngine::Plan OstraQuickActionEngine::makePlan(const URL& url, const std::string& sourceType,
                                                              std::int64_t frameCount) const {
  const bool wantsJPEG = isJPEGKind(kind());
  const UTType siblingType = wantsJPEG ? UTType::jpeg() : UTType::png();
  // Two tests that differ on purpose: every kind of JPEG can take a plain JPEG in its place, while a format
  // is written only under exactly the name that the platform writes.
  const bool inPlace = wantsJPEG ? isJPEG(sourceType) : writableTypeIdentifiers().count(sourceType) > 0;
  if (!inPlace) return {sibling(url, wantsJPEG ? "jpg" : "png"), siblingType.identifier(), false};
  if (frameCount >= 2) {
    throw OstraQuickActionError(url.lastPathComponent(),
                                wantsJPEG ? "multi-frame images are not rewritten in place."
                                          : "animated or multi-frame images are not rewritten in place.");
  }
  return {url, wantsJPEG ? siblingType.identifier() : sourceType, true};
}

}  // namespace ostra
