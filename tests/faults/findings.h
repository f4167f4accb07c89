#pragma once
#include <string>

#include "tests/faults/mutation_matrix.h"

namespace ostra::test {

/// The folder of culprits: each with a text beside it that says what went wrong and how to see it again.
class Findings {
 public:
  Findings(const MutationPlan& plan, std::string kind) : plan_(plan), kind_(std::move(kind)) {}

  void keep(const Mutation& mutation, const std::string& trouble) const;
  /// Trouble that no single file is to blame for.
  void tell(const std::string& trouble) const;

 private:
  const MutationPlan& plan_;
  std::string kind_;
};

}  // namespace ostra::test
