#include <array>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/boxes.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra {
namespace {

using namespace test;

class Jxl : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "cjxl", "djxl", "exiftool"}) OSTRA_NEEDS_PROGRAM(name);
  }

  Bytes file(const std::string& name) const { return readFile(folder.path(name)); }
  void draw(const std::vector<std::string>& drawing) const {
    std::vector<std::string> words = {"convert", "-size", "47x33", "-seed", "3", "plasma:tomato-steelblue"};
    words.insert(words.end(), drawing.begin(), drawing.end());
    // Without chunks about colour it is sRGB to everybody.
    words.insert(words.end(), {"-define", "png:exclude-chunk=gAMA,cHRM", folder.path("source.png")});
    run(words);
  }
  Bytes packed(const std::vector<std::string>& options, const std::string& source = "source.png") const {
    std::vector<std::string> words = {"cjxl", folder.path(source), folder.path("a.jxl")};
    words.insert(words.end(), options.begin(), options.end());
    run(words);
    return file("a.jxl");
  }
  std::vector<std::uint16_t> byItsOwnTool() const {
    run({"djxl", folder.path("a.jxl"), folder.path("decoded.png")});
    return rgba16ByImageMagick(folder.path("decoded.png"));
  }
  /// The largest of a sample, 1 being all.
  std::string difference(const std::string& a, const std::string& b) const {
    const std::string words =
        runProgram({"compare", "-metric", "PAE", folder.path(a), folder.path(b), "null:"}).errors;
    return words.substr(words.find('(') + 1);
  }
  /// A profile of a space, put into the source.
  void giveProfile(const Bytes& profile) const {
    writeFile(folder.path("p.icc"), profile);
    run({"convert", folder.path("source.png"), "-strip", "-set", "profile:icc", "",
         folder.path("source.png")});
    run({"exiftool", "-q", "-overwrite_original", "-icc_profile<=" + folder.path("p.icc"),
         folder.path("source.png")});
  }

  TemporaryFolder folder;
};

const std::map<std::string, std::vector<std::string>> kDrawings = {
    {"gray8", {"-colorspace", "gray", "-depth", "8"}},
    {"gray16", {"-colorspace", "gray", "-depth", "16"}},
    {"grayWithAlpha", {"-colorspace", "gray", "-depth", "8", "-alpha", "set", "-channel", "A", "-fx", "i/w"}},
    {"rgb8", {"-depth", "8"}},
    {"rgb16", {"-depth", "16"}},
    {"rgba8", {"-depth", "8", "-alpha", "set", "-channel", "A", "-fx", "i/w"}},
    {"rgba16", {"-depth", "16", "-alpha", "set", "-channel", "A", "-fx", "i/w"}},
    {"onePixel", {"-resize", "1x1!", "-depth", "8"}},
    {"column", {"-resize", "1x7!", "-depth", "8"}},
    {"overGroups", {"-resize", "259x3!", "-depth", "8"}}};

TEST_F(Jxl, GivesTheStoredPixelsOfLosslessPictures) {
  for (const auto& [kind, drawing] : kDrawings) {
    draw(drawing);
    const Pixels pixels = decoded(packed({"-d", "0"}));
    std::vector<std::uint16_t> expected = rgba16ByImageMagick(folder.path("source.png"));
    // The tool packs opacity in 8 bits.
    if (kind == "rgba16") {
      for (std::size_t i = 3; i < expected.size(); i += 4)
        expected[i] = static_cast<std::uint16_t>((expected[i] + 128) / 257 * 257);
    }
    EXPECT_EQ(asRgba16(pixels), expected) << kind;
    EXPECT_EQ(pixels.layout.bitsPerComponent, kind.find("16") != std::string::npos ? 16 : 8) << kind;
    EXPECT_EQ(pixels.layout.model,
              kind.starts_with("gray") ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb);
  }
}

TEST_F(Jxl, GivesThePixelsThatItsOwnToolReads) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{"-d", "1"},
                                                  {"-d", "3", "-p"},
                                                  {"-d", "0", "--container=1"},
                                                  {"-m", "1", "-d", "1"}}) {
    draw({"-depth", "8"});
    const Bytes jxl = packed(options);
    EXPECT_EQ(asRgba16(decoded(jxl)), byItsOwnTool()) << options[1];
    const ProfileRecord profile = decoded(jxl).profile;
    EXPECT_EQ(std::get<NamedSpace>(profile).name, kCGColorSpaceSRGB);
  }
}

