#include "tests/platform/imageio/modules/jpeg2000_files.h"

namespace ostra::test {

Bytes markedBox(std::string_view mark, const Bytes& content) {
  Bytes bytes;
  for (std::size_t i = 0; i < mark.size(); i += 2)
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(std::string(mark.substr(i, 2)), nullptr, 16)));
  return box("uuid", joined({bytes, content}));
}

Bytes big16(std::initializer_list<unsigned> values) {
  Bytes bytes;
  for (const unsigned value : values) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value));
  }
  return bytes;
}

Bytes jp2Header(unsigned width, unsigned height, unsigned components, unsigned bits) {
  return box("ihdr", joined({big32(height), big32(width), big16({components}),
                             Bytes{static_cast<std::uint8_t>(bits - 1), 7, 0, 0}}));
}

Bytes enumeratedColour(unsigned number, unsigned precedence) {
  return box("colr", joined({Bytes{1, static_cast<std::uint8_t>(precedence), 0}, big32(number)}));
}

Bytes profiledColour(unsigned method, ByteView profile, unsigned precedence) {
  return box("colr",
             joined({Bytes{static_cast<std::uint8_t>(method), static_cast<std::uint8_t>(precedence), 0},
                     Bytes(profile.begin(), profile.end())}));
}

Bytes jp2File(std::initializer_list<Bytes> header, const Bytes& codestream, const Bytes& behind) {
  const Bytes type = joined({bytesOfText("jp2 "), big32(0), bytesOfText("jp2 ")});
  return joined({box("jP  ", {0x0D, 0x0A, 0x87, 0x0A}), box("ftyp", type), box("jp2h", joined(header)),
                 box("jp2c", codestream), behind});
}

Bytes Jpeg2000::made(const std::vector<std::string>& drawing, const std::vector<std::string>& options,
                     const std::string& name) const {
  std::vector<std::string> words = {"convert", "-size", "47x33", "-seed", "3", "plasma:tomato-steelblue"};
  words.insert(words.end(), drawing.begin(), drawing.end());
  words.push_back(folder.path("source.png"));
  run(words);
  words = {"opj_compress", "-i", folder.path("source.png"), "-o", folder.path(name)};
  words.insert(words.end(), options.begin(), options.end());
  run(words);
  return file(name);
}

Bytes Jpeg2000::ofSamples(const Bytes& samples, const std::string& description,
                          const std::vector<std::string>& options) const {
  writeFile(folder.path("source.raw"), samples);
  std::vector<std::string> words = {"opj_compress", "-i", folder.path("source.raw"), "-F",
                                    description,    "-o", folder.path("samples.j2k")};
  words.insert(words.end(), options.begin(), options.end());
  run(words);
  return file("samples.j2k");
}

std::vector<std::uint16_t> Jpeg2000::byItsOwnTool(const Bytes& picture, const std::string& extension) const {
  writeFile(folder.path("tool." + extension), picture);
  run({"opj_decompress", "-i", folder.path("tool." + extension), "-o", folder.path("tool.png")});
  return rgba16ByImageMagick(folder.path("tool.png"));
}

}  // namespace ostra::test
