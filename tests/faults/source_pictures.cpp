#include "tests/faults/source_pictures.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "tests/faults/picture_parts.h"
#include "tests/faults/watched_request.h"
#include "tests/support/temporary_folder.h"
#include "tests/system/full_pictures.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

using Picture = SourcePictures::Picture;

constexpr std::size_t kMostBytes = 2u << 20;
constexpr std::uint64_t kMostPixels = 30'000'000;

std::vector<Picture> filesOf(const std::string& folder) {
  std::vector<Picture> pictures;
  std::vector<fs::path> paths;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && entry.file_size() <= kMostBytes) paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  pictures.reserve(paths.size());
  for (const fs::path& path : paths)
    pictures.push_back({fs::relative(path, folder).string(), readFile(path.string())});
  return pictures;
}

/// Those that the program does not call no image when it is asked to convert copies of them.
std::vector<Picture> knownOf(std::vector<Picture> pictures, const InstalledProgram& program,
                             const std::string& parent) {
  const TemporaryFolder folder(parent);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    names.push_back(std::to_string(i) + ".png");
    writeFile(folder.path(names.back()), pictures[i].bytes);
  }
  const WatchedRequest request{program.path(), program.environment(), "invert", folder.path(), names};
  const RequestEnd end = request.run(std::chrono::seconds(300));
  std::vector<Picture> known;
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const FileEnd& file = end.files[i];
    if (file.kind == FileEnd::Kind::none)
      throw std::runtime_error("the program ended at " + pictures[i].name);
    if (file.reason != "not an image ImageIO can read.") known.push_back(std::move(pictures[i]));
  }
  return known;
}

struct Recipe {
  const char* name;
  std::vector<std::string> settings;
};

std::vector<Picture> madeIn(const std::string& parent) {
  const TemporaryFolder folder(parent);
  const std::vector<Recipe> recipes{
      {"rgb.png", {}},
      {"rgb16.png", {"-depth", "16"}},
      {"gray.png", {"-colorspace", "gray"}},
      {"gray16.png", {"-colorspace", "gray", "-depth", "16"}},
      {"bilevel.png", {"-monochrome"}},
      {"palette.png", {"-colors", "5", "-type", "palette"}},
      {"interlaced.png", {"-interlace", "PNG"}},
      {"rgb.jpg", {}},
      {"halved.jpg", {"-sampling-factor", "4:2:0"}},
      {"gray.jpg", {"-colorspace", "gray"}},
      {"cmyk.jpg", {"-colorspace", "CMYK"}},
      {"progressive.jpg", {"-interlace", "JPEG"}},
      {"rgb.gif", {}},
      {"rgb.bmp", {}},
      {"palette.bmp", {"-colors", "5", "-type", "palette", "-compress", "RLE"}},
      {"rgb.tga", {"-compress", "RLE"}},
      {"rgb.ppm", {"-depth", "16"}},
      {"rgb.psd", {"-compress", "RLE"}},
      {"rgb.hdr", {}},
      {"rgb.tiff", {"-compress", "LZW"}},
      {"gray16.tiff", {"-colorspace", "gray", "-depth", "16"}},
      {"halved.tiff", {"-compress", "JPEG"}},
      {"rgb.webp", {}},
      {"rgb.heic", {}},
      {"rgb.avif", {}},
      {"rgb.jp2", {}},
      {"larger.png", {"-resize", "640x480!"}},
      {"larger.jpg", {"-resize", "640x480!"}},
  };
  for (const Recipe& recipe : recipes) makePicture(folder.path(recipe.name), recipe.settings);
  makeTransparentPicture(folder.path("transparent.png"));
  makeFullJpeg(folder.path("full-ii.jpg"), "II");
  makeFullJpeg(folder.path("full-mm.jpg"), "MM");
  makeFullPng(folder.path("full-ii.png"), "II");
  makeFullPng(folder.path("full-mm.png"), "MM");
  makeMultiPictureJpeg(folder.path("views.jpg"));
  makeTextPng(folder.path("texts.png"));
  std::vector<Picture> pictures;
  for (const std::string& name : folder.names()) pictures.push_back({name, readFile(folder.path(name))});
  return pictures;
}

}  // namespace

SourcePictures SourcePictures::made(const std::string& parent) { return {"made here", madeIn(parent)}; }

SourcePictures SourcePictures::collected(const std::string& collection, const InstalledProgram& program,
                                         const std::string& parent) {
  return {"of the given collection", knownOf(filesOf(collection), program, parent)};
}

SourcePictures::SourcePictures(std::string from, std::vector<Picture> pictures) : from_(std::move(from)) {
  for (Picture& picture : pictures) add(std::move(picture));
  if (small_.empty()) throw std::runtime_error("there is no small picture to damage");
}

void SourcePictures::add(Picture picture) {
  const std::uint64_t pixels = claimedPixels(picture.bytes).value_or(0);
  const std::size_t size = picture.bytes.size();
  if (pixels > kMostPixels) {
    ++leftOut_;
  } else if (size <= 64 << 10 && pixels <= 100'000) {
    small_.push_back(std::move(picture));
  } else if (size <= 300 << 10 && pixels <= 1'000'000) {
    middling_.push_back(std::move(picture));
  } else {
    large_.push_back(std::move(picture));
  }
}

const Picture& SourcePictures::draw(Dice& dice) const {
  const std::size_t chance = dice.below(100);
  if (chance >= 98 && !large_.empty()) return dice.oneOf(large_);
  return chance >= 88 && !middling_.empty() ? dice.oneOf(middling_) : dice.oneOf(small_);
}

std::string SourcePictures::description() const {
  return std::to_string(small_.size()) + " small, " + std::to_string(middling_.size()) + " middling and " +
         std::to_string(large_.size()) + " large pictures " + from_ + ", " + std::to_string(leftOut_) +
         " left out for their size";
}

}  // namespace ostra::test
