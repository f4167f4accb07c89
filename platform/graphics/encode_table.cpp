#include "platform/graphics/encode_table.h"

#include <algorithm>
#include <bit>
#include <cmath>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace ostra {
namespace {

/// log2 of the pieces of an octave. The error of a power curve is then below 0.15 of a 16-bit step. Stored
/// tables bend at every entry, by up to half a step of their own 16 bits, and need the pieces to be shorter
/// than entries.
constexpr int formulaPieces = 7;
constexpr int tablePieces = 10;
constexpr int mantissaBits = 23;

/// The darkest light worth an octave of its own: what a fiftieth of a 16-bit step means.
double darkest(const ToneCurve& curve) {
  if (!curve.table.empty()) return std::ldexp(1, -18);
  const double light = std::max(curve.toeEnd() / 2, std::pow(curve.a * 0.02 / 65535, curve.g));
  return std::max(light, std::ldexp(1, -60));
}

std::int32_t pieceOf(float light, int shift) { return std::bit_cast<std::int32_t>(light) >> shift; }
double startOf(std::int32_t piece, int shift) {
  return static_cast<double>(std::bit_cast<float>(static_cast<std::int32_t>(piece << shift)));
}

using Pieces = EncodeTable::Pieces;

void encodePlainly(const Pieces& p, float* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const float light = std::clamp(values[i], 0.0f, 1.0f);
    const std::int32_t piece =
        std::clamp((std::bit_cast<std::int32_t>(light) >> p.shift) - p.first, 0, p.last);
    const float value = light < p.toeEnd ? p.toeSlope * light : p.base[piece] + p.slope[piece] * light;
    values[i] = std::clamp(value, 0.0f, 1.0f);
  }
}

#if defined(__x86_64__)
/// Eight at a time. Compilers do not choose the gathering loads by themselves, which are twice as fast here.
__attribute__((target("avx2,fma"))) std::size_t encodeByGathering(const Pieces& p, float* values,
                                                                  std::size_t count) {
  const __m256 black = _mm256_setzero_ps(), white = _mm256_set1_ps(1);
  const __m256 toeEnd = _mm256_set1_ps(p.toeEnd), toeSlope = _mm256_set1_ps(p.toeSlope);
  const __m256i first = _mm256_set1_epi32(p.first), last = _mm256_set1_epi32(p.last);
  const __m128i shift = _mm_cvtsi32_si128(p.shift);
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const __m256 light = _mm256_min_ps(_mm256_max_ps(_mm256_loadu_ps(values + i), black), white);
    __m256i piece = _mm256_sub_epi32(_mm256_sra_epi32(_mm256_castps_si256(light), shift), first);
    piece = _mm256_min_epi32(_mm256_max_epi32(piece, _mm256_setzero_si256()), last);
    const __m256 base = _mm256_i32gather_ps(p.base, piece, 4), slope = _mm256_i32gather_ps(p.slope, piece, 4);
    const __m256 inToe = _mm256_cmp_ps(light, toeEnd, _CMP_LT_OQ);
    const __m256 value =
        _mm256_blendv_ps(_mm256_fmadd_ps(slope, light, base), _mm256_mul_ps(toeSlope, light), inToe);
    _mm256_storeu_ps(values + i, _mm256_min_ps(_mm256_max_ps(value, black), white));
  }
  return i;
}

bool canGather() {
  static const bool can = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return can;
}
#else
std::size_t encodeByGathering(const Pieces&, float*, std::size_t) { return 0; }
bool canGather() { return false; }
#endif

}  // namespace

EncodeTable::EncodeTable(const ToneCurve& curve)
    : shift_(mantissaBits - (curve.table.empty() ? formulaPieces : tablePieces)),
      firstPiece_(pieceOf(static_cast<float>(darkest(curve)), shift_)),
      lastPiece_(pieceOf(1.0f, shift_) - firstPiece_),
      toeEnd_(static_cast<float>(curve.toeEnd())),
      toeSlope_(curve.c > 0 ? static_cast<float>(1 / curve.c) : 0) {
  const auto count = static_cast<std::size_t>(lastPiece_) + 1;
  base_.reserve(count);
  slope_.reserve(count);
  double start = 0, value = curve.encodeAboveToe(0);
  for (std::int32_t piece = 0; piece <= lastPiece_; ++piece) {
    const double end = startOf(firstPiece_ + piece + 1, shift_);
    const double valueAtEnd = curve.encodeAboveToe(end);
    const double slope = (valueAtEnd - value) / (end - start);
    base_.push_back(static_cast<float>(value - slope * start));
    slope_.push_back(static_cast<float>(slope));
    start = end, value = valueAtEnd;
  }
}

EncodeTable::Pieces EncodeTable::pieces() const {
  return {base_.data(), slope_.data(), shift_, firstPiece_, lastPiece_, toeEnd_, toeSlope_};
}

void EncodeTable::run(float* values, std::size_t count) const {
  const std::size_t done = canGather() ? encodeByGathering(pieces(), values, count) : 0;
  encodePlainly(pieces(), values + done, count - done);
}

void EncodeTable::runPlainly(float* values, std::size_t count) const {
  encodePlainly(pieces(), values, count);
}

}  // namespace ostra