TEST_F(Jxl, AJpegThatWasPackedIsReadAsItsPixels) {
  draw({"-depth", "8"});
  run({"convert", folder.path("source.png"), "-quality", "90", folder.path("source.jpg")});
  const Bytes jxl = packed({}, "source.jpg");
  ASSERT_LT(positionOf("jbrd", jxl), jxl.size());
  EXPECT_EQ(asRgba16(decoded(jxl)), byItsOwnTool());
}

TEST_F(Jxl, TellsSizeDepthAndTransparency) {
  draw({"-depth", "16", "-alpha", "set", "-channel", "A", "-fx", "i/w"});
  const Dictionary tree = propertiesOf(packed({"-d", "0"})).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(16));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("HasAlpha"), Value(true));
  EXPECT_FALSE(tree.contains("Orientation"));
}

TEST_F(Jxl, TheProfileOfALosslessPictureIsItsOwn) {
  draw({"-depth", "8"});
  const ByteView romm = CGColorSpace::createWithName(kCGColorSpaceROMMRGB)->iccData();
  giveProfile(Bytes(romm.begin(), romm.end()));
  const Pixels pixels = decoded(packed({"-d", "0"}));
  EXPECT_EQ(std::get<IccProfile>(pixels.profile).bytes, Bytes(romm.begin(), romm.end()));
  EXPECT_EQ(asRgba16(pixels), rgba16ByImageMagick(folder.path("source.png")));
}

TEST_F(Jxl, ColoursOfAProfileAreNotCutOffWhereTheFileDoesNotKeepTheirNumbers) {
  const auto calibrated = [](const double(&primaries)[6]) {
    constexpr double d65[2] = {0.3127, 0.3290};
    return CGColorSpace::createCalibrated(d65, &primaries, 1.8);
  };
  struct Case {
    CGColorSpaceRef space;
    std::string_view decoded;  // empty for a space without a name
  };
  // Curves that are not sRGB's keep the tool from telling the space by numbers.
  for (const Case& wanted : {Case{calibrated({0.62, 0.335, 0.31, 0.58, 0.16, 0.07}), kCGColorSpaceSRGB},
                             Case{calibrated({0.68, 0.32, 0.265, 0.69, 0.15, 0.06}), kCGColorSpaceDisplayP3},
                             Case{CGColorSpace::createWithName(kCGColorSpaceAdobeRGB1998), ""},
                             Case{CGColorSpace::createWithName(kCGColorSpaceROMMRGB), ""}}) {
    draw({"-depth", "8", "-modulate", "100,130"});
    const ByteView profile = wanted.space->iccData();
    giveProfile(Bytes(profile.begin(), profile.end()));
    Pixels pixels = decoded(packed({"-d", "0.05"}));
    const auto* named = std::get_if<NamedSpace>(&pixels.profile);
    EXPECT_EQ(named != nullptr ? named->name : "", wanted.decoded);
    // As a profile, which the other program goes by.
    if (named != nullptr) {
      const ByteView told = CGColorSpace::createWithName(named->name)->iccData();
      pixels.profile = IccProfile{Bytes(told.begin(), told.end())};
    }
    writeFile(folder.path("decoded.png"), encoded("public.png", pixels));
    for (const char* name : {"decoded", "source"})
      run({"convert", folder.path(name + std::string(".png")), "-depth", "16", "-profile",
           folder.path("p.icc"), "-strip", folder.path(name + std::string("-same.png"))});
    EXPECT_LT(std::stod(difference("decoded-same.png", "source-same.png")), 0.08) << wanted.decoded;
  }
}

