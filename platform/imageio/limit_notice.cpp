#include "platform/imageio/limit_notice.h"

#include <cstdio>
#include <string>

#include "platform/foundation/printable.h"

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

class StandardErrorNotice : public LimitNotice {
 public:
  void pictureStopped(const URL& picture, LimitName limit) override {
    const std::string line =
        printableLine(picture.lastPathComponent()) + ": not decoded, " + inWords(limit) + ".\n";
    std::fputs(line.c_str(), stderr);
  }
};

}  // namespace

LimitNotice& LimitNotice::standard() {
  static StandardErrorNotice notice;
  return notice;
}

}  // namespace ostra
