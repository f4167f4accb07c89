#include "tests/platform/graphics/built_profiles.h"

#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

#include <lcms2.h>

namespace ostra::test {
namespace {

Bytes saved(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

void describe(cmsHPROFILE profile, const char* text) {
  cmsMLU* description = cmsMLUalloc(nullptr, 1);
  cmsMLUsetASCII(description, "en", "US", text);
  cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
  cmsMLUfree(description);
}

cmsCIExyYTRIPLE someRGB() { return {{0.64, 0.33, 1}, {0.29, 0.60, 1}, {0.15, 0.06, 1}}; }
cmsCIExyY someWhite() { return {0.3127, 0.3290, 1}; }

constexpr double amount(cmsUInt16Number word) { return word / 65535.0; }
cmsUInt16Number word(double fraction) {
  return static_cast<cmsUInt16Number>(std::lround(std::fmin(1, std::fmax(0, fraction)) * 65535));
}

/// Lab of version 2 in 16 bits.
void storeLab(double l, double a, double b, cmsUInt16Number* out) {
  const cmsCIELab lab{l, a, b};
  cmsFloat2LabEncodedV2(out, &lab);
}

cmsInt32Number labOfInks(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
  const double c = amount(in[0]), m = amount(in[1]), y = amount(in[2]), k = amount(in[3]);
  const double paper = 1 - 0.92 * k;
  storeLab(8 + 88 * paper * (1 - 0.35 * c) * (1 - 0.5 * m) * (1 - 0.08 * y),
           70 * paper * (m - 0.6 * c + 0.1 * y), 80 * paper * (y - 0.5 * c - 0.1 * m), out);
  return 1;
}

/// The same print as measured: its black is blacker.
cmsInt32Number measuredLabOfInks(const cmsUInt16Number in[], cmsUInt16Number out[], void* cargo) {
  labOfInks(in, out, cargo);
  out[0] = word(amount(out[0]) - 0.07 * amount(in[3]));
  return 1;
}

cmsInt32Number inksOfLab(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
  out[3] = word(1 - amount(in[0]));
  out[0] = word(0.5 - (amount(in[1]) - 0.5) * 2);
  out[1] = word(0.5 + (amount(in[1]) - 0.5) * 2);
  out[2] = word(0.5 + (amount(in[2]) - 0.5) * 2);
  return 1;
}

cmsInt32Number labOfRGB(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
  const double r = amount(in[0]), g = amount(in[1]), b = amount(in[2]);
  out[0] = word(0.04 + 0.96 * std::pow(0.3 * r + 0.6 * g + 0.1 * b, 0.8));
  out[1] = word(0.5 + 0.3 * (r - g));
  out[2] = word(0.5 + 0.3 * (g - b));
  return 1;
}

cmsInt32Number rgbOfLab(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
  const double l = amount(in[0]), a = amount(in[1]) - 0.5, b = amount(in[2]) - 0.5;
  out[0] = word(l + a), out[1] = word(l - a + b), out[2] = word(l - b);
  return 1;
}

using Sampler = cmsInt32Number (*)(const cmsUInt16Number[], cmsUInt16Number[], void*);

void writeTable(cmsHPROFILE profile, cmsTagSignature tag, cmsUInt32Number in, cmsUInt32Number out,
                Sampler sampler) {
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, in, out);
  cmsStage* table = cmsStageAllocCLut16bit(nullptr, 9, in, out, nullptr);
  cmsStageSampleCLut16bit(table, sampler, nullptr, 0);
  cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, cmsStageAllocToneCurves(nullptr, in, nullptr));
  cmsPipelineInsertStage(pipeline, cmsAT_END, table);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, out, nullptr));
  cmsWriteTag(profile, tag, pipeline);
  cmsPipelineFree(pipeline);
}

struct Samplers {
  Sampler perceptual, measured, back;
};

Bytes tableProfile(double version, cmsColorSpaceSignature space, cmsUInt32Number inks,
                   const Samplers& samplers) {
  cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(profile, version);
  cmsSetDeviceClass(profile, cmsSigOutputClass);
  cmsSetColorSpace(profile, space);
  cmsSetPCS(profile, cmsSigLabData);
  describe(profile, "A table");
  cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
  writeTable(profile, cmsSigAToB0Tag, inks, 3, samplers.perceptual);
  writeTable(profile, cmsSigAToB1Tag, inks, 3, samplers.measured);
  writeTable(profile, cmsSigBToA0Tag, 3, inks, samplers.back);
  return saved(profile);
}

