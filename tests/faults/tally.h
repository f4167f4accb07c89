#pragma once
#include <cstdio>
#include <string>

namespace ostra::test {

/// The counts of one matrix on one road: a line of the table, columns separated by tabs.
class Tally {
 public:
  Tally(std::string matrix, std::string road) : matrix_(std::move(matrix)), road_(std::move(road)) {}

  void count() { ++points_; }
  void countNew() { ++new_; }
  void countStrays(int strays) { strays_ += strays; }
  void lost(const std::string& at, const std::string& words) { tell("lost", lost_, at, words); }
  void untrue(const std::string& at, const std::string& words) { tell("untrue", untrue_, at, words); }

  int losses() const { return lost_; }
  bool isGood() const { return points_ > 0 && lost_ == 0 && untrue_ == 0; }

  void print() const {
    std::printf("%s\t%s\t%d\t%d\t%d\t%d\t%d\n", matrix_.c_str(), road_.c_str(), points_, lost_, untrue_, new_,
                strays_);
    std::fflush(stdout);
  }

 private:
  void tell(const char* what, int& counter, const std::string& at, const std::string& words) const {
    constexpr int kMostTold = 8;
    if (++counter <= kMostTold)
      std::fprintf(stderr, "%s: %s, %s, %s: %s\n", what, matrix_.c_str(), road_.c_str(), at.c_str(),
                   words.c_str());
  }

  std::string matrix_, road_;
  int points_ = 0, lost_ = 0, untrue_ = 0, new_ = 0, strays_ = 0;
};

}  // namespace ostra::test
