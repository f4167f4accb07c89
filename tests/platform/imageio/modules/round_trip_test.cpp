#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

// Every format that is written, with everything that a picture can be, read by programs that nobody here
// wrote.

namespace ostra {
namespace {

using namespace test;

/// Where exiftool reads the density, and how many of its units are an inch.
struct DensityTags {
  const char* x;
  const char* y;
  double inch = 1;
  /// The power of ten of their unit, where exiftool tells that apart.
  const char* xPower = nullptr;
  const char* yPower = nullptr;
};
constexpr DensityTags kNoDensity{nullptr, nullptr};

/// Whether pictures of the format are tried with a profile.
enum class Tagged { never, sometimes, always };

struct Format {
  const char* name;
  std::string_view type;
  const char* extension;
  bool deep = false, gray = true, grayWithAlpha = true, alpha = true, anyProfile = true, orientation = true;
  Tagged tagged = Tagged::sometimes;
  DensityTags density = kNoDensity;
  double meanError = 0;  // of full scale; 0: exact
  /// Levels that samples have: a palette holds few colours.
  unsigned levels = 0;
  /// A program that writes the picture to a PNG; ImageMagick reads the file itself when there is none.
  std::vector<std::string> (*toPng)(const std::string& from, const std::string& to) = nullptr;
  /// Another one for pictures with a profile, to a TIFF, where the former obeys that or cannot hand it on.
  std::vector<std::string> (*toTiff)(const std::string& from, const std::string& to) = nullptr;
};

const Format kFormats[] = {
    {.name = "Png",
     .type = "public.png",
     .extension = "png",
     .deep = true,
     .density = {"PNG-pHYs:PixelsPerUnitX", "PNG-pHYs:PixelsPerUnitY", 0.0254}},
    {.name = "Jpeg",
     .type = "public.jpeg",
     .extension = "jpg",
     .alpha = false,
     .density = {"JFIF:XResolution", "JFIF:YResolution"},
     .meanError = 0.01},
    {.name = "Tiff",
     .type = "public.tiff",
     .extension = "tif",
     .deep = true,
     .density = {"IFD0:XResolution", "IFD0:YResolution"}},
    {.name = "Jpeg2000",
     .type = "public.jpeg-2000",
     .extension = "jp2",
     .deep = true,
     .density = {"Jpeg2000:DisplayXResolution", "Jpeg2000:DisplayYResolution", 0.0254,
                 "Jpeg2000:DisplayXResolutionUnit", "Jpeg2000:DisplayYResolutionUnit"},
     .toPng =
         [](const std::string& from, const std::string& to) {
           return std::vector<std::string>{"opj_decompress", "-i", from, "-o", to};
         },
     .toTiff =
         [](const std::string& from, const std::string& to) {
           return std::vector<std::string>{"ffmpeg", "-v", "error", "-i", from, to};
         }},
    {.name = "Heic",
     .type = "public.heic",
     .extension = "heic",
     .deep = true,
     .density = {"IFD0:XResolution", "IFD0:YResolution"},
     .meanError = 0.02,
     .toPng =
         [](const std::string& from, const std::string& to) {
           return std::vector<std::string>{"heif-convert", from, to};
         },
     .toTiff =
         [](const std::string& from, const std::string& to) {
           return std::vector<std::string>{"vips", "copy", from, to};
         }},
    {.name = "Avif",
     .type = "public.avif",
     .extension = "avif",
     .deep = true,
     .density = {"IFD0:XResolution", "IFD0:YResolution"},
     .meanError = 0.01,
     .toPng =
         [](const std::string& from, const std::string& to) {
           return std::vector<std::string>{"avifdec", "-d", "16", from, to};
         },
     .toTiff =
         [](const std::string& from, const std::string& to) {
           return std::vector<std::string>{"vips", "copy", from, to};
         }},
    {.name = "Gif",
     .type = "com.compuserve.gif",
     .extension = "gif",
     .gray = false,
     .grayWithAlpha = false,
     .orientation = false,
     .levels = 6},
    {.name = "Bmp",
     .type = "com.microsoft.bmp",
     .extension = "bmp",
     .grayWithAlpha = false,
     .orientation = false,
     .density = {"File:PixelsPerMeterX", "File:PixelsPerMeterY", 0.0254}},
    {.name = "Ico",
     .type = "com.microsoft.ico",
     .extension = "ico",
     .gray = false,
     .grayWithAlpha = false,
     .orientation = false,
     .tagged = Tagged::never},
    {.name = "Pnm",
     .type = "public.pbm",
     .extension = "pam",
     .deep = true,
     .anyProfile = false,
     .orientation = false},
    {.name = "Tga",
     .type = "com.truevision.tga-image",
     .extension = "tga",
     .grayWithAlpha = false,
     .anyProfile = false,
     .orientation = false},
};

struct Picture {
  Format format;
  unsigned bits;
  CGColorSpaceModel model;
  bool alpha, profile;