Bytes rgbOfCurve(cmsToneCurve* curve, double version) {
  cmsToneCurve* curves[] = {curve, curve, curve};
  const auto white = someWhite();
  const auto primaries = someRGB();
  cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  cmsSetProfileVersion(profile, version);
  describe(profile, "Curves");
  cmsFreeToneCurve(curve);
  return saved(profile);
}

struct Side {
  cmsHPROFILE profile;
  cmsUInt32Number components;
  cmsUInt32Number format;
  double scale;  // the library counts inks to 100
};

Side open(ByteView bytes) {
  cmsHPROFILE profile = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
  if (profile == nullptr) throw std::runtime_error("the library refuses this profile");
  // A profile of curves has no perceptual table: see it without the black point rule of version 4.
  if (cmsIsTag(profile, cmsSigAToB0Tag) == 0 && cmsGetProfileVersion(profile) >= 4)
    cmsSetProfileVersion(profile, 2.4);
  const auto space = cmsGetColorSpace(profile);
  const cmsUInt32Number components = cmsChannelsOf(space);
  const auto kind = static_cast<cmsUInt32Number>(_cmsLCMScolorSpace(space));
  return {profile, components, FLOAT_SH(1) | COLORSPACE_SH(kind) | CHANNELS_SH(components) | BYTES_SH(0),
          space == cmsSigCmykData ? 100.0 : 1.0};
}

}  // namespace

Bytes cmykTableProfile() {
  return tableProfile(2.4, cmsSigCmykData, 4, {labOfInks, measuredLabOfInks, inksOfLab});
}
Bytes rgbTableProfile() { return tableProfile(4.3, cmsSigRgbData, 3, {labOfRGB, labOfRGB, rgbOfLab}); }

Bytes curveTableProfile(int entries, int dark) {
  std::vector<cmsUInt16Number> table(static_cast<std::size_t>(dark), 0);
  for (int i = 0; i < entries; ++i) {
    const double value = i / (entries - 1.0);
    table.push_back(word(value < 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4)));
  }
  return rgbOfCurve(
      cmsBuildTabulatedToneCurve16(nullptr, static_cast<cmsUInt32Number>(table.size()), table.data()), 2.1);
}

Bytes gammaProfile(double gamma, double version) {
  return rgbOfCurve(cmsBuildGamma(nullptr, gamma), version);
}

Bytes grayLabProfile() {
  cmsToneCurve* curve = cmsBuildGamma(nullptr, 1);
  cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
  cmsSetPCS(profile, cmsSigLabData);
  cmsSetProfileVersion(profile, 2.1);
  cmsFreeToneCurve(curve);
  return saved(profile);
}

Bytes withHeaderText(Bytes profile, std::size_t offset, const char (&text)[5]) {
  std::memcpy(profile.data() + offset, text, 4);
  return profile;
}

std::vector<double> convertByLibrary(ByteView from, ByteView to, const std::vector<double>& values,
                                     CGColorRenderingIntent intent) {
  const Side source = open(from), destination = open(to);
  const cmsUInt32Number intents[] = {INTENT_PERCEPTUAL, INTENT_ABSOLUTE_COLORIMETRIC,
                                     INTENT_RELATIVE_COLORIMETRIC, INTENT_PERCEPTUAL, INTENT_SATURATION};
  cmsHTRANSFORM transform =
      cmsCreateTransform(source.profile, source.format, destination.profile, destination.format,
                         intents[static_cast<int>(intent)], cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
  if (transform == nullptr) throw std::runtime_error("the library makes no transform");
  std::vector<double> in = values;
  for (double& value : in) value *= source.scale;
  // Lab of bytes and words: 0 to 100, and -128 to 127.
  if (cmsGetColorSpace(source.profile) == cmsSigLabData)
    for (std::size_t i = 0; i < in.size(); ++i) in[i] = i % 3 == 0 ? 100 * in[i] : 255 * in[i] - 128;
  const std::size_t pixels = values.size() / source.components;
  std::vector<double> out(pixels * destination.components);
  cmsDoTransform(transform, in.data(), out.data(), static_cast<cmsUInt32Number>(pixels));
  for (double& value : out) value = std::fmin(1, std::fmax(0, value / destination.scale));
  cmsDeleteTransform(transform);
  cmsCloseProfile(source.profile);
  cmsCloseProfile(destination.profile);
  return out;
}

}  // namespace ostra::test
