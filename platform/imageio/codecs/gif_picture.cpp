#include "platform/imageio/codecs/gif_picture.h"

#include <algorithm>

#include "platform/imageio/codecs/colour_quantiser.h"
#include "platform/imageio/codecs/few_colours.h"
#include "platform/imageio/codecs/gif_rows.h"

namespace ostra {
namespace {

constexpr std::size_t kMostEntries = FewColours::kMost;

// What a palette must hold, and where the visible pixels lie.
struct Survey {
  FewColours colours;
  std::uint64_t visible = 0, hidden = 0;
  std::uint32_t left = UINT32_MAX, top = UINT32_MAX, right = 0, bottom = 0;

  // Whether nothing hidden lies between the visible pixels.
  bool isRectangle() const {
    return visible > 0 && visible == (std::uint64_t{right} - left + 1) * (std::uint64_t{bottom} - top + 1);
  }
};

void look(Survey& survey, const GifPixel& pixel, std::uint32_t x, std::uint32_t y) {
  if (!pixel.visible) {
    ++survey.hidden;
    return;
  }
  ++survey.visible;
  survey.left = std::min(survey.left, x);
  survey.right = std::max(survey.right, x);
  survey.top = std::min(survey.top, y);
  survey.bottom = y;
  survey.colours.add(pixel.colour);
}

Survey lookAt(const Pixels& pixels) {
  Survey survey;
  GifRows rows(pixels);
  for (std::uint32_t y = 0; y < pixels.layout.height; ++y) {
    std::uint32_t x = 0;
    for (const GifPixel& pixel : rows.row(y)) look(survey, pixel, x++, y);
  }
  return survey;
}

GifPicture frameFor(const Survey& survey, const Pixels& pixels) {
  GifPicture picture;
  picture.width = pixels.layout.width;
  picture.height = pixels.layout.height;
  if (survey.hidden == 0) return picture;
  const bool takesAllEntries =
      !survey.colours.areTooMany() && survey.colours.colours().size() == kMostEntries;
  if (takesAllEntries && survey.isRectangle()) {
    picture.left = survey.left;
    picture.top = survey.top;
    picture.width = survey.right - survey.left + 1;
    picture.height = survey.bottom - survey.top + 1;
  } else {
    picture.transparent = std::uint8_t{0};
  }
  return picture;
}

std::vector<Rgb> chosenColours(const Pixels& pixels, std::size_t most) {
  ColourHistogram histogram;
  GifRows rows(pixels);
  for (std::uint32_t y = 0; y < pixels.layout.height; ++y) {
    for (const GifPixel& pixel : rows.row(y)) {
      if (pixel.visible) histogram.add(pixel.colour);
    }
  }
  return quantisedPalette(histogram.counts(), most);
}

template <class PlaceOf>
void fillEntries(const Pixels& pixels, PlaceOf placeOf, GifPicture& picture) {
  const std::size_t first = picture.transparent ? 1 : 0;
  const auto entryOf = [&](const GifPixel& pixel) {
    return static_cast<std::uint8_t>(pixel.visible ? first + placeOf(pixel.colour) : 0);
  };
  GifRows rows(pixels);
  picture.entries.resize(std::size_t{picture.width} * picture.height);
  auto into = picture.entries.begin();
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    const auto begin = rows.row(picture.top + y).begin() + picture.left;
    into = std::transform(begin, begin + picture.width, into, entryOf);
  }
}

}  // namespace

GifPicture gifPicture(const Pixels& pixels) {
  Survey survey = lookAt(pixels);
  GifPicture picture = frameFor(survey, pixels);
  const std::size_t room = kMostEntries - (picture.transparent ? 1 : 0);
  FewColours& own = survey.colours;
  const bool isExact = !own.areTooMany() && own.colours().size() <= room;
  const std::vector<Rgb> colours = isExact ? own.colours() : chosenColours(pixels, room);
  if (isExact) {
    fillEntries(
        pixels, [&](const Rgb& colour) { return own.placeOf(colour); }, picture);
  } else {
    NearestColour nearest(colours);
    fillEntries(
        pixels, [&](const Rgb& colour) { return nearest(colour); }, picture);
  }
  if (picture.transparent) picture.palette.push_back({});
  picture.palette.insert(picture.palette.end(), colours.begin(), colours.end());
  return picture;
}

}  // namespace ostra