  bool isGray() const { return model == CGColorSpaceModel::monochrome; }
  std::string name() const {
    return std::string(format.name) + std::to_string(bits) + (isGray() ? "Gray" : "Rgb") +
           (alpha ? "WithAlpha" : "") + (profile ? "WithProfile" : "");
  }
};

void PrintTo(const Picture& picture, std::ostream* out) { *out << picture.name(); }

bool isTried(Tagged tagged, bool profile) {
  return tagged == Tagged::sometimes || (tagged == Tagged::always) == profile;
}

std::vector<Picture> everyPicture() {
  std::vector<Picture> pictures;
  for (const Format& format : kFormats)
    for (const unsigned bits : {8u, 16u})
      for (const auto model : {CGColorSpaceModel::monochrome, CGColorSpaceModel::rgb})
        for (const bool alpha : {false, true})
          for (const bool profile : {false, true})
            if ((format.alpha || !alpha) && isTried(format.tagged, profile))
              pictures.push_back({format, bits, model, alpha, profile});
  return pictures;
}

std::uint16_t sampleAt(const Bytes& bytes, std::size_t index, unsigned bits) {
  if (bits == 8) return bytes[index];
  return static_cast<std::uint16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
}
void setSample(Bytes& bytes, std::size_t index, unsigned bits, unsigned value) {
  if (bits == 8) {
    bytes[index] = static_cast<std::uint8_t>(value);
    return;
  }
  bytes[2 * index] = static_cast<std::uint8_t>(value);
  bytes[2 * index + 1] = static_cast<std::uint8_t>(value >> 8);
}

/// As few colours as a palette has, and pixels that are there or not.
void reduce(Bytes& bytes, const Picture& picture, unsigned components) {
  const unsigned full = picture.bits == 8 ? 255 : 65535, levels = picture.format.levels;
  for (std::size_t i = 0; i < bytes.size() / (picture.bits / 8); i += components) {
    const bool there = !picture.alpha || sampleAt(bytes, i + components - 1, picture.bits) % 2 == 0;
    for (unsigned c = 0; c < components; ++c) {
      const bool isAlpha = picture.alpha && c == components - 1;
      const unsigned level = isAlpha ? levels - 1 : sampleAt(bytes, i + c, picture.bits) % levels;
      setSample(bytes, i + c, picture.bits, there ? level * full / (levels - 1) : 0);
    }
  }
}

Pixels pixelsFor(const Picture& picture, std::uint32_t width, std::uint32_t height, unsigned seed) {
  const unsigned components = (picture.isGray() ? 1 : 3) + (picture.alpha ? 1 : 0);
  const std::size_t size = std::size_t{width} * height * components * (picture.bits / 8);
  Bytes samples = picture.format.meanError > 0 ? softSamples(width, height, components, picture.bits)
                                               : randomBytes(size, seed);
  if (picture.format.levels > 0) reduce(samples, picture, components);
  Pixels pixels = pixelsOf(std::move(samples), width, height, picture.model, picture.bits,
                           picture.alpha ? CGImageAlphaInfo::last : CGImageAlphaInfo::none);
  if (picture.profile)
    pixels.profile =
        NamedSpace{std::string(picture.isGray() ? kCGColorSpaceGenericGrayGamma2_2 : kCGColorSpaceDisplayP3)};
  return pixels;
}

Properties propertiesWith(int orientation, const Density& density) {
  Properties properties;
  if (orientation > 0) properties.tree.insert_or_assign("Orientation", Value(orientation));
  if (density.x > 0) {
    properties.tree.insert_or_assign("DPIWidth", Value(density.x));
    properties.tree.insert_or_assign("DPIHeight", Value(density.y));
  }
  return properties;
}

/// What is left of the samples where 8 bits are written.
std::vector<std::uint16_t> kept(std::vector<std::uint16_t> samples, const Format& format) {
  if (!format.deep)
    for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>((sample + 128) / 257 * 257);
  return samples;
}

double meanError(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b) {
  if (a.size() != b.size()) return 1;
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(int{a[i]} - int{b[i]});
  return sum / static_cast<double>(a.size()) / 65535;
}

/// Tags of all files of a folder, by file name and then by "Group:Name"; one call, because starting costs.
std::map<std::string, std::map<std::string, std::string>> tagsOf(const TemporaryFolder& folder) {
  std::map<std::string, std::map<std::string, std::string>> all;
  std::istringstream lines(runProgram({"exiftool", "-n", "-args", "-G1", "-a", folder.path("")}).output);
  std::map<std::string, std::string>* tags = nullptr;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("# ") || line.starts_with("======== ")) {
      tags = &all[line.substr(line.rfind('/') + 1)];
    } else if (const std::size_t equals = line.find('='); tags != nullptr && equals != std::string::npos) {
      (*tags)[line.substr(1, equals - 1)] = line.substr(equals + 1);
    }
  }
  return all;
}

