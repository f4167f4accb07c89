#pragma once
#include <cstdint>
#include <string>

#include "tests/faults/source_pictures.h"

namespace ostra::test {

struct Mutation {
  std::size_t index = 0;
  std::string name;   // of its file: the index and an ending
  std::string story;  // what was done to which picture
  Bytes bytes;
};

/// The mutation of that number under a seed: always the same for the same pictures.
Mutation mutationOf(const SourcePictures& pictures, std::uint32_t seed, std::size_t index);

}  // namespace ostra::test
