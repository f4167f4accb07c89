#include "platform/imageio/modules/jpeg2000/opj_memory.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <string_view>

namespace ostra {
namespace {

constexpr OPJ_SIZE_T kNothing = static_cast<OPJ_SIZE_T>(-1);
constexpr OPJ_SIZE_T kBuffer = 1 << 16;

bool speaksOfMemory(const char* words) {
  return words != nullptr && std::string_view(words).find("memory") != std::string_view::npos;
}

void onError(const char* words, void* complaints) {
  if (speaksOfMemory(words)) static_cast<OpjComplaints*>(complaints)->lacksMemory = true;
}
void onWarning(const char*, void* complaints) { static_cast<OpjComplaints*>(complaints)->warned = true; }
void onInformation(const char*, void*) {}

OPJ_SIZE_T onRead(void* buffer, OPJ_SIZE_T size, void* data) {
  auto& input = *static_cast<OpjInput*>(data);
  const std::size_t count = std::min<std::size_t>(size, input.bytes.size() - input.position);
  if (count == 0) return kNothing;
  std::memcpy(buffer, input.bytes.data() + input.position, count);
  input.position += count;
  return count;
}

OPJ_OFF_T onSkipRead(OPJ_OFF_T size, void* data) {
  auto& input = *static_cast<OpjInput*>(data);
  const auto left = static_cast<OPJ_OFF_T>(input.bytes.size() - input.position);
  if (size < 0 || left == 0) return -1;
  const OPJ_OFF_T count = std::min(size, left);
  input.position += static_cast<std::size_t>(count);
  return count;
}

OPJ_BOOL onSeekRead(OPJ_OFF_T position, void* data) {
  auto& input = *static_cast<OpjInput*>(data);
  if (position < 0 || static_cast<std::size_t>(position) > input.bytes.size()) return OPJ_FALSE;
  input.position = static_cast<std::size_t>(position);
  return OPJ_TRUE;
}

// Nothing may be thrown through the library.
bool makeRoom(OpjOutput& output, std::size_t end) {
  try {
    if (output.start + end > output.bytes.size()) output.bytes.resize(output.start + end);
  } catch (const std::exception&) {
    output.lacksMemory = true;
  }
  return !output.lacksMemory;
}

OPJ_SIZE_T onWrite(void* buffer, OPJ_SIZE_T size, void* data) {
  auto& output = *static_cast<OpjOutput*>(data);
  if (!makeRoom(output, output.position + size)) return kNothing;
  std::memcpy(output.bytes.data() + output.start + output.position, buffer, size);
  output.position += size;
  return size;
}

OPJ_BOOL onSeekWrite(OPJ_OFF_T position, void* data) {
  auto& output = *static_cast<OpjOutput*>(data);
  if (position < 0 || !makeRoom(output, static_cast<std::size_t>(position))) return OPJ_FALSE;
  output.position = static_cast<std::size_t>(position);
  return OPJ_TRUE;
}

OPJ_OFF_T onSkipWrite(OPJ_OFF_T size, void* data) {
  const auto& output = *static_cast<OpjOutput*>(data);
  return onSeekWrite(static_cast<OPJ_OFF_T>(output.position) + size, data) == OPJ_TRUE ? size : -1;
}

}  // namespace

void listenTo(opj_codec_t* codec, OpjComplaints& complaints) {
  opj_set_error_handler(codec, onError, &complaints);
  opj_set_warning_handler(codec, onWarning, &complaints);
  opj_set_info_handler(codec, onInformation, nullptr);
}

OpjStream openForReading(OpjInput& input) {
  OpjStream stream(opj_stream_create(kBuffer, OPJ_TRUE));
  if (stream == nullptr) return stream;
  opj_stream_set_read_function(stream.get(), onRead);
  opj_stream_set_skip_function(stream.get(), onSkipRead);
  opj_stream_set_seek_function(stream.get(), onSeekRead);
  opj_stream_set_user_data(stream.get(), &input, nullptr);
  opj_stream_set_user_data_length(stream.get(), input.bytes.size());
  return stream;
}

OpjStream openForWriting(OpjOutput& output) {
  OpjStream stream(opj_stream_create(kBuffer, OPJ_FALSE));
  if (stream == nullptr) return stream;
  opj_stream_set_write_function(stream.get(), onWrite);
  opj_stream_set_skip_function(stream.get(), onSkipWrite);
  opj_stream_set_seek_function(stream.get(), onSeekWrite);
  opj_stream_set_user_data(stream.get(), &output, nullptr);
  return stream;
}

}  // namespace ostra
