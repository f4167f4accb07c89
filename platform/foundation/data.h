#pragma once
#include "platform/foundation/bytes.h"
#include "platform/foundation/url.h"

namespace ostra {

/// How bytes reach a file.
enum class NSDataWritingOptions : unsigned {
  /// Written into the file itself, made or emptied first. Links are followed, an existing file keeps its
  /// identity
  /// and attributes. Atomicity is not promised; a file that this call created and could not finish is
  /// removed.
  none = 0,
  /// Written beside it and renamed over it: the name holds the old or the new file, never part of one.
  atomic = 1,
};

/// Writes `data` to a file URL and waits until it is on the disk. Throws `NSError`.
void writeToURL(ByteView data, const URL& url, NSDataWritingOptions options = NSDataWritingOptions::none);

/// The service behind `writeToURL`. Replaceable through `Service<DataWriting>`.
class DataWriting {
 public:
  virtual ~DataWriting() = default;
  virtual void write(ByteView data, const URL& url, NSDataWritingOptions options) = 0;
  static DataWriting& standard();
};

}  // namespace ostra
