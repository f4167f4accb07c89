#include "platform/graphics/icc_writer.h"

#include <cmath>
#include <utility>
#include <vector>

#include "platform/graphics/icc_check.h"

namespace ostra {
namespace {

constexpr std::string_view copyright = "Public domain";
constexpr Matrix3 bradford = {{{.8951, .2664, -.1614}, {-.7502, 1.7135, .0367}, {.0389, -.0685, 1.0296}}};

void put16(Bytes& out, std::uint32_t value) {
  out.push_back(static_cast<std::uint8_t>(value >> 8));
  out.push_back(static_cast<std::uint8_t>(value));
}

void put32(Bytes& out, std::uint32_t value) {
  put16(out, value >> 16);
  put16(out, value);
}

template <class Words>
void putWords(Bytes& out, const Words& words) {
  for (const std::int32_t word : words) put32(out, static_cast<std::uint32_t>(word));
}

Bytes tagOfType(std::uint32_t type) {
  Bytes tag;
  put32(tag, type);
  put32(tag, 0);
  return tag;
}

/// A text of one language, in UTF-16; ours are ASCII.
Bytes textTag(std::string_view text) {
  Bytes tag = tagOfType(iccSignature("mluc"));
  put32(tag, 1);
  put32(tag, 12);
  put32(tag, iccSignature("enUS"));
  put32(tag, static_cast<std::uint32_t>(2 * text.size()));
  put32(tag, 28);
  for (const char character : text) put16(tag, static_cast<std::uint8_t>(character));
  return tag;
}

Bytes xyzTag(const std::array<std::int32_t, 3>& xyz) {
  Bytes tag = tagOfType(iccSignature("XYZ "));
  putWords(tag, xyz);
  return tag;
}

Bytes tableTag(std::span<const std::uint16_t> table) {
  Bytes tag = tagOfType(iccSignature("curv"));
  put32(tag, static_cast<std::uint32_t>(table.size()));
  for (const std::uint16_t light : table) put16(tag, light);
  return tag;
}

Bytes curveTag(const ProfileNumbers& numbers) {
  if (!numbers.table.empty()) return tableTag(numbers.table);
  Bytes tag = tagOfType(iccSignature("para"));
  put16(tag, numbers.curveHasToe ? 3 : 0);
  put16(tag, 0);
  putWords(tag, std::span(numbers.curve).first(numbers.curveHasToe ? 5 : 1));
  return tag;
}

Bytes adaptationTag(const std::array<double, 2>& white) {
  Bytes tag = tagOfType(iccSignature("sf32"));
  const Matrix3 matrix = adaptationToD50(white).value_or(Matrix3{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
  for (const auto& row : matrix)
    for (const double value : row) put32(tag, static_cast<std::uint32_t>(fixedWord(value)));
  return tag;
}

/// Of full-range RGB.
Bytes codePointsTag(const std::array<std::uint8_t, 2>& codePoints) {
  Bytes tag = tagOfType(iccSignature("cicp"));
  tag.insert(tag.end(), {codePoints[0], codePoints[1], 0, 1});
  return tag;
}

/// Tags in file order; entries that follow each other with the same bytes share them.
using Tags = std::vector<std::pair<std::uint32_t, Bytes>>;

Tags tagsOf(const ProfileNumbers& numbers) {
  Tags tags = {{iccSignature("desc"), textTag(numbers.description)},
               {iccSignature("cprt"), textTag(copyright)},
               {iccSignature("wtpt"), xyzTag({fixedWord(whiteD50[0]), fixedWord(1), fixedWord(whiteD50[2])})},
               {iccSignature("chad"), adaptationTag(numbers.white)}};
  if (!numbers.colorants) {
    tags.emplace_back(iccSignature("kTRC"), curveTag(numbers));
    return tags;
  }
  const auto& c = *numbers.colorants;
  tags.emplace_back(iccSignature("rXYZ"), xyzTag({c[0], c[1], c[2]}));
  tags.emplace_back(iccSignature("gXYZ"), xyzTag({c[3], c[4], c[5]}));
  tags.emplace_back(iccSignature("bXYZ"), xyzTag({c[6], c[7], c[8]}));
  for (const std::uint32_t name : {iccSignature("rTRC"), iccSignature("gTRC"), iccSignature("bTRC")})
    tags.emplace_back(name, curveTag(numbers));
  if (numbers.codePoints) tags.emplace_back(iccSignature("cicp"), codePointsTag(*numbers.codePoints));
  return tags;
}

Bytes header(const ProfileNumbers& numbers) {
  Bytes out;
  put32(out, 0);  // the size, once known
  put32(out, 0);
  put32(out, numbers.codePoints ? 0x04400000 : 0x04300000);
  put32(out, iccSignature("mntr"));
  put32(out, numbers.colorants ? iccSignature("RGB ") : iccSignature("GRAY"));
  put32(out, iccSignature("XYZ "));
  for (const std::uint32_t part : {2020u, 1u, 1u, 0u, 0u, 0u}) put16(out, part);
  put32(out, iccSignature("acsp"));
  out.resize(68);  // platform, flags, device, attributes and intent (perceptual) are all zero
  putWords(out, std::array{fixedWord(whiteD50[0]), fixedWord(1), fixedWord(whiteD50[2])});
  out.resize(128);
  return out;
}

void setSize(Bytes& out) {
  const auto size = static_cast<std::uint32_t>(out.size());
  for (int i = 0; i < 4; ++i)
    out[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(size >> (24 - 8 * i));
}

}  // namespace

std::int32_t fixedWord(double value) { return static_cast<std::int32_t>(std::lround(value * 65536)); }

std::optional<Matrix3> adaptationToD50(const std::array<double, 2>& white) {
  if (!(white[0] > 0) || !(white[1] > 0) || white[0] + white[1] > 1) return std::nullopt;
  const std::array<double, 3> from = {white[0] / white[1], 1, (1 - white[0] - white[1]) / white[1]};
  Matrix3 gains{};
  for (std::size_t i = 0; i < 3; ++i) {
    const auto& cone = bradford[i];
    const double seen = cone[0] * from[0] + cone[1] * from[1] + cone[2] * from[2];
    if (!(seen > 1e-3)) return std::nullopt;
    gains[i][i] = (cone[0] * whiteD50[0] + cone[1] * whiteD50[1] + cone[2] * whiteD50[2]) / seen;
  }
  const auto back = inverse(bradford);
  return back ? std::optional(product(*back, product(gains, bradford))) : std::nullopt;
}

Bytes writeProfile(const ProfileNumbers& numbers) {
  const Tags tags = tagsOf(numbers);
  Bytes out = header(numbers);
  put32(out, static_cast<std::uint32_t>(tags.size()));
  std::size_t end = out.size() + 12 * tags.size(), start = end;
  Bytes contents;
  for (std::size_t i = 0; i < tags.size(); ++i) {
    const auto& [name, bytes] = tags[i];
    if (i == 0 || bytes != tags[i - 1].second) {
      start = end;
      contents.insert(contents.end(), bytes.begin(), bytes.end());
      contents.resize((contents.size() + 3) / 4 * 4);
      end = out.size() + 12 * (tags.size() - i) + contents.size();
    }
    put32(out, name);
    put32(out, static_cast<std::uint32_t>(start));
    put32(out, static_cast<std::uint32_t>(bytes.size()));
  }
  out.insert(out.end(), contents.begin(), contents.end());
  setSize(out);
  return out;
}

}  // namespace ostra
