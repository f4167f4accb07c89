#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostra {

/// A declared uniform type. A plain value; equality is that of the identifier, and a type conforms to itself.
class UTType {
 public:
  /// Nothing for an identifier that no declared type has. Identifiers are looked up without regard to case.
  static std::optional<UTType> withIdentifier(std::string_view identifier);
  /// The type of a file name's extension, given without its dot and in any case; or nothing.
  static std::optional<UTType> withFilenameExtension(std::string_view extension);

  static UTType image();
  static UTType png();
  static UTType jpeg();
  static UTType heic();
  static UTType heif();
  static UTType fileURL();
  static UTType data();

  /// As declared, whatever case it was asked for in.
  std::string identifier() const;
  bool conformsTo(const UTType& other) const;
  /// Without dots, the preferred one first; possibly none.
  std::vector<std::string> filenameExtensions() const;
  std::vector<std::string> mimeTypes() const;

  friend bool operator==(const UTType&, const UTType&) = default;

 private:
  explicit UTType(std::size_t row) : row_(row) {}
  std::size_t row_;
};

}  // namespace ostra
