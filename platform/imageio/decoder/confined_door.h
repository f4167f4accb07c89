#pragma once
#include "platform/imageio/codec_door.h"
#include "platform/imageio/decoder/zygote.h"

namespace ostra {

/// The door that decodes each file in a process of its own, which has no rights. What such a process says is
/// checked before it is believed; when it crashes, hangs or is stopped, that file is one fault and the next
/// one is served. Its readers decode one index of their file. What modules encode, they encode in such a
/// process too; the other formats are encoded in this one. Any thread.
class ConfinedDoor : public CodecDoor {
 public:
  /// The zygote must outlive the door and its readers.
  explicit ConfinedDoor(const Zygote& zygote) : zygote_(zygote) {}

  Answer<std::unique_ptr<Reader>> open(UniqueFd file, const Limits& limits) override;
  Answer<Bytes> encode(std::string_view type, const Pixels& pixels, const Properties* properties) override;
  std::set<std::string> writable() const override;

 private:
  const Zygote& zygote_;
};

}  // namespace ostra
