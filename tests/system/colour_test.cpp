#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>

#include <gtest/gtest.h>
#include <lcms2.h>

#include "platform/graphics/color_space.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;

Profile own(cmsHPROFILE profile) { return Profile(profile, &cmsCloseProfile); }

Profile rgbProfile(const cmsCIExyY& white, const cmsCIExyYTRIPLE& primaries, double gamma) {
  const std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)> curve(cmsBuildGamma(nullptr, gamma),
                                                                         &cmsFreeToneCurve);
  std::array<cmsToneCurve*, 3> curves = {curve.get(), curve.get(), curve.get()};
  return own(cmsCreateRGBProfile(&white, &primaries, curves.data()));
}

constexpr cmsCIExyY kD65 = {0.3127, 0.3290, 1};
constexpr cmsCIExyY kD50 = {0.3457, 0.3585, 1};

Profile displayP3() {
  return rgbProfile(kD65, {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}}, 2.2);
}
Profile adobeRgb() {
  return rgbProfile(kD65, {{0.640, 0.330, 1}, {0.210, 0.710, 1}, {0.150, 0.060, 1}}, 563.0 / 256);
}
Profile proPhoto() {
  return rgbProfile(kD50, {{0.7347, 0.2653, 1}, {0.1596, 0.8404, 1}, {0.0366, 0.0001, 1}}, 1.8);
}

// A scanner profile whose colours are a table: what no matrix describes.
cmsInt32Number bend(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
  const double r = in[0] / 65535.0, g = in[1] / 65535.0, b = in[2] / 65535.0;
  const double light = 0.25 * r + 0.65 * g + 0.1 * b;
  cmsCIELab lab = {100 * std::pow(light, 0.9), 90 * (r - g) * (0.4 + 0.6 * light), 80 * (light - b)};
  cmsFloat2LabEncoded(out, &lab);
  return TRUE;
}

Profile tableProfile() {
  cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(profile, 4.3);
  cmsSetDeviceClass(profile, cmsSigInputClass);
  cmsSetColorSpace(profile, cmsSigRgbData);
  cmsSetPCS(profile, cmsSigLabData);
  cmsMLU* text = cmsMLUalloc(nullptr, 1);
  cmsMLUsetASCII(text, "en", "US", "Table");
  cmsWriteTag(profile, cmsSigProfileDescriptionTag, text);
  cmsWriteTag(profile, cmsSigCopyrightTag, text);
  cmsMLUfree(text);
  cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 3, 3);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  cmsStage* table = cmsStageAllocCLut16bit(nullptr, 17, 3, 3, nullptr);
  cmsStageSampleCLut16bit(table, bend, nullptr, 0);
  cmsPipelineInsertStage(pipeline, cmsAT_END, table);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  return own(profile);
}

Bytes bytesOf(const Profile& profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile.get(), nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile.get(), bytes.data(), &size);
  return bytes;
}

