#pragma once
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfMultiPartInputFile.h>

#include "platform/imageio/codec.h"

namespace ostra {

/// A file in memory, as the library reads it.
class ExrStream : public Imf::IStream {
 public:
  explicit ExrStream(FileBytes file);
  bool read(char* to, int size) override;
  std::uint64_t tellg() override { return position_; }
  void seekg(std::uint64_t position) override { position_ = position; }
  void clear() override {}

 private:
  FileBytes file_;
  std::uint64_t position_ = 0;
};

/// The headers of all parts. Throws what the library throws for a file that it cannot read.
class ExrFile {
 public:
  explicit ExrFile(FileBytes file);
  FileBytes bytes() const { return file_; }
  Imf::MultiPartInputFile& parts() { return parts_; }
  const Imf::Header& header() const { return parts_.header(0); }
  /// Whether each block of pixels of the first part has its place in the file.
  bool isComplete() const { return parts_.partComplete(0); }
  bool isDeep() const;

 private:
  FileBytes file_;
  ExrStream stream_;
  Imf::MultiPartInputFile parts_;
};

struct ExrSize {
  std::uint32_t width = 0, height = 0;
};
ExrSize sizeOf(const Imath::Box2i& window);

}  // namespace ostra
