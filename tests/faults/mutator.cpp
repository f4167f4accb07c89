#include "tests/faults/mutator.h"

#include "tests/faults/damages.h"
#include "tests/faults/picture_parts.h"

namespace ostra::test {
namespace {

/// Names do not always tell the truth, and some tell nothing.
std::string endingFor(const Bytes& picture, Dice& dice) {
  static const std::vector<std::string> all{"", ".png", ".PNG", ".jpg", ".jpeg", ".JPG", ".webp", ".x", "."};
  if (dice.hits(10)) return dice.oneOf(all);
  return "." + extensionOf(picture);
}

std::size_t timesOf(Dice& dice) {
  const std::size_t chance = dice.below(100);
  return chance < 60 ? 1 : chance < 85 ? 2 : 3;
}

}  // namespace

Mutation mutationOf(const SourcePictures& pictures, std::uint32_t seed, std::size_t index) {
  Dice dice(seed, index);
  const auto& [name, bytes] = pictures.draw(dice);
  Mutation mutation{index, std::to_string(index) + endingFor(bytes, dice), name, bytes};
  for (std::size_t times = timesOf(dice); times > 0; --times) {
    const Damage& damage = damages()[dice.below(damages().size())];
    const auto& other = pictures.draw(dice);
    damage.inflict(mutation.bytes, other.bytes, dice);
    mutation.story += std::string(", ") + damage.name + " (" + other.name + ")";
  }
  // A decoder looks at little of what has a wrong checksum.
  if (dice.hits(70)) repairChecksums(mutation.bytes);
  return mutation;
}

}  // namespace ostra::test
