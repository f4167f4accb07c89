#pragma once
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "platform/foundation/url.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {

inline constexpr std::string_view kOld = "the old picture, which is the longer one of the two";
inline constexpr std::string_view kNew = "the new picture, as it should be";

/// A test with a folder of pictures ("pictures") and a user whose cache is another folder ("cache"), both in
/// one temporary folder that everybody may enter.
class PicturesTest : public ::testing::Test {
 protected:
  PicturesTest();
  ~PicturesTest() override;

  std::string picture(std::string_view name) const { return folder_.path("pictures/" + std::string(name)); }
  URL url(std::string_view name) const { return URL::fileURLWithPath(picture(name)); }
  /// A picture with the old contents; its URL carries the version of the file.
  URL makePicture(std::string_view name) const;

  /// All entries of the folder of pictures, hidden ones too, as one line.
  std::string pictureNames() const;
  std::string cacheNames() const;

  TemporaryFolder folder_;
};

std::string textOf(const std::string& path);
URL versioned(const URL& url);

/// The four calls with which a picture is rewritten in place. Throws what they throw.
void rewrite(const URL& picture, std::string_view contents = kNew);

/// The code of the error that `action` throws; 0 when it throws none.
std::int64_t codeOf(const std::function<void()>& action);
std::string sentenceOf(const std::function<void()>& action);

int openDescriptors();

/// Whether the file system of `path` keeps user attributes.
bool keepsUserAttributes(const std::string& path);
std::string userAttribute(const std::string& path, const char* name);
void setUserAttribute(const std::string& path, const char* name, std::string_view value);
unsigned modeOf(const std::string& path);

/// A small memory disk at `folder`, seen by this process only; in a child process. False when that is not
/// allowed.
bool mountSmallDisk(const std::string& folder, const char* options);

}  // namespace ostra::test
