#include "platform/types/ut_type.h"

#include "platform/types/type_table.h"

namespace ostra {
namespace {

// Every parent stands above its children, so that a walk up the table ends.
constexpr bool everyParentIsDeclaredFirst() {
  for (std::size_t row = 0; row < kTypeTable.size(); ++row) {
    if (anyWord(kTypeTable[row].parents, [row](std::string_view parent) { return typeRow(parent) >= row; })) {
      return false;
    }
  }
  return true;
}
static_assert(everyParentIsDeclaredFirst());

constexpr char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// ASCII only: no identifier and no extension of the table holds anything else.
bool equalWithoutCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (lowered(a[i]) != lowered(b[i])) return false;
  }
  return true;
}

bool conforms(std::size_t row, std::size_t ancestor) {
  if (row == ancestor) return true;
  return anyWord(kTypeTable[row].parents,
                 [ancestor](std::string_view parent) { return conforms(typeRow(parent), ancestor); });
}

std::vector<std::string> words(std::string_view list) {
  std::vector<std::string> result;
  anyWord(list, [&result](std::string_view word) {
    result.emplace_back(word);
    return false;
  });
  return result;
}

}  // namespace

std::optional<UTType> UTType::withIdentifier(std::string_view identifier) {
  for (std::size_t row = 0; row < kTypeTable.size(); ++row) {
    if (equalWithoutCase(kTypeTable[row].identifier, identifier)) return UTType(row);
  }
  return std::nullopt;
}

std::optional<UTType> UTType::withFilenameExtension(std::string_view extension) {
  const auto matches = [extension](std::string_view word) { return equalWithoutCase(word, extension); };
  for (std::size_t row = 0; row < kTypeTable.size(); ++row) {
    if (anyWord(kTypeTable[row].extensions, matches)) return UTType(row);
  }
  return std::nullopt;
}

UTType UTType::image() { return UTType(typeRow("public.image")); }
UTType UTType::png() { return UTType(typeRow("public.png")); }
UTType UTType::jpeg() { return UTType(typeRow("public.jpeg")); }
UTType UTType::heic() { return UTType(typeRow("public.heic")); }
UTType UTType::heif() { return UTType(typeRow("public.heif")); }
UTType UTType::fileURL() { return UTType(typeRow("public.file-url")); }
UTType UTType::data() { return UTType(typeRow("public.data")); }

std::string UTType::identifier() const { return std::string(kTypeTable[row_].identifier); }

bool UTType::conformsTo(const UTType& other) const { return conforms(row_, other.row_); }

std::vector<std::string> UTType::filenameExtensions() const { return words(kTypeTable[row_].extensions); }

std::vector<std::string> UTType::mimeTypes() const { return words(kTypeTable[row_].mimeTypes); }

}  // namespace ostra
