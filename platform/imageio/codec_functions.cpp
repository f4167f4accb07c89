#include <algorithm>
#include <map>
#include <mutex>
#include <string>

#include "platform/foundation/module.h"
#include "platform/imageio/codec.h"
#include "platform/imageio/codec_module.h"

namespace ostra {
namespace {

const CodecFunctions* load(const Codec& codec) {
  std::string reason;
  void* const entry = moduleEntry(codec.module, "ostra_codec", reason);
  if (entry == nullptr) return nullptr;
  return reinterpret_cast<decltype(&ostra_codec)>(entry)(OSTRA_VERSION, std::string(codec.type).c_str());
}

/// What was loaded, by type. A process that is forked has it too.
struct LoadedFunctions {
  std::mutex mutex;
  std::map<std::string_view, const CodecFunctions*> byType;
};

LoadedFunctions& loadedFunctions() {
  static LoadedFunctions functions;
  return functions;
}

}  // namespace

bool isInstalled(const Codec& codec) { return codec.module.empty() || moduleIsInstalled(codec.module); }

const CodecFunctions* functionsOf(const Codec& codec) {
  if (codec.module.empty()) return &codec.functions;
  LoadedFunctions& loaded = loadedFunctions();
  const std::lock_guard lock(loaded.mutex);
  const auto known = loaded.byType.find(codec.type);
  return known != loaded.byType.end() ? known->second
                                      : loaded.byType.emplace(codec.type, load(codec)).first->second;
}

void loadCodecsFor(FileBytes head) {
  for (const Codec& codec : allCodecs()) {
    if (!codec.module.empty() && codec.matches(head)) functionsOf(codec);
  }
}

Answer<std::unique_ptr<CodecReader>> openWithCodec(FileBytes file, const Limits& limits) {
  const FileBytes head = file.first(std::min(file.size(), kSignatureBytes));
  Fault fault{FaultKind::notImage};
  for (const Codec& codec : allCodecs()) {
    if (!codec.matches(head)) continue;
    const CodecFunctions* const functions = functionsOf(codec);
    if (functions == nullptr) {
      fault = Fault{FaultKind::missing};
      continue;
    }
    auto answer = functions->open(file, limits);
    const auto* refused = std::get_if<Fault>(&answer);
    if (refused == nullptr || refused->kind != FaultKind::notImage) return answer;
  }
  return fault;
}

}  // namespace ostra
