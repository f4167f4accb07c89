#pragma once
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>

namespace ostra {

/// Watches over the work on the items of one request: tells which one is in work, and starts no further one
/// once a signal asked to stop. Then the item in work ends whole, the main loop stops, and the request stays
/// unfinished. Any thread.
class Work {
 public:
  using ItemBegan = std::function<void(std::size_t index, const std::string& name)>;

  /// `itemBegan` may be empty.
  explicit Work(ItemBegan itemBegan) : itemBegan_(std::move(itemBegan)) {}

  /// Runs the work on an item; or, after a signal, lets it be and stops the main loop.
  void run(std::size_t index, const std::string& name, const std::function<void()>& work);
  /// After a signal: stops the main loop now if nothing is in work, as before the first item.
  void stopIfSignalled();

 private:
  bool begin();
  void end();
  void stopIfAsked();

  const ItemBegan itemBegan_;
  std::mutex mutex_;
  // An item that is asked for again, from within the answer to the first asking, is in work twice.
  int inWork_ = 0;
  // For good: the process may be on its way out when the next item is asked for.
  bool stopped_ = false;
};

}  // namespace ostra
