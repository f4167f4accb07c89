#include "tests/system/error_faults.h"

#include <cerrno>
#include <cstring>

namespace ostra::test {

std::vector<NamedFault> errorFaults() {
  std::vector<NamedFault> faults;
  for (const bool lasting : {false, true}) {
    for (const int error : {EIO, ENOSPC, EDQUOT, EINTR, EPERM, ENOMEM}) {
      Fault fault;
      fault.kind = Fault::Kind::error;
      fault.error = error;
      fault.lasting = lasting;
      faults.push_back({std::string(strerrorname_np(error)) + (lasting ? " from then on" : ""), fault});
    }
    Fault fault;
    fault.kind = Fault::Kind::shortWrite;
    fault.lasting = lasting;
    faults.push_back({std::string("short write") + (lasting ? " from then on" : ""), fault});
  }
  return faults;
}

}  // namespace ostra::test
