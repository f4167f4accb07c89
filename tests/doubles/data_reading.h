#pragma once
#include <map>

#include "platform/foundation/data_reading.h"
#include "platform/foundation/error.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// A disk in memory, by path; everything else cannot be read.
class RecordingDataReading : public DataReading {
 public:
  explicit RecordingDataReading(CallLog& log) : log_(log) {}

  Bytes read(const URL& url) override {
    log_.add("read " + url.path());
    const auto found = files.find(url.path());
    if (found == files.end()) throw NSError(NSCocoaErrorDomain, NSFileReadNoSuchFileError);
    return found->second;
  }

  std::map<std::string, Bytes> files;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
