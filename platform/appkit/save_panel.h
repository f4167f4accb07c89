#pragma once
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/url.h"
#include "platform/types/ut_type.h"

namespace ostra {

using NSModalResponse = int;
inline constexpr NSModalResponse NSModalResponseOK = 1;
inline constexpr NSModalResponse NSModalResponseCancel = 0;

/// Asks where to save a file. Main thread.
class NSSavePanel {
 public:
  enum class Setting {
    title,
    message,
    nameFieldStringValue,
    directoryURL,
    allowedContentTypes,
    canCreateDirectories
  };

  void setTitle(std::string title);
  void setMessage(std::string message);
  void setNameFieldStringValue(std::string name);
  void setDirectoryURL(URL directory);
  void setAllowedContentTypes(std::vector<UTType> types);
  void setCanCreateDirectories(bool allowed);

  const std::string& title() const { return title_; }
  const std::string& message() const { return message_; }
  const std::string& nameFieldStringValue() const { return name_; }
  const std::optional<URL>& directoryURL() const { return directory_; }
  /// Empty: any type.
  const std::vector<UTType>& allowedContentTypes() const { return types_; }
  bool canCreateDirectories() const { return canCreateDirectories_; }
  /// What was set, in that order; a renderer applies the settings in it.
  const std::vector<Setting>& settings() const { return settings_; }

  /// Shows the panel and returns when it is closed.
  NSModalResponse runModal();
  /// The place chosen, or nothing.
  const std::optional<URL>& url() const { return url_; }

 private:
  std::string title_, message_, name_;
  std::optional<URL> directory_, url_;
  std::vector<UTType> types_;
  bool canCreateDirectories_ = false;
  std::vector<Setting> settings_;
};

}  // namespace ostra
