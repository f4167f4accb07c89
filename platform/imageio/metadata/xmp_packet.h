#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/imageio/metadata/xml_scanner.h"

namespace ostra {

inline constexpr std::string_view kRdfSpace = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";

/// A property of the picture: an attribute or an element of an rdf:Description. Views of the packet's bytes.
struct XmpProperty {
  std::string_view space, name;
  XmlSpan cut;    // with the white space before it
  XmlSpan value;  // between its quotes or its tags
  /// The element's index; nothing for an attribute.
  std::optional<std::size_t> element;
};

/// The elements of an XMP packet with their names resolved. Valid while the packet's bytes are.
class XmpPacket {
 public:
  /// Nothing when the bytes are no well-formed XML in UTF-8.
  static std::optional<XmpPacket> parse(ByteView bytes);

  const std::vector<XmpProperty>& properties() const { return properties_; }
  /// The first property of this name, or null.
  const XmpProperty* find(std::string_view space, std::string_view name) const;
  /// The items of an array, those for every language first, or the one value of anything else.
  std::vector<std::string> items(const XmpProperty& property) const;
  /// The simple fields of a structure, by their names without a prefix.
  std::vector<std::pair<std::string, std::string>> fields(const XmpProperty& property) const;
  /// Where another rdf:Description can be put: before the end tag of rdf:RDF. Nothing when there is none.
  std::optional<std::size_t> end() const;

 private:
  struct QualifiedName {
    std::string_view space, name;
  };
  QualifiedName resolve(std::size_t element, std::string_view name, bool isAttribute) const;
  bool isRdf(std::size_t element, std::string_view name) const;
  bool isDescription(std::size_t element) const;
  XmpProperty elementProperty(std::size_t element) const;
  void findProperties();
  std::vector<std::size_t> childrenOf(std::size_t element) const;
  std::string textIn(const XmlSpan& span) const;

  std::string_view text_;
  std::vector<XmlElement> elements_;
  std::vector<XmpProperty> properties_;
};

}  // namespace ostra
