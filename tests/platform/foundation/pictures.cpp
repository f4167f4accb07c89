#include "tests/platform/foundation/pictures.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <vector>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/foundation/data.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_version.h"
#include "tests/support/child.h"

namespace ostra::test {
namespace {

std::string namesIn(const std::string& folder) {
  std::vector<std::string> names;
  if (std::filesystem::exists(folder)) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  std::string line;
  for (const std::string& name : names) line += (line.empty() ? "" : " ") + name;
  return line;
}

}  // namespace

PicturesTest::PicturesTest() {
  for (const char* name : {"pictures", "cache"}) {
    std::filesystem::create_directory(folder_.path(name));
    giveToOrdinaryUser(folder_.path(name).c_str());
  }
  giveToOrdinaryUser(folder_.path().c_str());
  setenv("XDG_CACHE_HOME", folder_.path("cache").c_str(), 1);
}

PicturesTest::~PicturesTest() { unsetenv("XDG_CACHE_HOME"); }

URL PicturesTest::makePicture(std::string_view name) const {
  writeFile(picture(name), kOld);
  giveToOrdinaryUser(picture(name).c_str());
  return versioned(url(name));
}

std::string PicturesTest::pictureNames() const { return namesIn(folder_.path("pictures")); }

std::string PicturesTest::cacheNames() const { return namesIn(folder_.path("cache/ostra")); }

std::string textOf(const std::string& path) {
  const Bytes bytes = readFile(path);
  return std::string(bytes.begin(), bytes.end());
}

URL versioned(const URL& url) {
  struct stat status = {};
  EXPECT_EQ(stat(url.path().c_str(), &status), 0);
  return url.withFileVersion(fileVersionOf(status));
}

void rewrite(const URL& picture, std::string_view contents) {
  NSFileManager& manager = NSFileManager::defaultManager();
  const URL folder = manager.URLForDirectory(NSSearchPathDirectory::itemReplacement,
                                             NSSearchPathDomainMask::user, picture, true);
  const URL fresh = folder.appendingPathComponent(picture.lastPathComponent());
  writeToURL(ByteView(reinterpret_cast<const std::uint8_t*>(contents.data()), contents.size()), fresh);
  manager.replaceItemAtURL(picture, fresh, std::nullopt, NSFileManagerItemReplacementOptions::none);
  manager.removeItemAtURL(folder);
}

std::int64_t codeOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const NSError& error) {
    EXPECT_EQ(error.domain(), NSCocoaErrorDomain);
    return error.code();
  }
  return 0;
}

std::string sentenceOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const NSError& error) {
    return error.localizedDescription();
  }
  return "nothing was thrown";
}

int openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<int>(std::distance(begin(all), end(all)));
}

bool keepsUserAttributes(const std::string& path) {
  const bool kept = setxattr(path.c_str(), "user.ostra.probe", "x", 1, 0) == 0;
  removexattr(path.c_str(), "user.ostra.probe");
  return kept;
}

std::string userAttribute(const std::string& path, const char* name) {
  char value[256];
  const ssize_t size = getxattr(path.c_str(), name, value, sizeof value);
  return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
}

void setUserAttribute(const std::string& path, const char* name, std::string_view value) {
  ASSERT_EQ(setxattr(path.c_str(), name, value.data(), value.size(), 0), 0) << name;
}

unsigned modeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

bool mountSmallDisk(const std::string& folder, const char* options) {
  // Private, so that the mount ends with the process and nobody else sees it.
  return unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0;
}

}  // namespace ostra::test
