#include "tests/platform/imageio/jpeg_files.h"

#include <stdexcept>

#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {

Bytes jpegOf(const std::vector<std::string>& words, unsigned components) {
  const TemporaryFolder folder;
  const std::string head = std::string(components == 1 ? "P5" : "P6") + " 47 33 255\n";
  writeFile(folder.path("in"), joined({bytesOfText(head), softSamples(kWidth, kHeight, components, 8)}));
  std::vector<std::string> command = {"cjpeg", "-quality", "85"};
  command.insert(command.end(), words.begin(), words.end());
  command.insert(command.end(), {"-outfile", folder.path("out.jpg"), folder.path("in")});
  run(command);
  return readFile(folder.path("out.jpg"));
}

Bytes samplesByDjpeg(const Bytes& file) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), file);
  constexpr int kOnlyWarned = 2;
  const auto result = runProgram({"djpeg", "-pnm", "-outfile", folder.path("a.pnm"), folder.path("a.jpg")});
  if (result.status != 0 && result.status != kOnlyWarned) throw std::runtime_error(result.errors);
  const Bytes pnm = readFile(folder.path("a.pnm"));
  constexpr std::ptrdiff_t kHead = sizeof("P6\n47 33\n255\n") - 1;
  return Bytes(pnm.begin() + kHead, pnm.end());
}

Bytes colourSamples(const Pixels& pixels) {
  const std::size_t step = pixels.layout.bitsPerPixel / 8, colours = step == 1 ? 1 : 3;
  Bytes samples;
  for (std::size_t i = 0; i < pixels.bytes.view.size(); i += step)
    samples.insert(samples.end(), &pixels.bytes.view[i], &pixels.bytes.view[i] + colours);
  return samples;
}

Bytes withoutSegment(Bytes file, std::string_view head) {
  const std::size_t at = positionOf(head, file) - 4;
  const std::size_t length = 2u + (file.at(at + 2) << 8 | file.at(at + 3));
  file.erase(file.begin() + static_cast<std::ptrdiff_t>(at),
             file.begin() + static_cast<std::ptrdiff_t>(at + length));
  return file;
}

}  // namespace ostra::test
