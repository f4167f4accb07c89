#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>

#include "platform/imageio/codecs/bmp_decode.h"

namespace ostra {

enum class IcoKind { icon = 1, cursor = 2 };

inline constexpr std::size_t kIcoDirectoryHead = 6, kIcoEntrySize = 16;

/// A bitmap of an icon: its colours, and the bits of its transparent pixels, rows as in a bitmap of one bit.
struct IcoBitmap {
  BmpPicture colours;
  ByteView mask;  // shorter than the picture where it is cut off
};
/// One picture of the directory: a whole PNG file, or a bitmap.
struct IcoEntry {
  std::uint32_t width = 0, height = 0;
  unsigned bits = 0;
  std::variant<ByteView, IcoBitmap> contents;
};

/// Whether a file begins with a directory of this kind whose first entry makes sense.
bool beginsIco(ByteView head, IcoKind kind);
/// How many pictures the directory lists.
std::uint32_t countOfIco(ByteView file);
/// The picture that stands for the file; nothing when none of them can be taken apart.
std::optional<IcoEntry> largestIcoEntry(ByteView file);

}  // namespace ostra
