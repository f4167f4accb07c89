#include <algorithm>
#include <bit>
#include <exception>
#include <memory>
#include <new>

#include <gif_lib.h>

#include "platform/imageio/codecs/gif.h"
#include "platform/imageio/codecs/gif_picture.h"
#include "platform/imageio/codecs/gif_written_blocks.h"

namespace ostra {
namespace {

constexpr std::uint32_t kLongestSide = 65'535;

struct GifEncoding {
  Bytes file;
  bool lacksMemory = false;
};

int onWrite(GifFileType* gif, const GifByteType* bytes, int size) {
  auto& encoding = *static_cast<GifEncoding*>(gif->UserData);
  try {
    encoding.file.insert(encoding.file.end(), bytes, bytes + size);
    return size;
  } catch (const std::exception&) {
    encoding.lacksMemory = true;
    return 0;
  }
}

using ColourMap = std::unique_ptr<ColorMapObject, decltype(&GifFreeMapObject)>;

// Its size must be a power of two, 2 at the least.
ColourMap colourMap(const std::vector<Rgb>& palette) {
  const std::size_t entries = std::bit_ceil(std::max<std::size_t>(palette.size(), 2));
  ColourMap map(GifMakeMapObject(static_cast<int>(entries), nullptr), &GifFreeMapObject);
  if (map == nullptr) throw std::bad_alloc();
  for (std::size_t i = 0; i < palette.size(); ++i)
    map->Colors[i] = {palette[i][0], palette[i][1], palette[i][2]};
  return map;
}

bool putTransparency(GifFileType* gif, const GifPicture& picture) {
  if (!picture.transparent) return true;
  const GraphicsControlBlock control{DISPOSAL_UNSPECIFIED, false, 0, *picture.transparent};
  GifByteType bytes[4];
  return EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(EGifGCBToExtension(&control, bytes)),
                          bytes) == GIF_OK;
}

bool putFrame(GifFileType* gif, GifPicture& picture) {
  const auto number = [](std::uint32_t value) { return static_cast<int>(value); };
  if (EGifPutImageDesc(gif, number(picture.left), number(picture.top), number(picture.width),
                       number(picture.height), false, nullptr) != GIF_OK)
    return false;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    GifPixelType* row = picture.entries.data() + std::size_t{y} * picture.width;
    if (EGifPutLine(gif, row, number(picture.width)) != GIF_OK) return false;
  }
  return true;
}

// Also where something fails: the library leaves what it holds to the closing.
bool encodeInto(GifEncoding& encoding, const Layout& layout, GifPicture& picture, const Bytes& blocks,
                std::uint8_t aspect) {
  const ColourMap map = colourMap(picture.palette);
  int error = E_GIF_SUCCEEDED;
  GifFileType* gif = EGifOpen(&encoding, onWrite, &error);
  if (gif == nullptr) throw std::bad_alloc();
  EGifSetGifVersion(gif, true);
  gif->AspectByte = aspect;
  bool done = EGifPutScreenDesc(gif, static_cast<int>(layout.width), static_cast<int>(layout.height), 8, 0,
                                map.get()) == GIF_OK;
  // The library keeps nothing back between two blocks.
  done =
      done && onWrite(gif, blocks.data(), static_cast<int>(blocks.size())) == static_cast<int>(blocks.size());
  done = done && putTransparency(gif, picture) && putFrame(gif, picture);
  encoding.lacksMemory = encoding.lacksMemory || gif->Error == E_GIF_ERR_NOT_ENOUGH_MEM;
  return EGifCloseFile(gif, &error) == GIF_OK && done;
}

bool isStorable(const Layout& layout) {
  const bool isKnown =
      layout.model == CGColorSpaceModel::monochrome || layout.model == CGColorSpaceModel::rgb;
  return isKnown && std::max(layout.width, layout.height) <= kLongestSide;
}

}  // namespace

Answer<Bytes> encodeGif(const Pixels& pixels, const Properties* properties) {
  if (!isStorable(pixels.layout)) return Fault{FaultKind::damaged};
  const auto blocks = gifBlocksToWrite(pixels, properties);
  if (!blocks) return Fault{FaultKind::damaged};
  GifPicture picture = gifPicture(pixels);
  GifEncoding encoding;
  const bool done = encodeInto(encoding, pixels.layout, picture, *blocks, gifAspect(properties));
  if (encoding.lacksMemory) throw std::bad_alloc();
  if (!done) return Fault{FaultKind::damaged};
  return std::move(encoding.file);
}

}  // namespace ostra
