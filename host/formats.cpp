#include "host/formats.h"

#include <vector>

#include "platform/imageio/codec.h"
#include "platform/types/ut_type.h"

namespace ostra {
namespace {

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::string lineOf(const Codec& codec) {
  const auto type = UTType::withIdentifier(codec.type);
  std::string line(codec.name);
  line += "\t" + std::string(codec.type);
  line += "\t" + (type ? joined(type->filenameExtensions()) : "");
  line += "\t" + (type ? joined(type->mimeTypes()) : "");
  line += codec.writes ? "\tread and written" : "\tread";
  line += "\tcounts " + std::string(codec.counted);
  if (!isInstalled(codec)) line += "\tmissing: install " + std::string(kCodecsPackage);
  return line + "\n";
}

}  // namespace

std::string formatList() {
  std::string list;
  for (const Codec& codec : allCodecs()) list += lineOf(codec);
  return list;
}

}  // namespace ostra
