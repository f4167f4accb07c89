#include <gtest/gtest.h>

#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Sample {
  const char* name;
  std::vector<std::string> settings;
  const char* extension;
};

class Damage : public testing::TestWithParam<Sample> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    std::vector<std::string> words = {"-size", "47x33", "-seed", "3", "plasma:tomato-steelblue", "-strip"};
    words.insert(words.end(), GetParam().settings.begin(), GetParam().settings.end());
    file_ = madeByImageMagick(words, GetParam().extension);
    whole_ = asRgba16(decoded(file_));
  }

  Bytes file_;
  std::vector<std::uint16_t> whole_;
};

// Half a picture is never taken for a whole one: every cut either gives all of it or nothing.
TEST_P(Damage, AFileThatIsCutOffIsRefusedOrComplete) {
  std::size_t refused = 0;
  for (std::size_t cut = 0; cut < 64; ++cut) {
    const std::size_t size = cut < 48 ? file_.size() * cut / 48 : file_.size() - 1 - (63 - cut);
    const auto answer = decodeBytes(ByteView(file_).first(size));
    if (faultOf(answer)) {
      ++refused;
    } else {
      ASSERT_EQ(asRgba16(std::get<Pixels>(answer)), whole_) << "cut to " << size << " of " << file_.size();
    }
  }
  // At the most the end marker of a JPEG may be missing.
  EXPECT_GE(refused, 60u);
}

TEST_P(Damage, AFlippedBitNeverCrashes) {
  std::size_t refused = 0;
  for (std::size_t i = 0; i < 400; ++i) {
    Bytes flipped = file_;
    flipped[i * 7919 % flipped.size()] ^= static_cast<std::uint8_t>(1u << i % 8);
    Limits limits;
    limits.pixels = 4'000'000;
    auto opened = openBytes(flipped, limits);
    if (std::holds_alternative<Fault>(opened)) {
      ++refused;
      continue;
    }
    Reader& reader = *std::get<std::unique_ptr<Reader>>(opened);
    if (faultOf(reader.decode(0))) ++refused;
    reader.properties(0);
  }
  EXPECT_GT(refused, 0u);
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, Damage,
                         testing::Values(Sample{"PngRgb", {}, "png"},
                                         Sample{"PngInterlaced", {"-interlace", "PNG"}, "png"},
                                         Sample{"PngPalette", {"-colors", "15", "-type", "palette"}, "png"},
                                         Sample{"PngGray16", {"-colorspace", "gray", "-depth", "16"}, "png"},
                                         Sample{"JpegBaseline", {"-quality", "90"}, "jpg"},
                                         Sample{"JpegProgressive", {"-interlace", "JPEG"}, "jpg"},
                                         Sample{"JpegGray", {"-colorspace", "gray"}, "jpg"},
                                         Sample{"JpegInk", {"-colorspace", "CMYK"}, "jpg"}),
                         [](const testing::TestParamInfo<Sample>& sample) {
                           return std::string(sample.param.name);
                         });

class PngChecksums : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    file_ = madeByImageMagick({"-size", "47x33", "plasma:", "-strip", "-depth", "8"}, "png");
  }
  Bytes withWrongChecksumOf(Bytes file, std::string_view type) const {
    const std::size_t at = positionOf(type, file);
    const std::size_t size = file.at(at - 2) << 8 | file.at(at - 1);
    file.at(at + 4 + size) ^= 1;
    return file;
  }
  Bytes file_;
};

TEST_F(PngChecksums, OfChunksThatMakeThePictureMustBeRight) {
  for (const char* type : {"IHDR", "IDAT", "IEND"})
    EXPECT_EQ(faultOf(decodeBytes(withWrongChecksumOf(file_, type))), Fault{FaultKind::damaged}) << type;
}

TEST_F(PngChecksums, OfOtherChunksOnlyLoseTheChunk) {
  const Bytes dense = withPngChunk(file_, pngChunk("pHYs", Bytes{0, 0, 11, 19, 0, 0, 11, 19, 1}));
  ASSERT_EQ(propertiesOf(dense).tree.count("DPIWidth"), 1u);
  const Bytes wrong = withWrongChecksumOf(dense, "pHYs");
  EXPECT_EQ(propertiesOf(wrong).tree.count("DPIWidth"), 0u);
  EXPECT_EQ(asRgba16(decoded(wrong)), asRgba16(decoded(file_)));
}

