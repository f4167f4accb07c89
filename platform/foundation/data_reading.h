#pragma once
#include "platform/foundation/bytes.h"
#include "platform/foundation/url.h"

namespace ostra {

/// The whole contents of a file URL, at most 16 MiB. Throws `NSError`.
Bytes dataWithContentsOfURL(const URL& url);

/// The service behind `dataWithContentsOfURL`. Replaceable through `Service<DataReading>`.
class DataReading {
 public:
  virtual ~DataReading() = default;
  virtual Bytes read(const URL& url) = 0;
  static DataReading& standard();
};

}  // namespace ostra
