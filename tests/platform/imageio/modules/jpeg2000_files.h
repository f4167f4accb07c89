#pragma once
#include <gtest/gtest.h>

#include "tests/platform/imageio/modules/boxes.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {

/// A "uuid" box; its mark in hexadecimal digits.
Bytes markedBox(std::string_view mark, const Bytes& content);
Bytes big16(std::initializer_list<unsigned> values);

/// The header box of a picture; the depth is that of all components.
Bytes jp2Header(unsigned width, unsigned height, unsigned components, unsigned bits);
/// How colours are told: by a number, or by a profile.
Bytes enumeratedColour(unsigned number, unsigned precedence = 0);
Bytes profiledColour(unsigned method, ByteView profile, unsigned precedence = 0);
/// A file of these boxes in its header, this codestream, and what follows.
Bytes jp2File(std::initializer_list<Bytes> header, const Bytes& codestream, const Bytes& behind = {});

/// Codestreams made and read by the format's own tools.
class Jpeg2000 : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "opj_compress", "opj_decompress", "exiftool"})
      OSTRA_NEEDS_PROGRAM(name);
  }

  Bytes file(const std::string& name) const { return readFile(folder.path(name)); }
  /// A picture that ImageMagick draws with these arguments, packed with these options.
  Bytes made(const std::vector<std::string>& drawing, const std::vector<std::string>& options,
             const std::string& name = "a.jp2") const;
  /// The codestream of samples as they come, described as the tool wants it, such as "47,33,1,8,u".
  Bytes ofSamples(const Bytes& samples, const std::string& description,
                  const std::vector<std::string>& options = {}) const;
  /// What the tool reads out of the bytes; `extension` tells it whether they have boxes.
  std::vector<std::uint16_t> byItsOwnTool(const Bytes& picture, const std::string& extension = "jp2") const;

  TemporaryFolder folder;
};

}  // namespace ostra::test
