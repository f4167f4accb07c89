#include "platform/imageio/decoding_notice.h"

#include <cstdio>
#include <string>

#include "platform/foundation/printable.h"
#include "platform/imageio/codec.h"

namespace ostra {
namespace {

const char* inWords(LimitName limit) {
  switch (limit) {
    case LimitName::pixels:
      return "it claims too many pixels";
    case LimitName::decodedBytes:
      return "it needs too much memory";
    case LimitName::compressionRatio:
      return "it claims far more pixels than its size can hold";
    case LimitName::frames:
      return "it holds too many frames";
    case LimitName::metadataBytes:
      return "its metadata is too large";
    case LimitName::profileBytes:
      return "its colour profile is too large";
    case LimitName::scans:
      return "it is drawn in too many passes";
    case LimitName::seconds:
      return "decoding takes too long";
    case LimitName::none:
      break;
  }
  return "it exceeds a limit";
}

std::string inWords(const Fault& fault) {
  switch (fault.kind) {
    case FaultKind::missing:
      return "the package " + std::string(kCodecsPackage) + ", which reads its format, is not installed";
    case FaultKind::crashed:
      return "its decoder broke down";
    case FaultKind::forbidden:
      return "its decoder asked the system for something forbidden";
    default:
      return inWords(fault.limit);
  }
}

class StandardErrorNotice : public DecodingNotice {
 public:
  void pictureStopped(const URL& picture, const Fault& fault) override {
    const std::string line =
        printableLine(picture.lastPathComponent()) + ": not decoded, " + inWords(fault) + ".\n";
    std::fputs(line.c_str(), stderr);
  }
};

}  // namespace

DecodingNotice& DecodingNotice::standard() {
  static StandardErrorNotice notice;
  return notice;
}

}  // namespace ostra
