#include "platform/imageio/codecs/jpeg_library.h"

#include <jerror.h>

namespace ostra {
namespace {

constexpr int kStrayBytes = 32;
constexpr int kEndOfImage = 0xD9;

[[noreturn]] void onError(j_common_ptr library) {
  std::longjmp(reinterpret_cast<JpegErrors*>(library->err)->escape, 1);
}

bool isHarmless(const JpegErrors& errors) {
  const jpeg_error_mgr& manager = errors.manager;
  switch (manager.msg_code) {
    case JWRN_ADOBE_XFORM:
    case JWRN_JFIF_MAJOR:
    case JWRN_NOT_SEQUENTIAL:
      return true;
    case JWRN_EXTRANEOUS_DATA:
      return !errors.inScan || (manager.msg_parm.i[0] <= kStrayBytes && manager.msg_parm.i[1] == kEndOfImage);
    default:
      return false;
  }
}

// Below 0 is a warning, above are traces.
void onMessage(j_common_ptr library, int level) {
  if (level < 0 && !isHarmless(*reinterpret_cast<JpegErrors*>(library->err))) onError(library);
}

void onOutput(j_common_ptr) {}

}  // namespace

void prepareJpegErrors(JpegErrors& errors) {
  jpeg_std_error(&errors.manager);
  errors.manager.error_exit = onError;
  errors.manager.emit_message = onMessage;
  errors.manager.output_message = onOutput;
}

bool lacksMemory(const JpegErrors& errors) { return errors.manager.msg_code == JERR_OUT_OF_MEMORY; }

}  // namespace ostra
