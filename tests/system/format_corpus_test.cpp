#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/straight_rows.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/system/format_peers.h"
#include "tests/system/installed_program.h"

// The files of a collection, a format after the other: what the format's own tool decodes is converted, with
// the pixels that the tool sees.

namespace ostra::test {

void PrintTo(const FormatPeer& peer, std::ostream* out) { *out << peer.format; }

namespace {

namespace fs = std::filesystem;
using Samples = std::vector<std::uint16_t>;

constexpr const char* kSeveral = "multi-frame images are not rewritten in place.";

struct Tally {
  std::size_t files = 0, decoded = 0, srgb = 0, jpg = 0, compared = 0, equal = 0, counted = 0;
};

/// RGBA of 16 bits with the sides.
struct Sheet {
  std::size_t width = 0, height = 0;
  Samples samples;
};

/// The pixel of the stored picture that is seen at a place of the upright one.
std::size_t storedAt(const Sheet& stored, int orientation, std::size_t x, std::size_t y) {
  const std::size_t right = stored.width - 1, bottom = stored.height - 1;
  switch (orientation) {
    case 2:
      return y * stored.width + (right - x);
    case 3:
      return (bottom - y) * stored.width + (right - x);
    case 4:
      return (bottom - y) * stored.width + x;
    case 5:
      return x * stored.width + y;
    case 6:
      return (bottom - x) * stored.width + y;
    case 7:
      return (bottom - x) * stored.width + (right - y);
    case 8:
      return x * stored.width + (right - y);
    default:
      return y * stored.width + x;
  }
}

Sheet upright(const Sheet& stored, int orientation) {
  Sheet sheet = stored;
  if (orientation >= 5) std::swap(sheet.width, sheet.height);
  for (std::size_t y = 0; y < sheet.height; ++y)
    for (std::size_t x = 0; x < sheet.width; ++x)
      std::copy_n(
          stored.samples.begin() + static_cast<std::ptrdiff_t>(4 * storedAt(stored, orientation, x, y)), 4,
          sheet.samples.begin() + static_cast<std::ptrdiff_t>(4 * (y * sheet.width + x)));
  return sheet;
}

/// In the mean, of full scale; colours count as much as they are seen. 1 when the sizes differ.
double meanError(const Samples& a, const Samples& b) {
  if (a.size() != b.size() || a.empty()) return 1;
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); i += 4) {
    const double alphaA = a[i + 3] / 65535.0, alphaB = b[i + 3] / 65535.0;
    for (std::size_t c = 0; c < 3; ++c) sum += std::abs(a[i + c] * alphaA - b[i + c] * alphaB) / 65535;
    sum += std::abs(alphaA - alphaB);
  }
  return sum / static_cast<double>(a.size());
}

/// As other programs give them: colours not yet multiplied by alpha.
Pixels straight(const Pixels& pixels) {
  StraightRows rows(pixels);
  Pixels copy = pixels;
  Bytes samples;
  for (std::uint32_t y = 0; y < copy.layout.height; ++y) {
    const std::uint8_t* row = rows.row(y);
    samples.insert(samples.end(), row, row + std::size_t{copy.layout.width} * copy.layout.bitsPerPixel / 8);
  }
  copy.layout.bytesPerRow = samples.size() / copy.layout.height;
  copy.layout.bitmapInfo =
      (copy.layout.bitmapInfo & ~kCGBitmapAlphaInfoMask) | static_cast<CGBitmapInfo>(rows.alpha());
  copy.bytes = SharedBytes::adopt(std::move(samples));
  return copy;
}

