#include <gtest/gtest.h>

#include "platform/imageio/codec.h"

namespace ostra {
namespace {

TEST(FormatTable, SaysOfEveryFormatWhetherItIsWritten) {
  for (const Codec& codec : allCodecs()) {
    const CodecFunctions* const functions = functionsOf(codec);
    ASSERT_NE(functions, nullptr) << codec.name;
    EXPECT_NE(functions->open, nullptr) << codec.name;
    EXPECT_EQ(functions->encode != nullptr, codec.writes) << codec.name;
  }
}

}  // namespace
}  // namespace ostra
