#include "platform/foundation/error.h"

#include <cstring>
#include <utility>

#include "platform/foundation/error_sentences.h"
#include "platform/foundation/url.h"

namespace ostra {

struct NSError::Contents {
  std::string domain;
  std::int64_t code;
  UserInfo userInfo;
  std::string debugDescription;
};

namespace {

std::string textUnder(std::string_view key, const NSError::UserInfo& info) {
  const auto found = info.find(key);
  const auto* text = found != info.end() ? std::get_if<std::string>(&found->second) : nullptr;
  return text != nullptr ? *text : std::string();
}

SentenceNames namesIn(const NSError::UserInfo& info) {
  const std::string path = textUnder(NSFilePathErrorKey, info);
  if (path.empty()) return {};
  const URL url = URL::fileURLWithPath(path);
  return {url.lastPathComponent(), url.deletingLastPathComponent().lastPathComponent(),
          textUnder(VolumeNameErrorKey, info)};
}

/// In English whatever the locale is: it stands in an English sentence.
std::optional<std::string> posixReason(std::int64_t code) {
  const char* reason = strerrordesc_np(static_cast<int>(code));
  if (reason == nullptr) return std::nullopt;
  return reason;
}

std::string shown(const NSError::UserInfoValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  const auto& error = std::get<std::shared_ptr<const NSError>>(value);
  return error != nullptr ? "{" + error->debugDescription() + "}" : "(null)";
}

std::string debugForm(const NSError& error) {
  std::string text = "Error Domain=" + error.domain() + " Code=" + std::to_string(error.code()) + " \"" +
                     error.localizedDescription() + "\"";
  std::string_view separator = " UserInfo={";
  for (const auto& [key, value] : error.userInfo()) {
    text.append(separator).append(key).append("=").append(shown(value));
    separator = ", ";
  }
  return error.userInfo().empty() ? text : text + "}";
}

}  // namespace

NSError::NSError(std::string_view domain, std::int64_t code, UserInfo userInfo) {
  auto contents = std::make_shared<Contents>(Contents{std::string(domain), code, std::move(userInfo), {}});
  contents_ = contents;
  contents->debugDescription = debugForm(*this);
}

const std::string& NSError::domain() const { return contents_->domain; }

std::int64_t NSError::code() const { return contents_->code; }

const NSError::UserInfo& NSError::userInfo() const { return contents_->userInfo; }

std::shared_ptr<const NSError> NSError::underlyingError() const {
  const auto found = userInfo().find(NSUnderlyingErrorKey);
  if (found == userInfo().end()) return nullptr;
  const auto* error = std::get_if<std::shared_ptr<const NSError>>(&found->second);
  return error != nullptr ? *error : nullptr;
}

std::string NSError::localizedDescription() const {
  if (std::string given = textUnder(NSLocalizedDescriptionKey, userInfo()); !given.empty()) return given;
  if (domain() == NSCocoaErrorDomain) {
    if (const auto sentence = cocoaSentence(code(), namesIn(userInfo()))) return *sentence;
  }
  const bool posix = domain() == NSPOSIXErrorDomain;
  return genericSentence(domain(), code(), posix ? posixReason(code()) : std::nullopt);
}

std::string NSError::debugDescription() const { return contents_->debugDescription; }

const char* NSError::what() const noexcept { return contents_->debugDescription.c_str(); }

}  // namespace ostra
