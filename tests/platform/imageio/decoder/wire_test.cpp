#include "platform/imageio/decoder/wire.h"

#include <gtest/gtest.h>

#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {
namespace {

Dictionary treeOfEveryKind() {
  return {{"text", "été"},
          {"number", std::int64_t{-7}},
          {"real", 0.1},
          {"yes", true},
          {"bytes", Bytes{0, 255, 3}},
          {"list", Array{Value(1), Value("two"), Value(Array{Value(3.0)})}},
          {"group", Dictionary{{"inner", Dictionary{{"deep", 1}}}}}};
}

Carrier fullCarrier() {
  Carrier carrier;
  carrier.exif = {1, 2, 3};
  carrier.xmp = {4};
  carrier.iptc = {5, 6};
  carrier.photoshopResources = {7};
  carrier.comments = {"one", std::string("t\0o", 3)};
  carrier.texts = {{"Keyword", "text", "en", "Schlüsselwort"}};
  carrier.pngChunks = {{0x74494D45, {8, 9}, true}};
  carrier.pixelAspect = PixelAspect{3, 2};
  carrier.tree = treeOfEveryKind();
  carrier.toldByXmp = {{"creator", "me"}};
  return carrier;
}

Properties fullProperties() { return {treeOfEveryKind(), std::make_shared<const Carrier>(fullCarrier())}; }

TEST(Wire, CarriesPropertiesWithEverythingInThem) {
  const auto answer = propertiesOf(messageOf(Answer<Properties>(fullProperties())));
  ASSERT_TRUE(answer);
  const Properties& read = std::get<Properties>(*answer);
  const Carrier expected = fullCarrier();
  EXPECT_EQ(read.tree, treeOfEveryKind());
  ASSERT_TRUE(read.carrier);
  EXPECT_EQ(read.carrier->exif, expected.exif);
  EXPECT_EQ(read.carrier->xmp, expected.xmp);
  EXPECT_EQ(read.carrier->iptc, expected.iptc);
  EXPECT_EQ(read.carrier->photoshopResources, expected.photoshopResources);
  EXPECT_EQ(read.carrier->comments, expected.comments);
  EXPECT_EQ(read.carrier->texts, expected.texts);
  ASSERT_EQ(read.carrier->pngChunks.size(), 1u);
  EXPECT_EQ(read.carrier->pngChunks[0].data, expected.pngChunks[0].data);
  EXPECT_TRUE(read.carrier->pngChunks[0].afterPixels);
  EXPECT_EQ(read.carrier->pixelAspect->x, 3u);
  EXPECT_EQ(read.carrier->tree, expected.tree);
  EXPECT_EQ(read.carrier->toldByXmp, expected.toldByXmp);
}

TEST(Wire, CarriesEveryKindOfProfile) {
  const ProfileRecord profiles[] = {Untagged{}, NamedSpace{"kCGColorSpaceSRGB"},
                                    Calibrated{{0.3, 0.3}, std::array<double, 6>{1, 2, 3, 4, 5, 6}, 2.2},
                                    Calibrated{{0.3, 0.3}, std::nullopt, 1}, IccProfile{{1, 2}}};
  for (const ProfileRecord& profile : profiles) {
    const DecodedPixels sent{Layout{.width = 3, .height = 2, .bytesPerRow = 12}, profile, 4096, 24};
    const auto answer = pixelsOf(messageOf(Answer<DecodedPixels>(sent)));
    ASSERT_TRUE(answer);
    const auto& got = std::get<DecodedPixels>(*answer);
    EXPECT_EQ(got.profile.index(), profile.index());
    EXPECT_EQ(got.layout.bytesPerRow, 12u);
    EXPECT_EQ(got.offset, 4096u);
  }
}

TEST(Wire, CarriesAFault) {
  const Fault fault{FaultKind::limit, LimitName::pixels};
  EXPECT_EQ(std::get<Fault>(*openedOf(messageOf(Answer<Opened>(fault)))), fault);
  EXPECT_EQ(std::get<Fault>(*propertiesOf(messageOf(Answer<Properties>(fault)))), fault);
}

TEST(Wire, TakesNoMessageThatIsCutShortOrTooLong) {
  const Bytes whole = messageOf(Answer<Properties>(fullProperties()));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    ASSERT_FALSE(propertiesOf(ByteView(whole).first(size))) << size;
  }
  Bytes longer = whole;
  longer.push_back(0);
  EXPECT_FALSE(propertiesOf(longer));
}

TEST(Wire, SurvivesEveryChangedByte) {
  const Bytes whole = messageOf(Answer<Properties>(fullProperties()));
  for (std::size_t i = 0; i < whole.size(); ++i) {
    for (const std::uint8_t value : Bytes{0x00, 0x01, 0x7F, 0xFF}) {
      Bytes changed = whole;
      changed[i] = value;
      propertiesOf(changed);
    }
  }
}

TEST(Wire, RefusesAnEndlessNesting) {
  Value nested(0);
  for (int depth = 0; depth < 1000; ++depth) nested = Value(Array{std::move(nested)});
  const Properties properties{{{"nested", std::move(nested)}}, nullptr};
  EXPECT_FALSE(propertiesOf(messageOf(Answer<Properties>(properties))));
}

}  // namespace
}  // namespace ostra
