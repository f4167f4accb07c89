#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/profile_space.h"
#include "tests/platform/imageio/gif_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr const char* kType = "com.compuserve.gif";

Bytes rewritten(const Bytes& file) {
  const Properties properties = propertiesOf(file);
  return encoded(kType, decoded(file), &properties);
}

std::string byExiftool(const Bytes& file, const std::vector<std::string>& options) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.gif"), file);
  std::vector<std::string> command = {"exiftool"};
  command.insert(command.end(), options.begin(), options.end());
  command.push_back(folder.path("a.gif"));
  return run(command);
}

Bytes taggedByExiftool(const Bytes& file, const std::vector<std::string>& options) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.gif"), file);
  std::vector<std::string> command = {"exiftool", "-q", "-overwrite_original"};
  command.insert(command.end(), options.begin(), options.end());
  command.push_back(folder.path("a.gif"));
  run(command);
  return readFile(folder.path("a.gif"));
}

TEST(GifComments, AreKeptByteByByte) {
  std::string words = "caf\xE9 ";
  for (int i = 0; i < 600; ++i) words += static_cast<char>(i % 256);
  GifParts parts;
  parts.extensions =
      joined({gifExtension(0xFE, bytesOfText(words)), gifExtension(0xFE, bytesOfText("second"))});
  Bytes file = gifOf(parts);
  const Bytes last = gifExtension(0xFE, bytesOfText("behind the frame"));
  file.insert(file.end() - 1, last.begin(), last.end());
  const std::vector<std::string> expected = {words, "second", "behind the frame"};
  EXPECT_EQ(propertiesOf(file).carrier->comments, expected);
  EXPECT_EQ(propertiesOf(rewritten(file)).carrier->comments, expected);
}

TEST(GifComments, AreReadByExiftool) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  GifParts parts;
  parts.extensions = gifExtension(0xFE, bytesOfText("seen from the hill"));
  EXPECT_EQ(byExiftool(rewritten(gifOf(parts)), {"-s3", "-Comment"}), "seen from the hill\n");
}

TEST(GifXmp, IsReadAndWrittenAsExiftoolDoes) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const Bytes file = taggedByExiftool(
      gifOf(GifParts()), {"-XMP-dc:Title=The hill", "-XMP-tiff:Make=Maker", "-XMP-xmp:Rating=4"});
  const Properties properties = propertiesOf(file);
  EXPECT_EQ(properties.tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("Maker"));
  const std::vector<std::string> asked = {"-s3", "-XMP-dc:Title", "-XMP-tiff:Make", "-XMP-xmp:Rating"};
  EXPECT_EQ(byExiftool(rewritten(file), asked), "The hill\nMaker\n4\n");
  EXPECT_EQ(byExiftool(rewritten(rewritten(file)), asked), "The hill\nMaker\n4\n");
  EXPECT_EQ(byExiftool(rewritten(file), {"-Warning", "-Error"}), "");
  EXPECT_EQ(decodeBytes(rewritten(file)).index(), 0u) << "readers of sub-blocks find the frame behind it";
  EXPECT_EQ(propertiesOf(rewritten(file)).carrier->xmp, properties.carrier->xmp);
}

TEST(GifXmp, InSubBlocksIsReadToo) {
  const std::string packet = "<x:xmpmeta xmlns:x='adobe:ns:meta/'>" + std::string(700, ' ') + "</x:xmpmeta>";
  GifParts parts;
  parts.extensions = gifApplication("XMP DataXMP", bytesOfText(packet));
  EXPECT_EQ(propertiesOf(gifOf(parts)).carrier->xmp, bytesOfText(packet));
}

// A zero byte would end the extension in the middle of the packet, and what follows it would be taken for
// blocks.
TEST(GifXmp, WithAZeroByteIsLeftOut) {
  GifParts parts;
  const Bytes packet = joined({bytesOfText("<x:xmpmeta>"), {0}, bytesOfText("</x:xmpmeta>")});
  parts.extensions = gifApplication("XMP DataXMP", packet);
  const Bytes file = rewritten(gifOf(parts));
  EXPECT_EQ(asRgba16(decoded(file)), gifCanvas(parts));
  EXPECT_EQ(propertiesOf(file).carrier, nullptr);
}

TEST(GifProfile, IsReadAndWritten) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const CGColorSpaceRef p3 = CGColorSpace::createWithName(kCGColorSpaceDisplayP3);
  GifParts parts;
  parts.extensions = gifApplication("ICCRGBG1012", p3->iccData());
  const Bytes file = gifOf(parts);
  EXPECT_EQ(propertiesOf(file).tree.at("ProfileName"), Value("Display P3"));
  const Bytes again = rewritten(file);
  const Pixels pixels = decoded(again);
  const auto* profile = std::get_if<IccProfile>(&pixels.profile);
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(profile->bytes, Bytes(p3->iccData().begin(), p3->iccData().end()));
  EXPECT_EQ(byExiftool(again, {"-s3", "-ICC_Profile:ProfileDescription"}), "Display P3\n");
}

TEST(GifProfile, OfAnotherModelOrOfRubbishIsIgnored) {
  const CGColorSpaceRef gray = CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2);
  GifParts parts;
  for (const Bytes& bytes : {Bytes(gray->iccData().begin(), gray->iccData().end()), Bytes(300, 7)}) {
    parts.extensions = gifApplication("ICCRGBG1012", bytes);
    EXPECT_TRUE(std::holds_alternative<Untagged>(decoded(gifOf(parts)).profile));
    EXPECT_EQ(propertiesOf(gifOf(parts)).tree.count("ProfileName"), 0u);
  }
}

TEST(GifProfile, OfSrgbIsNotWritten) {
  Pixels pixels = decoded(gifOf(GifParts()));
  const Bytes untagged = encoded(kType, pixels);
  pixels.profile = NamedSpace{std::string(kCGColorSpaceSRGB)};
  EXPECT_EQ(encoded(kType, pixels), untagged);
  pixels.profile = NamedSpace{std::string(kCGColorSpaceAdobeRGB1998)};
  EXPECT_GT(encoded(kType, pixels).size(), untagged.size());
}

TEST(GifProfile, ThatIsNoneIsRefused) {
  Pixels pixels = decoded(gifOf(GifParts()));
  pixels.profile = IccProfile{Bytes(300, 7)};
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(kType, pixels, nullptr)));
}

TEST(GifPixelShape, IsWrittenAgain) {
  GifParts parts;
  for (const std::uint8_t aspect :
       {std::uint8_t{1}, std::uint8_t{49}, std::uint8_t{113}, std::uint8_t{255}}) {
    parts.aspect = aspect;
    EXPECT_EQ(rewritten(gifOf(parts))[12], aspect);
  }
}

}  // namespace
}  // namespace ostra::test
