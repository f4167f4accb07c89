#pragma once
#include <string_view>

namespace ostra::test {

/// The name of a call that looks at, opens, writes, moves or removes files; empty for every other call.
std::string_view fileCallName(long number);

bool isFlush(long number);
/// Whether the call writes, and its third argument is how many bytes.
bool isCountedWrite(long number);

}  // namespace ostra::test
