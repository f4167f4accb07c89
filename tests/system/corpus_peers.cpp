#include "tests/system/corpus_peers.h"

#include <cstring>
#include <sstream>

#include <png.h>

#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr std::uint64_t kMostPixels = 200'000'000;

bool libpngDecodes(const std::string& path) {
  png_image image;
  std::memset(&image, 0, sizeof(image));
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return false;
  image.format = PNG_FORMAT_RGBA;
  bool whole = std::uint64_t{image.width} * image.height <= kMostPixels;
  if (whole) {
    std::vector<png_byte> pixels(PNG_IMAGE_SIZE(image));
    whole = png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) != 0;
  }
  const bool quiet = image.warning_or_error == 0;
  png_image_free(&image);
  return whole && quiet;
}

// "[Group]   Tag   : value".
void addLine(const std::string& line, TagMap& tags) {
  const std::size_t groupEnd = line.find(']'), colon = line.find(" : ");
  if (line.empty() || line[0] != '[' || groupEnd == std::string::npos) return;
  const std::size_t begin = line.find_first_not_of(' ', groupEnd + 1);
  const std::size_t end = begin == std::string::npos ? begin : line.find_first_of(" :", begin);
  if (end == std::string::npos) return;
  const std::string value = colon == std::string::npos ? "" : line.substr(colon + 3);
  tags[line.substr(1, groupEnd - 1) + ":" + line.substr(begin, end - begin)].insert(value);
}

}  // namespace

bool libraryDecodes(const std::string& path, bool png) {
  if (png) return libpngDecodes(path);
  const ProgramResult result = runProgram({"djpeg", "-outfile", "/dev/null", path});
  return result.status == 0 && result.errors.empty();
}

bool imageMagickDecodes(const std::string& path) {
  // Its warnings are about metadata too; the library and the checker warn of pixels.
  return runProgram({"convert", path, "null:"}).status == 0;
}

bool checkerComplains(const std::string& path, bool png) {
  const ProgramResult result = png ? runProgram({"pngcheck", "-q", path})
                                   : runProgram({"djpeg", "-strict", "-outfile", "/dev/null", path});
  return result.status != 0;
}

std::string sizeOf(const std::string& path) {
  return runProgram({"identify", "-quiet", "-ping", "-format", "%wx%h", path + "[0]"}).output;
}

std::map<std::string, TagMap> tagsOfFolder(const std::string& folder) {
  const ProgramResult result = runProgram({"exiftool", "-a", "-G1", "-s", "-e", "-m", "--System:all",
                                           "--File:all", "--ExifTool:all", "--Composite:all", folder});
  std::map<std::string, TagMap> all;
  TagMap* current = nullptr;
  std::istringstream lines(result.output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("======== ")) {
      current = &all[line.substr(line.rfind('/') + 1)];
    } else if (current != nullptr) {
      addLine(line, *current);
    }
  }
  return all;
}

}  // namespace ostra::test
