#pragma once
#include <vector>

#include "platform/imageio/metadata/carrier.h"

namespace ostra {

/// Some keywords of a PNG's texts mean what a key of another group means: Title, Description, Author,
/// Copyright, Software, Comment and Creation Time. Such a text is at home in that key when nothing else
/// stands there, and is written there, which every reader finds and every format has.

/// Puts the texts into the tree where their keys say nothing yet.
void giveTextsAHome(const std::vector<CarriedText>& texts, Dictionary& tree);
/// Whether the tree says the same under the text's key.
bool isAtHome(const CarriedText& text, const Dictionary& tree);
/// The tree without the keys that texts are at home in, but for those that `told` has from elsewhere.
Dictionary withoutTexts(Dictionary tree, const std::vector<CarriedText>& texts, const Dictionary& told);
/// Whether the text's key is one of this group's.
bool hasHomeIn(const CarriedText& text, std::string_view group);

}  // namespace ostra
