#pragma once
#include <mutex>
#include <string>
#include <vector>

namespace ostra::test {

/// What the doubles of one test were asked, in the order over all of them. Any thread.
class CallLog {
 public:
  void add(std::string call) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
  }
  std::vector<std::string> calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }
  /// The calls that begin with one of the words, in their order.
  std::vector<std::string> callsBeginningWith(const std::vector<std::string>& words) const {
    std::vector<std::string> chosen;
    for (const std::string& call : calls()) {
      for (const std::string& word : words) {
        if (call.compare(0, word.size(), word) == 0) chosen.push_back(call);
      }
    }
    return chosen;
  }
  void clear() {
    const std::lock_guard lock(mutex_);
    calls_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
};

}  // namespace ostra::test
