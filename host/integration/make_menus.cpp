// Makes the files with which the program's packages put its actions into file managers:
//
//     make_menus OUTPUT TEMPLATES BUNDLES PROGRAM NAMED_BUNDLES
//
// The last two are the paths that the files name, those of the installed program and its bundles.

#include <exception>
#include <filesystem>

#include "host/exit_status.h"
#include "host/integration/menu_files.h"
#include "host/message.h"
#include "host/usage_error.h"
#include "platform/foundation/data.h"

namespace {

namespace fs = std::filesystem;

void write(const fs::path& folder, const ostra::MenuFile& file) {
  fs::create_directories(folder);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(file.text.data());
  ostra::writeToURL({bytes, file.text.size()}, ostra::URL::fileURLWithPath((folder / file.name).string()));
}

void makeMenus(const fs::path& output, const ostra::MenuSources& sources) {
  // A bundle that is gone leaves no entry behind.
  fs::remove_all(output);
  const ostra::Menu menu = ostra::readMenu(sources);
  write(output / "ostra", extensionMenuFile(menu, sources.templates));
  write(output / "kio/servicemenus", serviceMenuFile(menu, sources.templates));
  for (const ostra::MenuFile& file : fileManagerActionFiles(menu, sources.templates)) {
    write(output / "file-manager/actions", file);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 6) throw ostra::UsageError("make_menus takes five paths.");
    makeMenus(argv[1],
              {.program = argv[4], .bundles = argv[3], .namedBundles = argv[5], .templates = argv[2]});
    return ostra::kCompletedStatus;
  } catch (const std::exception& failure) {
    ostra::say(failure.what());
    return ostra::kUsageStatus;
  }
}