// Left out it would turn a transparent picture opaque.
TEST_F(PngChecksums, OfTransparencyMustBeRight) {
  const Bytes transparent = withPngChunk(file_, pngChunk("tRNS", Bytes{0, 1, 0, 2, 0, 3}));
  EXPECT_FALSE(faultOf(decodeBytes(transparent)));
  EXPECT_EQ(faultOf(decodeBytes(withWrongChecksumOf(transparent, "tRNS"))), Fault{FaultKind::damaged});
}

TEST_F(PngChecksums, DataBeyondTheLastRowIsNotIgnored) {
  // One row less in the header than there is in the stream.
  Bytes header(file_.begin() + 16, file_.begin() + 29);
  header[7] = static_cast<std::uint8_t>(kHeight - 1);
  const Bytes file = joined({Bytes(file_.begin(), file_.begin() + 8), pngChunk("IHDR", header),
                             Bytes(file_.begin() + 33, file_.end())});
  EXPECT_EQ(faultOf(decodeBytes(file)), Fault{FaultKind::damaged});
}

// The checksum over the whole of the pixels, inside the compressed stream.
TEST_F(PngChecksums, OfTheStreamMustBeRight) {
  const std::size_t at = positionOf("IDAT", file_);
  const std::size_t size = file_.at(at - 2) << 8 | file_.at(at - 1);
  const auto begin = file_.begin() + static_cast<std::ptrdiff_t>(at + 4);
  Bytes stream(begin, begin + static_cast<std::ptrdiff_t>(size));
  stream.back() ^= 1;
  const Bytes file = joined({Bytes(file_.begin(), begin - 8), pngChunk("IDAT", stream),
                             Bytes(begin + static_cast<std::ptrdiff_t>(size + 4), file_.end())});
  EXPECT_EQ(faultOf(decodeBytes(file)), Fault{FaultKind::damaged});
}

TEST(Limits, StopADecodeBeforeItAllocates) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes small =
      madeByImageMagick({"-size", "47x33", "plasma:", "-colorspace", "gray", "-depth", "8"}, "png");
  Bytes header(small.begin() + 16, small.begin() + 29);
  for (const int at : {2, 6}) {
    header[at] = 0xFD;
    header[at + 1] = 0xE8;  // 65000
  }
  const Bytes claim = joined({Bytes(small.begin(), small.begin() + 8), pngChunk("IHDR", header),
                              Bytes(small.begin() + 33, small.end())});
  EXPECT_TRUE(std::holds_alternative<std::unique_ptr<Reader>>(openBytes(claim))) << "opening refuses no size";
  EXPECT_EQ(faultOf(decodeBytes(claim)), (Fault{FaultKind::limit, LimitName::pixels}));

  Limits tight;
  tight.decodedBytes = 1000;
  EXPECT_EQ(faultOf(decodeBytes(small, tight)), (Fault{FaultKind::limit, LimitName::decodedBytes}));
  tight = {};
  tight.compressionRatio = tight.harmlessBytes = 0;
  EXPECT_EQ(faultOf(decodeBytes(small, tight)), (Fault{FaultKind::limit, LimitName::compressionRatio}));
}

TEST(Limits, OfMetadataRefuseThePictureRatherThanItsMetadata) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes jpeg = madeByImageMagick({"-size", "8x8", "xc:red"}, "jpg");
  const Bytes comment = jpegSegment(0xFE, "", bytesOfText(std::string(5000, 'x')));
  Limits tight;
  tight.metadataBytes = 4000;
  const auto reader = std::get<std::unique_ptr<Reader>>(openBytes(withJpegSegment(jpeg, comment), tight));
  const Fault expected{FaultKind::limit, LimitName::metadataBytes};
  EXPECT_EQ(faultOf(reader->decode(0)), expected);
  EXPECT_EQ(std::get<Fault>(reader->properties(0)), expected);
}

}  // namespace
}  // namespace ostra::test
