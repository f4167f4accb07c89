#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/system/corpus_peers.h"
#include "tests/system/installed_program.h"

// All PNG and JPEG files of a collection, good and bad: each is converted, or refused for a reason that
// another program confirms, and what is converted keeps its tags.

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

/// Tags that a conversion may lose, gain or change; docs/behaviour.md says why. A star stands for the rest of
/// a name.
constexpr const char* kMayChange[] = {
    // What the new pixels are, and what their colours mean.
    "ICC*",
    "PNG-cICP:*",
    "PNG:BitDepth",
    "PNG:ColorType",
    "PNG:Palette",
    "PNG:Transparency",
    "PNG:Interlace",
    "PNG:Gamma",
    "PNG:WhitePoint*",
    "PNG:Red*",
    "PNG:Green*",
    "PNG:Blue*",
    "PNG:SRGBRendering",
    "PNG:SignificantBits",
    "PNG:ProfileName",
    "PNG:BackgroundColor",
    "PNG:SuggestedPalette",
    "PNG:PaletteHistogram",
    "PNG:ModifyDate",
    "Adobe:*",
    "ExifIFD:ColorSpace",
    "InteropIFD:*",
    "XMP-exif:ColorSpace",
    "XMP-photoshop:ICCProfileName",
    "XMP-photoshop:ColorMode",
    "XMP-crs:*",
    // Their size.
    "ExifIFD:ExifImageWidth",
    "ExifIFD:ExifImageHeight",
    "XMP-exif:ExifImageWidth",
    "XMP-exif:ExifImageHeight",
    "XMP-tiff:Image*",
    // Thumbnails, gain maps, further pictures.
    "IFD1:*",
    "Photoshop:PhotoshopThumbnail",
    "MPF0:*",
    "MPImage*",
    "XMP-hdrgm:*",
    "XMP-HDRGainMap:*",
    "JFXX:*",
    "XMP-Container:*",
    "XMP-xmpNote:HasExtendedXMP",
    // The density, told alike everywhere.
    "JFIF:*",
    "PNG-pHYs:*",
    // PNG texts of the format's own keywords, and where they go.
    "PNG:Title",
    "PNG:Description",
    "PNG:Author",
    "PNG:Copyright",
    "PNG:Software",
    "PNG:Comment",
    "IPTC:ObjectName",
    "IPTC:Caption-Abstract",
    "IPTC:CodedCharacterSet",
    "IPTC:ApplicationRecordVersion",
    "Photoshop:IPTCDigest",
    "IFD0:Artist",
    "IFD0:Copyright",
    "IFD0:Software",
    "ExifIFD:UserComment",
    "PNG:CreationTime",
    "ExifIFD:DateTimeOriginal",
    // Keywords that no writer may write: with spaces at an end or in a row, with control characters.
    "PNG:PQ",
    "PNG:Tag*",
    // Segments and chunks of one program.
    "Ducky:*",
    "PNG:AppleDataOffsets",
};

/// Of a chunk that is too broken to be read.
constexpr std::string_view kUnread = "(Binary data";

bool fitsPattern(const std::string& name, std::string_view pattern) {
  if (pattern.ends_with('*')) return name.starts_with(pattern.substr(0, pattern.size() - 1));
  return name == pattern;
}

bool isUnread(const std::string& name, const std::multiset<std::string>& values) {
  return name.starts_with("PNG:") && !values.empty() && values.begin()->starts_with(kUnread);
}

bool mayChange(const std::string& name) {
  return std::any_of(std::begin(kMayChange), std::end(kMayChange),
                     [&](const char* pattern) { return fitsPattern(name, pattern); });
}

struct File {
  std::string name;  // in the collection
  std::string copy;  // what is converted
  bool png = false;
};

enum class Kind { png, jpeg, other };

Kind kindOf(const fs::path& path) {
  const Bytes bytes = readFile(path);
  if (bytes.size() >= 8 && bytes[0] == 0x89 && bytes[1] == 'P' && bytes[2] == 'N' && bytes[3] == 'G')
    return Kind::png;
  return bytes.size() >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF ? Kind::jpeg
                                                                                       : Kind::other;
}

constexpr const char* kAnimated = "animated or multi-frame images are not rewritten in place.";
constexpr const char* kSeveralViews = "multi-frame images are not rewritten in place.";