Profile opened(ByteView bytes) {
  return own(cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
}

Profile named(std::string_view name) { return opened(CGColorSpace::createWithName(name)->iccData()); }

struct Source {
  const char* name;
  Profile (*make)();
};

struct Case {
  Source source;
  int bits;
  bool gray;
};

class Colour : public testing::TestWithParam<Case> {
 protected:
  static constexpr std::size_t kWidth = 113, kHeight = 67;

  // Colours all over the space, its corners and the neutrals.
  static std::vector<std::uint16_t> colours(int bits) {
    const unsigned top = bits == 8 ? 255 : 65535;
    std::mt19937 random(5);
    std::vector<std::uint16_t> samples(kWidth * kHeight * 3);
    for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>(random() % (top + 1));
    for (unsigned corner = 0; corner < 8; ++corner) {
      for (unsigned c = 0; c < 3; ++c)
        samples[corner * 3 + c] = static_cast<std::uint16_t>((corner >> c & 1) * top);
    }
    for (unsigned gray = 0; gray < 256; ++gray) {
      for (unsigned c = 0; c < 3; ++c)
        samples[(8 + gray) * 3 + c] = static_cast<std::uint16_t>(gray * top / 255);
    }
    return samples;
  }

  void writeSource(const std::string& path, const std::vector<std::uint16_t>& samples,
                   const Bytes& profile) const {
    Bytes raw;
    for (const std::uint16_t sample : samples) {
      raw.push_back(static_cast<std::uint8_t>(sample & 0xff));
      if (GetParam().bits == 16) raw.push_back(static_cast<std::uint8_t>(sample >> 8));
    }
    writeFile(folder.path("raw.rgb"), raw);
    writeFile(folder.path("source.icc"), profile);
    // Without a profile of its own, the raw picture takes the given one without conversion.
    convert({"-size", std::to_string(kWidth) + "x" + std::to_string(kHeight), "-depth",
             std::to_string(GetParam().bits), "-endian", "LSB", "rgb:" + folder.path("raw.rgb"), "-profile",
             folder.path("source.icc"), path});
  }

  TemporaryFolder folder;
};

TEST_P(Colour, AgreesWithADoublePrecisionEvaluationOfTheSameProfiles) {
  OSTRA_NEEDS_PROGRAM("convert");
  const InstalledProgram program;
  const Case& test = GetParam();
  const Bytes profile = bytesOf(test.source.make());
  const Profile source = opened(profile);  // as stored: a profile's numbers are rounded when it is saved
  const auto samples = colours(test.bits);
  const std::string path = folder.path("a.png");
  writeSource(path, samples, profile);
  const ProgramResult run = program.run({test.gray ? "grayscale" : "srgb", path});
  ASSERT_EQ(run.status, 0) << run.errors;
  const auto result =
      test.bits == 16 ? samples16(path, test.gray ? "R" : "RGB") : std::vector<std::uint16_t>{};
  const auto result8 = test.bits == 8 ? samples8(path, test.gray ? "R" : "RGB") : std::vector<std::uint8_t>{};

  const Profile target = named(test.gray ? kCGColorSpaceGenericGrayGamma2_2 : kCGColorSpaceSRGB);
  const std::unique_ptr<void, decltype(&cmsDeleteTransform)> reference(
      cmsCreateTransform(source.get(), TYPE_RGB_DBL, target.get(), test.gray ? TYPE_GRAY_DBL : TYPE_RGB_DBL,
                         INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE),
      &cmsDeleteTransform);
  // Relative, because Little CMS adds black-point compensation to the perceptual intent of version 4
  // profiles. These profiles have one table or none, which both intents use.
  ASSERT_NE(reference, nullptr);
  const double top = test.bits == 8 ? 255 : 65535;
  const double tolerance = test.bits == 8 ? 1 : 2;
  const std::size_t channels = test.gray ? 1 : 3;
  ASSERT_EQ(test.bits == 8 ? result8.size() : result.size(), kWidth * kHeight * channels);
  for (std::size_t pixel = 0; pixel < kWidth * kHeight; ++pixel) {
    std::array<double, 3> in{}, out{};
    for (std::size_t c = 0; c < 3; ++c) in[c] = samples[pixel * 3 + c] / top;
    cmsDoTransform(reference.get(), in.data(), out.data(), 1);
    for (std::size_t c = 0; c < channels; ++c) {
      const double expected = std::round(std::clamp(out[c], 0.0, 1.0) * top);
      const double actual = test.bits == 8 ? result8[pixel * channels + c] : result[pixel * channels + c];
      ASSERT_NEAR(actual, expected, tolerance) << "pixel " << pixel << " channel " << c;
    }
  }
}

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const Source& source : {Source{"P3", displayP3}, Source{"AdobeRGB", adobeRgb},
                               Source{"ProPhoto", proPhoto}, Source{"Table", tableProfile}}) {
    for (const int bits : {8, 16}) {
      for (const bool gray : {false, true}) all.push_back({source, bits, gray});
    }
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(From, Colour, testing::ValuesIn(cases()),
                         [](const testing::TestParamInfo<Case>& tested) {
                           return std::string(tested.param.source.name) + std::to_string(tested.param.bits) +
                                  (tested.param.gray ? "ToGray" : "ToSrgb");
                         });

TEST(OwnProfiles, AgreeWithTheStandardsPrimariesAndCurves) {
  // Little CMS builds its sRGB from the standard's numbers; ours is built from colourants.
  const Profile ours = named(kCGColorSpaceSRGB);
  const Profile standard = own(cmsCreate_sRGBProfile());
  const std::unique_ptr<void, decltype(&cmsDeleteTransform)> transform(
      cmsCreateTransform(standard.get(), TYPE_RGB_DBL, ours.get(), TYPE_RGB_DBL, INTENT_RELATIVE_COLORIMETRIC,
                         cmsFLAGS_NOOPTIMIZE),
      &cmsDeleteTransform);
  std::mt19937 random(9);
  for (int i = 0; i < 5000; ++i) {
    std::array<double, 3> in{}, out{};
    for (double& value : in) value = static_cast<double>(random()) / 4294967295.0;
    cmsDoTransform(transform.get(), in.data(), out.data(), 1);
    for (std::size_t c = 0; c < 3; ++c) ASSERT_NEAR(in[c] * 255, out[c] * 255, 1);
  }
}

}  // namespace
}  // namespace ostra::test
