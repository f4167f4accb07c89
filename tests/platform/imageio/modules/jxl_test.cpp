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

TEST_F(Jxl, ColoursOfAProfileAreNotCutOffWhereTheFileKeepsItNot) {
  // Red of each space, as full as it gets.
  run({"convert", "-size", "32x32", "xc:red", "-depth", "8", folder.path("source.png")});
  struct Case {
    std::string_view space;
    bool isWide;
  };
  for (const Case& wanted : {Case{kCGColorSpaceROMMRGB, true}, Case{kCGColorSpaceAdobeRGB1998, true}}) {
    const ByteView profile = CGColorSpace::createWithName(wanted.space)->iccData();
    giveProfile(Bytes(profile.begin(), profile.end()));
    const Pixels pixels = decoded(packed({"-d", "0.1"}));
    const auto* named = std::get_if<NamedSpace>(&pixels.profile);
    EXPECT_FALSE(named != nullptr && named->name == kCGColorSpaceSRGB) << wanted.space;
    EXPECT_FALSE(std::holds_alternative<Untagged>(pixels.profile)) << wanted.space;
  }
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
  const Bytes exif = exifOf(folder),
              shifted = joined({Bytes{0, 0, 0, 6}, bytesOfText(std::string_view("Exif\0\0", 6)), exif});
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
