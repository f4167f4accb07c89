#include "host/file_item_provider.h"

#include <algorithm>

#include "host/picture_file.h"
#include "platform/dispatch/queue.h"
#include "platform/types/ut_type.h"

namespace ostra {
namespace {

UTType contentType(const URL& url) {
  return UTType::withFilenameExtension(url.pathExtension()).value_or(UTType::data());
}

/// Whether `registered` serves a request for `asked`, an identifier.
bool serves(const UTType& registered, std::string_view asked) {
  const auto type = UTType::withIdentifier(asked);
  return type && registered.conformsTo(*type);
}

NSError unavailable() { return NSError(NSItemProviderErrorDomain, NSItemProviderItemUnavailableError); }

}  // namespace

FileItemProvider::FileItemProvider(const std::string& path, std::size_t index, std::shared_ptr<Work> work)
    : url_(URL::fileURLWithPath(absolutePath(path))), index_(index), work_(std::move(work)) {}

std::vector<std::string> FileItemProvider::registeredTypeIdentifiers() const {
  return {contentType(url_).identifier(), UTType::fileURL().identifier()};
}

std::optional<std::string> FileItemProvider::suggestedName() const { return url_.lastPathComponent(); }

bool FileItemProvider::hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const {
  if (unusable_) return false;
  return serves(contentType(url_), typeIdentifier) || serves(UTType::fileURL(), typeIdentifier);
}

void FileItemProvider::loadInPlaceFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                                      InPlaceHandler completionHandler) {
  load(serves(contentType(url_), typeIdentifier),
       [handler = std::move(completionHandler)](const std::optional<URL>& url,
                                                const std::exception_ptr& error) {
         handler(url, url.has_value(), error);
       });
}

void FileItemProvider::loadItemForTypeIdentifier(std::string_view typeIdentifier,
                                                 ItemHandler completionHandler) {
  load(serves(UTType::fileURL(), typeIdentifier),
       [handler = std::move(completionHandler)](const std::optional<URL>& url,
                                                const std::exception_ptr& error) {
         handler(url ? Item(*url) : Item(), error);
       });
}

// The path is looked at even for a type that is not on offer: why it is unusable is the better answer.
void FileItemProvider::load(bool available, Load answer) {
  const auto body = [this, available, answer = std::move(answer)] {
    std::optional<URL> url;
    std::exception_ptr error;
    try {
      url = url_.withFileVersion(openedVersion(url_.path()));
      if (!available) {
        url.reset();
        error = std::make_exception_ptr(unavailable());
      }
    } catch (const NSError& failure) {
      unusable_ = true;
      error = std::make_exception_ptr(failure);
    } catch (...) {  // of the moment, not of the file
      url.reset();
      error = std::current_exception();
    }
    answer(url, error);
  };
  globalQueue(QualityOfService::userInitiated)
      .async([self = shared_from_this(), name = url_.lastPathComponent(), body] {
        self->work_->run(self->index_, name, body);
      });
}

}  // namespace ostra
