#include "platform/imageio/modules/jpeg2000/jp2_channels.h"

#include <algorithm>

namespace ostra {
namespace {

constexpr unsigned kMostBits = 16;
constexpr unsigned kColour = 0, kOpacity = 1, kPremultipliedOpacity = 2, kWholePicture = 0;

bool agree(const Jp2Boxes& boxes, const Codestream& codestream) {
  if (boxes.components == 0) return true;
  return boxes.width == codestream.width && boxes.height == codestream.height &&
         boxes.components == codestream.components.size();
}

std::optional<Jp2Channel> mapped(const Jp2Mapping& mapping, const Jp2Boxes& boxes,
                                 const Codestream& codestream) {
  if (mapping.component >= codestream.components.size()) return std::nullopt;
  const J2kComponent& component = codestream.components[mapping.component];
  Jp2Channel channel{mapping.component, component.bits, component.isSigned, std::nullopt};
  if (!mapping.column) return channel;
  const std::size_t columns = boxes.palette->bits.size();
  if (*mapping.column >= columns || component.isSigned) return std::nullopt;
  channel.bits = boxes.palette->bits[*mapping.column];
  channel.isSigned = boxes.palette->isSigned[*mapping.column];
  channel.palette.emplace();
  for (std::size_t i = *mapping.column; i < boxes.palette->values.size(); i += columns)
    channel.palette->push_back(boxes.palette->values[i]);
  return channel;
}

std::optional<std::vector<Jp2Channel>> allChannels(const Jp2Boxes& boxes, const Codestream& codestream) {
  std::vector<Jp2Channel> channels;
  for (std::size_t i = 0; boxes.mappings.empty() && i < codestream.components.size(); ++i) {
    const J2kComponent& component = codestream.components[i];
    channels.push_back({i, component.bits, component.isSigned, std::nullopt});
  }
  for (const Jp2Mapping& mapping : boxes.mappings) {
    auto channel = mapped(mapping, boxes, codestream);
    if (!channel) return std::nullopt;
    channels.push_back(std::move(*channel));
  }
  return channels;
}

bool differencesAreCoarse(const std::vector<Jp2Channel>& channels, const Codestream& codestream) {
  if (channels.size() < 3) return false;
  const auto component = [&](std::size_t i) -> const J2kComponent& {
    return codestream.components[channels[i].component];
  };
  return component(1).dx > component(0).dx && component(2).dx > component(0).dx;
}

struct Roles {
  std::vector<std::size_t> colours;
  std::optional<std::size_t> alpha;
  Jp2Alpha kind = Jp2Alpha::none;
};

// Where nothing is told, colours come first, and a single channel more is what all programs take it for.
std::optional<Roles> usualRoles(std::size_t channels, unsigned colours, bool isBare) {
  if (channels < colours || (isBare && channels > colours + 1)) return std::nullopt;
  Roles roles;
  for (std::size_t i = 0; i < colours; ++i) roles.colours.push_back(i);
  if (channels == colours + 1) {
    roles.alpha = colours;
    roles.kind = Jp2Alpha::straight;
  }
  return roles;
}

bool isOpacity(const Jp2Definition& definition) {
  return definition.type == kOpacity || definition.type == kPremultipliedOpacity;
}

// The opacity of the whole picture, or the only one.
const Jp2Definition* opacityOf(const std::vector<Jp2Definition>& definitions) {
  const auto whole = std::find_if(definitions.begin(), definitions.end(), [](const auto& definition) {
    return isOpacity(definition) && definition.association == kWholePicture;
  });
  if (whole != definitions.end()) return &*whole;
  const auto first = std::find_if(definitions.begin(), definitions.end(), isOpacity);
  return first == definitions.end() ? nullptr : &*first;
}

std::optional<Roles> toldRoles(const std::vector<Jp2Definition>& definitions, std::size_t channels,
                               unsigned colours) {
  Roles roles;
  for (unsigned colour = 1; colour <= colours; ++colour) {
    const auto found = std::find_if(definitions.begin(), definitions.end(), [&](const auto& definition) {
      return definition.type == kColour && definition.association == colour;
    });
    if (found == definitions.end() || found->channel >= channels) return std::nullopt;
    roles.colours.push_back(found->channel);
  }
  const Jp2Definition* const opacity = opacityOf(definitions);
  if (opacity == nullptr) return roles;
  const bool isAmbiguous = opacity->association != kWholePicture &&
                           std::count_if(definitions.begin(), definitions.end(), isOpacity) > 1;
  if (opacity->channel >= channels || isAmbiguous) return std::nullopt;
  roles.alpha = opacity->channel;
  roles.kind = opacity->type == kOpacity ? Jp2Alpha::straight : Jp2Alpha::premultiplied;
  return roles;
}

// Each channel has a sample for one or more whole pixels of the first, and as many bits as there is room for.
bool canBeDrawn(const Jp2Picture& picture, const Codestream& codestream) {
  const J2kComponent& base = codestream.components[picture.channels.front().component];
  return std::all_of(picture.channels.begin(), picture.channels.end(), [&](const Jp2Channel& channel) {
    const J2kComponent& component = codestream.components[channel.component];
    return component.dx % base.dx == 0 && component.dy % base.dy == 0 && channel.bits <= kMostBits &&
           component.bits <= kMostBits;
  });
}

}  // namespace

std::optional<Jp2Picture> jp2PictureOf(const Jp2Boxes& boxes, const Codestream& codestream,
                                       const Limits& limits) {
  if (!agree(boxes, codestream)) return std::nullopt;
  auto channels = allChannels(boxes, codestream);
  if (!channels) return std::nullopt;
  auto space = jp2SpaceOf(boxes, channels->size(), differencesAreCoarse(*channels, codestream), limits);
  if (!space) return std::nullopt;
  const bool isBare = boxes.components == 0;
  const auto roles = boxes.definitions.empty()
                         ? usualRoles(channels->size(), space->colours(), isBare)
                         : toldRoles(boxes.definitions, channels->size(), space->colours());
  // No surface has both inks and opacity.
  if (!roles || (roles->alpha && space->model == CGColorSpaceModel::cmyk)) return std::nullopt;
  Jp2Picture picture;
  picture.space = std::move(*space);
  picture.alpha = roles->kind;
  picture.isIndexed = boxes.palette.has_value();
  for (const std::size_t index : roles->colours) picture.channels.push_back((*channels)[index]);
  if (roles->alpha) picture.channels.push_back((*channels)[*roles->alpha]);
  const J2kComponent& base = codestream.components[picture.channels.front().component];
  picture.width = base.width;
  picture.height = base.height;
  picture.bits = 0;
  for (const Jp2Channel& channel : picture.channels) picture.bits = std::max(picture.bits, channel.bits);
  return canBeDrawn(picture, codestream) ? std::optional(std::move(picture)) : std::nullopt;
}

}  // namespace ostra
