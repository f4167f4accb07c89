#pragma once
#include <map>
#include <string>
#include <vector>

namespace ostra::menu {

/// The MIME types of the pictures that the program reads. A type is known under its other names too, but not
/// for being a kind of a known one: what a program makes of its own may well be built upon TIFF.
class ServedTypes {
 public:
  ServedTypes() = default;
  explicit ServedTypes(std::vector<std::string> types) : types_(std::move(types)) {}

  bool contain(const char* type) const;

 private:
  bool findAmongAll(const char* type) const;

  std::vector<std::string> types_;
  /// Twenty thousand selected files have a handful of types.
  mutable std::map<std::string, bool, std::less<>> answers_;
};

}  // namespace ostra::menu
