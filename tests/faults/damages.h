#pragma once
#include <span>

#include "platform/foundation/bytes.h"
#include "tests/faults/dice.h"

namespace ostra::test {

/// One way to damage a picture. `other` is another picture, perhaps of another format, to take from. Nothing
/// may be left of the picture, and nothing may be changed where the damage finds no place.
struct Damage {
  const char* name;
  void (*inflict)(Bytes& picture, const Bytes& other, Dice& dice);
};

std::span<const Damage> damages();

}  // namespace ostra::test
