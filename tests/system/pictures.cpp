#include "tests/system/pictures.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

std::string outputOf(const std::vector<std::string>& command) {
  const ProgramResult result = runProgram(command);
  if (result.status != 0) throw std::runtime_error(command[0] + ": " + result.errors);
  return result.output;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace

void convert(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {"convert"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  outputOf(words);
}

void makePicture(const std::string& path, const std::vector<std::string>& settings) {
  std::vector<std::string> words = {"-size", "97x61", "-seed", "11", "plasma:tomato-steelblue",
                                    "-blur", "0x0.7"};
  words.insert(words.end(), settings.begin(), settings.end());
  // Once reduced to 8 bits, a picture has no more to give.
  if (std::find(settings.begin(), settings.end(), "-depth") == settings.end()) {
    words.insert(words.end(), {"-depth", "8"});
  }
  words.push_back(path);
  convert(words);
}

void makeTransparentPicture(const std::string& path) {
  convert({"-size",
           "97x61",
           "-seed",
           "11",
           "plasma:tomato-steelblue",
           "(",
           "-size",
           "61x97",
           "gradient:black-white",
           "-rotate",
           "90",
           ")",
           "-alpha",
           "off",
           "-compose",
           "copy_opacity",
           "-composite",
           "-depth",
           "8",
           "PNG32:" + path});
}

std::string identify(const std::string& path, const std::string& format) {
  return outputOf({"identify", "-format", format, path});
}

std::vector<std::uint8_t> samples8(const std::string& path, const std::string& map) {
  const TemporaryFolder folder;
  convert({path, "-depth", "8", map + ":" + folder.path("raw")});
  return readFile(folder.path("raw"));
}

std::vector<std::uint16_t> samples16(const std::string& path, const std::string& map) {
  const TemporaryFolder folder;
  convert({path, "-depth", "16", "-endian", "LSB", map + ":" + folder.path("raw")});
  const Bytes bytes = readFile(folder.path("raw"));
  std::vector<std::uint16_t> samples(bytes.size() / 2);
  std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
  return samples;
}

std::vector<std::string> tags(const std::string& path) {
  // -u and -U are left out: unknown tags are compared by their bytes elsewhere.
  const std::string text = outputOf({"exiftool", "-a", "-G1", "-s", "-e", "--System:all", "--File:all",
                                     "--ExifTool:all", "--Composite:all", path});
  std::vector<std::string> lines = linesOf(text);
  std::sort(lines.begin(), lines.end());  // where a block stands in the file is the writer's choice
  return lines;
}

}  // namespace ostra::test
