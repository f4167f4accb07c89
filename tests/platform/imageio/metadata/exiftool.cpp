#include "tests/platform/imageio/metadata/exiftool.h"

#include <sstream>

#include "tests/support/temporary_folder.h"

namespace ostra::test {

std::map<std::string, std::string> exiftoolTags(const Bytes& file, const std::string& extension,
                                                const std::vector<std::string>& options) {
  const TemporaryFolder folder;
  const std::string path = folder.path("file." + extension);
  writeFile(path, ByteView(file));
  std::vector<std::string> command{"exiftool", "-n", "-args", "-G1", "-a", "-u"};
  command.insert(command.end(), options.begin(), options.end());
  command.push_back(path);
  std::map<std::string, std::string> tags;
  std::istringstream lines(runProgram(command).output);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t equals = line.find('=');
    if (!line.starts_with('-') || equals == std::string::npos) continue;
    tags[line.substr(1, equals - 1)] = line.substr(equals + 1);
  }
  return tags;
}

Bytes jpegWithTags(const std::vector<std::string>& arguments) {
  const TemporaryFolder folder;
  const std::string path = folder.path("picture.jpg");
  // Two pixels of raw gray through cjpeg need no tool that adds metadata of its own.
  writeFile(folder.path("picture.pgm"), std::string_view("P5\n2 1\n255\n\x40\x80", 13));
  runProgram({"cjpeg", "-outfile", path, folder.path("picture.pgm")});
  std::vector<std::string> command{"exiftool", "-q", "-overwrite_original"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  command.push_back(path);
  runProgram(command);
  return readFile(path);
}

Bytes blockOf(const Bytes& jpeg, const std::string& name) {
  const TemporaryFolder folder;
  writeFile(folder.path("picture.jpg"), ByteView(jpeg));
  const std::string block = runProgram({"exiftool", "-b", "-" + name, folder.path("picture.jpg")}).output;
  return {block.begin(), block.end()};
}

Bytes withSegment(const Bytes& jpeg, std::uint8_t marker, const std::string& signature,
                  const Bytes& payload) {
  Bytes result(jpeg.begin(), jpeg.begin() + 2);
  const std::size_t size = 2 + signature.size() + payload.size();
  for (const std::size_t byte : {std::size_t{0xFF}, std::size_t{marker}, size >> 8, size & 0xFF}) {
    result.push_back(static_cast<std::uint8_t>(byte));
  }
  result.insert(result.end(), signature.begin(), signature.end());
  result.insert(result.end(), payload.begin(), payload.end());
  result.insert(result.end(), jpeg.begin() + 2, jpeg.end());
  return result;
}

}  // namespace ostra::test
