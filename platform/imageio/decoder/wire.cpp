#include "platform/imageio/decoder/wire.h"

namespace ostra {
namespace {

// Property trees are three levels deep; XMP structures a few more.
constexpr int kDeepest = 64;

}  // namespace

void WireWriter::append(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  bytes_.insert(bytes_.end(), bytes, bytes + size);
}

void WireWriter::putSize(std::size_t size) { put(std::uint64_t{size}); }

void WireWriter::put(const std::string& text) {
  putSize(text.size());
  append(text.data(), text.size());
}

void WireWriter::put(const Bytes& bytes) {
  putSize(bytes.size());
  append(bytes.data(), bytes.size());
}

void WireWriter::put(Value& value) {
  Value::Storage storage = value.storage();
  put(storage);
}

void WireWriter::put(Dictionary& values) {
  putSize(values.size());
  for (auto& [key, value] : values) {
    put(key);
    put(value);
  }
}

bool WireReader::take(void* into, std::size_t size) {
  if (failed_ || size > rest_.size()) {
    fail();
    return false;
  }
  if (size > 0) std::memcpy(into, rest_.data(), size);
  rest_ = rest_.subspan(size);
  return true;
}

std::size_t WireReader::getSize() {
  std::uint64_t size = 0;
  get(size);
  if (size > rest_.size()) fail();
  return failed_ ? 0 : static_cast<std::size_t>(size);
}

void WireReader::get(std::string& text) {
  text.resize(getSize());
  take(text.data(), text.size());
}

void WireReader::get(Bytes& bytes) {
  bytes.resize(getSize());
  take(bytes.data(), bytes.size());
}

void WireReader::get(Value& value) {
  if (++depth_ > kDeepest) fail();
  Value::Storage storage;
  if (!failed_) get(storage);
  --depth_;
  value = std::visit([](auto& alternative) { return Value(std::move(alternative)); }, storage);
}

void WireReader::get(Dictionary& values) {
  values.clear();
  for (std::size_t left = getSize(); left > 0 && !failed_; --left) {
    std::string key;
    Value value(false);
    get(key);
    get(value);
    values.insert_or_assign(std::move(key), std::move(value));
  }
}

}  // namespace ostra
