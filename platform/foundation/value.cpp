#include "platform/foundation/value.h"

namespace ostra {

std::optional<double> Value::number() const {
  if (const auto* integer = get<std::int64_t>()) return static_cast<double>(*integer);
  if (const auto* real = get<double>()) return *real;
  return std::nullopt;
}

bool operator==(const Value& a, const Value& b) { return a.storage_ == b.storage_; }

}  // namespace ostra
