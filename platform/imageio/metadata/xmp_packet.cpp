#include "platform/imageio/metadata/xmp_packet.h"

#include <algorithm>
#include <new>

#include <pugixml.hpp>

#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {

namespace {

constexpr std::size_t kMostItems = 4096;

/// Whether a text is XML.
bool loads(pugi::xml_document& document, std::string_view text) {
  const auto result =
      document.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
  if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
  return static_cast<bool>(result);
}

bool isXmlAttribute(std::string_view name) { return name.starts_with("xmlns") || name.starts_with("xml:"); }

}  // namespace

std::optional<XmpPacket> XmpPacket::parse(ByteView bytes) {
  XmpPacket packet;
  packet.text_ = asText(bytes);
  if (!isUtf8(packet.text_)) return std::nullopt;
  // The library judges whether this is XML at all; our own pass only tells where its pieces lie.
  pugi::xml_document document;
  if (!loads(document, packet.text_)) return std::nullopt;
  auto elements = scanXml(packet.text_);
  if (!elements) return std::nullopt;
  packet.elements_ = std::move(*elements);
  packet.findProperties();
  return packet;
}

/// A prefix means what the nearest element around the name says. An attribute without one belongs to no
/// namespace.
XmpPacket::QualifiedName XmpPacket::resolve(std::size_t element, std::string_view name,
                                            bool isAttribute) const {
  const std::size_t colon = name.find(':');
  const bool prefixed = colon != std::string_view::npos;
  if (!prefixed && isAttribute) return {"", name};
  const std::string_view local = prefixed ? name.substr(colon + 1) : name;
  const std::string declaration = prefixed ? "xmlns:" + std::string(name.substr(0, colon)) : "xmlns";
  for (std::size_t at = element;; at = elements_[at].parent) {
    for (const XmlAttribute& attribute : elements_[at].attributes) {
      if (attribute.name == declaration) return {attribute.value, local};
    }
    if (elements_[at].parent == at) return {"", local};
  }
}

bool XmpPacket::isRdf(std::size_t element, std::string_view wanted) const {
  const QualifiedName name = resolve(element, elements_[element].name, false);
  return name.space == kRdfSpace && name.name == wanted;
}

/// Only what describes the picture itself: a description inside another one is of an ingredient.
bool XmpPacket::isDescription(std::size_t element) const {
  constexpr std::size_t kDeepest = 3;  // x:xmpmeta, rdf:RDF, rdf:Description
  const std::size_t parent = elements_[element].parent;
  if (parent == element || elements_[element].depth >= kDeepest) return false;
  return isRdf(element, "Description") && isRdf(parent, "RDF");
}

XmpProperty XmpPacket::elementProperty(std::size_t element) const {
  const XmlElement& found = elements_[element];
  const QualifiedName name = resolve(element, found.name, false);
  std::size_t begin = found.span.begin;
  while (begin > 0 && std::string_view(" \t\r\n").find(text_[begin - 1]) != std::string_view::npos) --begin;
  return {name.space, name.name, {begin, found.span.end}, found.content, element};
}

void XmpPacket::findProperties() {
  for (std::size_t i = 0; i < elements_.size(); ++i) {
    const std::size_t parent = elements_[i].parent;
    if (parent != i && isDescription(parent)) properties_.push_back(elementProperty(i));
    if (!isDescription(i)) continue;
    for (const XmlAttribute& attribute : elements_[i].attributes) {
      const QualifiedName name = resolve(i, attribute.name, true);
      if (isXmlAttribute(attribute.name) || name.space.empty() || name.space == kRdfSpace) continue;
      properties_.push_back({name.space, name.name, attribute.span, attribute.valueSpan, std::nullopt});
    }
  }
}

const XmpProperty* XmpPacket::find(std::string_view space, std::string_view name) const {
  const auto found = std::find_if(properties_.begin(), properties_.end(), [&](const XmpProperty& property) {
    return property.space == space && property.name == name;
  });
  return found == properties_.end() ? nullptr : &*found;
}

/// The first text of a piece, with its entities resolved.
std::string XmpPacket::textIn(const XmlSpan& span) const {
  pugi::xml_document document;
  const std::string element = "<t>" + std::string(text_.substr(span.begin, span.end - span.begin)) + "</t>";
  loads(document, element);
  return document.first_child().text().get();
}

std::vector<std::size_t> XmpPacket::childrenOf(std::size_t element) const {
  std::vector<std::size_t> children;
  // Children follow their parent and end with it.
  for (std::size_t i = element + 1; i < elements_.size() && children.size() < kMostItems; ++i) {
    if (elements_[i].span.begin >= elements_[element].span.end) break;
    if (elements_[i].parent == element) children.push_back(i);
  }
  return children;
}

std::vector<std::string> XmpPacket::items(const XmpProperty& property) const {
  const auto children = property.element ? childrenOf(*property.element) : std::vector<std::size_t>();
  if (children.empty()) return {textIn(property.value)};
  std::vector<std::string> items;
  if (!isRdf(children[0], "Alt") && !isRdf(children[0], "Seq") && !isRdf(children[0], "Bag")) return items;
  for (const std::size_t item : childrenOf(children[0])) {
    const auto& attributes = elements_[item].attributes;
    const bool isDefault = std::any_of(attributes.begin(), attributes.end(), [](const XmlAttribute& a) {
      return a.name == "xml:lang" && a.value == "x-default";
    });
    items.insert(isDefault ? items.begin() : items.end(), textIn(elements_[item].content));
  }
  return items;
}

std::vector<std::pair<std::string, std::string>> XmpPacket::fields(const XmpProperty& property) const {
  std::vector<std::pair<std::string, std::string>> fields;
  if (!property.element) return fields;
  const auto addAttributes = [&](std::size_t element) {
    for (const XmlAttribute& attribute : elements_[element].attributes) {
      const QualifiedName name = resolve(element, attribute.name, true);
      if (!isXmlAttribute(attribute.name) && !name.space.empty() && name.space != kRdfSpace)
        fields.emplace_back(name.name, textIn(attribute.valueSpan));
    }
  };
  addAttributes(*property.element);
  std::vector<std::size_t> children = childrenOf(*property.element);
  if (children.size() == 1 && isRdf(children[0], "Description")) {
    addAttributes(children[0]);
    children = childrenOf(children[0]);
  }
  for (const std::size_t child : children)
    fields.emplace_back(resolve(child, elements_[child].name, false).name, textIn(elements_[child].content));
  return fields;
}

std::optional<std::size_t> XmpPacket::end() const {
  for (std::size_t i = 0; i < elements_.size(); ++i) {
    const bool closesItself = elements_[i].content.end == elements_[i].span.end;
    if (isRdf(i, "RDF")) return closesItself ? std::nullopt : std::optional(elements_[i].content.end);
  }
  return std::nullopt;
}

}  // namespace ostra
