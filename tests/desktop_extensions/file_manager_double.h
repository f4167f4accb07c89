#pragma once
#include <string>
#include <vector>

#include <gio/gio.h>

namespace ostra::test {

/// The few calls that file managers have, over objects that are counted.
struct FileManagerDouble {
  struct Object {
    GObject parent;
    struct Contents* contents;
  };
  using File = Object;
  using Item = Object;
  using Submenu = Object;

  static GFile* location(File* file);
  static char* mimeType(File* file);
  static GList* copyList(GList* files);
  static void freeList(GList* files);
  static Item* newItem(const char* name, const char* title, const char* tooltip, const char* icon);
  static Submenu* newSubmenu();
  static void append(Submenu* submenu, Item* item);
  static void setSubmenu(Item* item, Submenu* submenu);

  /// For tests: a file, by its URI; how many objects live.
  static File* newFile(const std::string& uri, const std::string& type);
  static int living();
};

/// What an object of it holds. Parts are released with it.
struct Contents {
  std::string name = {}, title = {}, tooltip = {}, icon = {};
  std::string uri = {}, type = {};
  std::vector<FileManagerDouble::Object*> parts = {};
};

}  // namespace ostra::test
