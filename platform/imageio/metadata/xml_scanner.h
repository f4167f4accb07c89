#pragma once
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ostra {

/// Where a piece of a document lies.
struct XmlSpan {
  std::size_t begin = 0, end = 0;
};

struct XmlAttribute {
  std::string_view name, value;
  XmlSpan span;       // from the end of what precedes it, so that its white space goes with it
  XmlSpan valueSpan;  // between the quotes
};

/// An element and where its pieces lie. Parents precede children.
struct XmlElement {
  std::string_view name;
  std::vector<XmlAttribute> attributes;
  std::size_t parent = 0;  // index; an element without a parent is its own
  std::size_t depth = 0;   // 0 without a parent
  XmlSpan span;            // the whole element
  XmlSpan content;         // between its tags; empty for one that closes itself
};

/// The elements of a document with the byte ranges that an XML library does not tell. Nothing when tags do
/// not nest, when a DOCTYPE could redefine what is read, or when there are more than 100,000 elements or
/// 2,000 attributes of one.
std::optional<std::vector<XmlElement>> scanXml(std::string_view document);

}  // namespace ostra
