#include "platform/graphics/device_cmyk.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "platform/foundation/error.h"
#include "platform/foundation/file_reading.h"
#include "platform/graphics/icc_check.h"
#include "platform/graphics/profile_transform.h"

namespace ostra {
namespace {

constexpr std::string_view defaultProfile = "/color/icc/ghostscript/default_cmyk.icc";
constexpr std::size_t largestProfile = std::size_t{64} << 20;

/// Nothing where it cannot be read. A stream would take lacking memory for a file that cannot be read, and
/// every picture to come would have other colours.
Bytes readWhole(const std::string& path) {
  try {
    return readSmallFile(URL::fileURLWithPath(path), largestProfile);
  } catch (const NSError&) {
    return {};
  }
}

bool isUsableCMYK(ByteView bytes) {
  const auto profile = CheckedProfile::of(bytes);
  return profile && profile->model() == CGColorSpaceModel::cmyk && libraryConvertsFrom(bytes);
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// The base directory specification's defaults stand where a variable is unset or empty.
std::vector<std::string> dataFolders() {
  std::vector<std::string> folders;
  const std::string home = environment("XDG_DATA_HOME");
  folders.push_back(home.empty() ? environment("HOME") + "/.local/share" : home);
  std::string list = environment("XDG_DATA_DIRS");
  if (list.empty()) list = "/usr/local/share:/usr/share";
  for (std::size_t start = 0; start <= list.size();) {
    const std::size_t end = std::min(list.find(':', start), list.size());
    folders.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  std::erase_if(folders, [](const std::string& folder) { return folder.empty() || folder.front() != '/'; });
  return folders;
}

}  // namespace

Bytes cmykProfileIn(const std::vector<std::string>& dataFolders) {
  for (const std::string& folder : dataFolders) {
    Bytes bytes = readWhole(folder + std::string(defaultProfile));
    if (isUsableCMYK(bytes)) return bytes;
  }
  return {};
}

const Bytes& systemCMYKProfile() {
  static const Bytes profile = cmykProfileIn(dataFolders());
  return profile;
}

void plainRGBFromCMYK(PixelChunk& chunk) {
  for (std::size_t i = 0; i < chunk.count; ++i)
    for (std::size_t c = 0; c < 3; ++c) chunk.color[c][i] = (1 - chunk.color[c][i]) * (1 - chunk.color[3][i]);
}

void plainCMYKFromRGB(PixelChunk& chunk) {
  for (std::size_t i = 0; i < chunk.count; ++i) {
    const float light = std::max({chunk.color[0][i], chunk.color[1][i], chunk.color[2][i]});
    for (std::size_t c = 0; c < 3; ++c) chunk.color[c][i] = light > 0 ? 1 - chunk.color[c][i] / light : 0;
    chunk.color[3][i] = 1 - light;
  }
}

}  // namespace ostra