TEST_F(Jxl, SpacesThatAreToldByNumbersKeepTheirNames) {
  draw({"-depth", "16"});
  run({"convert", folder.path("source.png"), "-strip", folder.path("source.ppm")});
  run({"convert", folder.path("source.ppm"), "-colorspace", "gray", folder.path("gray.pgm")});
  const auto profileOf = [&](const std::string& space, const std::string& source) {
    const Pixels lossless = decoded(packed({"-d", "0", "-x", "color_space=" + space}, source));
    const Pixels lossy = decoded(packed({"-d", "1", "-x", "color_space=" + space}, source));
    EXPECT_EQ(lossless.profile.index(), lossy.profile.index()) << space;
    const auto* named = std::get_if<NamedSpace>(&lossless.profile);
    return named != nullptr
               ? named->name
               : std::string(std::holds_alternative<Untagged>(lossless.profile) ? "none" : "a profile");
  };
  EXPECT_EQ(profileOf("RGB_D65_SRG_Rel_SRG", "source.ppm"), kCGColorSpaceSRGB);
  EXPECT_EQ(profileOf("RGB_D65_SRG_Rel_Lin", "source.ppm"), kCGColorSpaceLinearSRGB);
  EXPECT_EQ(profileOf("RGB_D65_DCI_Rel_SRG", "source.ppm"), kCGColorSpaceDisplayP3);
  EXPECT_EQ(profileOf("RGB_D65_202_Rel_709", "source.ppm"), kCGColorSpaceITUR_2020);
  EXPECT_EQ(profileOf("RGB_D65_202_Rel_SRG", "source.ppm"), "a profile");
  EXPECT_EQ(profileOf("RGB_DCI_DCI_Rel_DCI", "source.ppm"), "a profile");
  EXPECT_EQ(profileOf("RGB_D65_SRG_Rel_g0.5", "source.ppm"), "a profile");
  EXPECT_EQ(profileOf("Gra_D65_Rel_SRG", "gray.pgm"), kCGColorSpaceGenericGrayGamma2_2);
  EXPECT_EQ(profileOf("Gra_D65_Rel_Lin", "gray.pgm"), "a profile");
  EXPECT_EQ(profileOf("RGB_D65_202_Rel_PeQ", "source.ppm"), "a profile");
  EXPECT_EQ(profileOf("RGB_D65_202_Rel_HLG", "source.ppm"), "a profile");
}

TEST_F(Jxl, EveryDepthIsScaledExactly) {
  for (const unsigned bits : {1u, 3u, 4u, 7u, 9u, 10u, 12u, 15u}) {
    // The tool takes samples of whole bytes, and packs the bits that it is told.
    const unsigned largest = (1u << bits) - 1, given = bits > 8 ? 65535 : 255;
    std::string samples = "P5 32 32 " + std::to_string(given) + "\n";
    std::vector<std::uint16_t> expected;
    for (unsigned i = 0; i < 1024; ++i) {
      const unsigned value = i * 37 % (largest + 1);
      const unsigned scaled = static_cast<unsigned>((2ull * value * given + largest) / (2 * largest));
      if (bits > 8) samples += static_cast<char>(scaled >> 8);
      samples += static_cast<char>(scaled);
      expected.insert(expected.end(), 3, static_cast<std::uint16_t>(bits > 8 ? scaled : scaled * 257));
      expected.push_back(65535);
    }
    writeFile(folder.path("source.pgm"), bytesOfText(samples));
    const Bytes jxl = packed({"-d", "0", "--override_bitdepth=" + std::to_string(bits)}, "source.pgm");
    EXPECT_EQ(propertiesOf(jxl).tree.at("Depth"), Value(std::int64_t{bits}));
    EXPECT_EQ(asRgba16(decoded(jxl)), expected) << bits;
  }
}

TEST_F(Jxl, FractionsBecomeSixteenBits) {
  // Rows from the bottom, little-endian: black, a quarter, white, brighter than white.
  const std::array<float, 4> light = {0, 0.25, 1, 3};
  std::string samples = "Pf\n2 2\n-1.0\n";
  samples.append(reinterpret_cast<const char*>(light.data()), sizeof light);
  writeFile(folder.path("source.pfm"), bytesOfText(samples));
  const Bytes jxl = packed({"-d", "0", "-x", "color_space=Gra_D65_Rel_Lin"}, "source.pfm");
  const auto pixels = asRgba16(decoded(jxl));
  EXPECT_EQ(pixels[0], 65535);
  EXPECT_EQ(pixels[4], 65535);
  EXPECT_EQ(pixels[8], 0);
  EXPECT_EQ(pixels[12], 16384);
  EXPECT_EQ(propertiesOf(jxl).tree.at("IsFloat"), Value(true));
}

