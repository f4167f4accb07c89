#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/exif_values.h"

namespace ostra {

/// Changes single entries of an Exif block and leaves every other byte where it is: maker notes hold offsets
/// that only their maker understands. What an edit frees is zeroed, unless something else points at it too.
class ExifEditor {
 public:
  /// Nothing when the block is malformed.
  static std::optional<ExifEditor> open(Bytes block);
  /// A little-endian block with nothing in it.
  static ExifEditor fresh();

  ByteView bytes() const { return bytes_; }
  const ExifStructure& structure() const { return structure_; }
  /// The first entry of a tag, or null. Valid until the next edit.
  const ExifEntry* find(IfdKind kind, std::uint16_t tag) const;

  void dropThumbnails();
  /// Removes entries that point behind the end of the block, where a longer block would give them a meaning.
  void dropDangling();
  /// Gives directories at the very end the offset of the next one, none, that their writer left out: in a
  /// longer block other bytes would be taken for it.
  void closeDirectories();
  /// Every entry of the tag, with its value. A directory below the first that runs empty goes too.
  void removeTag(IfdKind kind, std::uint16_t tag);
  /// A directory below the first one, and what hangs on it.
  void removeDirectory(IfdKind kind);
  /// In place where it fits, else at the end. A new entry, or a new directory, is laid down by `finish`.
  void set(IfdKind kind, ExifField field);

  /// The block; empty when no entry is left in it. Nothing when the edits did not leave a sound block.
  std::optional<Bytes> finish() &&;

 private:
  ExifEditor() = default;
  void reparse();
  void settle();
  void releaseRoom(const Ifd& ifd);
  void releaseRoom(const ExifEntry& entry);
  void removeEntry(const Ifd& ifd, const ExifEntry& entry);
  void removeDuplicates(IfdKind kind, std::uint16_t tag);
  void replace(const ExifEntry& entry, const ExifField& field);
  bool ownsValue(const ExifEntry& entry) const;
  std::size_t append(ByteView bytes);
  void putEntry(std::size_t position, const ExifField& field);
  void layDown(IfdKind kind);
  void pointAt(IfdKind kind, std::size_t position);

  Bytes bytes_;
  ExifStructure structure_;
  std::vector<ByteRange> freed_;
  std::map<IfdKind, std::vector<ExifField>> added_;
  bool sound_ = true;
};

}  // namespace ostra
