#include <random>

#include "tests/platform/imageio/modules/jpeg2000_files.h"

namespace ostra {
namespace {

using namespace test;

class Jpeg2000Damage : public Jpeg2000 {};

TEST_F(Jpeg2000Damage, OneThatIsCutOffAnywhereIsRefused) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{"-r", "20,5,1"},
                                                  {"-I", "-r", "5"},
                                                  {"-t", "16,16", "-n", "1"},
                                                  {"-TP", "R", "-n", "3"}}) {
    for (const char* name : {"a.jp2", "a.j2k"}) {
      const Bytes whole = made({"-depth", "8"}, options, name);
      EXPECT_FALSE(faultOf(decodeBytes(whole)));
      for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_TRUE(faultOf(decodeBytes(ByteView(whole).first(size)))) << name << size;
    }
  }
}

TEST_F(Jpeg2000Damage, OneWhoseLastBoxIsCutOffIsRefused) {
  const Bytes stream = ofSamples(Bytes(64, 9), "8,8,1,8,u", {"-n", "1"});
  const Bytes behind = markedBox("be7acfcb97a942e89c71999491e3afac", bytesOfText("<x/>"));
  const Bytes whole = jp2File({jp2Header(8, 8, 1, 8), enumeratedColour(17)}, stream, behind);
  EXPECT_FALSE(faultOf(decodeBytes(whole)));
  for (std::size_t cut = 1; cut < behind.size(); ++cut)
    EXPECT_TRUE(faultOf(decodeBytes(ByteView(whole).first(whole.size() - cut)))) << cut;
  // Zeros are no box.
  EXPECT_FALSE(faultOf(decodeBytes(joined({whole, Bytes(100)}))));
}

TEST_F(Jpeg2000Damage, OneThatWasCutAndClosedAgainIsRefused) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"-t", "16,16", "-n", "1"}}) {
    const Bytes whole = made({"-depth", "8"}, options, "a.j2k");
    for (std::size_t size = whole.size() - 3; size > 200; size -= 7) {
      const Bytes closed = joined(
          {Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), Bytes{0xFF, 0xD9}});
      ASSERT_TRUE(faultOf(decodeBytes(closed))) << size;
    }
  }
}

TEST_F(Jpeg2000Damage, OneThatLacksATileIsRefused) {
  const Bytes whole = made({"-depth", "8"}, {"-t", "24,33", "-n", "4"}, "a.j2k");
  const std::string_view mark("\xFF\x90\x00\x0A", 4);
  const std::size_t first = positionOf(mark, whole);
  const auto at = whole.begin() + static_cast<std::ptrdiff_t>(first);
  const std::size_t length = std::size_t{at[7]} << 16 | std::size_t{at[8]} << 8 | at[9];
  ASSERT_LT(first + length, whole.size());
  Bytes without = whole;
  without.erase(without.begin() + static_cast<std::ptrdiff_t>(first),
                without.begin() + static_cast<std::ptrdiff_t>(first + length));
  EXPECT_TRUE(faultOf(decodeBytes(without)));
}

TEST_F(Jpeg2000Damage, HeadersThatContradictEachOtherAreRefused) {
  const Bytes stream = ofSamples(Bytes(192, 9), "8,8,3,8,u", {"-n", "1"});
  const auto isRefused = [&](const Bytes& header, const Bytes& colour) {
    return faultOf(decodeBytes(jp2File({header, colour}, stream))).has_value();
  };
  EXPECT_FALSE(isRefused(jp2Header(8, 8, 3, 8), enumeratedColour(16)));
  EXPECT_TRUE(isRefused(jp2Header(9, 8, 3, 8), enumeratedColour(16)));
  EXPECT_TRUE(isRefused(jp2Header(8, 7, 3, 8), enumeratedColour(16)));
  EXPECT_TRUE(isRefused(jp2Header(8, 8, 4, 8), enumeratedColour(16)));
  EXPECT_TRUE(isRefused(jp2Header(8, 8, 3, 8), enumeratedColour(12)));
  EXPECT_TRUE(isRefused({}, enumeratedColour(16)));
  EXPECT_TRUE(faultOf(decodeBytes(joined({box("jP  ", {0x0D, 0x0A, 0x87, 0x0A}), box("jp2c", stream)}))));
}

