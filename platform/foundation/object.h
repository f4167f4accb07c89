#pragma once

namespace ostra {

/// The root of what an extension request may hold. Collections of it may hold anything; look before you use.
class NSObject {
 public:
  NSObject() = default;
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  virtual ~NSObject();
};

}  // namespace ostra
