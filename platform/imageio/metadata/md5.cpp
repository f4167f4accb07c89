#include "platform/imageio/metadata/md5.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace ostra {
namespace {

using State = std::array<std::uint32_t, 4>;

std::uint32_t rotated(std::uint32_t value, unsigned by) { return value << by | value >> (32 - by); }

// RFC 1321, 3.4: the integer part of 4294967296 times |sin(i + 1)|.
std::array<std::uint32_t, 64> sineTable() {
  std::array<std::uint32_t, 64> table{};
  for (std::size_t i = 0; i < 64; ++i)
    table[i] =
        static_cast<std::uint32_t>(std::floor(std::abs(std::sin(static_cast<double>(i + 1))) * 4294967296.0));
  return table;
}

void addBlock(State& state, const std::uint8_t* block) {
  static const auto kSines = sineTable();
  static constexpr unsigned kShifts[4][4] = {
      {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
  std::uint32_t words[16];
  std::memcpy(words, block, sizeof(words));
  auto [a, b, c, d] = state;
  for (unsigned i = 0; i < 64; ++i) {
    std::uint32_t mixed = 0;
    unsigned word = 0;
    switch (i / 16) {
      case 0:
        mixed = (b & c) | (~b & d), word = i;
        break;
      case 1:
        mixed = (d & b) | (~d & c), word = 5 * i + 1;
        break;
      case 2:
        mixed = b ^ c ^ d, word = 3 * i + 5;
        break;
      default:
        mixed = c ^ (b | ~d), word = 7 * i;
        break;
    }
    const std::uint32_t sum = a + mixed + kSines[i] + words[word % 16];
    a = d;
    d = c;
    c = b;
    b += rotated(sum, kShifts[i / 16][i % 4]);
  }
  state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d};
}

}  // namespace

Bytes md5(ByteView bytes) {
  State state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  const std::size_t whole = bytes.size() / 64 * 64;
  for (std::size_t at = 0; at < whole; at += 64) addBlock(state, bytes.data() + at);
  Bytes last(bytes.begin() + static_cast<std::ptrdiff_t>(whole), bytes.end());
  last.push_back(0x80);
  while (last.size() % 64 != 56) last.push_back(0);
  for (unsigned i = 0; i < 8; ++i)
    last.push_back(static_cast<std::uint8_t>(std::uint64_t{bytes.size()} * 8 >> 8 * i));
  for (std::size_t at = 0; at < last.size(); at += 64) addBlock(state, last.data() + at);
  Bytes digest;
  for (const std::uint32_t word : state) {
    for (unsigned i = 0; i < 4; ++i) digest.push_back(static_cast<std::uint8_t>(word >> 8 * i));
  }
  return digest;
}

std::string md5Name(ByteView bytes) {
  std::string name;
  for (const std::uint8_t byte : md5(bytes)) {
    name += "0123456789ABCDEF"[byte >> 4];
    name += "0123456789ABCDEF"[byte & 15];
  }
  return name;
}

}  // namespace ostra
