#include <cerrno>
#include <cmath>
#include <filesystem>
#include <new>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/foundation/error.h"
#include "platform/foundation/service.h"
#include "platform/imageio/decoding_notice.h"
#include "platform/imageio/image_destination.h"
#include "platform/imageio/image_source.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

std::unique_ptr<CGImageSource> sourceOf(const std::string& path) {
  return CGImageSource::createWithURL(URL::fileURLWithPath(path), {});
}

CGImageRef image(Bytes samples, std::uint32_t width, std::uint32_t height, unsigned bits, unsigned count,
                 CGImageAlphaInfo alpha, std::string_view space) {
  CGImage::Format format;
  format.width = width;
  format.height = height;
  format.bitsPerComponent = bits;
  format.bitsPerPixel = bits * count;
  format.bytesPerRow = samples.size() / height;
  format.bitmapInfo = static_cast<CGBitmapInfo>(alpha) | (bits == 16 ? kCGBitmapByteOrder16Little : 0);
  return CGImage::create(format, CGColorSpace::createWithName(space), SharedBytes::adopt(std::move(samples)),
                         true, CGColorRenderingIntent::standard);
}

Bytes written(const CGImageRef& picture, std::string_view type = "public.png") {
  Bytes data;
  const auto destination = CGImageDestination::createWithData(data, type, 1);
  destination->addImage(picture, nullptr);
  return destination->finalize() ? data : Bytes();
}

class Sources : public testing::Test {
 protected:
  TemporaryFolder folder;
};

TEST_F(Sources, AreNoneForWhatIsNoRegularFile) {
  EXPECT_EQ(sourceOf(folder.path("missing.png")), nullptr);
  EXPECT_EQ(sourceOf(folder.path()), nullptr);
  ASSERT_EQ(mkfifo(folder.path("pipe.png").c_str(), 0600), 0);
  EXPECT_EQ(sourceOf(folder.path("pipe.png")), nullptr);
  EXPECT_EQ(sourceOf("/dev/zero"), nullptr);
}

TEST_F(Sources, OfOtherContentHaveNoTypeAndNoPictures) {
  writeFile(folder.path("text.png"), "not a picture\n");
  writeFile(folder.path("empty.jpg"), "");
  writeFile(folder.path("signature.png"), std::string_view("\x89PNG\r\n\x1A\n"));
  writeFile(folder.path("header.png"), std::string_view("\x89PNG\r\n\x1A\n\0\0", 10));
  for (const std::string& name : folder.names()) {
    const auto source = sourceOf(folder.path(name));
    ASSERT_NE(source, nullptr) << name;
    EXPECT_EQ(source->type(), std::nullopt) << name;
    EXPECT_EQ(source->count(), 0) << name;
    EXPECT_EQ(source->createImageAtIndex(0, {}), nullptr) << name;
    EXPECT_FALSE(source->copyPropertiesAtIndex(0)) << name;
  }
}

TEST_F(Sources, AreWhatTheirBytesSay) {
  OSTRA_NEEDS_PROGRAM("convert");
  writeFile(folder.path("a.png"), madeByImageMagick({"-size", "3x2", "xc:red"}, "jpg"));
  const auto source = sourceOf(folder.path("a.png"));
  EXPECT_EQ(source->type(), "public.jpeg");
  EXPECT_EQ(source->count(), 1);
  EXPECT_EQ(source->createImageAtIndex(1, {}), nullptr);
}

TEST_F(Sources, GiveUntaggedPicturesTheSpaceOfTheirModel) {
  OSTRA_NEEDS_PROGRAM("convert");
  const auto spaceOf = [&](const std::vector<std::string>& words, const std::string& extension) {
    writeFile(folder.path("a"), madeByImageMagick(words, extension));
    const CGImageRef picture = sourceOf(folder.path("a"))->createImageAtIndex(0, {});
    return picture->colorSpace()->name().value_or("");
  };
  EXPECT_EQ(spaceOf({"-size", "3x2", "xc:red", "-strip"}, "jpg"), kCGColorSpaceSRGB);
  EXPECT_EQ(spaceOf({"-size", "3x2", "xc:gray", "-colorspace", "gray", "-strip"}, "jpg"),
            kCGColorSpaceGenericGrayGamma2_2);
  EXPECT_EQ(spaceOf({"-size", "3x2", "xc:red", "-colorspace", "CMYK", "-strip"}, "jpg"),
            kCGColorSpaceDeviceCMYK);
}