class Corpus : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    const char* collection = std::getenv("OSTRA_CORPUS");
    if (collection == nullptr) GTEST_SKIP() << "OSTRA_CORPUS names no folder of pictures";
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
    OSTRA_NEEDS_PROGRAM("pngcheck");
    OSTRA_NEEDS_PROGRAM("djpeg");
    std::vector<fs::path> paths;
    for (const auto& entry : fs::recursive_directory_iterator(collection))
      if (entry.is_regular_file() && kindOf(entry.path()) != Kind::other) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    fs::create_directory(folder.path("before"));
    fs::create_directory(folder.path("after"));
    for (const fs::path& path : paths) {
      const bool png = kindOf(path) == Kind::png;
      char copy[32];
      std::snprintf(copy, sizeof(copy), "%04zu.%s", files.size(), png ? "png" : "jpg");
      files.push_back({fs::relative(path, collection), copy, png});
      for (const std::string where : {"before/", "after/"}) fs::copy_file(path, folder.path(where + copy));
    }
    ASSERT_FALSE(files.empty());
  }

  std::string before(const File& file) const { return folder.path("before/" + file.copy); }
  std::string after(const File& file) const { return folder.path("after/" + file.copy); }

  /// Nothing when it was converted, else the sentence told.
  std::string refusalOf(const File& file) const {
    const ProgramResult result = program.run({GetParam(), "--ui=none", after(file)});
    if (result.status == 0) return "";
    const std::string start = "  " + file.copy + ": ";
    const std::size_t at = result.errors.find(start);
    if (at == std::string::npos) return "?";
    const std::size_t from = at + start.size();
    return result.errors.substr(from, result.errors.find('\n', from) - from);
  }

  /// Whether another program has the same reason to refuse the file.
  static bool isConfirmed(const File& file, const std::string& path, const std::string& refusal,
                          const TagMap& tags) {
    if (refusal == kAnimated || refusal == kSeveralViews)
      return tags.contains("PNG:AnimationFrames") || tags.contains("MPF0:NumberOfImages");
    return checkerComplains(path, file.png) || !imageMagickDecodes(path);
  }

  /// The file that the action made of it: itself, or a JPEG beside it.
  std::string resultOf(const File& file) const {
    const std::string path = after(file);
    const std::string beside = path.substr(0, path.size() - 3) + "jpg";
    return fs::exists(beside) ? beside : path;
  }

  InstalledProgram program;
  TemporaryFolder folder;
  std::vector<File> files;
};

struct Row {
  std::size_t files = 0, confirmed = 0;
};

TEST_P(Corpus, IsConvertedOrRefusedForAReasonThatOthersConfirm) {
  const auto tags = tagsOfFolder(folder.path("before"));
  std::map<std::string, Row> rows;
  std::size_t peersDecode = 0, peersDecodeAndConverted = 0;
  for (const File& file : files) {
    const std::string refusal = refusalOf(file);
    const bool converted = refusal.empty(), still = refusal != kAnimated && refusal != kSeveralViews;
    const auto known = tags.find(file.copy);
    Row& row = rows[(file.png ? "PNG  " : "JPEG ") + (converted ? std::string("converted") : refusal)];
    ++row.files;
    if (still && libraryDecodes(before(file), file.png) && imageMagickDecodes(before(file))) {
      ++peersDecode;
      if (converted) ++peersDecodeAndConverted;
    }
    if (converted) {
      const std::string result = resultOf(file);
      // A chunk that is carried over as it was may be one that the checker minded before.
      const bool asBefore = checkerComplains(before(file), file.png);
      const bool sound =
          imageMagickDecodes(result) && (asBefore || !checkerComplains(result, kindOf(result) == Kind::png));
      const bool sameSize = sizeOf(result) == sizeOf(before(file));
      EXPECT_TRUE(sound && sameSize) << file.name;
      if (sound && sameSize) ++row.confirmed;
    } else {
      EXPECT_EQ(readFile(after(file)), readFile(before(file))) << file.name << " was refused and changed";
      const bool confirmed =
          isConfirmed(file, before(file), refusal, known == tags.end() ? TagMap() : known->second);
      EXPECT_TRUE(confirmed) << file.name << ": nobody else says " << refusal;
      if (confirmed) ++row.confirmed;
    }
  }
  std::printf("  %s\n  %-70s %6s %10s\n", GetParam(), "", "files", "confirmed");
  for (const auto& [what, row] : rows)
    std::printf("  %-70s %6zu %10zu\n", what.c_str(), row.files, row.confirmed);
  std::printf("  stills that the library and ImageMagick decode: %zu, of them converted: %zu\n", peersDecode,
              peersDecodeAndConverted);
  EXPECT_GE(static_cast<double>(peersDecodeAndConverted), 0.99 * static_cast<double>(peersDecode));
}

std::string shown(const std::multiset<std::string>& values) {
  std::string text;
  for (const std::string& value : values) text += "<" + value.substr(0, 60) + ">";
  return text;
}

TEST_P(Corpus, KeepsTheTagsOfWhatIsRewrittenInPlace) {
  const auto tagsBefore = tagsOfFolder(folder.path("before"));
  std::vector<const File*> rewritten;
  for (const File& file : files)
    if (refusalOf(file).empty() && kindOf(resultOf(file)) == kindOf(before(file))) rewritten.push_back(&file);
  const auto tagsAfter = tagsOfFolder(folder.path("after"));
  std::size_t compared = 0;
  for (const File* file : rewritten) {
    if (!tagsBefore.contains(file->copy)) continue;
    const TagMap& was = tagsBefore.at(file->copy);
    const TagMap is = tagsAfter.contains(file->copy) ? tagsAfter.at(file->copy) : TagMap();
    for (const auto& [name, values] : was) {
      ++compared;
      const auto found = is.find(name);
      if ((found == is.end() || found->second != values) && !mayChange(name) && !isUnread(name, values))
        ADD_FAILURE() << file->name << ": " << name << " was " << shown(values) << ", is "
                      << (found == is.end() ? "lost" : shown(found->second));
    }
    for (const auto& [name, values] : is)
      if (!was.contains(name) && !mayChange(name))
        ADD_FAILURE() << file->name << ": " << name << " is new: " << shown(values);
  }
  std::printf("  %s: %zu tags of %zu files compared\n", GetParam(), compared, rewritten.size());
}

INSTANTIATE_TEST_SUITE_P(Action, Corpus, testing::Values("srgb", "invert", "jpg"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
}  // namespace ostra::test
