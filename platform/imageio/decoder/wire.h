#pragma once
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/foundation/value.h"

namespace ostra {

/// Plain structs as bytes, between two processes of one program on one machine: host byte order, lengths
/// as 64 bits. A struct takes part by `template <class Wire> void cross(Wire& wire, Struct& value)`, which
/// names its members once, for both directions.

template <class T>
concept WireNumber = std::is_arithmetic_v<T> || std::is_enum_v<T>;

/// Values into bytes.
class WireWriter {
 public:
  template <class... T>
  void operator()(T&... values) {
    (put(values), ...);
  }
  Bytes take() && { return std::move(bytes_); }

 private:
  void append(const void* data, std::size_t size);
  void putSize(std::size_t size);

  template <WireNumber T>
  void put(const T& number) {
    append(&number, sizeof number);
  }
  void put(const std::string& text);
  void put(const Bytes& bytes);
  void put(Value& value);
  template <class T, std::size_t n>
  void put(std::array<T, n>& values) {
    for (T& value : values) put(value);
  }
  template <class T>
  void put(std::optional<T>& value) {
    put(value.has_value());
    if (value) put(*value);
  }
  template <class T>
  void put(std::vector<T>& values) {
    putSize(values.size());
    for (T& value : values) put(value);
  }
  template <class A, class B>
  void put(std::pair<A, B>& value) {
    put(value.first);
    put(value.second);
  }
  void put(Dictionary& values);
  template <class... T>
  void put(std::variant<T...>& value) {
    put(static_cast<std::uint8_t>(value.index()));
    std::visit([this](auto& alternative) { this->put(alternative); }, value);
  }
  template <class T>
  requires requires(WireWriter& wire, T& value) { cross(wire, value); }
  void put(T& value) { cross(*this, value); }

  Bytes bytes_;
};

/// Bytes into values, from a process that is not trusted: nothing is read beyond the bytes, nothing allocated
/// beyond their number, nesting is bounded. After the first thing that cannot be, everything reads as empty
/// and `complete` stays false.
class WireReader {
 public:
  explicit WireReader(ByteView bytes) : rest_(bytes) {}

  template <class... T>
  void operator()(T&... values) {
    (get(values), ...);
  }
  /// Whether everything was read, and nothing is left over.
  bool complete() const { return !failed_ && rest_.empty(); }

 private:
  bool take(void* into, std::size_t size);
  /// A number of elements, none of which takes less than a byte.
  std::size_t getSize();
  void fail() { failed_ = true; }

  template <WireNumber T>
  void get(T& number) {
    number = T{};
    if constexpr (std::is_same_v<T, bool>) {
      std::uint8_t byte = 0;
      get(byte);
      if (byte > 1) fail();
      number = byte == 1;
    } else {
      take(&number, sizeof number);
    }
  }
  void get(std::string& text);
  void get(Bytes& bytes);
  void get(Value& value);
  template <class T, std::size_t n>
  void get(std::array<T, n>& values) {
    for (T& value : values) get(value);
  }
  template <class T>
  void get(std::optional<T>& value) {
    bool present = false;
    get(present);
    value.reset();
    if (present) get(value.emplace());
  }
  template <class T>
  void get(std::vector<T>& values) {
    values.clear();
    for (std::size_t left = getSize(); left > 0 && !failed_; --left) get(emptyElement(values));
  }
  template <class A, class B>
  void get(std::pair<A, B>& value) {
    get(value.first);
    get(value.second);
  }
  void get(Dictionary& values);
  template <class... T>
  void get(std::variant<T...>& value) {
    std::uint8_t index = 0;
    get(index);
    getAlternative(value, index, std::index_sequence_for<T...>());
  }
  template <class T>
  requires requires(WireReader& wire, T& value) { cross(wire, value); }
  void get(T& value) { cross(*this, value); }

  template <class T>
  static T& emptyElement(std::vector<T>& values) {
    if constexpr (std::is_same_v<T, Value>) {
      return values.emplace_back(false);
    } else {
      return values.emplace_back();
    }
  }
  template <class Variant, std::size_t... i>
  void getAlternative(Variant& value, std::size_t index, std::index_sequence<i...>) {
    const bool known = ((i == index && (get(value.template emplace<i>()), true)) || ...);
    if (!known) fail();
  }

  ByteView rest_;
  int depth_ = 0;
  bool failed_ = false;
};

}  // namespace ostra
