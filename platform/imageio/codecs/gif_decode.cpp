#include "platform/imageio/codecs/gif_decode.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include <gif_lib.h>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/codecs/gif_canvas.h"
#include "platform/imageio/codecs/lzw_strings.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

// What the library is shown: the shortest head that a file can have, and the frame's data. It takes the codes
// out of them; what codes mean is judged here, because the library takes impossible ones for others.
class FrameAlone {
 public:
  explicit FrameAlone(const GifStructure& structure) : data_(structure.firstData) {
    std::memcpy(head_.data(), "GIF89a", 6);
    head_[6] = head_[8] = 1;  // the screen's size; the rest of the screen is 0
    head_[13] = 0x2C;
    head_[18] = head_[20] = 1;  // the frame's
  }

  int read(GifByteType* into, int wanted) {
    int done = 0;
    for (; done < wanted && at_ < head_.size() + data_.size(); ++done, ++at_)
      into[done] = at_ < head_.size() ? head_[at_] : data_[at_ - head_.size()];
    return done;
  }

 private:
  std::array<std::uint8_t, 13 + 10> head_{};
  ByteView data_;
  std::size_t at_ = 0;
};

int onRead(GifFileType* gif, GifByteType* into, int wanted) {
  return static_cast<FrameAlone*>(gif->UserData)->read(into, wanted);
}

class Library {
 public:
  explicit Library(FrameAlone& file) : gif_(DGifOpen(&file, onRead, &error_)) {
    if (gif_ == nullptr && error_ == D_GIF_ERR_NOT_ENOUGH_MEM) throw std::bad_alloc();
  }
  ~Library() {
    if (gif_ != nullptr) DGifCloseFile(gif_, &error_);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  bool openFrame() {
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    if (gif_ == nullptr || DGifGetRecordType(gif_, &type) != GIF_OK) return false;
    const bool opened = DGifGetImageDesc(gif_) == GIF_OK;
    if (!opened && gif_->Error == D_GIF_ERR_NOT_ENOUGH_MEM) throw std::bad_alloc();
    return opened;
  }
  // Nothing at the end code, or where the data end without one.
  std::optional<unsigned> nextCode() {
    int code = 0;
    if (DGifGetLZCodes(gif_, &code) != GIF_OK || code < 0) return std::nullopt;
    return static_cast<unsigned>(code);
  }

 private:
  int error_ = 0;
  GifFileType* gif_;
};

std::optional<Fault> drawFrame(const GifStructure& structure, GifCanvas& canvas, const Limits& limits) {
  const Fault damaged{FaultKind::damaged};
  const unsigned codeSize = structure.firstData[0];
  FrameAlone file(structure);
  Library library(file);
  if (codeSize < 1 || codeSize > 8 || !library.openFrame()) return damaged;
  LzwStrings strings(codeSize);
  const DecodeClock clock(limits.seconds);
  std::uint32_t timedAt = canvas.rowsLeft();
  // Codes after the last pixel belong to nothing; viewers stop there too.
  while (!canvas.isFull()) {
    const auto code = library.nextCode();
    if (!code) return damaged;
    if (strings.isClear(*code)) {
      strings.reset();
      continue;
    }
    const auto entries = strings.take(*code);
    const auto drawn = [&](std::uint8_t entry) { return canvas.isFull() || canvas.put(entry); };
    if (entries.empty() || !std::all_of(entries.begin(), entries.end(), drawn)) return damaged;
    if (canvas.rowsLeft() == timedAt) continue;
    timedAt = canvas.rowsLeft();
    if (clock.isOver()) return Fault{FaultKind::limit, LimitName::seconds};
  }
  return std::nullopt;
}

Layout canvasLayout(const GifStructure& structure) {
  Layout layout;
  layout.width = structure.width;
  layout.height = structure.height;
  layout.bytesPerRow = std::size_t{4} * layout.width;
  layout.bitmapInfo = static_cast<CGBitmapInfo>(structure.hasAlpha() ? CGImageAlphaInfo::last
                                                                     : CGImageAlphaInfo::noneSkipLast);
  return layout;
}

}  // namespace

Answer<Pixels> decodeGifPixels(const GifStructure& structure, std::size_t fileSize, const Limits& limits) {
  const Layout layout = canvasLayout(structure);
  const LimitName limit = exceededLimit(limits, layout.width, layout.height, 4, fileSize);
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  // No screen is larger: a frame that lies there lies nowhere.
  if (std::max(layout.width, layout.height) > 65'535) return Fault{FaultKind::damaged};
  if (!structure.isComplete || structure.firstData.empty()) return Fault{FaultKind::damaged};
  PixelMemory memory(layout.bytesPerRow * layout.height);
  GifCanvas canvas(structure, memory.data());
  if (const auto fault = drawFrame(structure, canvas, limits)) return *fault;
  return Pixels{layout, std::move(memory).share(), Untagged{}};
}

}  // namespace ostra
