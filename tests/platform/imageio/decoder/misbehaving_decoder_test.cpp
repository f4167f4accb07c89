#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/imageio/decoder/believed_pixels.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/shared_pixels.h"
#include "tests/platform/imageio/decoder/confined.h"

namespace ostra {
namespace {

using test::Confined;

constexpr std::uint32_t kSide = 16;

Answer<Opened> somePicture() {
  return Opened{
      .type = "public.png", .count = 1, .width = kSide, .height = kSide, .bits = 8, .components = 4};
}

DecodedPixels wholePixels() {
  const Layout layout{.width = kSide,
                      .height = kSide,
                      .bitsPerComponent = 8,
                      .bitsPerPixel = 32,
                      .bytesPerRow = kSide * 4,
                      .model = CGColorSpaceModel::rgb,
                      .bitmapInfo = static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast)};
  return {layout, Untagged{}, 0, std::uint64_t{kSide} * kSide * 4};
}

const Channel& parent() {
  static const Channel channel((UniqueFd(kChannelDescriptor)));
  return channel;
}

/// A decoder that does everything right up to the point where `turn` takes over; then its pixels are told.
Zygote::Serve decoder(std::function<void(DecodedPixels&)> turn) {
  return [turn](const DecoderTask&, const Confinement& confinement) {
    if (!confinement.apply()) _exit(9);
    parent().send(messageOf(somePicture()));
    parent().receive(8);
    DecodedPixels pixels = wholePixels();
    [[maybe_unused]] const int sized = ftruncate(kPixelsDescriptor, static_cast<off_t>(pixels.size));
    parent().send(messageOf(Answer<Properties>(Properties{})));
    turn(pixels);
    parent().send(messageOf(Answer<DecodedPixels>(pixels)));
    _exit(kServed);
  };
}

Answer<Pixels> decodeWith(ConfinedDoor& door, const Limits& limits = {}) {
  auto answer = door.open(test::fileOf(Bytes(100)), limits);
  if (const auto* fault = std::get_if<Fault>(&answer)) return *fault;
  return std::get<std::unique_ptr<Reader>>(answer)->decode(0);
}

constexpr Fault kCrash{FaultKind::crashed};
constexpr Fault kLate{FaultKind::limit, LimitName::seconds};

Fault faultOf(const Zygote::Serve& serve, const Limits& limits = {}) {
  Confined confined(serve);
  const auto answer = decodeWith(confined.door, limits);
  const auto* fault = std::get_if<Fault>(&answer);
  EXPECT_NE(fault, nullptr);
  // The next file is served by another process, which may do better or not; the door is not hurt.
  const auto next = decodeWith(confined.door, limits);
  EXPECT_TRUE(std::holds_alternative<Fault>(next));
  return fault == nullptr ? Fault{FaultKind::notImage} : *fault;
}

TEST(MisbehavingDecoder, IsBelievedWhenItBehaves) {
  Confined confined(decoder([](DecodedPixels&) {}));
  EXPECT_TRUE(std::holds_alternative<Pixels>(decodeWith(confined.door)));
}

TEST(MisbehavingDecoder, ThatCrashesIsOneFault) {
  EXPECT_EQ(faultOf([](const DecoderTask&, const Confinement&) { std::abort(); }), kCrash);
  EXPECT_EQ(faultOf(decoder([](DecodedPixels&) { *static_cast<volatile int*>(nullptr) = 1; })), kCrash);
}

TEST(MisbehavingDecoder, ThatAsksForWhatIsForbiddenIsToldApart) {
  EXPECT_EQ(faultOf(decoder([](DecodedPixels&) { syscall(SYS_socket, AF_INET, SOCK_STREAM, 0); })),
            Fault{FaultKind::forbidden});
}

TEST(MisbehavingDecoder, ThatEndsEarlyAsIfAllWereWellIsOneFault) {
  EXPECT_EQ(faultOf([](const DecoderTask&, const Confinement&) { _exit(0); }), kCrash);
  EXPECT_EQ(faultOf(decoder([](DecodedPixels&) { _exit(0); })), kCrash);
}

TEST(MisbehavingDecoder, ThatTellsAllAndFailsInTheEndIsOneFault) {
  EXPECT_EQ(faultOf(decoder([](DecodedPixels& pixels) {
              parent().send(messageOf(Answer<DecodedPixels>(pixels)));
              _exit(1);
            })),
            kCrash);
}

TEST(MisbehavingDecoder, ThatHangsIsStopped) {
  Limits limits;
  limits.seconds = 1;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(faultOf(decoder([](DecodedPixels&) {
                      for (;;) usleep(1000);
                    }),
                    limits),
            kLate);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(MisbehavingDecoder, ThatDoesNotEndAfterItsLastWordIsStopped) {
  Limits limits;
  limits.seconds = 1;
  EXPECT_EQ(faultOf(decoder([](DecodedPixels& pixels) {
                      parent().send(messageOf(Answer<DecodedPixels>(pixels)));
                      for (;;) usleep(1000);
                    }),
                    limits),
            kLate);
}

TEST(MisbehavingDecoder, ThatTalksNonsenseIsOneFault) {
  EXPECT_EQ(faultOf([](const DecoderTask&, const Confinement&) {
              parent().send(Bytes(64, 0xFF));
              _exit(kServed);
            }),
            kCrash);
}

TEST(MisbehavingDecoder, ThatAnnouncesAnEndlessMessageIsOneFault) {
  EXPECT_EQ(faultOf([](const DecoderTask&, const Confinement&) {
              const std::uint64_t size = std::uint64_t{1} << 60;
              [[maybe_unused]] const auto sent = write(kChannelDescriptor, &size, sizeof size);
              _exit(kServed);
            }),
            kCrash);
}

TEST(MisbehavingDecoder, ThatLiesAboutItsPixelsIsOneFault) {
  const std::vector<std::function<void(DecodedPixels&)>> lies{
      [](DecodedPixels& pixels) { pixels.layout.width = 1000; },
      [](DecodedPixels& pixels) { pixels.layout.height = kSide + 1; },
      [](DecodedPixels& pixels) { pixels.layout.height = 0; },
      [](DecodedPixels& pixels) { pixels.layout.bytesPerRow = kSide; },
      [](DecodedPixels& pixels) { pixels.layout.bytesPerRow = ~std::size_t{0} / kSide; },
      [](DecodedPixels& pixels) { pixels.layout.bitsPerComponent = 1; },
      [](DecodedPixels& pixels) { pixels.layout.bitsPerPixel = 12; },
      [](DecodedPixels& pixels) { pixels.layout.model = static_cast<CGColorSpaceModel>(77); },
      [](DecodedPixels& pixels) { pixels.offset = 4096; },
      [](DecodedPixels& pixels) { pixels.offset = ~std::uint64_t{0} - 100; },
      [](DecodedPixels& pixels) { pixels.size += 1; },
      [](DecodedPixels& pixels) { pixels.size = ~std::uint64_t{0}; },
      [](DecodedPixels&) { [[maybe_unused]] const int r = ftruncate(kPixelsDescriptor, 10); },
  };
  for (std::size_t i = 0; i < lies.size(); ++i) {
    Confined confined(decoder(lies[i]));
    const auto answer = decodeWith(confined.door);
    ASSERT_TRUE(std::holds_alternative<Fault>(answer)) << i;
    EXPECT_EQ(std::get<Fault>(answer).kind, FaultKind::crashed) << i;
  }
}

TEST(MisbehavingDecoder, ThatWantsEndlessMemoryDoesNotGetIt) {
  Confined confined(decoder([](DecodedPixels&) {
    // More than the header allows: the memory file first, then the addresses.
    const bool grew = ftruncate(kPixelsDescriptor, off_t{1} << 32) == 0;
    void* memory =
        mmap(nullptr, std::size_t{8} << 30, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    _exit(grew || memory != MAP_FAILED ? 77 : 1);
  }));
  auto answer = confined.door.open(test::fileOf(Bytes(100)), Limits{});
  const auto pixels = std::get<std::unique_ptr<Reader>>(answer)->decode(0);
  EXPECT_TRUE(std::holds_alternative<Fault>(pixels));
}

TEST(MisbehavingDecoder, IsNotBelievedWhileSomebodyCanStillWriteItsPixels) {
  const DecodedPixels said = wholePixels();
  const UniqueFd file = makePixelFile();
  ASSERT_EQ(ftruncate(file.get(), static_cast<off_t>(said.size)), 0);
  void* memory = mmap(nullptr, said.size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
  ASSERT_NE(memory, MAP_FAILED);
  const Opened opened = std::get<Opened>(somePicture());
  EXPECT_EQ(std::get<Fault>(believedPixels(said, opened, file.get())).kind, FaultKind::crashed);
  munmap(memory, said.size);
  EXPECT_TRUE(std::holds_alternative<Pixels>(believedPixels(said, opened, file.get())));
}

}  // namespace
}  // namespace ostra
