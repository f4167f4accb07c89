#pragma once
#include <stdexcept>

namespace ostra {

/// Nothing can be started as asked. The sentence is for the user; the program ends with status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace ostra
