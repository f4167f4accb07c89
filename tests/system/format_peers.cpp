#include "tests/system/format_peers.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "tests/support/program.h"

namespace ostra::test {
namespace {

using Words = std::vector<std::string>;

// Rounding in another order, and other upsampling of colour.
constexpr double kRounding = 1.0 / 255, kLossy = 3.0 / 255;

std::size_t linesWith(const std::string& text, std::string_view mark) {
  std::size_t count = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    if (line.find(mark) != std::string::npos) ++count;
  return count;
}

std::size_t numberAfter(const std::string& text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  return at == std::string::npos ? 0 : std::strtoul(text.c_str() + at + mark.size(), nullptr, 10);
}

}  // namespace

const std::vector<FormatPeer>& formatPeers() {
  static const std::vector<FormatPeer> peers{
      {"gif", " gif ",
       [](const std::string& from, const std::string& to) {
         return Words{"convert", from + "[0]", "-background", "none", "-flatten", to};
       },
       "miff", 0},
      {"tiff", " tif tiff TIF ",
       [](const std::string& from, const std::string& to) {
         return Words{"convert", from + "[0]", to};
       },
       "miff", kRounding, false, 0.65},
      {"webp", " webp ",
       [](const std::string& from, const std::string& to) {
         return Words{"convert", from + "[0]", "-coalesce", to};
       },
       "miff", kRounding},
      {"heic", " heic heif hif ",
       [](const std::string& from, const std::string& to) {
         return Words{"heif-convert", from, to};
       },
       "png", kLossy, true},
      {"avif", " avif avifs ",
       [](const std::string& from, const std::string& to) {
         // It cannot write a gray profile into a PNG.
         return Words{"avifdec", "--ignore-icc", "--no-strict", "-d", "16", from, to};
       },
       "png", kLossy},
      {"jp2", " jp2 j2k j2c jpx jpf ",
       [](const std::string& from, const std::string& to) {
         return Words{"opj_decompress", "-i", from, "-o", to};
       },
       "png", kRounding},
      {"jxl", " jxl ",
       [](const std::string& from, const std::string& to) {
         return Words{"djxl", from, to};
       },
       "png", kRounding, true},
      {"exr", " exr ",
       [](const std::string& from, const std::string&) {
         return Words{"vips", "avg", from};
       },
       "", 0},
      {"raw", " dng ",
       [](const std::string& from, const std::string& to) {
         return Words{"dcraw_emu", "-w", "-W", "-T", "-Z", to, from};
       },
       "", 0},
  };
  return peers;
}

std::size_t countByOthers(const FormatPeer& peer, const std::string& path) {
  const std::string_view format = peer.format;
  if (format == "gif") return linesWith(runProgram({"giftext", path}).output, "Image #");
  if (format == "tiff") {
    const std::string text = runProgram({"tiffinfo", path}).output;
    const std::size_t notPages =
        linesWith(text, "reduced-resolution image") + linesWith(text, "transparency mask");
    return linesWith(text, "TIFF Directory at") - std::min(linesWith(text, "TIFF Directory at"), notPages);
  }
  if (format == "heic") return linesWith(runProgram({"heif-info", path}).output, "image: ");
  if (format == "avif")
    // Of a broken grid its own tool tells nothing; the other one sees the parts.
    return std::max({std::size_t{1},
                     numberAfter(runProgram({"avifdec", "--info", path}).output, "Image count: "),
                     linesWith(runProgram({"heif-info", path}).output, "image: ")});
  return 0;
}

bool isCutOff(const FormatPeer& peer, const std::string& path) {
  if (std::string_view(peer.format) != "raw") return false;
  const std::string told = runProgram({"exiftool", "-validate", "-warning", "-a", path}).output;
  return told.find("past end of file") != std::string::npos;
}

}  // namespace ostra::test
