#pragma once
#include "platform/foundation/value.h"

namespace ostra {

/// Reads {IPTC} from IIM records (IIM 4.2, record 2). Lenient: what follows the last whole data set is not
/// read.
void readIptc(ByteView records, Dictionary& tree);

/// The records with what differs between the group before and after: a key that is gone takes its data sets
/// with it. The text of new values is UTF-8; records that do not say so (1:90) are turned to UTF-8 when they
/// need it. Empty records are built anew.
Bytes patchIptc(ByteView records, const Dictionary& before, const Dictionary& after);

}  // namespace ostra
