#include "platform/imageio/modules/tiff/tiff_sink.h"

#include <cstdio>
#include <cstring>
#include <exception>

#include "platform/imageio/modules/tiff/tiff_file.h"

namespace ostra {

TIFF* TiffSink::open(char order) {
  const TiffOptions options(TIFFOpenOptionsAlloc());
  if (options == nullptr) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onComplaint, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onComplaint, this);
  // Big, so that no strip is too far away; what the file is in the end is decided when it is whole.
  const char mode[] = {'w', '8', order, 'm', '\0'};
  return TIFFClientOpenExt("", mode, this, read, write, seek, release, size, nullptr, nullptr, options.get());
}

tmsize_t TiffSink::append(const std::uint8_t* from, std::size_t size) {
  if (closed_ || position_ < beginning_) return static_cast<tmsize_t>(size);
  try {
    if (position_ + size > file_.size()) file_.resize(position_ + size);
  } catch (const std::exception&) {
    lacksMemory_ = true;
    return 0;
  }
  std::memcpy(file_.data() + position_, from, size);
  return static_cast<tmsize_t>(size);
}

tmsize_t TiffSink::write(thandle_t self, void* from, tmsize_t size) {
  auto& sink = *static_cast<TiffSink*>(self);
  const tmsize_t done = sink.append(static_cast<const std::uint8_t*>(from), static_cast<std::size_t>(size));
  sink.position_ += static_cast<std::uint64_t>(done);
  return done;
}

toff_t TiffSink::seek(thandle_t self, toff_t offset, int from) {
  auto& sink = *static_cast<TiffSink*>(self);
  const toff_t base = from == SEEK_CUR ? sink.position_ : from == SEEK_END ? sink.file_.size() : 0;
  return sink.position_ = base + offset;
}

toff_t TiffSink::size(thandle_t self) { return static_cast<TiffSink*>(self)->file_.size(); }

}  // namespace ostra
