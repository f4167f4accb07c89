#include "platform/graphics/encode_table.h"

#include <algorithm>
#include <bit>
#include <cmath>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace ostra {
namespace {

/// log2 of the pieces of an octave. The error of a power curve is then below 0.15 of a 16-bit step.
constexpr int formulaPieces = 7;
constexpr int mantissaBits = 23;
constexpr int mostLight = 65535;

/// The darkest light worth an octave of its own: what a fiftieth of a 16-bit step means.
double darkest(const ToneCurve& curve) {
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

/// Steps of light of a stored table: the piece's start, and the way from there.
void encodeSteps(const float* base, const float* slope, float* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const float position = std::clamp(values[i], 0.0f, 1.0f) * mostLight;
    const auto step = static_cast<std::int32_t>(position);
    values[i] = base[step] + slope[step] * (position - static_cast<float>(step));
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

__attribute__((target("avx2,fma"))) std::size_t stepsByGathering(const float* base, const float* slope,
                                                                 float* values, std::size_t count) {
  const __m256 black = _mm256_setzero_ps(), white = _mm256_set1_ps(1), most = _mm256_set1_ps(mostLight);
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const __m256 light = _mm256_min_ps(_mm256_max_ps(_mm256_loadu_ps(values + i), black), white);
    const __m256 position = _mm256_mul_ps(light, most);
    const __m256i step = _mm256_cvttps_epi32(position);
    const __m256 way = _mm256_sub_ps(position, _mm256_cvtepi32_ps(step));
    const __m256 start = _mm256_i32gather_ps(base, step, 4), steep = _mm256_i32gather_ps(slope, step, 4);
    _mm256_storeu_ps(values + i, _mm256_fmadd_ps(steep, way, start));
  }
  return i;
}

bool canGather() {
  static const bool can = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return can;
}
#else
std::size_t encodeByGathering(const Pieces&, float*, std::size_t) { return 0; }
std::size_t stepsByGathering(const float*, const float*, float*, std::size_t) { return 0; }
bool canGather() { return false; }
#endif

}  // namespace

EncodeTable::EncodeTable(const ToneCurve& curve) : stored_(!curve.table.empty()) {
  if (stored_)
    addTable(curve.table);
  else
    addFormula(curve);
}

void EncodeTable::addFormula(const ToneCurve& curve) {
  shift_ = mantissaBits - formulaPieces;
  firstPiece_ = pieceOf(static_cast<float>(darkest(curve)), shift_);
  lastPiece_ = pieceOf(1.0f, shift_) - firstPiece_;
  toeEnd_ = static_cast<float>(curve.toeEnd());
  toeSlope_ = curve.c > 0 ? static_cast<float>(1 / curve.c) : 0;
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

/// Where several entries hold one light, the last of them stands for it.
void EncodeTable::addTable(const std::vector<double>& table) {
  const double last = static_cast<double>(table.size() - 1);
  const auto wordAt = [&](std::size_t i) { return std::lround(table[i] * mostLight); };
  base_.assign(mostLight + 1, 1.0f);
  slope_.assign(mostLight + 1, 0.0f);
  for (std::size_t i = 0; i + 1 < table.size(); ++i) {
    const long from = wordAt(i), to = wordAt(i + 1);
    for (long light = from; light < to; ++light) {
      const double part = static_cast<double>(light - from) / static_cast<double>(to - from);
      base_[static_cast<std::size_t>(light)] = static_cast<float>((static_cast<double>(i) + part) / last);
      slope_[static_cast<std::size_t>(light)] = static_cast<float>(1 / last / static_cast<double>(to - from));
    }
  }
  const auto darkestLight = static_cast<std::ptrdiff_t>(wordAt(0));
  std::fill(base_.begin(), base_.begin() + darkestLight, base_[static_cast<std::size_t>(darkestLight)]);
}

EncodeTable::Pieces EncodeTable::pieces() const {
  return {base_.data(), slope_.data(), shift_, firstPiece_, lastPiece_, toeEnd_, toeSlope_};
}

void EncodeTable::run(float* values, std::size_t count) const {
  std::size_t done = 0;
  if (canGather())
    done = stored_ ? stepsByGathering(base_.data(), slope_.data(), values, count)
                   : encodeByGathering(pieces(), values, count);
  runPlainly(values + done, count - done);
}

void EncodeTable::runPlainly(float* values, std::size_t count) const {
  if (stored_)
    encodeSteps(base_.data(), slope_.data(), values, count);
  else
    encodePlainly(pieces(), values, count);
}

}  // namespace ostra
