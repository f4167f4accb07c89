#pragma once
#include <functional>
#include <string>
#include <vector>

#include "platform/foundation/file_calls.h"

namespace ostra::test {

/// The calls of the disk, of which one or more do not go as they should. They count from 1.
class FaultyFileCalls : public FileCalls {
 public:
  /// What happens in place of a call: an errno, or 0 to go on with it. Arguments are its number and its name.
  using Fault = std::function<int(int number, const std::string& name)>;

  FaultyFileCalls() = default;
  explicit FaultyFileCalls(Fault fault) : before_(std::move(fault)) {}

  /// The `number`th call answers `error` without being made.
  static Fault failing(int number, int error);
  /// That call and all after it.
  static Fault failingFrom(int number, int error);
  /// Every call of that name.
  static Fault failingAll(const std::string& name, int error);

  /// Runs `act` right before, or right after, the first call of that name.
  void runBefore(std::string name, std::function<void()> act);
  void runAfter(std::string name, std::function<void()> act);
  /// Ends the process at once right before or after the `number`th call.
  void killBefore(int number) { killBefore_ = number; }
  void killAfter(int number) { killAfter_ = number; }

  int count() const { return static_cast<int>(names_.size()); }
  const std::vector<std::string>& names() const { return names_; }

  int write(int file, std::span<const std::uint8_t> bytes, std::size_t& written) override;
  int reserve(int file, std::int64_t size) override;
  int setLength(int file, std::int64_t size) override;
  int close(int file) override;
  int sync(int file) override;
  int syncFileSystem(int file) override;
  int exchange(const Entry& a, const Entry& b) override;
  int rename(const Entry& from, const Entry& to) override;
  int renameToNewName(const Entry& from, const Entry& to) override;
  int link(const Entry& from, const Entry& to) override;
  int remove(const Entry& entry) override;
  int setOwner(int file, std::int64_t user, std::int64_t group) override;
  int setMode(int file, unsigned mode) override;
  int setAttribute(int file, const std::string& name, std::span<const char> value) override;
  int removeAttribute(int file, const std::string& name) override;

 private:
  struct Act {
    std::string name;
    std::function<void()> run;
  };

  int step(const char* name, const std::function<int()>& call);
  static void act(Act& once, const char* name);

  Fault before_;
  Act actBefore_;
  Act actAfter_;
  int killBefore_ = 0;
  int killAfter_ = 0;
  std::vector<std::string> names_;
};

}  // namespace ostra::test
