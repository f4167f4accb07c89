#include "platform/imageio/modules/tiff/tiff_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace ostra {
namespace {

TiffFile& fileOf(void* self) { return *static_cast<TiffFile*>(self); }

}  // namespace

std::unique_ptr<TiffFile> TiffFile::open(ByteView bytes, std::uint64_t directory, std::uint64_t mostMemory) {
  std::unique_ptr<TiffFile> file(new TiffFile(bytes));
  const TiffOptions options(TIFFOpenOptionsAlloc());
  if (options == nullptr) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, file.get());
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, file.get());
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(mostMemory));
  file->tiff_ =
      TIFFClientOpenExt("", "r", file.get(), read, write, seek, close, size, map, unmap, options.get());
  if (file->tiff_ == nullptr) return nullptr;
  const bool isCurrent = TIFFCurrentDirOffset(file->tiff_) == directory;
  if (!isCurrent && TIFFSetSubDirectory(file->tiff_, directory) == 0) return nullptr;
  return file;
}

TiffFile::~TiffFile() {
  if (tiff_ != nullptr) TIFFClose(tiff_);
}

tmsize_t TiffFile::read(thandle_t self, void* into, tmsize_t size) {
  TiffFile& file = fileOf(self);
  if (file.position_ >= file.bytes_.size() || size <= 0) return 0;
  const std::size_t count = std::min(static_cast<std::size_t>(size), file.bytes_.size() - file.position_);
  std::memcpy(into, file.bytes_.data() + file.position_, count);
  file.position_ += count;
  return static_cast<tmsize_t>(count);
}

toff_t TiffFile::seek(thandle_t self, toff_t offset, int from) {
  TiffFile& file = fileOf(self);
  const toff_t base = from == SEEK_CUR ? file.position_ : from == SEEK_END ? file.bytes_.size() : 0;
  return file.position_ = base + offset;
}

toff_t TiffFile::size(thandle_t self) { return fileOf(self).bytes_.size(); }

// The library only reads through it.
int TiffFile::map(thandle_t self, void** base, toff_t* size) {
  *base = const_cast<std::uint8_t*>(fileOf(self).bytes_.data());
  *size = fileOf(self).bytes_.size();
  return 1;
}

int TiffFile::onError(TIFF*, void* self, const char*, const char*, va_list) {
  ++fileOf(self).complaints_;
  return 1;
}

// Most warnings are of odd fields. Those of the decoders are of pixels that were made up.
int TiffFile::onWarning(TIFF*, void* self, const char* where, const char* format, va_list) {
  constexpr std::string_view decoders[] = {"JPEGLib",       "LibJpeg",    "Fax3Decode1D", "Fax3Decode2D",
                                           "Fax3DecodeRLE", "Fax4Decode", "LZWDecode"};
  const std::string_view name = where == nullptr ? "" : where, text = format == nullptr ? "" : format;
  // A part that is smaller than its place leaves the rest of that as it was.
  const bool tooSmall = name == "JPEGPreDecode" && text.starts_with("Improper");
  if (tooSmall || std::find(std::begin(decoders), std::end(decoders), name) != std::end(decoders))
    ++fileOf(self).complaints_;
  return 1;
}

}  // namespace ostra
