#include "tests/desktop_extensions/file_manager_double.h"

namespace ostra::test {
namespace {

using Object = FileManagerDouble::Object;

int count = 0;

struct ObjectClass {
  GObjectClass parent;
};

GObjectClass* parentClass = nullptr;

void initialize(GTypeInstance* instance, gpointer) {
  reinterpret_cast<Object*>(instance)->contents = new Contents;
  ++count;
}

void finalize(GObject* object) {
  const Contents* contents = reinterpret_cast<Object*>(object)->contents;
  for (Object* part : contents->parts) g_object_unref(part);
  delete contents;
  --count;
  parentClass->finalize(object);
}

void initializeClass(gpointer type, gpointer) {
  parentClass = static_cast<GObjectClass*>(g_type_class_peek_parent(type));
  G_OBJECT_CLASS(type)->finalize = finalize;
  g_signal_new("activate", G_TYPE_FROM_CLASS(type), G_SIGNAL_RUN_LAST, 0, nullptr, nullptr, nullptr,
               G_TYPE_NONE, 0);
}

GType objectType() {
  static const GType type =
      g_type_register_static_simple(G_TYPE_OBJECT, "FileManagerDouble", sizeof(ObjectClass), initializeClass,
                                    sizeof(Object), initialize, GTypeFlags{});
  return type;
}

Object* newObject() { return static_cast<Object*>(g_object_new(objectType(), nullptr)); }

void add(Object* whole, Object* part) {
  g_object_ref(part);
  whole->contents->parts.push_back(part);
}

}  // namespace

GFile* FileManagerDouble::location(File* file) { return g_file_new_for_uri(file->contents->uri.c_str()); }

char* FileManagerDouble::mimeType(File* file) {
  return file->contents->type.empty() ? nullptr : g_strdup(file->contents->type.c_str());
}

GList* FileManagerDouble::copyList(GList* files) {
  return g_list_copy_deep(
      files, [](gconstpointer file, gpointer) { return g_object_ref(const_cast<gpointer>(file)); }, nullptr);
}

void FileManagerDouble::freeList(GList* files) { g_list_free_full(files, g_object_unref); }

Object* FileManagerDouble::newItem(const char* name, const char* title, const char* tooltip,
                                   const char* icon) {
  Object* item = newObject();
  *item->contents = {.name = name, .title = title, .tooltip = tooltip, .icon = icon};
  return item;
}

Object* FileManagerDouble::newSubmenu() { return newObject(); }
void FileManagerDouble::append(Submenu* submenu, Item* item) { add(submenu, item); }
void FileManagerDouble::setSubmenu(Item* item, Submenu* submenu) { add(item, submenu); }

Object* FileManagerDouble::newFile(const std::string& uri, const std::string& type) {
  Object* file = newObject();
  *file->contents = {.uri = uri, .type = type};
  return file;
}

int FileManagerDouble::living() { return count; }

}  // namespace ostra::test