class RecordingNotice : public DecodingNotice {
 public:
  void pictureStopped(const URL& picture, const Fault& fault) override {
    notices.emplace_back(picture.lastPathComponent(), fault);
  }
  std::vector<std::pair<std::string, Fault>> notices;
};

TEST_F(Sources, SayWhichLimitStoppedAPicture) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes small = madeByImageMagick({"-size", "3x2", "xc:gray", "-colorspace", "gray"}, "png");
  const Bytes header = {0, 0, 0xFD, 0xE8, 0, 0, 0xFD, 0xE8, 8, 0, 0, 0, 0};
  writeFile(folder.path("huge.png"),
            joined({Bytes(small.begin(), small.begin() + 8), pngChunk("IHDR", header),
                    Bytes(small.begin() + 33, small.end())}));
  RecordingNotice notice;
  const Service<DecodingNotice>::Override override(notice);
  const auto source = sourceOf(folder.path("huge.png"));
  EXPECT_EQ(source->type(), "public.png");
  EXPECT_TRUE(notice.notices.empty());
  EXPECT_EQ(source->createImageAtIndex(0, {}), nullptr);
  ASSERT_EQ(notice.notices.size(), 1u);
  EXPECT_EQ(notice.notices[0],
            std::make_pair(std::string("huge.png"), Fault{FaultKind::limit, LimitName::pixels}));
}

TEST(DecodingNotices, AreALineThatNamesThePictureAndWhatStoppedIt) {
  const URL picture = URL::fileURLWithPath("/pictures/a\nb.png");
  testing::internal::CaptureStderr();
  for (const Fault& fault :
       {Fault{FaultKind::limit, LimitName::pixels}, Fault{FaultKind::limit, LimitName::seconds},
        Fault{FaultKind::crashed}, Fault{FaultKind::forbidden}})
    DecodingNotice::standard().pictureStopped(picture, fault);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "a?b.png: not decoded, it claims too many pixels.\n"
            "a?b.png: not decoded, decoding takes too long.\n"
            "a?b.png: not decoded, its decoder broke down.\n"
            "a?b.png: not decoded, its decoder asked the system for something forbidden.\n");
}

TEST(Destinations, AreMadeForWritableTypesAndOnePicture) {
  Bytes data;
  EXPECT_NE(CGImageDestination::createWithData(data, "public.png", 1), nullptr);
  EXPECT_NE(CGImageDestination::createWithData(data, "public.jpeg", 1), nullptr);
  EXPECT_EQ(CGImageDestination::createWithData(data, "public.png", 2), nullptr);
  EXPECT_EQ(CGImageDestination::createWithData(data, "org.webmproject.webp", 1), nullptr);
  EXPECT_EQ(CGImageDestination::createWithData(data, "PUBLIC.PNG", 1), nullptr);
  EXPECT_EQ(
      CGImageDestinationCopyTypeIdentifiers(),
      (std::vector<std::string>{"com.compuserve.gif", "com.microsoft.bmp", "com.microsoft.ico",
                                "com.truevision.tga-image", "public.jpeg", "public.pbm", "public.png"}));
}

TEST(Destinations, LeaveTheBufferEmptyWhenTheyFail) {
  Bytes data = {1, 2, 3};
  const auto destination = CGImageDestination::createWithData(data, "public.png", 1);
  EXPECT_FALSE(destination->finalize());
  EXPECT_TRUE(data.empty());
  destination->addImage(image(Bytes(16), 2, 2, 8, 4, CGImageAlphaInfo::none, kCGColorSpaceDeviceCMYK),
                        nullptr);
  EXPECT_FALSE(destination->finalize());
  EXPECT_TRUE(data.empty());
}

TEST(Destinations, DivideColourByItsAlphaRoundedToTheNearest) {
  // Every pair of colour and alpha, also impossible ones.
  Bytes samples;
  for (unsigned alpha = 0; alpha < 256; ++alpha) {
    for (unsigned colour = 0; colour < 256; ++colour) {
      const auto value = static_cast<std::uint8_t>(colour);
      samples.insert(samples.end(), {value, value, value, static_cast<std::uint8_t>(alpha)});
    }
  }
  const Bytes file =
      written(image(samples, 256, 256, 8, 4, CGImageAlphaInfo::premultipliedLast, kCGColorSpaceSRGB));
  const Pixels back = decoded(file);
  for (unsigned alpha = 0; alpha < 256; ++alpha) {
    for (unsigned colour = 0; colour < 256; ++colour) {
      const std::uint8_t* pixel = &back.bytes.view[(alpha * 256 + colour) * 4];
      const long expected = alpha == 0 ? 0 : std::min(255l, std::lround(colour * 255.0 / alpha));
      ASSERT_EQ(pixel[1], expected) << colour << " under " << alpha;
      ASSERT_EQ(pixel[3], alpha);
    }
  }
}

