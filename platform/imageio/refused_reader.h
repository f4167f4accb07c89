#pragma once
#include <memory>
#include <utility>

#include "platform/imageio/codec.h"
#include "platform/imageio/codec_door.h"
#include "platform/imageio/file_contents.h"

namespace ostra {

/// A file that its signature calls a picture and that could not be opened within the limits: one picture of
/// which nothing is known, and that cannot be decoded.
class RefusedReader : public Reader {
 public:
  RefusedReader(std::string_view type, Fault fault)
      : opened_{.type = std::string(type), .count = 1}, fault_(fault) {}

  const Opened& opened() const override { return opened_; }
  Answer<Pixels> decode(std::uint32_t) override { return fault_; }
  Answer<Properties> properties(std::uint32_t) override { return fault_; }

 private:
  Opened opened_;
  Fault fault_;
};

/// What opening gives for a fault: limits and ends of decoders fail the decode, never the opening. A file
/// that is no picture to this machine, or whose structure is damaged, stays a fault.
inline Answer<std::unique_ptr<Reader>> refusedAtOpening(int file, Fault fault) {
  if (fault.kind == FaultKind::notImage || fault.kind == FaultKind::missing ||
      fault.kind == FaultKind::damaged)
    return fault;
  const Codec* codec = codecForBytes(readBeginning(file, kSignatureBytes));
  if (codec == nullptr) return fault;
  return std::make_unique<RefusedReader>(codec->type, fault);
}

}  // namespace ostra
