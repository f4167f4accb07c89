#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/heif_file.h"

namespace ostra {

/// What the readers of all codings have in common: everything but the pixels of the primary picture.
class HeifReader : public CodecReader {
 public:
  HeifReader(FileBytes file, HeifFile heif, std::string_view type);

  const Opened& opened() const override { return opened_; }
  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override;

 protected:
  const FileBytes& file() const { return file_; }
  const HeifFile& heif() const { return heif_; }
  /// The profile, or where there is none what the Exif block says.
  ProfileRecord profile(const Limits& limits) const;
  /// Of the cropped picture, its rows packed; gray, or four components of which the last may be no alpha.
  Layout layout(bool wide, bool alpha, bool premultiplied) const;

 private:
  Bytes metadata(std::uint32_t type, std::string_view contentType, const Limits& limits) const;
  Bytes exif(const Limits& limits) const;

  FileBytes file_;
  HeifFile heif_;
  Opened opened_;
};

}  // namespace ostra
