#include "platform/appkit/save_place.h"

#include <algorithm>
#include <cctype>

namespace ostra {
namespace {

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

bool isAllowed(const std::vector<UTType>& types, const std::string& extension) {
  return types.empty() || std::any_of(types.begin(), types.end(), [&extension](const UTType& type) {
           const std::vector<std::string> known = type.filenameExtensions();
           return std::find(known.begin(), known.end(), lowered(extension)) != known.end();
         });
}

/// That of the proposed name, when it is allowed; else the first that any of the types has. With its dot;
/// empty when none has one.
std::string preferredExtension(const NSSavePanel& panel) {
  const std::vector<UTType>& types = panel.allowedContentTypes();
  const std::string proposed = URL::fileURLWithPath(panel.nameFieldStringValue()).pathExtension();
  if (!proposed.empty() && isAllowed(types, proposed)) return "." + proposed;
  for (const UTType& type : types) {
    const std::vector<std::string> extensions = type.filenameExtensions();
    if (!extensions.empty()) return "." + extensions.front();
  }
  return "";
}

}  // namespace

std::string placeOfAllowedType(const NSSavePanel& panel, const std::string& path) {
  const std::string extension = URL::fileURLWithPath(path).pathExtension();
  return isAllowed(panel.allowedContentTypes(), extension) ? path : path + preferredExtension(panel);
}

}  // namespace ostra
