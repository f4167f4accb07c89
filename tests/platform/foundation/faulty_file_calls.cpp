#include "tests/platform/foundation/faulty_file_calls.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace ostra::test {

FaultyFileCalls::Fault FaultyFileCalls::failing(int number, int error) {
  return [=](int n, const std::string&) { return n == number ? error : 0; };
}

FaultyFileCalls::Fault FaultyFileCalls::failingFrom(int number, int error) {
  return [=](int n, const std::string&) { return n >= number ? error : 0; };
}

FaultyFileCalls::Fault FaultyFileCalls::failingAll(const std::string& name, int error) {
  return [=](int, const std::string& n) { return n == name ? error : 0; };
}

void FaultyFileCalls::runBefore(std::string name, std::function<void()> act) {
  actBefore_ = {std::move(name), std::move(act)};
}

void FaultyFileCalls::runAfter(std::string name, std::function<void()> act) {
  actAfter_ = {std::move(name), std::move(act)};
}

void FaultyFileCalls::act(Act& once, const char* name) {
  if (once.run && once.name == name) std::exchange(once.run, nullptr)();
}

int FaultyFileCalls::step(const char* name, const std::function<int()>& call) {
  names_.emplace_back(name);
  if (count() == killBefore_) raise(SIGKILL);
  act(actBefore_, name);
  const int fault = before_ ? before_(count(), name) : 0;
  const int error = fault != 0 ? fault : call();
  act(actAfter_, name);
  if (count() == killAfter_) raise(SIGKILL);
  return error;
}

/// In small pieces, so that there is an instant at which a part of the file is written.
int FaultyFileCalls::write(int file, std::span<const std::uint8_t> bytes, std::size_t& written) {
  constexpr std::size_t kPiece = 8;
  return step("write",
              [&] { return FileCalls::write(file, bytes.first(std::min(kPiece, bytes.size())), written); });
}

int FaultyFileCalls::reserve(int file, std::int64_t size) {
  return step("reserve", [&] { return FileCalls::reserve(file, size); });
}

int FaultyFileCalls::setLength(int file, std::int64_t size) {
  return step("setLength", [&] { return FileCalls::setLength(file, size); });
}

/// Closed in any case, as the system does it.
int FaultyFileCalls::close(int file) {
  const int closed = FileCalls::close(file);
  return step("close", [&] { return closed; });
}

int FaultyFileCalls::sync(int file) {
  return step("sync", [&] { return FileCalls::sync(file); });
}

int FaultyFileCalls::syncFileSystem(int file) {
  return step("syncFileSystem", [&] { return FileCalls::syncFileSystem(file); });
}

int FaultyFileCalls::exchange(const Entry& a, const Entry& b) {
  return step("exchange", [&] { return FileCalls::exchange(a, b); });
}

int FaultyFileCalls::rename(const Entry& from, const Entry& to) {
  return step("rename", [&] { return FileCalls::rename(from, to); });
}

int FaultyFileCalls::renameToNewName(const Entry& from, const Entry& to) {
  return step("renameToNewName", [&] { return FileCalls::renameToNewName(from, to); });
}

int FaultyFileCalls::link(const Entry& from, const Entry& to) {
  return step("link", [&] { return FileCalls::link(from, to); });
}

int FaultyFileCalls::remove(const Entry& entry) {
  return step("remove", [&] { return FileCalls::remove(entry); });
}

int FaultyFileCalls::setOwner(int file, std::int64_t user, std::int64_t group) {
  return step("setOwner", [&] { return FileCalls::setOwner(file, user, group); });
}

int FaultyFileCalls::setMode(int file, unsigned mode) {
  return step("setMode", [&] { return FileCalls::setMode(file, mode); });
}

int FaultyFileCalls::setAttribute(int file, const std::string& name, std::span<const char> value) {
  return step("setAttribute", [&] { return FileCalls::setAttribute(file, name, value); });
}

int FaultyFileCalls::removeAttribute(int file, const std::string& name) {
  return step("removeAttribute", [&] { return FileCalls::removeAttribute(file, name); });
}

}  // namespace ostra::test
