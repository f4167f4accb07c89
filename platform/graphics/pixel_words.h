#pragma once
#include <cstdint>
#include <cstring>

namespace ostra {

/// Rows of 16-bit words need not begin at even addresses.
template <class Word>
Word loadWord(const std::uint8_t* row, std::size_t index) {
  Word word;
  std::memcpy(&word, row + index * sizeof(Word), sizeof(Word));
  return word;
}

template <class Word>
void storeWord(std::uint8_t* row, std::size_t index, Word word) {
  std::memcpy(row + index * sizeof(Word), &word, sizeof(Word));
}

}  // namespace ostra
