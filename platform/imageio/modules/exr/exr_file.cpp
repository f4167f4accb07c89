#include "platform/imageio/modules/exr/exr_file.h"

#include <cstring>

#include <Iex.h>
#include <ImfPartType.h>

namespace ostra {

ExrStream::ExrStream(FileBytes file) : IStream("picture"), file_(file) {}

bool ExrStream::read(char* to, int size) {
  const auto wanted = static_cast<std::uint64_t>(size);
  if (size < 0 || position_ > file_.size() || wanted > file_.size() - position_)
    throw Iex::InputExc("The file ends early.");
  std::memcpy(to, file_.data() + position_, wanted);
  position_ += wanted;
  return position_ < file_.size();
}

// No thread, and no search for the blocks of a file whose writer did not come to its end.
ExrFile::ExrFile(FileBytes file) : file_(file), stream_(file), parts_(stream_, 0, false) {}

bool ExrFile::isDeep() const { return header().hasType() && Imf::isDeepData(header().type()); }

ExrSize sizeOf(const Imath::Box2i& window) {
  const auto length = [](int first, int last) {
    return static_cast<std::uint32_t>(std::int64_t{last} - first + 1);
  };
  return {length(window.min.x, window.max.x), length(window.min.y, window.max.y)};
}

}  // namespace ostra
