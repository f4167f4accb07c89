#include <gtest/gtest.h>

#include "platform/imageio/codec.h"
#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/platform/imageio/picture_files.h"

// Which directories of a TIFF are pages, and which files are no TIFF for us.

namespace ostra::test {
namespace {

using Samples = std::vector<std::uint16_t>;

constexpr std::uint16_t kBlackIsZero = 1;

std::uint32_t countOf(const Bytes& file, const Limits& limits = {}) {
  const auto opened = openBytes(file, limits);
  return std::get<std::unique_ptr<Reader>>(opened)->opened().count;
}

class TiffPageCount : public testing::TestWithParam<bool> {
 protected:
  TiffBuilder builder{false, GetParam()};
  TiffBuilder::Directory page = builder.picture(2, 1, 8, 1, kBlackIsZero, {10, 20});
  TiffBuilder::Directory small =
      with(builder.picture(1, 1, 8, 1, kBlackIsZero, {99}), builder.longs(254, {1}));
  TiffBuilder::Directory mask = with(builder.picture(2, 1, 1, 1, 4, {0x80}), builder.longs(254, {4}));
};

TEST_P(TiffPageCount, LeavesSmallerCopiesAndMasksOut) {
  EXPECT_EQ(countOf(builder.build({page})), 1u);
  EXPECT_EQ(countOf(builder.build({page, page, page})), 3u);
  EXPECT_EQ(countOf(builder.build({page, small, mask})), 1u);
  EXPECT_EQ(countOf(builder.build({page, with(small, builder.longs(254, {2}))})), 2u);
  auto old = with(page, builder.shorts(255, {2}));
  EXPECT_EQ(countOf(builder.build({page, old})), 1u);
}

TEST_P(TiffPageCount, TakesTheFirstPageForThePictureWhereverItLies) {
  const Bytes file = builder.build({small, mask, with(page, builder.shorts(274, {3}))});
  EXPECT_EQ(countOf(file), 1u);
  EXPECT_EQ(grayOf(decoded(file)), (Samples{10 * 257, 20 * 257}));
  EXPECT_EQ(propertiesOf(file).tree.at("Orientation"), Value(3));
  EXPECT_EQ(grayOf(decoded(builder.build({small}))), (Samples{99 * 257}));
}

TEST_P(TiffPageCount, StopsWhereTheChainComesBackAndAtTheLimit) {
  EXPECT_EQ(countOf(builder.build({page, page, page}, 0)), 3u);
  EXPECT_EQ(countOf(builder.build({page, page, page}, 2)), 3u);
  EXPECT_EQ(grayOf(decoded(builder.build({page, page}, 0))), (Samples{10 * 257, 20 * 257}));
  EXPECT_EQ(countOf(builder.build({page, small}, 1)), 1u);
  const Limits few{.frames = 5};
  EXPECT_EQ(countOf(builder.build(std::vector<TiffBuilder::Directory>(9, page)), few), 5u);
}

INSTANTIATE_TEST_SUITE_P(ClassicAndBig, TiffPageCount, testing::Bool());

// A raw file's preview, written over the file, would be all that is left of it.
TEST(TiffPages, LeavesRawPicturesOfCamerasAlone) {
  const TiffBuilder builder;
  const auto page = builder.picture(2, 1, 8, 1, kBlackIsZero, {10, 20});
  const auto isLeft = [](const Bytes& file) {
    const auto* codec = codecForType("public.tiff");
    const auto opened = functionsOf(*codec)->open(file, Limits{});
    const auto* fault = std::get_if<Fault>(&opened);
    return fault != nullptr && fault->kind == FaultKind::notImage;
  };
  EXPECT_FALSE(isLeft(builder.build({page})));
  EXPECT_TRUE(isLeft(builder.build({with(page, builder.bytes(50706, 1, Bytes{1, 4, 0, 0}))})));
  const auto sensor = builder.picture(2, 1, 8, 1, 32803, {1, 2}),
             linear = builder.picture(2, 1, 8, 1, 34892, {1, 2});
  for (const auto& raw :
       {sensor, linear, with(page, builder.shorts(259, {34713})), with(page, builder.shorts(259, {65535}))}) {
    EXPECT_TRUE(isLeft(builder.build({raw})));
    EXPECT_TRUE(isLeft(builder.build({page, raw})));
    auto above = page;
    above.below = {page, raw};
    EXPECT_TRUE(isLeft(builder.build({above})));
  }
  auto above = page;
  above.below = {page};
  EXPECT_FALSE(isLeft(builder.build({above})));
  // Canon's mark stands between the header and the first directory.
  Bytes canon = builder.build({page});
  canon.insert(canon.begin() + 8, {'C', 'R', 2, 0, 0, 0, 0, 0});
  canon[4] = 16;
  EXPECT_TRUE(isLeft(canon));
}

}  // namespace
}  // namespace ostra::test
