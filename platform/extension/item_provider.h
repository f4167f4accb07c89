#pragma once
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/foundation/error.h"
#include "platform/foundation/url.h"

namespace ostra {

/// One selected item of a request. Every load calls its handler exactly once, on a thread other than the
/// caller's; what the handler is given is valid only until it returns. Handlers must not throw.
class NSItemProvider {
 public:
  /// The file, or nothing; whether it is the file itself and not a copy; the error, or null.
  using InPlaceHandler =
      std::function<void(const std::optional<URL>& url, bool isInPlace, const std::exception_ptr& error)>;
  /// A loaded item of another kind than a URL or bytes is `std::monostate` too.
  using Item = std::variant<std::monostate, URL, Bytes>;
  using ItemHandler = std::function<void(const Item& item, const std::exception_ptr& error)>;

  virtual ~NSItemProvider() = default;

  /// In the order of registration, best first.
  virtual std::vector<std::string> registeredTypeIdentifiers() const = 0;
  /// The name that the user knows the item by.
  virtual std::optional<std::string> suggestedName() const = 0;
  virtual bool hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const = 0;

  virtual void loadInPlaceFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                              InPlaceHandler completionHandler) = 0;
  virtual void loadItemForTypeIdentifier(std::string_view typeIdentifier, ItemHandler completionHandler) = 0;
};

}  // namespace ostra
