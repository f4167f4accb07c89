#include "platform/foundation/characters.h"

#include <string>

#include <gtest/gtest.h>

namespace ostra {
namespace {

TEST(Trimming, TakesBlanksAndNewlinesFromBothEndsOnly) {
  EXPECT_EQ(trimWhitespaceAndNewlines(" \t\r\n srgb jpg \v\f"), "srgb jpg");
  EXPECT_EQ(trimWhitespaceAndNewlines("invert"), "invert");
  EXPECT_EQ(trimWhitespaceAndNewlines(" \n "), "");
  EXPECT_EQ(trimWhitespaceAndNewlines(""), "");
}

std::string encoded(unsigned point) {
  std::string text;
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0 | (point >> 6));
    text += static_cast<char>(0x80 | (point & 63));
  } else {
    text += static_cast<char>(0xE0 | (point >> 12));
    text += static_cast<char>(0x80 | ((point >> 6) & 63));
    text += static_cast<char>(0x80 | (point & 63));
  }
  return text;
}

bool isTrimmed(unsigned point) {
  return trimWhitespaceAndNewlines(encoded(point) + "x" + encoded(point)) == "x";
}

TEST(Trimming, KnowsEveryBlankOfUnicodeAndNoOtherCharacter) {
  for (unsigned point = 1; point < 0xD800; ++point) {
    const bool blank = (point >= 0x09 && point <= 0x0D) || point == 0x20 || point == 0x85 || point == 0xA0 ||
                       point == 0x1680 || (point >= 0x2000 && point <= 0x200B) || point == 0x2028 ||
                       point == 0x2029 || point == 0x202F || point == 0x205F || point == 0x3000;
    if (point == 'x') continue;
    ASSERT_EQ(isTrimmed(point), blank) << std::hex << point;
  }
}

TEST(Trimming, LeavesBrokenTextAsItIs) { EXPECT_EQ(trimWhitespaceAndNewlines("\x80\xC2"), "\x80\xC2"); }

}  // namespace
}  // namespace ostra
