#pragma once
#include "tests/doubles/call_log.h"

/// A platform of doubles alone: every symbol that the actions ask a linker for, and nothing else. It touches
/// no disk, no library and no window. What it lacks, the actions have no right to use.
namespace ostra::test {

/// What all doubles of the stand-in note.
CallLog& standInLog();

/// The one double of a kind that the stand-in uses everywhere.
template <class Double>
Double& standIn() {
  static Double instance(standInLog());
  return instance;
}

}  // namespace ostra::test
