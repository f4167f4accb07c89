#pragma once
#include <string_view>

#include "platform/graphics/color_space.h"
#include "platform/graphics/icc_writer.h"

namespace ostra {

struct NamedSpaceRow {
  std::string_view name;
  ProfileNumbers numbers;
};

/// The eight spaces that have names and profiles.
std::span<const NamedSpaceRow> namedSpaceRows();

/// The space itself, made at the first call and kept for ever; null for any other name.
CGColorSpaceRef namedSpace(std::string_view name);

/// The named space whose profile has exactly these bytes, or null.
CGColorSpaceRef namedSpaceOfProfile(ByteView profile);

}  // namespace ostra
