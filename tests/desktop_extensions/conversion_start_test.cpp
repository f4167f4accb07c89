#include "desktop/extensions/conversion_start.h"

#include <gtest/gtest.h>

#include "tests/desktop_extensions/record.h"

namespace ostra::test {
namespace {

class ConversionStart : public ::testing::Test {
 protected:
  void start(const std::string& program, const std::string& paths) const {
    menu::startConversion({.program = program}, {.bundle = bundle_}, paths);
  }
  void expectArrival(const std::string& paths) const {
    start(OSTRA_RECORDING_PROGRAM, paths);
    EXPECT_TRUE(recordAt(bundle_) == expectedRecord(bundle_, paths));
  }

  TemporaryFolder folder_;
  std::string bundle_ = folder_.path("a bundle, with 'quotes'");
};

TEST_F(ConversionStart, HandsOverEveryName) {
  using namespace std::string_literals;
  expectArrival(
      "/a b.png\0/'q\"uotes`$(x).png\0/new\nline.png\0/ü\u0308.png\0/100 %s%n.png\0/-dash\0/\xff\xfe.png\0"s);
}

TEST_F(ConversionStart, HandsOverMoreThanAPipeHolds) {
  std::string paths;
  for (int number = 0; number < 20000; ++number) {
    paths += "/" + std::string(100, 'x') + std::to_string(number);
    paths.push_back('\0');
  }
  ASSERT_GT(paths.size(), 2000000U);
  expectArrival(paths);
}

TEST_F(ConversionStart, OutlivesAProgramThatDoesNotRead) {
  // A program that ends before it reads.
  start("/bin/true", std::string(3000000, 'x'));
  expectArrival({});
}

TEST_F(ConversionStart, SaysInALineWhenTheProgramIsMissing) {
  ::testing::internal::CaptureStderr();
  start("/nowhere/ostra", {});
  const std::string told = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(told.rfind("ostra: /nowhere/ostra cannot be started: ", 0), 0U) << told;
  EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
}

}  // namespace
}  // namespace ostra::test
