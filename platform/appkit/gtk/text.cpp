#include "platform/appkit/gtk/text.h"

#include <glib.h>

#include "platform/foundation/printable.h"

namespace ostra::gtk {

std::string shownText(std::string_view text) {
  char* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
  std::string shown = printable(valid);
  g_free(valid);
  return shown;
}

}  // namespace ostra::gtk
