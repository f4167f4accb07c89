#include "platform/imageio/decoder/encoding.h"

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/imageio/decoder/messages.h"
#include "platform/imageio/decoder/worker_process.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/decoder/confined.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra {
namespace {

using test::Confined;

struct ReadPicture {
  Pixels pixels;
  Properties properties;
};

ReadPicture somePicture() {
  using namespace test;
  const TemporaryFolder folder;
  const std::string path = folder.path("a.png");
  run({"convert", "-size", "47x33", "-seed", "5", "plasma:tomato-steelblue", path});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-XMP-dc:Title=T", path});
  const Bytes file = readFile(path);
  return {decoded(file), test::propertiesOf(file)};
}

Answer<Bytes> inThisProcess(const Codec& codec, const ReadPicture& picture) {
  return functionsOf(codec)->encode(picture.pixels, &picture.properties);
}

class EncodingApart : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "exiftool"}) OSTRA_NEEDS_PROGRAM(name);
  }
};

TEST_F(EncodingApart, GivesTheSameFile) {
  const Confined confined;
  ReadPicture picture = somePicture();
  picture.properties.tree.insert_or_assign("Orientation", Value(6));  // edited since it was read
  for (const char* type : {"public.png", "public.jpeg"}) {
    const Codec& codec = *codecForType(type);
    const auto apart = encodeApart(confined.zygote, codec, picture.pixels, &picture.properties);
    ASSERT_TRUE(std::holds_alternative<Bytes>(apart)) << type;
    EXPECT_EQ(apart, inThisProcess(codec, picture)) << type;
    const auto bare = encodeApart(confined.zygote, codec, picture.pixels, nullptr);
    EXPECT_EQ(bare, codec.functions.encode(picture.pixels, nullptr)) << type;
    EXPECT_NE(bare, apart) << type;
  }
}

TEST_F(EncodingApart, RefusesWhatTheCodecRefuses) {
  const Confined confined;
  ReadPicture picture = somePicture();
  picture.properties.carrier = [] {
    Carrier carrier;
    carrier.exif = {'I', 'I', 42, 0, 255, 255, 255, 255};
    return std::make_shared<const Carrier>(carrier);
  }();
  const Codec& codec = *codecForType("public.png");
  EXPECT_TRUE(std::holds_alternative<Fault>(inThisProcess(codec, picture)));
  EXPECT_EQ(encodeApart(confined.zygote, codec, picture.pixels, &picture.properties),
            inThisProcess(codec, picture));
}

/// An encoder that is confined, has heard what it is asked, and then ends so.
Zygote::Serve encoderThat(void (*ends)()) {
  return [ends](const DecoderTask& task, const Confinement& confinement) {
    beConfined(task, confinement);
    const Channel parent((UniqueFd(kChannelDescriptor)));
    parent.receive(kMostRequestBytes);
    ends();
  };
}

/// An encoder that aborts the first time, as one that lacks memory for a moment.
Zygote::Serve failingOnce(const std::string& mark) {
  return [mark](const DecoderTask& task, const Confinement& confinement) {
    const UniqueFd first(open(mark.c_str(), O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (first) std::abort();
    serveEncoding(task, confinement);
  };
}

Fault faultOf(void (*ends)()) {
  const Confined confined(encoderThat(ends));
  const ReadPicture picture = somePicture();
  const Codec& codec = *codecForType("public.png");
  for (int again = 0; again < 2; ++again) {
    const auto answer = encodeApart(confined.zygote, codec, picture.pixels, nullptr);
    if (again == 1) return std::get<Fault>(answer);
    EXPECT_TRUE(std::holds_alternative<Fault>(answer));
  }
  return {};
}

TEST_F(EncodingApart, AnEncoderThatAbortsWroteNothing) {
  EXPECT_EQ(faultOf([] { std::abort(); }), Fault{FaultKind::crashed});
}

// Not a refusal: the picture would lose its metadata for it.
TEST_F(EncodingApart, OneThatCannotDoItsWorkIsNoEncoderThatRefuses) {
  EXPECT_THROW(faultOf([] { _exit(2); }), NSError);
  EXPECT_THROW(faultOf([] { _exit(kServed); }), NSError) << "its answer was not heard";
  EXPECT_THROW(faultOf([] { std::raise(SIGKILL); }), NSError) << "a machine short of memory does so";
}

// Its threads may wait for each other for ever.
TEST_F(EncodingApart, OneThatStandsStillIsNotWaitedFor) {
  const auto begin = std::chrono::steady_clock::now();
  const Fault fault = faultOf([] {
    char never = 0;
    [[maybe_unused]] const ssize_t count = read(kChannelDescriptor, &never, 1);
  });
  EXPECT_EQ(fault, (Fault{FaultKind::limit, LimitName::seconds}));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2 * 28));
}

TEST_F(EncodingApart, RefusesOnlyWhatItRefusesTwice) {
  const test::TemporaryFolder folder;
  const Confined confined(failingOnce(folder.path("failed")));
  const ReadPicture picture = somePicture();
  const Codec& codec = *codecForType("public.png");
  EXPECT_EQ(encodeApart(confined.zygote, codec, picture.pixels, &picture.properties),
            inThisProcess(codec, picture));
}

TEST_F(EncodingApart, OneThatMakesAProcessWroteNothing) {
  EXPECT_EQ(faultOf([] { [[maybe_unused]] const int id = fork(); }), Fault{FaultKind::forbidden});
}

}  // namespace
}  // namespace ostra
