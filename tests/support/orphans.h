#pragma once

namespace ostra::test {

/// For its scope, processes whose parent ends become children of this one, so that it can see them.
class Orphanage {
 public:
  Orphanage();
  ~Orphanage();
  Orphanage(const Orphanage&) = delete;
  Orphanage& operator=(const Orphanage&) = delete;

  /// Waits a few seconds for every child of this process to end, and ends the rest. How many that were.
  static int endChildren();

 private:
  int before_ = 0;
};

}  // namespace ostra::test
