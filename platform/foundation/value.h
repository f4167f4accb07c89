#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

class Value;
using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value, std::less<>>;

/// One value of a property list or of a picture's properties. Text is UTF-8. A plain value; equality is
/// exact: the integer 1, the double 1.0 and `true` are three different values.
class Value {
 public:
  using Storage = std::variant<bool, std::int64_t, double, std::string, Bytes, Array, Dictionary>;

  Value(bool value) : storage_(value) {}
  Value(int value) : storage_(std::int64_t{value}) {}
  Value(std::int64_t value) : storage_(value) {}
  Value(double value) : storage_(value) {}
  Value(const char* text) : storage_(std::string(text)) {}
  Value(std::string_view text) : storage_(std::string(text)) {}
  Value(std::string text) : storage_(std::move(text)) {}
  Value(Bytes bytes) : storage_(std::move(bytes)) {}
  Value(Array values) : storage_(std::move(values)) {}
  Value(Dictionary values) : storage_(std::move(values)) {}

  /// The value as a `T` of `Storage`, or null when it is of another kind.
  template <class T>
  const T* get() const {
    return std::get_if<T>(&storage_);
  }
  template <class T>
  T* get() {
    return std::get_if<T>(&storage_);
  }

  /// Integers and doubles alike, as a double; nothing for every other kind.
  std::optional<double> number() const;

  const Storage& storage() const { return storage_; }
  friend bool operator==(const Value&, const Value&);

 private:
  Storage storage_;
};

}  // namespace ostra
