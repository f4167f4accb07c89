#include "platform/foundation/characters.h"
#include "platform/foundation/object.h"
#include "platform/foundation/service.h"
#include "tests/doubles/bundle.h"
#include "tests/doubles/data_writing.h"
#include "tests/doubles/file_coordination.h"
#include "tests/doubles/file_manager.h"
#include "tests/replaceable/stand_in.h"

namespace ostra {

test::CallLog& test::standInLog() {
  static CallLog log;
  return log;
}

NSObject::~NSObject() = default;

std::string_view trimWhitespaceAndNewlines(std::string_view text) {
  constexpr std::string_view blanks = " \t\n";
  const auto first = text.find_first_not_of(blanks);
  return first == text.npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

NSBundle& NSBundle::mainBundle() { return standard(); }
NSBundle& NSBundle::standard() { return test::standIn<test::RecordingBundle>(); }

// Errors.

struct NSError::Contents {
  std::string domain;
  std::int64_t code;
  UserInfo userInfo;
};

NSError::NSError(std::string_view domain, std::int64_t code, UserInfo userInfo)
    : contents_(std::make_shared<const Contents>(Contents{std::string(domain), code, std::move(userInfo)})) {}
const std::string& NSError::domain() const { return contents_->domain; }
std::int64_t NSError::code() const { return contents_->code; }
std::string NSError::localizedDescription() const {
  const auto found = contents_->userInfo.find(NSLocalizedDescriptionKey);
  return found != contents_->userInfo.end() ? std::get<std::string>(found->second) : "an error";
}
std::string NSError::debugDescription() const { return domain() + " " + std::to_string(code()); }
const char* NSError::what() const noexcept { return contents_->domain.c_str(); }

std::string localizedDescription(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const LocalizedError& error) {
    return error.errorDescription().value_or("an error");
  } catch (const NSError& error) {
    return error.localizedDescription();
  } catch (...) {
    return "an error";
  }
}

// URLs.

URL::URL(std::string scheme, std::string path) : scheme_(std::move(scheme)), path_(std::move(path)) {}
URL URL::fileURLWithPath(std::string_view path) { return {"file", std::string(path)}; }
std::optional<URL> URL::withDataRepresentation(ByteView data) {
  return fileURLWithPath({reinterpret_cast<const char*>(data.data()), data.size()});
}
bool URL::isFileURL() const { return scheme_ == "file"; }
const std::string& URL::path() const { return path_; }
std::string URL::lastPathComponent() const { return path_.substr(path_.rfind('/') + 1); }
URL URL::deletingLastPathComponent() const { return {scheme_, path_.substr(0, path_.rfind('/'))}; }
URL URL::deletingPathExtension() const { return {scheme_, path_.substr(0, path_.rfind('.'))}; }
URL URL::appendingPathExtension(std::string_view extension) const {
  return {scheme_, path_ + "." + std::string(extension)};
}
URL URL::appendingPathComponent(std::string_view component) const {
  return {scheme_, path_ + "/" + std::string(component)};
}
const std::optional<FileVersion>& URL::fileVersion() const { return version_; }
bool URL::startAccessingSecurityScopedResource() const { return true; }
void URL::stopAccessingSecurityScopedResource() const {}

// Files.

NSFileManager& NSFileManager::defaultManager() { return test::standIn<test::RecordingFileManager>(); }

void writeToURL(ByteView data, const URL& url, NSDataWritingOptions options) {
  test::standIn<test::RecordingDataWriting>().write(data, url, options);
}

NSFileCoordinator::NSFileCoordinator(std::shared_ptr<NSFilePresenter> presenter)
    : presenter_(std::move(presenter)) {}
std::optional<NSError> NSFileCoordinator::coordinateWritingItemAtURL(const URL& url,
                                                                     NSFileCoordinatorWritingOptions options,
                                                                     const Accessor& byAccessor) {
  return test::standIn<test::RecordingFileCoordination>().coordinateWriting(presenter_.get(), url, options,
                                                                            byAccessor);
}

}  // namespace ostra
