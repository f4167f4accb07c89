#include "platform/imageio/modules/tiff/tiff_samples.h"

#include <cmath>
#include <cstring>

namespace ostra {
namespace {

using Out = std::span<std::uint16_t>;

template <class T>
T sampleAt(const std::uint8_t* row, std::size_t index) {
  T sample;
  std::memcpy(&sample, row + index * sizeof(T), sizeof(T));
  return sample;
}

// Whole bytes: the library has turned them into the order of this machine.
template <class T>
void unpackWhole(const std::uint8_t* row, Out out, std::uint16_t) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    const T sample = sampleAt<T>(row, i);
    if constexpr (sizeof(T) == 1) {
      out[i] = static_cast<std::uint16_t>(sample * 257);
    } else {
      out[i] = static_cast<std::uint16_t>(sample >> (8 * sizeof(T) - 16));
    }
  }
}

std::uint64_t bitsAt(const std::uint8_t* row, std::uint64_t position, std::uint16_t count) {
  std::uint64_t number = 0;
  for (std::uint16_t i = 0; i < count; ++i, ++position)
    number = number << 1 | (row[position / 8] >> (7 - position % 8) & 1u);
  return number;
}

void unpackBits(const std::uint8_t* row, Out out, std::uint16_t bits) {
  const long double most = std::ldexp(1.0L, bits) - 1;
  for (std::size_t i = 0; i < out.size(); ++i)
    out[i] = static_cast<std::uint16_t>(
        std::lround(static_cast<double>(bitsAt(row, i * bits, bits) / most * 65535)));
}

// The same from the lowest number on.
void unpackSigned(const std::uint8_t* row, Out out, std::uint16_t bits) {
  if (bits == 8) {
    unpackWhole<std::uint8_t>(row, out, bits);
  } else if (bits == 16) {
    unpackWhole<std::uint16_t>(row, out, bits);
  } else if (bits == 32) {
    unpackWhole<std::uint32_t>(row, out, bits);
  } else if (bits == 64) {
    unpackWhole<std::uint64_t>(row, out, bits);
  } else {
    unpackBits(row, out, bits);
  }
  for (std::uint16_t& sample : out) sample ^= 0x8000;
  // Eight bits repeat themselves in the lower half.
  if (bits == 8)
    for (std::uint16_t& sample : out) sample = static_cast<std::uint16_t>((sample >> 8) * 257);
}

std::uint16_t fromReal(double value) {
  return value > 0 ? static_cast<std::uint16_t>(std::lround(std::fmin(value, 1) * 65535)) : std::uint16_t{0};
}

template <class T>
void unpackReal(const std::uint8_t* row, Out out, std::uint16_t) {
  for (std::size_t i = 0; i < out.size(); ++i) out[i] = fromReal(static_cast<double>(sampleAt<T>(row, i)));
}

double halfOf(std::uint16_t bits) {
  const int exponent = bits >> 10 & 31;
  const int fraction = bits & 1023;
  const double size = exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(1024 + fraction, exponent - 25);
  return (bits & 0x8000) != 0 ? -size : size;
}

void unpackHalf(const std::uint8_t* row, Out out, std::uint16_t) {
  for (std::size_t i = 0; i < out.size(); ++i) out[i] = fromReal(halfOf(sampleAt<std::uint16_t>(row, i)));
}

using Unpack = void (*)(const std::uint8_t*, Out, std::uint16_t);

Unpack unpackingOf(std::uint16_t bits, std::uint16_t format) {
  if (format == SAMPLEFORMAT_IEEEFP)
    return bits == 16 ? unpackHalf : bits == 32 ? unpackReal<float> : unpackReal<double>;
  if (format == SAMPLEFORMAT_INT) return unpackSigned;
  switch (bits) {
    case 8:
      return unpackWhole<std::uint8_t>;
    case 16:
      return unpackWhole<std::uint16_t>;
    case 32:
      return unpackWhole<std::uint32_t>;
    case 64:
      return unpackWhole<std::uint64_t>;
    default:
      return unpackBits;
  }
}

}  // namespace

TiffSamples::TiffSamples(std::uint16_t bits, std::uint16_t format)
    : bits_(bits), unpack_(unpackingOf(bits, format)) {}

void TiffSamples::unpackNumbers(const std::uint8_t* row, Out out, std::uint16_t bits) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    out[i] = bits == 16 ? sampleAt<std::uint16_t>(row, i)
                        : static_cast<std::uint16_t>(bitsAt(row, i * bits, bits));
  }
}

}  // namespace ostra
