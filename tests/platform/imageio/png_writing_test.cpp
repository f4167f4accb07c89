#include <gtest/gtest.h>

#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Kind {
  const char* name;
  CGColorSpaceModel model;
  CGImageAlphaInfo alpha;
  unsigned samples;
  unsigned bits;
};

std::vector<Kind> allKinds() {
  std::vector<Kind> kinds;
  for (const unsigned bits : {8u, 16u}) {
    kinds.push_back({"Gray", CGColorSpaceModel::monochrome, CGImageAlphaInfo::none, 1, bits});
    kinds.push_back({"GrayAlpha", CGColorSpaceModel::monochrome, CGImageAlphaInfo::last, 2, bits});
    kinds.push_back({"Rgb", CGColorSpaceModel::rgb, CGImageAlphaInfo::none, 3, bits});
    kinds.push_back({"RgbSkip", CGColorSpaceModel::rgb, CGImageAlphaInfo::noneSkipLast, 4, bits});
    kinds.push_back({"Rgba", CGColorSpaceModel::rgb, CGImageAlphaInfo::last, 4, bits});
  }
  return kinds;
}

std::string nameOf(const testing::TestParamInfo<Kind>& info) {
  return info.param.name + std::to_string(info.param.bits);
}

class PngWriting : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }
  static Pixels pixels() {
    const Kind& kind = GetParam();
    return pixelsOf(randomBytes(kWidth * kHeight * kind.samples * kind.bits / 8), kWidth, kHeight, kind.model,
                    kind.bits, kind.alpha);
  }
};

TEST_P(PngWriting, IsReadBackExactlyByImageMagick) {
  const TemporaryFolder folder;
  const Bytes file = encoded("public.png", pixels());
  writeFile(folder.path("a.png"), file);
  EXPECT_EQ(rgba16ByImageMagick(folder.path("a.png")), asRgba16(pixels()));
  EXPECT_EQ(file[24], GetParam().bits);
}

TEST_P(PngWriting, IsReadBackExactlyByUs) {
  EXPECT_EQ(asRgba16(decoded(encoded("public.png", pixels()))), asRgba16(pixels()));
}

TEST_P(PngWriting, IsAcceptedByPngcheck) {
  OSTRA_NEEDS_PROGRAM("pngcheck");
  const TemporaryFolder folder;
  writeFile(folder.path("a.png"), encoded("public.png", pixels()));
  EXPECT_NE(run({"pngcheck", "-v", folder.path("a.png")}).find("No errors detected"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, PngWriting, testing::ValuesIn(allKinds()), nameOf);

TEST(PngWritingRows, MayBePadded) {
  Bytes padded;
  const Bytes tight = randomBytes(5 * 4);
  for (int y = 0; y < 4; ++y) {
    padded.insert(padded.end(), tight.begin() + 5 * y, tight.begin() + 5 * y + 5);
    padded.insert(padded.end(), 11, 0xEE);
  }
  Pixels pixels = pixelsOf(padded, 5, 4, CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none);
  pixels.layout.bitsPerPixel = 8;
  const Pixels back = decoded(encoded("public.png", pixels));
  EXPECT_EQ(Bytes(back.bytes.view.begin(), back.bytes.view.end()), tight);
}

TEST(PngWritingInk, IsRefused) {
  const Pixels pixels = pixelsOf(Bytes(4 * 4), 2, 2, CGColorSpaceModel::cmyk, 8, CGImageAlphaInfo::none);
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode("public.png", pixels, nullptr)));
}

}  // namespace
}  // namespace ostra::test
