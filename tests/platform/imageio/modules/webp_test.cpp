#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra {
namespace {

using namespace test;

class Webp : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "cwebp", "dwebp", "webpmux", "exiftool"}) OSTRA_NEEDS_PROGRAM(name);
  }

  Bytes file(const std::string& name) const { return readFile(folder.path(name)); }
  /// A picture of the usual size, packed by the format's own tool.
  Bytes made(const std::vector<std::string>& options, const std::string& name = "a.webp") const {
    run({"convert", "-size", "47x33", "-seed", "3", "plasma:tomato-steelblue", "-alpha", "set", "-channel",
         "A", "-fx", "i/w", "-depth", "8", folder.path("source.png")});
    std::vector<std::string> words = {"cwebp", "-quiet", "-exact"};
    words.insert(words.end(), options.begin(), options.end());
    words.insert(words.end(), {folder.path("source.png"), "-o", folder.path(name)});
    run(words);
    return file(name);
  }
  std::vector<std::uint16_t> byItsOwnTool(const std::string& name) const {
    run({"dwebp", "-quiet", folder.path(name), "-o", folder.path("decoded.png")});
    return rgba16ByImageMagick(folder.path("decoded.png"));
  }

  TemporaryFolder folder;
};

TEST_F(Webp, GivesThePixelsThatItsOwnToolReads) {
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"-q", "80"}, {"-lossless"}, {"-q", "80", "-noalpha"}}) {
    const Bytes webp = made(options);
    EXPECT_EQ(asRgba16(decoded(webp)), byItsOwnTool("a.webp")) << options.back();
  }
}

TEST_F(Webp, TellsSizeDepthAndTransparency) {
  const Dictionary tree = propertiesOf(made({"-lossless"})).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(8));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("HasAlpha"), Value(true));
  EXPECT_EQ(propertiesOf(made({"-noalpha"})).tree.count("HasAlpha"), 0u);
}

TEST_F(Webp, CarriesProfileExifAndXmp) {
  const CGColorSpaceRef p3 = CGColorSpace::createWithName(kCGColorSpaceDisplayP3);
  writeFile(folder.path("p3.icc"), p3->iccData());
  made({"-lossless"});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-Orientation#=6", "-XMP-dc:Title=T",
       "-icc_profile<=" + folder.path("p3.icc"), folder.path("a.webp")});
  const Bytes webp = file("a.webp");
  EXPECT_TRUE(std::holds_alternative<IccProfile>(decoded(webp).profile));
  const Properties properties = propertiesOf(webp);
  EXPECT_EQ(properties.tree.at("Orientation"), Value(6));
  EXPECT_EQ(properties.tree.at("ProfileName"), Value("Display P3"));
  ASSERT_NE(properties.carrier, nullptr);
  EXPECT_FALSE(properties.carrier->exif.empty());
  EXPECT_FALSE(properties.carrier->xmp.empty());
}

TEST_F(Webp, AnAnimationIsCountedAndItsFirstFrameDecodedOnTheCanvas) {
  made({"-lossless"});
  run({"convert", "-size", "20x10", "xc:red", folder.path("small.png")});
  run({"cwebp", "-quiet", "-lossless", folder.path("small.png"), "-o", folder.path("small.webp")});
  run({"webpmux", "-frame", folder.path("a.webp"), "+100", "-frame", folder.path("small.webp"), "+100+4+6",
       "-o", folder.path("an.webp")});
  const Bytes webp = file("an.webp");
  auto opened = openBytes(webp);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().count, 2u);
  EXPECT_EQ(asRgba16(decoded(webp)), byItsOwnTool("a.webp"));
}

TEST_F(Webp, OneThatIsCutOffAnywhereIsRefused) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{"-q", "80"}, {"-lossless"}}) {
    const Bytes whole = made(options);
    for (std::size_t size = 0; size < whole.size(); size += size < 64 ? 1 : 13)
      EXPECT_TRUE(faultOf(decodeBytes(ByteView(whole).first(size)))) << size;
  }
}

TEST_F(Webp, AFlatOneIsNoBomb) {
  run({"convert", "-size", "4000x3000", "xc:red", folder.path("flat.png")});
  run({"cwebp", "-quiet", "-lossless", folder.path("flat.png"), "-o", folder.path("flat.webp")});
  EXPECT_EQ(faultOf(decodeBytes(file("flat.webp"))), std::nullopt);
}

}  // namespace
}  // namespace ostra
