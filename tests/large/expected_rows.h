#pragma once
#include <memory>
#include <string>
#include <vector>

#include "tests/large/decoded_rows.h"
#include "tests/system/large_pictures.h"

namespace ostra::test {

/// How far a converted picture is from what it should be, in steps of its samples.
struct Deviation {
  unsigned most = 0;
  double mean = 0;
};

/// What a row should have become, given what it was: `samples` of the result a pixel.
using RowRule = void (*)(const LargePicture& picture, const std::vector<std::uint8_t>& before,
                         std::vector<std::uint8_t>& after);

/// As it was.
void sameRow(const LargePicture& picture, const std::vector<std::uint8_t>& before,
             std::vector<std::uint8_t>& after);
/// 8 bits with alpha, put on white.
void rowOnWhite(const LargePicture& picture, const std::vector<std::uint8_t>& before,
                std::vector<std::uint8_t>& after);
/// 8 bits of RGB in the space of `kAdobeProfile`, to sRGB by Little CMS in double precision.
void rowFromAdobe(const LargePicture& picture, const std::vector<std::uint8_t>& before,
                  std::vector<std::uint8_t>& after);
inline constexpr const char* kAdobeProfile = "/usr/share/color/icc/colord/AdobeRGB1998.icc";

/// Compares one row of `every`. `source`, where there is one, gives the rows as they were: a lossy file does
/// not hold those that were put in. Throws when the size differs or there are too few rows.
Deviation deviationOf(DecodedRows& result, const LargePicture& picture, DecodedRows* source, RowRule rule,
                      std::uint32_t every);

}  // namespace ostra::test
