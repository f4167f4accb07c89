#pragma once
#include <memory>

#include <openjpeg.h>

#include "platform/foundation/bytes.h"

namespace ostra {

struct OpjDeleter {
  void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
struct OpjStreamDeleter {
  void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
// The library's codecs and streams are both void.
using OpjCodec = std::unique_ptr<opj_codec_t, OpjDeleter>;
using OpjImage = std::unique_ptr<opj_image_t, OpjDeleter>;
using OpjStream = std::unique_ptr<opj_stream_t, OpjStreamDeleter>;

/// What the library said, as far as it matters.
struct OpjComplaints {
  bool lacksMemory = false;
  bool warned = false;
};
/// The library tells of everything here and of nothing on the terminal.
void listenTo(opj_codec_t* codec, OpjComplaints& complaints);

/// Bytes that the library reads, and where it is.
struct OpjInput {
  ByteView bytes;
  std::size_t position = 0;
};
/// Both must outlive the stream.
OpjStream openForReading(OpjInput& input);

/// Bytes that the library writes. Its first one is at `start`.
struct OpjOutput {
  Bytes bytes;
  std::size_t start = 0;
  std::size_t position = 0;
  bool lacksMemory = false;
};
OpjStream openForWriting(OpjOutput& output);

}  // namespace ostra
