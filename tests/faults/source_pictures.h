#pragma once
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"
#include "tests/faults/dice.h"
#include "tests/system/installed_program.h"

namespace ostra::test {

/// Pictures to be damaged, good ones and bad ones.
class SourcePictures {
 public:
  struct Picture {
    std::string name;
    Bytes bytes;
  };

  /// Of every kind that the program reads, made in `parent`.
  static SourcePictures made(const std::string& parent);
  /// Of a folder's files those that the program knows; copies are tried in `parent`.
  static SourcePictures collected(const std::string& collection, const InstalledProgram& program,
                                  const std::string& parent);
  /// `from` completes "so many pictures".
  SourcePictures(std::string from, std::vector<Picture> pictures);

  /// Mostly a small one: what is large takes long and finds no more.
  const Picture& draw(Dice& dice) const;

  /// What they are, in a line.
  std::string description() const;

 private:
  void add(Picture picture);

  std::string from_;
  std::vector<Picture> small_, middling_, large_;
  std::size_t leftOut_ = 0;
};

}  // namespace ostra::test
