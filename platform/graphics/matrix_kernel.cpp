#include "platform/graphics/matrix_kernel.h"

#include "platform/graphics/pixel_words.h"
#include "platform/graphics/vector_units.h"

namespace ostra {
namespace {

std::size_t stepsOf(SourceValues values) { return values == SourceValues::bytes ? 255 : 65535; }

using Plane = std::array<float, PixelChunk::capacity>;

template <class Word>
void lookUp(const std::vector<float>& light, const std::uint8_t* row, std::size_t stride, Plane& plane,
            std::size_t count) {
  const float* const table = light.data();
  float* const __restrict values = plane.data();
  for (std::size_t i = 0; i < count; ++i) values[i] = table[loadWord<Word>(row, i * stride)];
}

OSTRA_VECTORISED void interpolate(const float* __restrict light, std::size_t steps, float toeEnd,
                                  float toeSlope, float* __restrict values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const float value = values[i];
    const float position = value * static_cast<float>(steps);
    const auto left = static_cast<std::int32_t>(position);
    const float above = light[left] + (position - static_cast<float>(left)) * (light[left + 1] - light[left]);
    values[i] = value < toeEnd ? toeSlope * value : above;
  }
}

using Rows = std::array<std::array<float, 3>, 3>;

OSTRA_VECTORISED void threeToThree(const Rows& m, float* __restrict r, float* __restrict g,
                                   float* __restrict b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const float red = r[i], green = g[i], blue = b[i];
    r[i] = m[0][0] * red + m[0][1] * green + m[0][2] * blue;
    g[i] = m[1][0] * red + m[1][1] * green + m[1][2] * blue;
    b[i] = m[2][0] * red + m[2][1] * green + m[2][2] * blue;
  }
}

OSTRA_VECTORISED void threeToOne(const Rows& m, float* __restrict r, const float* __restrict g,
                                 const float* __restrict b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) r[i] = m[0][0] * r[i] + m[0][1] * g[i] + m[0][2] * b[i];
}

/// Components with one curve share one table.
template <class Table, class Make>
std::array<std::shared_ptr<const Table>, 3> tablesOf(const Shaper& shaper, const Make& make) {
  std::array<std::shared_ptr<const Table>, 3> tables;
  for (std::size_t i = 0; i < static_cast<std::size_t>(shaper.components); ++i)
    tables[i] = i > 0 && shaper.curves[i] == shaper.curves[i - 1] ? tables[i - 1] : make(shaper.curves[i]);
  return tables;
}

}  // namespace

MatrixKernel::Decode::Decode(const ToneCurve& curve, SourceValues values) {
  const std::size_t steps = stepsOf(values);
  const bool between = values == SourceValues::between;
  light.reserve(steps + 2);
  for (std::size_t i = 0; i <= steps; ++i) {
    const double value = static_cast<double>(i) / static_cast<double>(steps);
    light.push_back(static_cast<float>(between ? curve.decodeAboveToe(value) : curve.decode(value)));
  }
  light.push_back(light.back());
  if (curve.table.empty() && curve.d > 0) {
    toeEnd = static_cast<float>(curve.d);
    toeSlope = static_cast<float>(curve.c);
  }
}

void MatrixKernel::Decode::run(float* values, std::size_t count) const {
  interpolate(light.data(), light.size() - 2, toeEnd, toeSlope, values, count);
}

std::shared_ptr<const MatrixKernel> MatrixKernel::create(const Shaper& source, const Shaper& destination,
                                                         SourceValues values) {
  const auto fromXYZ = destination.fromXYZ();
  if (!fromXYZ) return nullptr;
  const auto kernel = std::make_shared<MatrixKernel>();
  kernel->in_ = static_cast<std::size_t>(source.components);
  kernel->out_ = static_cast<std::size_t>(destination.components);
  kernel->decode_ = tablesOf<Decode>(
      source, [&](const ToneCurve& curve) { return std::make_shared<const Decode>(curve, values); });
  const Matrix3 matrix = product(*fromXYZ, source.toXYZ);
  for (std::size_t row = 0; row < 3; ++row)
    for (std::size_t column = 0; column < 3; ++column)
      kernel->matrix_[row][column] = static_cast<float>(matrix[row][column]);
  kernel->encode_ = tablesOf<EncodeTable>(
      destination, [](const ToneCurve& curve) { return std::make_shared<const EncodeTable>(curve); });
  return kernel;
}

void MatrixKernel::convertRow(const PixelFormat& format, const std::uint8_t* row, PixelChunk& chunk) const {
  for (std::size_t i = 0; i < in_; ++i) {
    const std::uint8_t* first = row + (format.firstColor + i) * format.bytesPerComponent;
    const auto& light = decode_[i]->light;
    if (format.bytesPerComponent == 1)
      lookUp<std::uint8_t>(light, first, format.componentsPerPixel, chunk.color[i], chunk.count);
    else
      lookUp<std::uint16_t>(light, first, format.componentsPerPixel, chunk.color[i], chunk.count);
  }
  matchLight(chunk);
}

void MatrixKernel::convertValues(PixelChunk& chunk) const {
  for (std::size_t i = 0; i < in_; ++i) decode_[i]->run(chunk.color[i].data(), chunk.count);
  matchLight(chunk);
}

void MatrixKernel::matchLight(PixelChunk& chunk) const {
  float* const r = chunk.color[0].data();
  float* const g = chunk.color[1].data();
  float* const b = chunk.color[2].data();
  if (in_ == 1) {
    for (std::size_t i = out_; i-- > 0;)
      for (std::size_t pixel = 0; pixel < chunk.count; ++pixel)
        chunk.color[i][pixel] = matrix_[i][0] * r[pixel];
  } else if (out_ == 3) {
    threeToThree(matrix_, r, g, b, chunk.count);
  } else {
    threeToOne(matrix_, r, g, b, chunk.count);
  }
  for (std::size_t i = 0; i < out_; ++i) encode_[i]->run(chunk.color[i].data(), chunk.count);
}

}  // namespace ostra
