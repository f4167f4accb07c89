#include "platform/imageio/modules/exr/exr_channels.h"

#include <algorithm>
#include <set>
#include <vector>

#include <ImfChannelList.h>

namespace ostra {
namespace {

std::optional<ExrChannels> channelsOf(const Imf::ChannelList& list, const std::string& prefix) {
  const auto find = [&](const char* name) { return list.findChannel(prefix + name); };
  ExrChannels found;
  found.prefix = prefix;
  found.hasAlpha = find("A") != nullptr;
  std::vector<const char*> colours = {"R", "G", "B"};
  const bool isRgb = std::any_of(colours.begin(), colours.end(), find);
  if (!isRgb) {
    if (find("Y") == nullptr) return std::nullopt;
    const bool hasChroma = find("RY") != nullptr && find("BY") != nullptr;
    found.colour = hasChroma ? ExrColour::luminanceAndChroma : ExrColour::luminance;
    colours = {"Y"};
  }
  for (const char* name : colours) {
    const Imf::Channel* const channel = find(name);
    if (channel == nullptr) continue;
    if (channel->type != Imf::HALF) found.bits = 32;
    if (channel->type == Imf::UINT) found.areIntegers = true;
  }
  return found;
}

}  // namespace

std::optional<ExrChannels> pictureChannels(const Imf::Header& header) {
  const Imf::ChannelList& list = header.channels();
  if (auto bare = channelsOf(list, "")) return bare;
  std::set<std::string> layers;
  list.layers(layers);
  for (const std::string& layer : layers) {
    if (auto found = channelsOf(list, layer + ".")) return found;
  }
  return std::nullopt;
}

}  // namespace ostra
