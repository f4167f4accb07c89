#include "platform/imageio/metadata/text_encoding.h"

#include <gtest/gtest.h>

namespace ostra {

TEST(TextEncoding, KnowsUtf8FromWhatIsNot) {
  for (const char* text :
       {"", "plain", "caf\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(isUtf8(text)) << text;
  }
  // Alone, too long, a surrogate, above the last, cut off, a lead without its rest.
  for (const char* text : {"caf\xE9", "\x80", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                           "\xE2\x82", "\xC3(", "\xF5\x80\x80\x80"}) {
    EXPECT_FALSE(isUtf8(text)) << text;
  }
}

TEST(TextEncoding, TakesWhatIsNotUtf8ForLatin1) {
  EXPECT_EQ(utf8FromUnknown("caf\xE9"), "caf\xC3\xA9");
  EXPECT_EQ(utf8FromUnknown("caf\xC3\xA9"), "caf\xC3\xA9");
}

TEST(TextEncoding, GoesToUtf16AndBackInBothOrders) {
  const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z";
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    const Bytes wide = utf16FromUtf8(text, order);
    EXPECT_EQ(wide.size(), 12u);
    EXPECT_EQ(wide[order == ByteOrder::big ? 1 : 0], 'a');
    EXPECT_EQ(utf8FromUtf16(wide, order), text);
  }
}

TEST(TextEncoding, ReplacesHalvesOfAPair) {
  EXPECT_EQ(utf8FromUtf16(Bytes{0x3D, 0xD8, 'a', 0}, ByteOrder::little),
            "\xEF\xBF\xBD"
            "a");
  EXPECT_EQ(utf8FromUtf16(Bytes{0x00, 0xDE, 'a'}, ByteOrder::little), "\xEF\xBF\xBD");
}

}  // namespace ostra
