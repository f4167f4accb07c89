#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/foundation/service.h"
#include "platform/imageio/decoding_notice.h"
#include "platform/imageio/image_source.h"
#include "tests/platform/imageio/decoder/confined.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra {
namespace {

using test::Confined;

/// A door behind which the limits are smaller.
class NarrowDoor : public CodecDoor {
 public:
  NarrowDoor(CodecDoor& door, const Limits& limits) : door_(door), limits_(limits) {}
  Answer<std::unique_ptr<Reader>> open(UniqueFd file, const Limits&) override {
    return door_.open(std::move(file), limits_);
  }
  Answer<Bytes> encode(std::string_view type, const Pixels& pixels, const Properties* properties) override {
    return door_.encode(type, pixels, properties);
  }
  std::set<std::string> writable() const override { return door_.writable(); }

 private:
  CodecDoor& door_;
  const Limits limits_;
};

class LastNotice : public DecodingNotice {
 public:
  void pictureStopped(const URL& picture, const Fault& fault) override {
    told.push_back({picture.lastPathComponent(), fault.limit});
  }
  std::vector<std::pair<std::string, LimitName>> told;
};

/// A limit just below what the sample asks for.
struct Case {
  const char* name;
  LimitName limit;
  std::function<void(Limits&)> narrow;
};

void PrintTo(const Case& limit, std::ostream* out) { *out << limit.name; }

/// A picture of the usual size with a kilobyte of metadata and a profile of a kilobyte.
Bytes sample(std::string_view type) {
  Properties properties;
  properties.tree = {{"{TIFF}", Dictionary{{"ImageDescription", std::string(1000, 'x')}}}};
  Pixels pixels = test::pixelsOf(test::randomBytes(test::kWidth * test::kHeight * 3), test::kWidth,
                                 test::kHeight, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::none);
  pixels.profile = NamedSpace{std::string(kCGColorSpaceDisplayP3)};
  return test::encoded(type, pixels, &properties);
}

class LimitsOfBothDoors : public testing::TestWithParam<Case> {
 protected:
  static void expectStopped(CodecDoor& door, const std::string& path, const Limits& limits, LimitName limit) {
    NarrowDoor narrow(door, limits);
    const Service<CodecDoor>::Override behind(narrow);
    LastNotice notice;
    const Service<DecodingNotice>::Override noticed(notice);
    const auto source = CGImageSource::createWithURL(URL::fileURLWithPath(path), {});
    ASSERT_NE(source, nullptr);
    // Opening refuses nothing: the file is known for what it is.
    EXPECT_EQ(source->count(), 1) << path;
    const CGImageRef image = source->createImageAtIndex(0, {});
    if (limit == LimitName::none) {
      EXPECT_NE(image, nullptr) << path;
      EXPECT_TRUE(notice.told.empty());
    } else {
      EXPECT_EQ(image, nullptr) << path;
      const decltype(notice.told) expected = {{path.substr(path.rfind('/') + 1), limit}};
      EXPECT_EQ(notice.told, expected) << path;
    }
  }

  static void expectOfBothDoors(const Limits& limits, LimitName limit) {
    const test::TemporaryFolder folder;
    test::writeFile(folder.path("a.png"), sample("public.png"));
    test::writeFile(folder.path("a.jpg"), sample("public.jpeg"));
    Confined confined;
    for (CodecDoor* door : {&CodecDoor::standard(), static_cast<CodecDoor*>(&confined.door)}) {
      for (const char* name : {"a.png", "a.jpg"}) expectStopped(*door, folder.path(name), limits, limit);
    }
  }
};

TEST_P(LimitsOfBothDoors, StopThePictureAndSayWhichItWas) {
  Limits limits;
  GetParam().narrow(limits);
  expectOfBothDoors(limits, GetParam().limit);
}

INSTANTIATE_TEST_SUITE_P(
    Each, LimitsOfBothDoors,
    testing::Values(
        Case{"Pixels", LimitName::pixels,
             [](Limits& limits) { limits.pixels = test::kWidth * test::kHeight - 1; }},
        Case{"DecodedBytes", LimitName::decodedBytes,
             [](Limits& limits) { limits.decodedBytes = test::kWidth * test::kHeight * 4 - 1; }},
        Case{"FileSize", LimitName::decodedBytes, [](Limits& limits) { limits.decodedBytes = 200; }},
        Case{"CompressionRatio", LimitName::compressionRatio,
             [](Limits& limits) { limits.compressionRatio = limits.harmlessBytes = 0; }},
        Case{"MetadataBytes", LimitName::metadataBytes, [](Limits& limits) { limits.metadataBytes = 1000; }},
        Case{"ProfileBytes", LimitName::profileBytes, [](Limits& limits) { limits.profileBytes = 300; }},
        Case{"Seconds", LimitName::seconds, [](Limits& limits) { limits.seconds = 0; }}),
    [](const testing::TestParamInfo<Case>& limit) { return std::string(limit.param.name); });

TEST_F(LimitsOfBothDoors, StopNothingThatJustFits) {
  Limits limits;
  limits.pixels = test::kWidth * test::kHeight;
  limits.decodedBytes = limits.pixels * 4;
  limits.compressionRatio = 10;
  limits.harmlessBytes = 0;
  limits.metadataBytes = 3000;
  limits.profileBytes = 3000;
  limits.seconds = 30;
  limits.frames = 1;
  expectOfBothDoors(limits, LimitName::none);
}

TEST(LimitOfFrames, EndsTheCountingAndRefusesNothing) {
  const Bytes animation = test::withPngChunk(
      sample("public.png"), test::pngChunk("acTL", Bytes{0x7F, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}));
  Limits limits;
  limits.frames = 7;
  Confined confined;
  for (CodecDoor* door : {&CodecDoor::standard(), static_cast<CodecDoor*>(&confined.door)}) {
    auto answer = door->open(test::fileOf(animation), limits);
    Reader& reader = *std::get<std::unique_ptr<Reader>>(answer);
    EXPECT_EQ(reader.opened().count, 7u);
    EXPECT_TRUE(std::holds_alternative<Pixels>(reader.decode(0)));
  }
}

}  // namespace
}  // namespace ostra
