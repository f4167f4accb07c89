#include "tests/faults/damages.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tests/faults/deflated.h"
#include "tests/faults/picture_parts.h"

namespace ostra::test {
namespace {

using Parts = std::vector<Bytes>;

std::ptrdiff_t at(std::size_t offset) { return static_cast<std::ptrdiff_t>(offset); }

/// Half of the time near the beginning, where most is said in few bytes.
std::size_t place(const Bytes& bytes, Dice& dice) {
  constexpr std::size_t kBeginning = 1024;
  return dice.below(dice.hits(50) ? std::min(bytes.size(), kBeginning) : bytes.size());
}

std::uint32_t interesting(Dice& dice) {
  static const std::vector<std::uint32_t> numbers{
      0,      1,       2,        3,          4,          7,          8,          0x10,
      0x20,   0x7F,    0x80,     0xFF,       0x100,      0x7FFF,     0x8000,     0xFFFE,
      0xFFFF, 0x10000, 0xFFFFFF, 0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF0, 0xFFFFFFFF};
  return dice.oneOf(numbers);
}

void overwrite(Bytes& bytes, std::size_t offset, Dice& dice) {
  static const std::vector<std::size_t> widths{1, 2, 4};
  const std::size_t width = dice.oneOf(widths);
  if (offset + width > bytes.size()) return;
  const std::uint32_t number = interesting(dice);
  putBigEndian(bytes, offset, width, number);
  if (dice.hits(50)) std::reverse(bytes.begin() + at(offset), bytes.begin() + at(offset + width));
}

void flipBits(Bytes& bytes, const Bytes&, Dice& dice) {
  if (bytes.empty()) return;
  for (std::size_t count = 1 + dice.below(8); count > 0; --count)
    bytes[place(bytes, dice)] ^= static_cast<std::uint8_t>(1U << dice.below(8));
}

void overwriteBytes(Bytes& bytes, const Bytes&, Dice& dice) {
  for (std::size_t count = 1 + dice.below(4); count > 0; --count) overwrite(bytes, place(bytes, dice), dice);
}

/// Pixels that are damaged are the end of most pictures, so the other parts have their turn first.
std::size_t partToDamage(const Parts& parts, Dice& dice) {
  std::vector<std::size_t> others;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const Bytes& part = parts[i];
    const bool chunk = part.size() > 8 && part[0]<0x80, segment = part.size()> 2 && part[0] == 0xFF;
    if ((chunk && !std::equal(part.begin() + 4, part.begin() + 8, "IDAT")) || segment) others.push_back(i);
  }
  return dice.hits(25) || others.empty() ? dice.below(parts.size()) : dice.oneOf(others);
}

/// Damages one part from within, which leaves the others where they were.
void damagePart(Bytes& picture, const Bytes& other, Dice& dice) {
  Parts parts = cutApart(picture);
  Bytes& part = parts[partToDamage(parts, dice)];
  const std::size_t head = std::min<std::size_t>(part.size(), 8);
  Bytes body(part.begin() + at(head), part.end());
  if (dice.hits(50)) {
    flipBits(body, other, dice);
  } else {
    overwriteBytes(body, other, dice);
  }
  std::copy(body.begin(), body.end(), part.begin() + at(head));
  picture = putTogether(parts);
}

/// Lengths that a part tells of itself.
void changeLength(Bytes& picture, const Bytes&, Dice& dice) {
  Parts parts = cutApart(picture);
  const bool png = formatOf(picture) == PictureFormat::png;
  const std::size_t offset = png ? 0 : 2, width = png ? 4 : 2;
  Bytes& part = parts[dice.below(parts.size())];
  if (part.size() < offset + width) return;
  const std::uint32_t nearby = bigEndian(part, offset, width) + static_cast<std::uint32_t>(dice.below(9)) - 4;
  putBigEndian(part, offset, width, dice.hits(50) ? nearby : interesting(dice));
  picture = putTogether(parts);
}

/// The header: size, depth, kind of colour, components and their sampling.
void changeHeader(Bytes& picture, const Bytes&, Dice& dice) {
  Parts parts = cutApart(picture);
  const bool png = formatOf(picture) == PictureFormat::png;
  const auto isHeader = [png](const Bytes& part) {
    if (png) return part.size() >= 25 && std::equal(part.begin() + 4, part.begin() + 8, "IHDR");
    return part.size() >= 12 && part[0] == 0xFF && part[1] >= 0xC0 && part[1] <= 0xCF && part[1] != 0xC4;
  };
  const auto header = std::find_if(parts.begin(), parts.end(), isHeader);
  if (header == parts.end()) return;
  const std::size_t side = dice.below(2), first = png ? 8 + 4 * side : 5 + 2 * side, width = png ? 4 : 2;
  const std::size_t rest = png ? 16 : 9, count = png ? 5 : header->size() - 9;
  if (dice.hits(60)) {
    const std::uint32_t nearby =
        bigEndian(*header, first, width) + static_cast<std::uint32_t>(dice.below(17)) - 8;
    putBigEndian(*header, first, width, dice.hits(60) ? nearby : interesting(dice));
  } else {
    (*header)[rest + dice.below(count)] =
        dice.hits(70) ? static_cast<std::uint8_t>(dice.below(18)) : dice.byte();
  }
  picture = putTogether(parts);
  if (dice.hits(90)) repairChecksums(picture);
}

void removePart(Bytes& picture, const Bytes&, Dice& dice) {
  Parts parts = cutApart(picture);
  parts.erase(parts.begin() + at(dice.below(parts.size())));
  picture = putTogether(parts);
}

void doublePart(Bytes& picture, const Bytes&, Dice& dice) {
  Parts parts = cutApart(picture);
  const Bytes part = dice.oneOf(parts);
  const std::size_t most = part.size() < 2000 && dice.hits(20) ? 50 : 2;
  const std::size_t where = dice.below(parts.size() + 1);
  parts.insert(parts.begin() + at(where), 1 + dice.below(most), part);
  picture = putTogether(parts);
}

void swapParts(Bytes& picture, const Bytes&, Dice& dice) {
  Parts parts = cutApart(picture);
  const std::size_t first = dice.below(parts.size()), second = dice.below(parts.size());
  if (first != second) std::swap(parts[first], parts[second]);
  picture = putTogether(parts);
}

void splicePart(Bytes& picture, const Bytes& other, Dice& dice) {
  Parts parts = cutApart(picture);
  const Parts others = cutApart(other);
  const std::size_t where = dice.below(parts.size());
  if (dice.hits(50)) {
    parts[where] = dice.oneOf(others);
  } else {
    parts.insert(parts.begin() + at(where), dice.oneOf(others));
  }
  picture = putTogether(parts);
}

void spliceHalves(Bytes& picture, const Bytes& other, Dice& dice) {
  const std::size_t keep = place(picture, dice), from = place(other, dice);
  picture.resize(keep);
  picture.insert(picture.end(), other.begin() + at(from), other.end());
}

/// The parts before the pixels of one, the pixels of the other.
void exchangeHeader(Bytes& picture, const Bytes& other, Dice& dice) {
  const Parts own = cutApart(picture);
  Parts others = cutApart(other);
  const std::size_t count = std::min({std::size_t{2} + dice.below(own.size()), own.size(), others.size()});
  std::copy(own.begin(), own.begin() + at(count), others.begin());
  picture = putTogether(others);
}

void truncate(Bytes& picture, const Bytes&, Dice& dice) {
  const std::size_t fromEnd = dice.below(std::min<std::size_t>(picture.size(), 64));
  picture.resize(dice.hits(30) ? picture.size() - fromEnd : dice.below(picture.size()));
}

void insertJunk(Bytes& picture, const Bytes&, Dice& dice) {
  Bytes junk(1 + dice.below(dice.hits(80) ? 64 : 5000), dice.hits(50) ? 0xFF : 0x00);
  if (dice.hits(60)) std::generate(junk.begin(), junk.end(), [&] { return dice.byte(); });
  const std::size_t where = dice.hits(15) ? picture.size() : place(picture, dice);
  picture.insert(picture.begin() + at(where), junk.begin(), junk.end());
}

void removeBytes(Bytes& picture, const Bytes&, Dice& dice) {
  const std::size_t where = place(picture, dice);
  const std::size_t count = std::min(picture.size() - where, 1 + dice.below(dice.hits(70) ? 8 : 2000));
  picture.erase(picture.begin() + at(where), picture.begin() + at(where + count));
}

void repeatBytes(Bytes& picture, const Bytes&, Dice& dice) {
  const std::size_t where = place(picture, dice);
  const std::size_t count = std::min(picture.size() - where, 1 + dice.below(500));
  const Bytes piece(picture.begin() + at(where), picture.begin() + at(where + count));
  picture.insert(picture.begin() + at(where), piece.begin(), piece.end());
}

/// What lies packed in a chunk is damaged and packed again, so that the damage is met by whoever reads it.
void damagePacked(Bytes& picture, const Bytes& other, Dice& dice) {
  Parts parts = cutApart(picture);
  std::vector<std::size_t> packed;
  for (std::size_t i = 0; i < parts.size(); ++i)
    if (packedBegin(parts[i]) != 0) packed.push_back(i);
  if (packed.empty()) return damagePart(picture, other, dice);
  Bytes& chunk = parts[dice.oneOf(packed)];
  if (auto plain = unpacked(chunk); plain && !plain->empty()) {
    if (dice.hits(20)) {
      truncate(*plain, other, dice);
    } else if (dice.hits(50)) {
      flipBits(*plain, other, dice);
    } else {
      overwriteBytes(*plain, other, dice);
    }
    repack(chunk, *plain);
  }
  picture = putTogether(parts);
  repairChecksums(picture);
}

constexpr std::array kDamages{
    Damage{"bits flipped", flipBits},
    Damage{"bytes overwritten", overwriteBytes},
    Damage{"a part damaged", damagePart},
    Damage{"a part damaged", damagePart},  // twice as often: what is not pixels is ours to read
    Damage{"a length changed", changeLength},
    Damage{"the header changed", changeHeader},
    Damage{"a part removed", removePart},
    Damage{"a part doubled", doublePart},
    Damage{"parts swapped", swapParts},
    Damage{"a part of another", splicePart},
    Damage{"the end of another", spliceHalves},
    Damage{"the body of another", exchangeHeader},
    Damage{"cut off", truncate},
    Damage{"junk inserted", insertJunk},
    Damage{"bytes removed", removeBytes},
    Damage{"bytes repeated", repeatBytes},
    Damage{"a packed part damaged", damagePacked},
};

}  // namespace

std::span<const Damage> damages() { return kDamages; }

}  // namespace ostra::test
