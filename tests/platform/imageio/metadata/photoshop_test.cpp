#include "platform/imageio/metadata/photoshop.h"

#include <gtest/gtest.h>

namespace ostra {

namespace {

Bytes resource(unsigned id, const Bytes& data, std::string_view name = "") {
  Bytes bytes{'8', 'B', 'I', 'M', static_cast<std::uint8_t>(id >> 8), static_cast<std::uint8_t>(id & 0xFF)};
  bytes.push_back(static_cast<std::uint8_t>(name.size()));
  bytes.insert(bytes.end(), name.begin(), name.end());
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  bytes.insert(bytes.end(), {0, 0, static_cast<std::uint8_t>(data.size() >> 8),
                             static_cast<std::uint8_t>(data.size() & 0xFF)});
  bytes.insert(bytes.end(), data.begin(), data.end());
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  return bytes;
}

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

const Bytes kPath = resource(2000, {1, 2, 3}, "Path 1");
const Bytes kIptc{0x1C, 2, 5, 0, 1, 'x', 0};
Bytes resolution(std::uint8_t high) {
  return resource(1005, {0, high, 0, 0, 0, 1, 0, 1, 0, high, 0, 0, 0, 1, 0, 1});
}

}  // namespace

TEST(Photoshop, SplitsAndJoinsWithoutLoss) {
  const Bytes block = joined({resource(1028, kIptc), kPath, resolution(72)});
  const PhotoshopBlock split = splitPhotoshop(block);
  EXPECT_EQ(split.iptc, kIptc);
  EXPECT_EQ(split.resources, joined({kPath, resolution(72)}));
  EXPECT_EQ(joinPhotoshop(split.iptc, split.resources), block);
  EXPECT_TRUE(joinPhotoshop({}, {}).empty());
}

TEST(Photoshop, FindsTheRecordsWhereverTheyLie) {
  EXPECT_EQ(splitPhotoshop(joined({kPath, resource(1028, kIptc, "odd")})).iptc, kIptc);
}

TEST(Photoshop, ReadsALastResourceWithoutPadding) {
  Bytes block = joined({kPath, resource(1028, kIptc)});
  block.pop_back();
  EXPECT_EQ(splitPhotoshop(block).iptc, kIptc);
}

TEST(Photoshop, KeepsBytesThatAreNoResource) {
  Bytes cut = resource(1028, kIptc);
  cut.resize(cut.size() - 3);
  const PhotoshopBlock split = splitPhotoshop(joined({kPath, cut}));
  EXPECT_TRUE(split.iptc.empty());
  EXPECT_EQ(split.resources, joined({kPath, cut}));
}

TEST(Photoshop, DropsWhatDescribesTheOldPicture) {
  const Bytes block = joined({resource(1036, {1, 2}), kPath, resource(1033, {3}), resource(1039, {4, 5}),
                              resource(1061, Bytes(16))});
  EXPECT_EQ(patchPhotoshop(block, std::nullopt, true), joined({kPath, resource(1061, Bytes(16))}));
  EXPECT_EQ(patchPhotoshop(block, std::nullopt, false), kPath);
}

TEST(Photoshop, TellsTheResolutionOnce) {
  const Bytes block = joined({kPath, resolution(72)});
  EXPECT_EQ(photoshopDensity(block)->x, 72);
  EXPECT_EQ(patchPhotoshop(block, std::nullopt, true), block);
  EXPECT_EQ(patchPhotoshop(block, Density{144, 144}, true), joined({kPath, resolution(144)}));
  EXPECT_FALSE(photoshopDensity(kPath));
  EXPECT_FALSE(photoshopDensity(resolution(0)));
}

}  // namespace ostra