TEST(Destinations, DivideSixteenBitColourToo) {
  const Bytes samples = {0x00, 0x40, 0x34, 0x12,
                         0xFF, 0x7F, 0xFF, 0x7F};  // 0x4000, 0x1234, 0x7FFF under 0x7FFF
  const Pixels back =
      decoded(written(image(samples, 1, 1, 16, 4, CGImageAlphaInfo::premultipliedLast, kCGColorSpaceSRGB)));
  const auto word = [&](std::size_t i) { return back.bytes.view[2 * i] | back.bytes.view[2 * i + 1] << 8; };
  EXPECT_EQ(word(0), std::lround(0x4000 * 65535.0 / 0x7FFF));
  EXPECT_EQ(word(1), std::lround(0x1234 * 65535.0 / 0x7FFF));
  EXPECT_EQ(word(2), 65535);
  EXPECT_EQ(word(3), 0x7FFF);
}

TEST(Destinations, DropASkippedComponentAndPutLeadingAlphaLast) {
  const Bytes skipped = {9, 1, 2, 3};
  const CGImageRef first = image(skipped, 1, 1, 8, 4, CGImageAlphaInfo::noneSkipFirst, kCGColorSpaceSRGB);
  if (first == nullptr) GTEST_SKIP() << "pictures of that layout are not made";
  const Pixels back = decoded(written(first));
  EXPECT_EQ(Bytes(back.bytes.view.begin(), back.bytes.view.begin() + 3), (Bytes{1, 2, 3}));
}

TEST(Destinations, TellWhatTheColoursMean) {
  const Bytes p3 = written(image(Bytes(12), 2, 2, 8, 3, CGImageAlphaInfo::none, kCGColorSpaceDisplayP3));
  EXPECT_EQ(propertiesOf(p3).tree.at("ProfileName"), Value("Display P3"));
  const Bytes jpeg =
      written(image(Bytes(12), 2, 2, 8, 3, CGImageAlphaInfo::none, kCGColorSpaceSRGB), "public.jpeg");
  EXPECT_TRUE(std::holds_alternative<IccProfile>(decoded(jpeg).profile));
}

/// A door whose writers give the same answer always.
class AnsweringDoor : public CodecDoor {
 public:
  explicit AnsweringDoor(const Fault& fault) : fault_(fault) {}
  Answer<std::unique_ptr<Reader>> open(UniqueFd /*file*/, const Limits& /*limits*/) override {
    return fault_;
  }
  Answer<Bytes> encode(std::string_view /*type*/, const Pixels& /*pixels*/,
                       const Properties* /*properties*/) override {
    return fault_;
  }
  std::set<std::string> writable() const override { return {"public.png"}; }

 private:
  Fault fault_;
};

Bytes writtenThrough(const Fault& fault) {
  AnsweringDoor door(fault);
  const Service<CodecDoor>::Override override(door);
  return written(image(Bytes(4, 9), 2, 2, 8, 1, CGImageAlphaInfo::none, kCGColorSpaceGenericGrayGamma2_2));
}

TEST(Destinations, TakeAWritersFaultForARefusal) {
  for (const FaultKind kind :
       {FaultKind::missing, FaultKind::damaged, FaultKind::crashed, FaultKind::forbidden}) {
    EXPECT_TRUE(writtenThrough({kind}).empty());
  }
  EXPECT_TRUE(writtenThrough({FaultKind::limit, LimitName::metadataBytes}).empty());
}

// A second attempt with less to write would lose what could have been written.
TEST(Destinations, TakeLackOfMemoryAndTimeForTheFailureOfTheFile) {
  EXPECT_THROW(writtenThrough({FaultKind::limit, LimitName::decodedBytes}), std::bad_alloc);
  try {
    writtenThrough({FaultKind::limit, LimitName::seconds});
    FAIL() << "a refusal";
  } catch (const NSError& error) {
    EXPECT_EQ(error.domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(error.code(), ETIME);
  }
}

}  // namespace
}  // namespace ostra::test
