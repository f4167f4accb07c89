#include "platform/imageio/decoding_notice.h"

#include <cstdio>
#include <string>

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
    case LimitName::seconds:
      return "decoding takes too long";
    case LimitName::none:
      break;
  }
  return "it exceeds a limit";
}

const char* inWords(const Fault& fault) {
  switch (fault.kind) {
    case FaultKind::timeout:
      return inWords(LimitName::seconds);
    case FaultKind::crashed:
      return "its decoder broke down";
    case FaultKind::forbidden:
      return "its decoder asked the system for something forbidden";
    default:
      return inWords(fault.limit);
  }
}

// A name must not move the cursor of a terminal or pass for a line of ours.
std::string onOneLine(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  return text;
}

class StandardErrorNotice : public DecodingNotice {
 public:
  void pictureStopped(const URL& picture, const Fault& fault) override {
    const std::string line =
        onOneLine(picture.lastPathComponent()) + ": not decoded, " + inWords(fault) + ".\n";
    std::fputs(line.c_str(), stderr);
  }
};

}  // namespace

DecodingNotice& DecodingNotice::standard() {
  static StandardErrorNotice notice;
  return notice;
}

}  // namespace ostra
