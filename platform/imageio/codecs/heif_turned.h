#pragma once
#include <optional>

#include "platform/imageio/codecs/heif_transforms.h"

namespace ostra {

/// The file with properties that turn its primary picture. Nothing when the file is not laid out as libheif
/// does it: short numbers, and all data behind the `meta` box.
///
/// Asked for an orientation, that library gives parts instead of the whole the property, and the picture the
/// size that it has after turning.
std::optional<Bytes> withHeifTurn(ByteView file, const HeifTurn& turn);

}  // namespace ostra
