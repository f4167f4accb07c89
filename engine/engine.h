#pragma once
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "front/kind.h"
#include "platform/extension/item_provider.h"
#include "platform/graphics/image.h"
#include "platform/imageio/image_source.h"

namespace ostra {

/// The compression quality of every lossy file that the program writes.
inline constexpr double kLossyQuality = 0.9;

/// Converts the files of one request, one after another. A picture meets the operations below in the order in
/// which they stand; each has a file of its own: batch, pipeline, transform, encoding, writing.
///
/// An engine holds nothing but three values, which nobody changes once a batch runs; it is then safe on any
/// thread. Whatever one batch or one file needs lives in that call.
class OstraQuickActionEngine : public std::enable_shared_from_this<OstraQuickActionEngine> {
 public:
  /// Where and how the result of one file is written.
  struct Plan {
    URL destination;  // the source itself when `inPlace`, else a file beside it
    std::string uti;  // the type identifier of the output format
    bool inPlace = false;
  };

  /// What was done for one file that was converted.
  struct Outcome {
    URL source;
    URL destination;  // as planned, also when the user chose another place in the save panel
    bool inPlace = false;
  };

  using Providers = std::vector<std::shared_ptr<NSItemProvider>>;
  using Outcomes = std::vector<Outcome>;
  using Failures = std::vector<std::exception_ptr>;
  using Completion = std::function<void(const Outcomes&, const Failures&)>;

  OstraQuickActionEngine(OstraQuickActionKind kind, CGColorSpaceRef targetColorSpace, double lossyQuality);
  OstraQuickActionEngine(const OstraQuickActionEngine&) = delete;
  OstraQuickActionEngine& operator=(const OstraQuickActionEngine&) = delete;

  OstraQuickActionKind kind() const { return kind_; }
  /// The destination of the profile conversion; null for every other kind.
  const CGColorSpaceRef& targetColorSpace() const { return targetColorSpace_; }
  void setTargetColorSpace(CGColorSpaceRef space) { targetColorSpace_ = std::move(space); }
  /// What lossy encoders are given, 0 (smallest) to 1 (best).
  double lossyQuality() const { return lossyQuality_; }
  void setLossyQuality(double quality) { lossyQuality_ = quality; }

  /// Starts a batch and returns. Every provider ends as one outcome or one failure, and no failure stops the
  /// batch. The completion is called once, on the main queue, after the last provider. The engine must be
  /// owned by a `shared_ptr`; the running batch keeps it alive.
  void run(Providers providers, Completion completion) const;

  /// Converts one file, to which access has been granted, and writes the result. Throws
  /// `OstraQuickActionError`. Never on the main thread: a save panel may have to be shown there meanwhile.
  Outcome convertFile(const URL& url) const;

  /// Decides where and in which format to write, without a look at the disk. Throws `OstraQuickActionError`.
  Plan makePlan(const URL& url, const std::string& sourceType, std::int64_t frameCount) const;

  /// The converted picture. Without `keepAlpha` it is opaque, on white. Throws `OstraQuickActionError`.
  CGImageRef transformImage(const CGImageRef& image, bool keepAlpha, const std::string& fileName) const;

  /// The source's metadata, less what describes its old pixels and its old file, and the encoder's options
  /// for an output of type `uti`.
  Properties destinationProperties(CGImageSource& source, std::string_view uti) const;

  /// The bytes of a file of type `uti`. An encoder that refuses the metadata is asked again without them.
  /// Throws `OstraQuickActionError`.
  Bytes encodeWithRetry(const CGImageRef& image, const std::string& uti, const Properties& properties,
                        const std::string& fileName) const;

  /// Puts the bytes on the disk as planned; where the user's rights end, asks for another place. Throws
  /// `OstraQuickActionError`.
  void writeResult(ByteView data, const Plan& plan, const URL& sourceURL, const std::string& fileName) const;

 private:
  OstraQuickActionKind kind_;
  CGColorSpaceRef targetColorSpace_;
  double lossyQuality_;
};

}  // namespace ostra
