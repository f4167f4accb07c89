#pragma once
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra {

/// One data set: its head and its value, as views of the records.
struct IptcDataSet {
  std::uint8_t record = 0;
  std::uint8_t number = 0;
  ByteView whole;
  ByteView value;
};

/// The data sets from the beginning up to the first bytes that are none.
std::vector<IptcDataSet> splitIptc(ByteView records);
void appendDataSet(Bytes& records, std::uint8_t record, std::uint8_t number, ByteView value);

/// A data set of record 2 that the tree names. A repeatable one is an array of strings, others one string.
struct IptcTag {
  std::uint8_t number;
  std::string_view key;
  bool repeatable = false;
};
/// In ascending order.
std::span<const IptcTag> iptcTags();
const IptcTag* findIptcTag(std::uint8_t number);

}  // namespace ostra
