#include "desktop/extensions/served_types.h"

#include <gtest/gtest.h>

namespace ostra::test {
namespace {

const menu::ServedTypes kTypes({"image/png", "image/tiff", "image/bmp"});

TEST(ServedTypes, AreThoseOfTheList) {
  EXPECT_TRUE(kTypes.contain("image/png"));
  EXPECT_TRUE(kTypes.contain("image/png"));
  EXPECT_FALSE(kTypes.contain("image/svg+xml"));
  EXPECT_FALSE(kTypes.contain("text/plain"));
  EXPECT_FALSE(kTypes.contain("inode/directory"));
}

TEST(ServedTypes, AreKnownUnderTheirOtherNames) {
  EXPECT_TRUE(kTypes.contain("image/x-bmp"));
  EXPECT_TRUE(kTypes.contain("image/x-MS-bmp"));
  EXPECT_TRUE(menu::ServedTypes({"image/x-bmp"}).contain("image/bmp"));
}

TEST(ServedTypes, AreNotThoseThatAreBuiltUponThem) { EXPECT_FALSE(kTypes.contain("image/x-canon-cr2")); }

TEST(ServedTypes, AreNoneWithoutAType) {
  EXPECT_FALSE(kTypes.contain(nullptr));
  EXPECT_FALSE(kTypes.contain(""));
  EXPECT_FALSE(menu::ServedTypes().contain("image/png"));
}

}  // namespace
}  // namespace ostra::test
