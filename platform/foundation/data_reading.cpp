#include "platform/foundation/data_reading.h"

#include "platform/foundation/file_reading.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

class FileReading : public DataReading {
 public:
  Bytes read(const URL& url) override { return readSmallFile(url); }
};

}  // namespace

DataReading& DataReading::standard() {
  static FileReading reading;
  return reading;
}

Bytes dataWithContentsOfURL(const URL& url) { return Service<DataReading>::current().read(url); }

}  // namespace ostra