TEST_F(Jxl, TheOrientationIsThatOfTheCodestream) {
  draw({"-depth", "8"});
  run({"convert", folder.path("source.png"), "-quality", "95", folder.path("source.jpg")});
  run({"exiftool", "-q", "-overwrite_original", "-Orientation#=6", "-Make=N", folder.path("source.jpg")});
  const Bytes jxl = packed({"-j", "0", "-d", "1"}, "source.jpg");
  const Properties properties = propertiesOf(jxl);
  EXPECT_EQ(properties.tree.at("Orientation"), Value(6));
  EXPECT_EQ(properties.tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(decoded(jxl).layout.width, 47u);
  EXPECT_EQ(decoded(jxl).layout.height, 33u);
}

/// Exif with a maker, as JPEG has it but for the mark in front.
Bytes exifOf(const TemporaryFolder& folder) {
  run({"convert", "-size", "1x1", "xc:red", folder.path("exif.jpg")});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-Orientation#=8", "-XResolution=300",
       "-YResolution=300", "-ResolutionUnit=inches", folder.path("exif.jpg")});
  return bytesOfText(run({"exiftool", "-b", "-Exif", folder.path("exif.jpg")}));
}

/// Brotli (RFC 7932): a window of 64 KiB, one block that is stored, and the empty last one.
Bytes brotliOf(const Bytes& content) {
  const auto head = static_cast<std::uint32_t>((content.size() - 1) << 4 | 1u << 20);
  return joined({Bytes{static_cast<std::uint8_t>(head), static_cast<std::uint8_t>(head >> 8),
                       static_cast<std::uint8_t>(head >> 16)},
                 content, Bytes{3}});
}

Bytes containerOf(const Bytes& before, const Bytes& codestream, const Bytes& behind) {
  return joined({box("JXL ", {0x0D, 0x0A, 0x87, 0x0A}),
                 box("ftyp", bytesOfText(std::string_view("jxl \0\0\0\0jxl ", 12))), before,
                 box("jxlc", codestream), behind});
}

const std::string kPacket =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
    "<rdf:Description rdf:about='' xmlns:xmp='http://ns.adobe.com/xap/1.0/' "
    "xmp:Rating='4'/></rdf:RDF></x:xmpmeta>";

TEST_F(Jxl, CarriesExifAndXmpPackedOrNotBeforeThePictureOrBehindIt) {
  draw({"-depth", "8"});
  const Bytes codestream = packed({"-d", "1", "--container=0"});
  const Bytes exif = exifOf(folder), shifted = joined({Bytes{0, 0, 0, 5}, bytesOfText("other"), exif});
  const Bytes xmp = bytesOfText(kPacket);
  const auto both = [&](bool isPacked) {
    if (!isPacked) return joined({box("Exif", shifted), box("xml ", xmp)});
    return joined({box("brob", joined({bytesOfText("Exif"), brotliOf(shifted)})),
                   box("brob", joined({bytesOfText("xml "), brotliOf(xmp)}))});
  };
  for (const bool isPacked : {false, true}) {
    for (const bool isBehind : {false, true}) {
      const Bytes boxes = both(isPacked);
      const Bytes jxl = containerOf(isBehind ? Bytes() : boxes, codestream, isBehind ? boxes : Bytes());
      const Properties properties = propertiesOf(jxl);
      ASSERT_NE(properties.carrier, nullptr) << isPacked << isBehind;
      EXPECT_EQ(properties.carrier->exif, exif) << isPacked << isBehind;
      EXPECT_LT(positionOf("Rating", properties.carrier->xmp), properties.carrier->xmp.size());
      EXPECT_EQ(properties.tree.at("DPIWidth"), Value(300.0));
      // The codestream's orientation stands above Exif's.
      EXPECT_EQ(properties.tree.at("Orientation"), Value(1));
      EXPECT_EQ(asRgba16(decoded(jxl)), asRgba16(decoded(codestream)));
      Limits few;
      few.metadataBytes = exif.size() + 20;
      auto opened = openBytes(jxl, few);
      const auto answer = std::get<std::unique_ptr<Reader>>(opened)->properties(0);
      ASSERT_TRUE(std::holds_alternative<Fault>(answer));
      EXPECT_EQ(std::get<Fault>(answer), (Fault{FaultKind::limit, LimitName::metadataBytes}));
    }
  }
}