class FormatCorpus : public testing::TestWithParam<FormatPeer> {
 protected:
  void SetUp() override {
    const char* collection = std::getenv("OSTRA_CORPUS");
    if (collection == nullptr) GTEST_SKIP() << "OSTRA_CORPUS names no folder of pictures";
    OSTRA_NEEDS_PROGRAM(peer.decode("", "").front());
    for (const auto& entry : fs::recursive_directory_iterator(collection)) {
      const std::string extension = entry.path().extension().string();
      if (!entry.is_regular_file() || extension.size() < 2) continue;
      if (std::string(peer.extensions).find(" " + extension.substr(1) + " ") != std::string::npos)
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    program.installModules();
  }

  bool peerDecodes(const fs::path& path) const {
    const std::string to = decodedByPeer();
    fs::remove(to);
    const ProgramResult result = runProgram(peer.decode(path.string(), to));
    return result.status == 0 && (peer.result[0] == 0 || fs::exists(to)) && !isCutOff(peer, path.string());
  }
  std::string decodedByPeer() const { return folder.path(std::string("peer.") + peer.result); }

  /// What became of a copy under an action; nothing when it was converted.
  std::string refusalOf(const fs::path& path, const std::string& action) const {
    const TemporaryFolder work;
    const std::string copy = work.path("picture" + path.extension().string());
    fs::copy_file(path, copy);
    fs::permissions(copy, fs::perms(0600));
    const ProgramResult result = program.run({action, "--ui=none", copy});
    if (result.status == 0) return {};
    EXPECT_EQ(readFile(copy), readFile(path.string())) << path << " was refused and changed";
    const std::string start = ": ";
    const std::size_t line = result.errors.find("  picture"), at = result.errors.find(start, line);
    if (line == std::string::npos || at == std::string::npos) return "?" + result.errors;
    return result.errors.substr(at + 2, result.errors.find('\n', at) - at - 2);
  }

  /// How far our pixels are from the peer's.
  double errorOf(const fs::path& path) const {
    auto opened = CodecDoor::standard().open(UniqueFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), {});
    auto* reader = std::get_if<std::unique_ptr<Reader>>(&opened);
    if (reader == nullptr) return 1;
    const auto properties = (*reader)->properties(0);
    const auto pixels = (*reader)->decode(0);
    if (!std::holds_alternative<Pixels>(pixels)) return 1;
    const Layout& layout = std::get<Pixels>(pixels).layout;
    if (layout.model == CGColorSpaceModel::cmyk) return -1;  // a peer gives its own colours
    Sheet ours{layout.width, layout.height, asRgba16(straight(std::get<Pixels>(pixels)))};
    if (peer.upright) {
      const auto& tree = std::get<Properties>(properties).tree;
      const auto found = tree.find("Orientation");
      if (found != tree.end()) ours = upright(ours, static_cast<int>(found->second.number().value_or(1)));
    }
    return meanError(ours.samples, rgba16ByImageMagick(decodedByPeer()));
  }

  const FormatPeer peer = GetParam();
  InstalledProgram program;
  TemporaryFolder folder;
  std::vector<fs::path> paths;
};

TEST_P(FormatCorpus, IsConvertedWhereTheFormatsOwnToolDecodesIt) {
  Tally tally;
  for (const fs::path& path : paths) {
    ++tally.files;
    const std::string refusal = refusalOf(path, "srgb"), refusalOfJpeg = refusalOf(path, "jpg");
    const bool several = refusal.ends_with(kSeveral);
    if (!peerDecodes(path)) continue;
    if (several) {
      ++tally.counted;
      const std::size_t count = countByOthers(peer, path.string());
      EXPECT_TRUE(count == 0 || count > 1) << path << " was refused for its frames, and others count one";
    }
    ++tally.decoded;
    if (refusal.empty() || several) ++tally.srgb;
    if (refusalOfJpeg.empty()) ++tally.jpg;
    if (!refusal.empty() && !several) std::cout << "  " << path.filename() << ": " << refusal << "\n";
    if (!refusalOfJpeg.empty() && refusalOfJpeg != refusal)
      std::cout << "  " << path.filename() << " as JPEG: " << refusalOfJpeg << "\n";
    if (peer.result[0] == 0 || !refusalOfJpeg.empty()) continue;
    const double error = errorOf(path);
    if (error < 0) continue;
    ++tally.compared;
    if (error <= peer.meanError) ++tally.equal;
    if (error > peer.meanError)
      std::cout << "  " << path.filename() << " differs by " << error * 255 << " of 255\n";
  }
  std::cout << peer.format << ": " << tally.files << " files, " << tally.decoded
            << " decoded by their own tool, " << tally.srgb << " of them by srgb (" << tally.counted
            << " refused for their frames), " << tally.jpg << " by jpg, " << tally.compared << " compared, "
            << tally.equal << " with the same pixels\n";
  EXPECT_GE(static_cast<double>(tally.srgb), 0.98 * static_cast<double>(tally.decoded));
  EXPECT_GE(static_cast<double>(tally.jpg), 0.98 * static_cast<double>(tally.decoded));
  EXPECT_GE(static_cast<double>(tally.equal), peer.agreement * static_cast<double>(tally.compared));
}

INSTANTIATE_TEST_SUITE_P(Format, FormatCorpus, testing::ValuesIn(formatPeers()),
                         [](const auto& test) { return std::string(test.param.format); });

}  // namespace
}  // namespace ostra::test
