#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The header of one picture of a file. The numbers of rows and columns are not 0.
struct PnmHeader {
  bool isText = false;
  bool isBits = false;  // 1 is black, and bytes hold eight
  std::uint32_t width = 0, height = 0;
  /// Samples of a pixel: gray or RGB, then alpha where there is one; 0 where nobody knows what they are.
  unsigned samples = 0;
  bool hasAlpha = false;
  std::uint32_t largest = 1;
  std::size_t dataAt = 0;
  std::vector<std::string> comments;

  bool isGray() const { return samples - (hasAlpha ? 1 : 0) == 1; }
  bool isDeep() const { return largest > 255; }
  /// What a row of bytes takes; nothing beyond 64 bits.
  std::optional<std::uint64_t> rowBytes() const;
};

/// Nothing when there is none.
std::optional<PnmHeader> readPnmHeader(ByteView file);

/// The pictures of a file, the first of which has this header. A further one counts when its header is whole.
/// `most` ends the counting.
std::uint32_t countPnmPictures(ByteView file, const PnmHeader& first, std::uint32_t most);

/// The words and comments of a header, and the samples of a picture in text.
class PnmWords {
 public:
  explicit PnmWords(ByteView text, std::size_t at = 0) : text_(text), at_(at) {}

  /// A number below a thousand million, and the one character behind it, which is white space or the end.
  std::optional<std::uint32_t> number();
  /// A 0 or a 1, which need nothing between them.
  std::optional<std::uint32_t> bit();
  /// To the end of the line.
  std::string line();

  std::size_t at() const { return at_; }
  std::vector<std::string> comments() { return std::move(comments_); }

 private:
  void skipSpace();
  void skipComment();

  ByteView text_;
  std::size_t at_;
  std::vector<std::string> comments_;
};

}  // namespace ostra
