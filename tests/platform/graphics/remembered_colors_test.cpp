#include "platform/graphics/remembered_colors.h"

#include <gtest/gtest.h>

namespace ostra::test {
namespace {

/// Four components to three by a rule that the test knows; counts what it is asked.
class Counting final : public ProfileTransform {
 public:
  explicit Counting(unsigned step) : step_(step) {}
  int sourceComponents() const override { return 4; }
  int destinationComponents() const override { return 3; }
  void run(const std::uint16_t* source, std::uint16_t* destination, std::size_t pixels) const override {
    asked += pixels;
    for (std::size_t i = 0; i < pixels; ++i)
      for (std::size_t c = 0; c < 3; ++c)
        destination[3 * i + c] = static_cast<std::uint16_t>(source[4 * i + c] + step_ * source[4 * i + 3]);
  }
  mutable std::size_t asked = 0;

 private:
  unsigned step_;
};

std::vector<std::uint16_t> colors(std::size_t pixels, unsigned start) {
  std::vector<std::uint16_t> words;
  for (std::size_t i = 0; i < 4 * pixels; ++i)
    words.push_back(static_cast<std::uint16_t>((start + i) * 40503u));
  return words;
}

void expectSame(RememberedColors& memory, const Counting& transform,
                const std::vector<std::uint16_t>& source) {
  std::vector<std::uint16_t> found(source.size() / 4 * 3), wanted(found.size());
  memory.run(transform, source.data(), found.data(), source.size() / 4);
  const std::size_t before = transform.asked;
  transform.run(source.data(), wanted.data(), source.size() / 4);
  transform.asked = before;
  EXPECT_EQ(found, wanted);
}

TEST(RememberedColors, AreNotConvertedAgain) {
  RememberedColors memory;
  const Counting transform(5);
  const auto some = colors(PixelChunk::capacity, 0);
  expectSame(memory, transform, some);
  const std::size_t first = transform.asked;
  EXPECT_EQ(first, PixelChunk::capacity);
  expectSame(memory, transform, some);
  EXPECT_LE(transform.asked - first, 8u) << "but for the few that shared a slot";
}

TEST(RememberedColors, AreThoseOfTheTransform) {
  RememberedColors memory;
  const Counting one(5), other(7);
  for (unsigned round = 0; round < 600; ++round) expectSame(memory, one, colors(200, round * 300));
  expectSame(memory, other, colors(200, 0));
  expectSame(memory, one, colors(200, 0));
}

TEST(RememberedColors, AreNoneAtFirst) {
  RememberedColors memory;
  const Counting transform(5);
  // All bits clear, all bits set, and the mark of an empty slot.
  expectSame(memory, transform, {0, 0, 0, 0, 65535, 65535, 65535, 65535, 1, 0, 0, 0});
  EXPECT_EQ(transform.asked, 3u);
}

}  // namespace
}  // namespace ostra::test
