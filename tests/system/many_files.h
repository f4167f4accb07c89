#pragma once
#include <string>
#include <vector>

#include "tests/support/process_tree.h"
#include "tests/system/installed_program.h"

namespace ostra::test {

/// What the program held at a moment of a request.
struct Moment {
  std::size_t filesDone;  // by then
  ProcessTree program;
  std::size_t memoryOfAll;    // the program's and its decoders'
  std::size_t entriesBeside;  // in its folders and beside the pictures
};

struct ManyFilesRun {
  ProgramResult result;
  std::size_t filesDone = 0;
  std::vector<Moment> moments;

  std::size_t most(std::size_t (*of)(const Moment&)) const;
};

/// One request over pictures that lie in a folder of their own and are rewritten in place, watched all along.
ManyFilesRun convertManyFiles(const InstalledProgram& program, const std::string& action,
                              const std::vector<std::string>& paths, std::chrono::milliseconds pause);

/// What the program holds one by one, in the order of the columns of a table.
struct Holding {
  const char* name;
  std::size_t (*of)(const Moment&);
  std::size_t slack;  // what the same work may differ by from one time to another
};
/// `memorySlack` is that of the memory; how much memory a moment takes depends on the pictures.
std::vector<Holding> holdings(std::size_t memorySlack);

/// The most that was held between two numbers of files done.
std::size_t mostBetween(const ManyFilesRun& run, const Holding& holding, std::size_t from, std::size_t to);

/// A sentence for all of which more was held over the last `span` files than over as many after `warmUp`.
std::vector<std::string> whatGrew(const ManyFilesRun& run, const std::vector<Holding>& holdings,
                                  std::size_t warmUp, std::size_t span);

}  // namespace ostra::test
