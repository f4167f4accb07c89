#include "tests/platform/imageio/picture_files.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <stdexcept>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <zlib.h>

#include "tests/support/program.h"

namespace ostra::test {
namespace {

template <class T>
T valueOf(Answer<T> answer) {
  if (const Fault* fault = std::get_if<Fault>(&answer))
    throw std::runtime_error("fault of kind " + std::to_string(static_cast<int>(fault->kind)));
  return std::get<T>(std::move(answer));
}

UniqueFd memoryFile(ByteView bytes) {
  UniqueFd file(memfd_create("picture", MFD_CLOEXEC));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = write(file.get(), bytes.data() + done, bytes.size() - done);
    if (count <= 0) throw std::runtime_error("cannot write a memory file");
    done += static_cast<std::size_t>(count);
  }
  return file;
}

void appendBig32(Bytes& bytes, std::size_t value) {
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

}  // namespace

Bytes randomBytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

Bytes softSamples(std::uint32_t width, std::uint32_t height, unsigned components, unsigned bits) {
  Bytes bytes;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      for (unsigned c = 0; c < components; ++c) {
        const double wave = 0.5 + 0.45 * std::sin(0.11 * x + 0.7 * c) * std::cos(0.07 * y + 0.3 * c);
        const auto value = static_cast<unsigned>(std::lround(wave * (bits == 8 ? 255 : 65535)));
        bytes.push_back(static_cast<std::uint8_t>(value));
        if (bits == 16) bytes.push_back(static_cast<std::uint8_t>(value >> 8));
      }
    }
  }
  return bytes;
}

Pixels pixelsOf(Bytes samples, std::uint32_t width, std::uint32_t height, CGColorSpaceModel model,
                unsigned bits, CGImageAlphaInfo alpha) {
  Pixels pixels;
  pixels.layout.width = width;
  pixels.layout.height = height;
  pixels.layout.bitsPerComponent = static_cast<std::uint8_t>(bits);
  pixels.layout.bytesPerRow = samples.size() / height;
  pixels.layout.bitsPerPixel = static_cast<std::uint8_t>(pixels.layout.bytesPerRow / width * 8);
  pixels.layout.model = model;
  pixels.layout.bitmapInfo = static_cast<CGBitmapInfo>(alpha) | (bits == 16 ? kCGBitmapByteOrder16Little : 0);
  pixels.bytes = SharedBytes::adopt(std::move(samples));
  return pixels;
}

Answer<std::unique_ptr<Reader>> openBytes(ByteView file, const Limits& limits) {
  return CodecDoor::standard().open(memoryFile(file), limits);
}

Answer<Pixels> decodeBytes(ByteView file, const Limits& limits) {
  auto opened = openBytes(file, limits);
  if (const Fault* fault = std::get_if<Fault>(&opened)) return *fault;
  return std::get<std::unique_ptr<Reader>>(opened)->decode(0);
}

Pixels decoded(ByteView file) { return valueOf(decodeBytes(file)); }
Properties propertiesOf(ByteView file) { return valueOf(valueOf(openBytes(file))->properties(0)); }
Bytes encoded(std::string_view type, const Pixels& pixels, const Properties* properties) {
  return valueOf(CodecDoor::standard().encode(type, pixels, properties));
}
std::optional<Fault> faultOf(const Answer<Pixels>& answer) {
  const Fault* fault = std::get_if<Fault>(&answer);
  return fault != nullptr ? std::optional(*fault) : std::nullopt;
}

std::vector<std::uint16_t> asRgba16(const Pixels& pixels) {
  const Layout& layout = pixels.layout;
  const std::size_t samples = layout.bitsPerPixel / layout.bitsPerComponent;
  const bool alpha =
      (layout.bitmapInfo & kCGBitmapAlphaInfoMask) == static_cast<CGBitmapInfo>(CGImageAlphaInfo::last);
  const bool gray = layout.model == CGColorSpaceModel::monochrome;
  std::vector<std::uint16_t> result;
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    const std::uint8_t* row = pixels.bytes.view.data() + y * layout.bytesPerRow;
    const auto sample = [&](std::size_t index) -> std::uint16_t {
      if (layout.bitsPerComponent == 8) return static_cast<std::uint16_t>(row[index] * 257);
      return static_cast<std::uint16_t>(row[2 * index] | row[2 * index + 1] << 8);
    };
    for (std::uint32_t x = 0; x < layout.width; ++x) {
      for (std::size_t c = 0; c < 3; ++c) result.push_back(sample(x * samples + (gray ? 0 : c)));
      result.push_back(alpha ? sample(x * samples + samples - 1) : std::uint16_t{65535});
    }
  }
  return result;
}

std::vector<std::uint16_t> rgba16ByImageMagick(const std::string& path,
                                               const std::vector<std::string>& settings) {
  const TemporaryFolder folder;
  std::vector<std::string> words = {"convert", path};
  words.insert(words.end(), settings.begin(), settings.end());
  words.insert(words.end(), {"-depth", "16", "-endian", "LSB", "rgba:" + folder.path("raw")});
  run(words);
  const Bytes bytes = readFile(folder.path("raw"));
  std::vector<std::uint16_t> samples(bytes.size() / 2);
  std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
  return samples;
}

std::string run(const std::vector<std::string>& command) {
  const ProgramResult result = runProgram(command);
  if (result.status != 0) throw std::runtime_error(command[0] + ": " + result.output + result.errors);
  return result.output;
}

Bytes madeByImageMagick(std::vector<std::string> arguments, const std::string& extension) {
  const TemporaryFolder folder;
  arguments.insert(arguments.begin(), "convert");
  arguments.push_back(folder.path("made." + extension));
  run(arguments);
  return readFile(folder.path("made." + extension));
}

Bytes pngChunk(std::string_view type, ByteView data) {
  Bytes chunk;
  appendBig32(chunk, data.size());
  chunk.insert(chunk.end(), type.begin(), type.end());
  chunk.insert(chunk.end(), data.begin(), data.end());
  appendBig32(chunk, crc32_z(0, chunk.data() + 4, chunk.size() - 4));
  return chunk;
}

Bytes withPngChunk(const Bytes& png, const Bytes& chunk) {
  constexpr std::ptrdiff_t kAfterHeader = 8 + 25;
  Bytes result = png;
  result.insert(result.begin() + kAfterHeader, chunk.begin(), chunk.end());
  return result;
}

Bytes jpegSegment(int marker, std::string_view head, ByteView data) {
  const std::size_t length = 2 + head.size() + data.size();
  Bytes segment = {0xFF, static_cast<std::uint8_t>(marker), static_cast<std::uint8_t>(length >> 8),
                   static_cast<std::uint8_t>(length)};
  segment.insert(segment.end(), head.begin(), head.end());
  segment.insert(segment.end(), data.begin(), data.end());
  return segment;
}

Bytes withJpegSegment(const Bytes& jpeg, const Bytes& segment) {
  Bytes result = jpeg;
  result.insert(result.begin() + 2, segment.begin(), segment.end());
  return result;
}

Bytes bytesOfText(std::string_view text) { return Bytes(text.begin(), text.end()); }

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes result;
  for (const Bytes& part : parts) result.insert(result.end(), part.begin(), part.end());
  return result;
}

std::size_t positionOf(std::string_view text, const Bytes& bytes) {
  const auto same = [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); };
  return static_cast<std::size_t>(std::search(bytes.begin(), bytes.end(), text.begin(), text.end(), same) -
                                  bytes.begin());
}

}  // namespace ostra::test
