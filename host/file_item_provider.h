#pragma once
#include <atomic>
#include <memory>

#include "host/work.h"
#include "platform/extension/item_provider.h"

namespace ostra {

/// A file of the command line as an item. Its content type is that of its name's extension, which is what a
/// selected file registers; what it really is shows when it is read. It is always the file itself, never a
/// copy, and its URL carries the version that was found. A path that cannot be used is an error with the
/// reason, and from then on no file URL either, so that it is the reason that the user reads.
///
/// Made with `std::make_shared`. Its handlers run on a background thread; after a signal asked to stop, none
/// is called any more.
class FileItemProvider : public NSItemProvider, public std::enable_shared_from_this<FileItemProvider> {
 public:
  /// `index` counts the items of the request from 0.
  FileItemProvider(const std::string& path, std::size_t index, std::shared_ptr<Work> work);

  std::vector<std::string> registeredTypeIdentifiers() const override;
  std::optional<std::string> suggestedName() const override;
  bool hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const override;
  void loadInPlaceFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                      InPlaceHandler completionHandler) override;
  void loadItemForTypeIdentifier(std::string_view typeIdentifier, ItemHandler completionHandler) override;

 private:
  using Load = std::function<void(const std::optional<URL>& url, const std::exception_ptr& error)>;
  void load(bool available, Load answer);

  const URL url_;
  const std::size_t index_;
  const std::shared_ptr<Work> work_;
  std::atomic<bool> unusable_{false};
};

}  // namespace ostra
