#pragma once
#include <string>
#include <vector>

#include "tests/support/fault_injector.h"

namespace ostra::test {

struct NamedFault {
  std::string name;
  Fault fault;
};

/// What is tried at each call: errors and short writes, once and from then on.
std::vector<NamedFault> errorFaults();

}  // namespace ostra::test
