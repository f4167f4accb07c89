#include "tests/large/expected_rows.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include <lcms2.h>

namespace ostra::test {
namespace {

unsigned sampleAt(const std::vector<std::uint8_t>& row, std::size_t index, unsigned bits) {
  return bits == 8 ? row[index] : row[2 * index] << 8 | row[2 * index + 1];
}

class AdobeToSRGB {
 public:
  AdobeToSRGB() {
    const cmsHPROFILE from = cmsOpenProfileFromFile(kAdobeProfile, "r");
    const cmsHPROFILE to = cmsCreate_sRGBProfile();
    if (from == nullptr) throw std::runtime_error("no profile at " + std::string(kAdobeProfile));
    transform_ = cmsCreateTransform(from, TYPE_RGB_DBL, to, TYPE_RGB_DBL, INTENT_PERCEPTUAL,
                                    cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
    cmsCloseProfile(from);
    cmsCloseProfile(to);
  }
  ~AdobeToSRGB() { cmsDeleteTransform(transform_); }
  AdobeToSRGB(const AdobeToSRGB&) = delete;
  AdobeToSRGB& operator=(const AdobeToSRGB&) = delete;

  void convert(std::vector<double>& values) const {
    cmsDoTransform(transform_, values.data(), values.data(), static_cast<cmsUInt32Number>(values.size() / 3));
  }

 private:
  cmsHTRANSFORM transform_;
};

/// Nearly transparent colours survive a premultiplied surface only as well as its steps hold them.
unsigned allowance(const std::vector<std::uint8_t>& expected, std::size_t index,
                   const LargePicture& picture) {
  if (picture.samples != 4 || index % 4 == 3) return 0;
  const unsigned alpha = sampleAt(expected, index / 4 * 4 + 3, picture.bits);
  const unsigned full = picture.bits == 8 ? 255 : 65535;
  return alpha == 0 ? full : full / (2 * alpha) + 1;
}

}  // namespace

void sameRow(const LargePicture&, const std::vector<std::uint8_t>& before, std::vector<std::uint8_t>& after) {
  after = before;
}

void rowOnWhite(const LargePicture& picture, const std::vector<std::uint8_t>& before,
                std::vector<std::uint8_t>& after) {
  after.resize(std::size_t{picture.width} * 3);
  for (std::size_t x = 0; x < picture.width; ++x) {
    const unsigned alpha = before[4 * x + 3];
    for (std::size_t c = 0; c < 3; ++c)
      after[3 * x + c] =
          static_cast<std::uint8_t>((before[4 * x + c] * alpha + 255 * (255 - alpha) + 127) / 255);
  }
}

void rowFromAdobe(const LargePicture&, const std::vector<std::uint8_t>& before,
                  std::vector<std::uint8_t>& after) {
  static const AdobeToSRGB transform;
  std::vector<double> values(before.begin(), before.end());
  for (double& value : values) value /= 255;
  transform.convert(values);
  after.clear();
  for (const double value : values)
    after.push_back(static_cast<std::uint8_t>(std::lround(255 * std::clamp(value, 0.0, 1.0))));
}

Deviation deviationOf(DecodedRows& result, const LargePicture& picture, DecodedRows* source, RowRule rule,
                      std::uint32_t every) {
  if (result.width() != picture.width || result.height() != picture.height)
    throw std::runtime_error("the result has another size");
  Deviation deviation;
  double sum = 0, count = 0;
  std::vector<std::uint8_t> before, expected, found;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    result.readRow(found);
    if (source != nullptr) source->readRow(before);
    if (y % every != 0) continue;
    if (source == nullptr) picture.makeRow(y, before);
    rule(picture, before, expected);
    if (expected.size() != found.size()) throw std::runtime_error("the result has other samples");
    const std::size_t samples = found.size() * 8 / result.bits();
    const bool keepsAlpha = result.samples() == 4;
    for (std::size_t i = 0; i < samples; ++i) {
      const unsigned wanted = sampleAt(expected, i, result.bits()), is = sampleAt(found, i, result.bits());
      unsigned off = wanted > is ? wanted - is : is - wanted;
      if (off != 0 && keepsAlpha) off -= std::min(off, allowance(expected, i, picture));
      deviation.most = std::max(deviation.most, off);
      sum += off;
    }
    count += static_cast<double>(samples);
  }
  if (!result.endWell() || (source != nullptr && !source->endWell()))
    throw std::runtime_error("another program finds fault with the picture");
  deviation.mean = sum / count;
  return deviation;
}

}  // namespace ostra::test
