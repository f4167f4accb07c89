#pragma once
#include <string>

#include "platform/appkit/control.h"

namespace ostra {

/// Key equivalents: the character that a key types.
inline constexpr const char* kReturnKey = "\r";
inline constexpr const char* kEscapeKey = "\x1b";

/// A push button.
class NSButton : public NSControl {
 public:
  explicit NSButton(std::string title) : title_(std::move(title)) {}

  const std::string& title() const { return title_; }
  /// The key that presses the button wherever the focus is; empty for none. Return makes it the default
  /// button, Escape the one that closing the window presses.
  const std::string& keyEquivalent() const { return keyEquivalent_; }
  void setKeyEquivalent(std::string key) { keyEquivalent_ = std::move(key); }

  /// What the user does with mouse or key. Does nothing while the button is disabled.
  void performClick() const { sendAction(); }

 private:
  std::string title_;
  std::string keyEquivalent_;
};

}  // namespace ostra
