#include "platform/imageio/decoder/confined_door.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/decoder/confined.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra {
namespace {

using test::Confined;

Bytes photograph(std::string_view type, unsigned bits = 8) {
  Properties properties;
  properties.tree = {{"{TIFF}", Dictionary{{"Artist", "Ostra"}}}, {"Orientation", 6}};
  const auto model = CGColorSpaceModel::rgb;
  return test::encoded(type,
                       test::pixelsOf(test::softSamples(test::kWidth, test::kHeight, 3, bits), test::kWidth,
                                      test::kHeight, model, bits, CGImageAlphaInfo::none),
                       &properties);
}

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

void expectTheSame(const Pixels& a, const Pixels& b) {
  EXPECT_EQ(a.layout.width, b.layout.width);
  EXPECT_EQ(a.layout.bytesPerRow, b.layout.bytesPerRow);
  EXPECT_EQ(a.layout.bitmapInfo, b.layout.bitmapInfo);
  EXPECT_EQ(a.profile.index(), b.profile.index());
  EXPECT_TRUE(std::equal(a.bytes.view.begin(), a.bytes.view.end(), b.bytes.view.begin(), b.bytes.view.end()));
}

TEST(ConfinedDoor, GivesWhatTheDoorInThisProcessGives) {
  Confined confined;
  for (const Bytes& file :
       {photograph("public.png"), photograph("public.png", 16), photograph("public.jpeg")}) {
    auto answer = confined.door.open(test::fileOf(file), Limits{});
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<Reader>>(answer));
    Reader& reader = *std::get<std::unique_ptr<Reader>>(answer);
    auto bare = CodecDoor::standard().open(test::fileOf(file), Limits{});
    Reader& bareReader = *std::get<std::unique_ptr<Reader>>(bare);
    EXPECT_EQ(reader.opened().type, bareReader.opened().type);
    EXPECT_EQ(reader.opened().count, 1u);
    auto properties = reader.properties(0);
    auto bareProperties = bareReader.properties(0);
    EXPECT_EQ(std::get<Properties>(properties).tree, std::get<Properties>(bareProperties).tree);
    EXPECT_EQ(std::get<Properties>(properties).carrier->exif,
              std::get<Properties>(bareProperties).carrier->exif);
    auto pixels = reader.decode(0);
    auto barePixels = bareReader.decode(0);
    expectTheSame(std::get<Pixels>(pixels), std::get<Pixels>(barePixels));
  }
}

TEST(ConfinedDoor, KeepsThePixelsWhenTheReaderIsGone) {
  Confined confined;
  std::optional<Pixels> kept;
  {
    auto answer = confined.door.open(test::fileOf(photograph("public.png")), Limits{});
    auto pixels = std::get<std::unique_ptr<Reader>>(answer)->decode(0);
    kept = std::get<Pixels>(std::move(pixels));
  }
  expectTheSame(*kept, test::decoded(photograph("public.png")));
}

/// Memory files of pixels that this process has mapped.
int mappedPixels() {
  std::ifstream maps("/proc/self/maps");
  int count = 0;
  for (std::string line; std::getline(maps, line);) count += line.find("/memfd:pixels") != std::string::npos;
  return count;
}

TEST(ConfinedDoor, KeepsNoPixelsThatNobodyNeeds) {
  Confined confined;
  auto answer = confined.door.open(test::fileOf(photograph("public.png")), Limits{});
  Reader& reader = *std::get<std::unique_ptr<Reader>>(answer);
  {
    const auto pixels = reader.decode(0);
    ASSERT_TRUE(std::holds_alternative<Pixels>(pixels));
    EXPECT_EQ(mappedPixels(), 1);
  }
  EXPECT_EQ(mappedPixels(), 0);
  EXPECT_TRUE(std::holds_alternative<Properties>(reader.properties(0)));
}

TEST(ConfinedDoor, GivesPixelsThatNobodyCanChange) {
  Confined confined;
  auto answer = confined.door.open(test::fileOf(photograph("public.png")), Limits{});
  auto pixels = std::get<std::unique_ptr<Reader>>(answer)->decode(0);
  const ByteView view = std::get<Pixels>(pixels).bytes.view;
  auto* page = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(view.data()) & ~std::uintptr_t{4095});
  EXPECT_NE(mprotect(page, 4096, PROT_READ | PROT_WRITE), 0);
}

TEST(ConfinedDoor, TellsWhatIsNoPictureAndWhatIsDamaged) {
  Confined confined;
  const auto text = confined.door.open(test::fileOf(test::bytesOfText("no picture at all")), Limits{});
  EXPECT_EQ(std::get<Fault>(text).kind, FaultKind::notImage);
  const auto nothing = confined.door.open(test::fileOf({}), Limits{});
  EXPECT_EQ(std::get<Fault>(nothing).kind, FaultKind::notImage);
  Bytes cut = photograph("public.png");
  cut.resize(cut.size() - 40);
  auto damaged = confined.door.open(test::fileOf(cut), Limits{});
  if (auto* reader = std::get_if<std::unique_ptr<Reader>>(&damaged)) {
    EXPECT_EQ(std::get<Fault>((*reader)->decode(0)).kind, FaultKind::damaged);
  }
}

TEST(ConfinedDoor, TellsWhichLimitStoppedAPicture) {
  Confined confined;
  Limits limits;
  limits.pixels = 100;
  auto answer = confined.door.open(test::fileOf(photograph("public.png")), limits);
  const Fault expected{FaultKind::limit, LimitName::pixels};
  EXPECT_EQ(std::get<Fault>(std::get<std::unique_ptr<Reader>>(answer)->decode(0)), expected);
}

TEST(ConfinedDoor, LeavesNoProcessAndNoDescriptorBehind) {
  Confined confined;
  const Bytes file = photograph("public.jpeg");
  const std::size_t before = openDescriptors();
  for (int i = 0; i < 200; ++i) {
    auto answer = confined.door.open(test::fileOf(file), Limits{});
    ASSERT_TRUE(std::holds_alternative<std::unique_ptr<Reader>>(answer))
        << i << ": fault " << static_cast<int>(std::get<Fault>(answer).kind);
    if (i % 2 == 0) continue;  // let go of before it has decoded
    ASSERT_TRUE(std::holds_alternative<Pixels>(std::get<std::unique_ptr<Reader>>(answer)->decode(0))) << i;
  }
  EXPECT_EQ(openDescriptors(), before);
}

TEST(ConfinedDoor, EndsWithItsOwner) {
  { const Confined confined; }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // no child is left
}

TEST(ConfinedDoor, ServesThreadsSideBySide) {
  Confined confined;
  const Bytes file = photograph("public.png");
  std::vector<std::thread> threads;
  std::atomic<int> decoded{0};
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 20; ++n) {
        auto answer = confined.door.open(test::fileOf(file), Limits{});
        auto* reader = std::get_if<std::unique_ptr<Reader>>(&answer);
        if (reader != nullptr && std::holds_alternative<Pixels>((*reader)->decode(0))) ++decoded;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(decoded, 80);
}

}  // namespace
}  // namespace ostra
