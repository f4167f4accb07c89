#pragma once
#include <string>
#include <vector>

namespace ostra::test {

/// The programs that speak for a format; none shares code with the readers here but the format's library.
struct FormatPeer {
  const char* format;
  /// Extensions of its files, between spaces.
  const char* extensions;
  /// Decodes all of a file, to a PNG or TIFF of this name where it can; fails where it cannot.
  std::vector<std::string> (*decode)(const std::string& from, const std::string& to);
  /// The result's extension; none where there is no picture to compare.
  const char* result;
  /// How far colours may be from the peer's in the mean, of full scale, before a picture counts as another
  /// one.
  double meanError;
  /// The peer turns pictures as their orientation says.
  bool upright = false;
  /// Of the files, how many it agrees about at least: peers have minds of their own about the canvases, light
  /// and odd depths of single ones, which are listed.
  double agreement = 0.8;
};

/// One a format, for those that libraries read.
const std::vector<FormatPeer>& formatPeers();

/// How many pictures another program counts in a file; 0 where none knows.
std::size_t countByOthers(const FormatPeer& peer, const std::string& path);

/// Whether exiftool finds that pixels lie behind the end of the file, where the format's own tool makes them
/// up.
bool isCutOff(const FormatPeer& peer, const std::string& path);

}  // namespace ostra::test
