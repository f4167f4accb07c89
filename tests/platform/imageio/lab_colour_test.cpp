#include "platform/imageio/codecs/lab_colour.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include "platform/graphics/color_space.h"
#include "tests/platform/imageio/psd_files.h"

namespace ostra::test {
namespace {

// Little CMS, from Lab to the profile that the program gives such pixels, in double precision.
class Peer {
 public:
  Peer() {
    const auto bytes = CGColorSpace::createWithName(kCGColorSpaceROMMRGB)->iccData();
    const cmsHPROFILE lab = cmsCreateLab4Profile(nullptr);
    const cmsHPROFILE romm = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    transform_ = cmsCreateTransform(lab, TYPE_Lab_DBL, romm, TYPE_RGB_DBL, INTENT_RELATIVE_COLORIMETRIC,
                                    cmsFLAGS_NOOPTIMIZE);
    cmsCloseProfile(lab);
    cmsCloseProfile(romm);
  }
  ~Peer() { cmsDeleteTransform(transform_); }
  std::array<double, 3> operator()(double lightness, double a, double b) const {
    const double in[3] = {lightness, a, b};
    std::array<double, 3> out{};
    cmsDoTransform(transform_, in, out.data(), 1);
    return out;
  }

 private:
  cmsHTRANSFORM transform_;
};

TEST(LabColour, IsWhatTheColourLibraryMakesOfIt) {
  const Peer peer;
  int inside = 0;
  for (int lightness = 2; lightness <= 100; lightness += 7) {
    for (int a = -120; a <= 120; a += 16) {
      for (int b = -120; b <= 120; b += 16) {
        const auto theirs = peer(lightness, a, b);
        const auto ours = rommOfLab(lightness, a, b);
        for (std::size_t c = 0; c < 3; ++c) {
          if (theirs[c] < 0.01 || theirs[c] > 0.999) continue;
          ASSERT_NEAR(ours[c] / 65535.0, theirs[c], 0.0004) << lightness << " " << a << " " << b;
          ++inside;
        }
      }
    }
  }
  EXPECT_GT(inside, 3000);
}

TEST(LabDocuments, AreReadAsRomm) {
  for (const unsigned bits : {8u, 16u}) {
    PsdParts parts;
    parts.mode = 9;
    parts.bits = bits;
    parts.width = 2;
    parts.height = 1;
    // White, and a red of middle lightness: L 50, a 60, b 40.
    parts.samples = bits == 8 ? Bytes{255, 128, 128, 188, 128, 168}
                              : Bytes{255, 255, 128, 0, 128, 0, 188, 0, 128, 0, 168, 0};
    const Pixels pixels = decoded(psdOf(parts));
    EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceROMMRGB);
    const auto samples = asRgba16(pixels);
    const auto red = Peer()(bits == 8 ? 50.196 : 50.0008, 60, 40);
    for (std::size_t c = 0; c < 3; ++c) {
      EXPECT_NEAR(samples[c], 65535, 20);
      EXPECT_NEAR(samples[4 + c] / 65535.0, red[c], 0.002);
    }
    EXPECT_EQ(propertiesOf(psdOf(parts)).tree.at("ColorModel"), Value("Lab"));
  }
}

}  // namespace
}  // namespace ostra::test