TEST_F(Jpeg2000Damage, BoxesWhoseLengthsLieAreRefused) {
  const Bytes stream = ofSamples(Bytes(192, 9), "8,8,3,8,u", {"-n", "1"});
  const Bytes whole = jp2File({jp2Header(8, 8, 3, 8), enumeratedColour(16)}, stream);
  const std::size_t header = positionOf("ihdr", whole) - 4, stretch = positionOf("jp2h", whole) - 4;
  for (const std::size_t at : {header, stretch}) {
    for (const unsigned length : {1u, 2u, 7u, 23u, 250u}) {
      Bytes changed = whole;
      changed[at + 3] = static_cast<std::uint8_t>(length);
      EXPECT_TRUE(faultOf(decodeBytes(changed))) << at << " " << length;
    }
  }
  // The last one may reach to the end, or have a long length.
  Bytes open = whole;
  const std::size_t last = positionOf("jp2c", whole) - 4;
  std::fill_n(open.begin() + static_cast<std::ptrdiff_t>(last), 4, std::uint8_t{0});
  EXPECT_FALSE(faultOf(decodeBytes(open)));
  Bytes wide = whole;
  std::fill_n(wide.begin() + static_cast<std::ptrdiff_t>(last), 4, std::uint8_t{0});
  wide[last + 3] = 1;
  const Bytes length = joined({Bytes(4), big16({0, static_cast<unsigned>(stream.size() + 16)})});
  wide.insert(wide.begin() + static_cast<std::ptrdiff_t>(last) + 8, length.begin(), length.end());
  EXPECT_FALSE(faultOf(decodeBytes(wide)));
  wide[last + 15] = 200;
  EXPECT_TRUE(faultOf(decodeBytes(wide)));
}

TEST_F(Jpeg2000Damage, SizesThatAreTooLargeAreRefusedBeforeAnythingIsAllocated) {
  const Bytes whole = ofSamples(Bytes(64, 9), "8,8,1,8,u", {"-n", "1"});
  const auto withSides = [&](std::uint8_t high) {
    Bytes changed = whole;
    // Width, height, and both of the tile.
    for (const std::size_t at : {8u, 12u, 24u, 28u}) changed[at + 1] = changed[at] = high;
    return faultOf(decodeBytes(changed));
  };
  EXPECT_EQ(withSides(0x70), (Fault{FaultKind::limit, LimitName::pixels}));
  Bytes flat = whole;
  for (const std::size_t at : {10u, 14u, 26u, 30u}) flat[at] = 0x70;
  EXPECT_EQ(faultOf(decodeBytes(flat)), (Fault{FaultKind::limit, LimitName::compressionRatio}));
}

// What any decoder must do with any bytes: give a whole picture or none, and live.
TEST_F(Jpeg2000Damage, ChangedBytesGiveAWholePictureOrNone) {
  std::mt19937 random(7);
  unsigned refused = 0;
  for (const char* name : {"a.jp2", "a.j2k"}) {
    const Bytes whole = made({"-depth", "8"}, {"-t", "24,24", "-n", "4"}, name);
    for (int i = 0; i < 400; ++i) {
      Bytes changed = whole;
      for (int k = 0; k < 3; ++k)
        changed[random() % (i < 200 ? 300 : changed.size())] = static_cast<std::uint8_t>(random());
      const auto answer = decodeBytes(changed);
      if (faultOf(answer)) {
        ++refused;
        continue;
      }
      const auto& pixels = std::get<Pixels>(answer);
      EXPECT_EQ(pixels.bytes.view.size(), pixels.layout.bytesPerRow * pixels.layout.height);
    }
  }
  EXPECT_GT(refused, 200u);
}

}  // namespace
}  // namespace ostra
