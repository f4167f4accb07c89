#include "platform/imageio/modules/tiff/tiff_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ostra {
namespace {

template <class T>
T sampleAt(const std::uint8_t* row, std::size_t index) {
  T sample;
  std::memcpy(&sample, row + index * sizeof(T), sizeof(T));
  return sample;
}

// The library has turned whole numbers of bytes into the order of this machine, those of 24 bits too.
std::uint64_t wholeAt(const std::uint8_t* row, std::size_t index, std::uint16_t bits) {
  switch (bits) {
    case 8:
      return row[index];
    case 16:
      return sampleAt<std::uint16_t>(row, index);
    case 24:
      return row[3 * index] | std::uint32_t{row[3 * index + 1]} << 8 |
             std::uint32_t{row[3 * index + 2]} << 16;
    case 32:
      return sampleAt<std::uint32_t>(row, index);
    default:
      return sampleAt<std::uint64_t>(row, index);
  }
}

std::uint64_t bitsAt(const std::uint8_t* row, std::size_t index, std::uint16_t bits) {
  std::uint64_t number = 0, position = std::uint64_t{index} * bits;
  for (unsigned left = bits; left > 0;) {
    const unsigned inByte = 8 - position % 8, taken = left < inByte ? left : inByte;
    const unsigned part = row[position / 8] >> (inByte - taken) & ((1u << taken) - 1);
    number = number << taken | part;
    position += taken;
    left -= taken;
  }
  return number;
}

bool isWhole(std::uint16_t bits) { return bits == 8 || bits == 16 || bits == 24 || bits == 32 || bits == 64; }

// Exact up to 32 bits.
std::uint16_t scaled(std::uint64_t number, std::uint16_t bits) {
  const unsigned kept = std::clamp<unsigned>(bits, 1, 32);
  const std::uint64_t most = UINT64_MAX >> (64 - kept), value = number >> (bits > kept ? bits - kept : 0);
  return static_cast<std::uint16_t>((value * 65535 + most / 2) / most);
}

double halfOf(std::uint16_t bits) {
  const int exponent = bits >> 10 & 31;
  const int fraction = bits & 1023;
  if (exponent == 31 && fraction != 0) return 0;  // no number
  const double size = exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(1024 + fraction, exponent - 25);
  return (bits & 0x8000) != 0 ? -size : size;
}

}  // namespace

TiffIntegers::TiffIntegers(std::uint16_t bits, std::uint16_t format, bool raw)
    : bits_(bits), isSigned_(format == SAMPLEFORMAT_INT && !raw), raw_(raw) {}

void TiffIntegers::unpack(const std::uint8_t* row, std::span<std::uint16_t> out) const {
  const bool whole = isWhole(bits_);
  const std::uint64_t sign = isSigned_ ? std::uint64_t{1} << (bits_ - 1) : 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    const std::uint64_t number = (whole ? wholeAt(row, i, bits_) : bitsAt(row, i, bits_)) ^ sign;
    out[i] = raw_ ? static_cast<std::uint16_t>(number) : scaled(number, bits_);
  }
}

void unpackTiffReals(std::uint16_t bits, const std::uint8_t* row, std::span<float> out) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (bits == 16) {
      out[i] = static_cast<float>(halfOf(sampleAt<std::uint16_t>(row, i)));
    } else {
      out[i] = bits == 32 ? sampleAt<float>(row, i) : static_cast<float>(sampleAt<double>(row, i));
    }
  }
}

}  // namespace ostra
