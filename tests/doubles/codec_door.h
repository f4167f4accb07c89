#pragma once
#include "platform/imageio/codec_door.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// A door that answers every file with the same picture, or with a fault, and never looks at a byte.
class RecordingCodecDoor : public CodecDoor {
 public:
  explicit RecordingCodecDoor(CallLog& log) : log_(log) {}

  Answer<std::unique_ptr<Reader>> open(UniqueFd /*file*/, const Limits& /*limits*/) override {
    log_.add("door open");
    if (openFault) return *openFault;
    return std::make_unique<StubReader>(*this);
  }
  Answer<Bytes> encode(std::string_view type, const Pixels& /*pixels*/,
                       const Properties* properties) override {
    log_.add("door encode " + std::string(type) + (properties != nullptr ? " with properties" : ""));
    if (encodeFault) return *encodeFault;
    return Bytes(type.begin(), type.end());
  }
  std::set<std::string> writable() const override { return writableTypes; }

  Opened opened;
  Answer<Pixels> pixels = Fault{};
  Answer<Properties> properties = Properties{};
  std::optional<Fault> openFault;
  std::optional<Fault> encodeFault;
  std::set<std::string> writableTypes;

 private:
  class StubReader : public Reader {
   public:
    explicit StubReader(RecordingCodecDoor& door) : door_(door) {}
    ~StubReader() override { door_.log_.add("reader ended"); }
    StubReader(const StubReader&) = delete;
    StubReader& operator=(const StubReader&) = delete;
    const Opened& opened() const override { return door_.opened; }
    Answer<Pixels> decode(std::uint32_t index) override {
      door_.log_.add("door decode " + std::to_string(index));
      return door_.pixels;
    }
    Answer<Properties> properties(std::uint32_t index) override {
      door_.log_.add("door properties " + std::to_string(index));
      return door_.properties;
    }

   private:
    RecordingCodecDoor& door_;
  };

  CallLog& log_;
};

}  // namespace ostra::test