double numberOf(std::map<std::string, std::string>& tags, const char* tag, const char* power) {
  const double number = std::atof(tags[tag].c_str());
  return power == nullptr ? number : number * std::pow(10, std::atof(tags[power].c_str()));
}

class RoundTrip : public testing::TestWithParam<Picture> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
    for (const auto tool : {picture.format.toPng, picture.format.toTiff}) {
      if (tool == nullptr) continue;
      OSTRA_NEEDS_PROGRAM(tool("", "").front());
    }
  }

  bool isRefused() const { return picture.profile && !picture.isGray() && !picture.format.anyProfile; }
  std::vector<std::uint16_t> readByOthers(const std::string& path) const {
    const bool tagged = picture.profile && picture.format.toTiff != nullptr;
    const auto tool = tagged ? picture.format.toTiff : picture.format.toPng;
    if (tool == nullptr) return rgba16ByImageMagick(path);
    const std::string decoded = other.path(tagged ? "decoded.tif" : "decoded.png");
    std::filesystem::remove(decoded);
    run(tool(path, decoded));
    return rgba16ByImageMagick(decoded);
  }

  void expectTags(std::map<std::string, std::string> tags, int orientation, const Density& density,
                  const std::string& name) const {
    if (picture.format.orientation && orientation > 0) {
      EXPECT_EQ(tags["IFD0:Orientation"], std::to_string(orientation)) << name;
    }
    if (const DensityTags& tag = picture.format.density; tag.x != nullptr && density.x > 0) {
      // Dots a metre are whole numbers, or of four digits at least.
      EXPECT_NEAR(numberOf(tags, tag.x, tag.xPower) * tag.inch, density.x, 0.02) << name;
      EXPECT_NEAR(numberOf(tags, tag.y, tag.yPower) * tag.inch, density.y, 0.02) << name;
    }
    if (picture.profile && !picture.isGray()) {
      EXPECT_EQ(tags["ICC_Profile:ProfileDescription"], "Display P3") << name;
    }
  }

  bool tellsNothing() const {
    return !picture.format.orientation && picture.format.density.x == nullptr &&
           (!picture.format.anyProfile || picture.format.tagged == Tagged::always);
  }

  const Picture picture = GetParam();
  TemporaryFolder folder, other;
};

TEST_P(RoundTrip, OtherProgramsReadThePixels) {
  unsigned seed = 1;
  for (const auto& [width, height] : {std::pair{1u, 1u}, {1u, 7u}, {47u, 33u}, {70u, 250u}}) {
    const Pixels pixels = pixelsFor(picture, width, height, ++seed);
    const auto answer = CodecDoor::standard().encode(picture.format.type, pixels, nullptr);
    ASSERT_EQ(std::holds_alternative<Fault>(answer), isRefused());
    if (isRefused()) return;
    const std::string path = folder.path(std::string("a.") + picture.format.extension);
    writeFile(path, std::get<Bytes>(answer));
    const auto expected = kept(asRgba16(pixels), picture.format);
    if (picture.format.meanError > 0) {
      EXPECT_LE(meanError(readByOthers(path), expected), picture.format.meanError) << width << "x" << height;
    } else {
      EXPECT_EQ(readByOthers(path), expected) << width << "x" << height << ", seed " << seed;
    }
    if (picture.alpha ? picture.format.grayWithAlpha : picture.format.gray) {
      EXPECT_EQ(decoded(std::get<Bytes>(answer)).layout.model, picture.model) << width << "x" << height;
    }
  }
}

TEST_P(RoundTrip, OtherProgramsReadOrientationDensityAndProfile) {
  if (isRefused() || tellsNothing()) return;
  const Density densities[] = {{}, {300, 300}, {72, 144}};
  const auto nameOf = [&](int orientation, const Density& density) {
    return std::to_string(orientation) + "-" + std::to_string(std::lround(density.x)) + "." +
           picture.format.extension;
  };
  for (int orientation = 0; orientation <= 8; ++orientation)
    for (const Density& density : densities) {
      const Properties properties = propertiesWith(orientation, density);
      const Pixels pixels = pixelsFor(picture, 19, 11, 3);
      writeFile(folder.path(nameOf(orientation, density)), encoded(picture.format.type, pixels, &properties));
    }
  const auto tags = tagsOf(folder);
  for (int orientation = 0; orientation <= 8; ++orientation)
    for (const Density& density : densities) {
      const std::string name = nameOf(orientation, density);
      ASSERT_TRUE(tags.contains(name)) << name;
      expectTags(tags.at(name), orientation, density, name);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, RoundTrip, testing::ValuesIn(everyPicture()),
                         [](const auto& test) { return test.param.name(); });

}  // namespace
}  // namespace ostra