TEST_F(Jxl, MetadataThatIsDamagedIsLeftOut) {
  draw({"-depth", "8"});
  const Bytes codestream = packed({"-d", "1", "--container=0"});
  for (const Bytes& damaged :
       {box("Exif", {0, 0}), box("Exif", {0, 0, 1, 0, 'M', 'M'}),
        box("brob", bytesOfText("Exif\x11\xEE\xEE")), box("brob", bytesOfText("ab"))}) {
    const Properties properties = propertiesOf(containerOf({}, codestream, damaged));
    EXPECT_TRUE(properties.carrier == nullptr || properties.carrier->exif.empty());
    EXPECT_EQ(faultOf(decodeBytes(containerOf({}, codestream, damaged))), std::nullopt);
  }
}

TEST_F(Jxl, AnAnimationIsCountedAndItsFirstFrameDecoded) {
  run({"convert", "-size", "40x30", "-delay", "10", "xc:red", "xc:blue", "xc:lime", folder.path("an.gif")});
  const Bytes jxl = packed({"-d", "0"}, "an.gif");
  auto opened = openBytes(jxl);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().count, 3u);
  const std::vector<std::uint16_t> samples = asRgba16(decoded(jxl));
  ASSERT_EQ(samples.size(), std::size_t{40} * 30 * 4);
  for (std::size_t i = 0; i < samples.size(); i += 4)
    ASSERT_EQ((std::vector<std::uint16_t>{samples[i], samples[i + 1], samples[i + 2]}),
              (std::vector<std::uint16_t>{65535, 0, 0}));
  for (std::size_t size = 0; size < jxl.size(); ++size)
    EXPECT_TRUE(faultOf(decodeBytes(ByteView(jxl).first(size)))) << size;
}

TEST_F(Jxl, OneThatIsCutOffAnywhereIsRefused) {
  draw({"-depth", "8"});
  for (const std::vector<std::string>& options : {std::vector<std::string>{"-d", "1"},
                                                  {"-d", "0"},
                                                  {"-d", "2", "-p"},
                                                  {"-d", "1", "--progressive_dc=1"},
                                                  {"-d", "0", "-R", "1"}}) {
    for (const bool hasBoxes : {false, true}) {
      const Bytes codestream = packed(options);
      const Bytes whole =
          hasBoxes ? containerOf(box("Exif", Bytes(4)), codestream, box("xml ", bytesOfText(kPacket)))
                   : codestream;
      EXPECT_FALSE(faultOf(decodeBytes(whole)));
      const std::size_t behind = hasBoxes ? whole.size() - kPacket.size() - 8 : 0;
      for (std::size_t size = 0; size < whole.size(); ++size) {
        // Between two boxes nothing tells that there was another one.
        if (size == behind) continue;
        ASSERT_TRUE(faultOf(decodeBytes(ByteView(whole).first(size)))) << options.back() << size;
      }
    }
  }
}

TEST_F(Jxl, ChangedBytesGiveAWholePictureOrNone) {
  std::mt19937 random(11);
  draw({"-depth", "8"});
  unsigned refused = 0;
  for (const char* distance : {"0", "1"}) {
    const Bytes whole = packed({"-d", distance, "--container=1"});
    for (int i = 0; i < 300; ++i) {
      Bytes changed = whole;
      for (int k = 0; k < 3; ++k) changed[random() % changed.size()] = static_cast<std::uint8_t>(random());
      const auto answer = decodeBytes(changed);
      if (faultOf(answer)) {
        ++refused;
        continue;
      }
      const auto& pixels = std::get<Pixels>(answer);
      EXPECT_EQ(pixels.bytes.view.size(), pixels.layout.bytesPerRow * pixels.layout.height);
    }
  }
  EXPECT_GT(refused, 100u);
}

TEST_F(Jxl, APictureBeyondALimitIsRefusedBeforeItIsDecoded) {
  draw({"-depth", "8"});
  Limits few;
  few.pixels = 47 * 33 - 1;
  EXPECT_EQ(faultOf(decodeBytes(packed({"-d", "1"}), few)), (Fault{FaultKind::limit, LimitName::pixels}));
}

}  // namespace
}  // namespace ostra
