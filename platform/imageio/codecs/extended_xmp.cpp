#include "platform/imageio/codecs/extended_xmp.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "platform/imageio/limits.h"
#include "platform/imageio/metadata/md5.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/metadata/xml_scanner.h"

namespace ostra {
namespace {

// A packet and where its rdf:RDF element and the descriptions in that lie.
struct Outline {
  std::string_view text;
  std::vector<XmlElement> elements;
  std::size_t rdf = 0;
  std::vector<std::size_t> descriptions;

  const XmlElement& rdfElement() const { return elements[rdf]; }
  std::string prefix() const {
    const std::string_view name = rdfElement().name;
    return std::string(name.substr(0, name.size() - 3));
  }
  std::string_view part(const XmlSpan& span) const { return text.substr(span.begin, span.end - span.begin); }
};

std::optional<Outline> outlineOf(ByteView packet) {
  Outline outline;
  outline.text = asText(packet);
  auto elements = scanXml(outline.text);
  if (!elements) return std::nullopt;
  outline.elements = std::move(*elements);
  const auto rdf = std::find_if(outline.elements.begin(), outline.elements.end(),
                                [](const XmlElement& element) { return element.name.ends_with(":RDF"); });
  // One that closes itself has no place for more.
  if (rdf == outline.elements.end() || rdf->content.begin == rdf->content.end) return std::nullopt;
  outline.rdf = static_cast<std::size_t>(rdf - outline.elements.begin());
  for (std::size_t i = 0; i < outline.elements.size(); ++i) {
    if (i != outline.rdf && outline.elements[i].parent == outline.rdf) outline.descriptions.push_back(i);
  }
  return outline;
}

// The namespaces in force inside the rdf:RDF element: their declarations, by the attributes that they are.
using Namespaces = std::map<std::string_view, std::string>;

Namespaces namespacesOf(const Outline& outline) {
  Namespaces found;
  for (std::size_t at = outline.rdf;; at = outline.elements[at].parent) {
    for (const XmlAttribute& attribute : outline.elements[at].attributes) {
      if (attribute.name.starts_with("xmlns:"))
        found.emplace(attribute.name,
                      " " + std::string(attribute.name) + "=\"" + std::string(attribute.value) + "\"");
    }
    if (outline.elements[at].parent == at) return found;
  }
}

// What the description inherits would be lost with the elements around it.
std::string descriptionText(const Outline& outline, std::size_t index, const Namespaces& inherited) {
  const XmlElement& description = outline.elements[index];
  std::set<std::string_view> own;
  for (const XmlAttribute& attribute : description.attributes) own.insert(attribute.name);
  std::string text(1, '<');
  text += description.name;
  for (const auto& [name, declaration] : inherited) {
    if (own.empty() || !own.contains(name)) text += declaration;
  }
  return text.append(outline.part(description.span).substr(1 + description.name.size()));
}

std::string aboutValue(const Outline& outline) {
  for (const std::size_t index : outline.descriptions) {
    for (const XmlAttribute& attribute : outline.elements[index].attributes) {
      if (attribute.name == outline.prefix() + "about") return std::string(attribute.value);
    }
  }
  return {};
}

std::string markOf(const Outline& outline, const std::string& name) {
  const std::string prefix = outline.prefix();
  return "<" + prefix + "Description " + prefix + "about=\"" + aboutValue(outline) +
         "\" xmlns:xmpNote=\"http://ns.adobe.com/xmp/note/\" xmpNote:HasExtendedXMP=\"" + name + "\"/>";
}

// The largest descriptions, as many as must go for `excess` bytes less, in document order.
std::vector<std::size_t> largestDescriptions(const Outline& outline, std::size_t excess) {
  const auto size = [&](std::size_t index) { return outline.part(outline.elements[index].span).size(); };
  std::vector<std::size_t> bySize = outline.descriptions;
  std::stable_sort(bySize.begin(), bySize.end(),
                   [&](std::size_t a, std::size_t b) { return size(a) > size(b); });
  std::size_t removed = 0, count = 0;
  while (count < bySize.size() && removed < excess) removed += size(bySize[count++]);
  bySize.resize(count);
  std::sort(bySize.begin(), bySize.end());
  return bySize;
}

Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

}  // namespace

std::optional<Bytes> joinXmp(ByteView packet, ByteView extension, std::size_t limit) {
  const auto main = outlineOf(packet);
  const auto more = outlineOf(extension);
  if (!main || !more || main->prefix() != more->prefix()) return std::nullopt;
  std::string text(main->text.substr(0, main->rdfElement().content.end));
  const Namespaces inherited = namespacesOf(*more);
  for (const std::size_t index : more->descriptions) {
    text += descriptionText(*more, index, inherited) + "\n";
    if (text.size() > limit) throw LimitExceeded{LimitName::metadataBytes};
  }
  text += main->text.substr(main->rdfElement().content.end);
  return bytesOf(text);
}

std::optional<SplitXmp> splitXmp(ByteView packet, std::size_t room) {
  const auto outline = outlineOf(packet);
  if (!outline) return std::nullopt;
  const std::size_t markSize = markOf(*outline, std::string(32, '0')).size();
  if (packet.size() + markSize <= room) return std::nullopt;
  const auto moved = largestDescriptions(*outline, packet.size() + markSize - room);
  const XmlElement& rdf = outline->rdfElement();
  const XmlElement& root = outline->elements.front();
  std::string extension(outline->text.substr(root.span.begin, rdf.content.begin - root.span.begin));
  std::string rest;
  std::size_t at = rdf.content.begin;
  for (const std::size_t index : moved) {
    const XmlSpan span = outline->elements[index].span;
    extension += outline->part(span);
    rest += outline->text.substr(at, span.begin - at);
    at = span.end;
  }
  extension += outline->text.substr(rdf.content.end, root.span.end - rdf.content.end);
  SplitXmp split;
  split.extension = bytesOf(extension);
  split.name = md5Name(split.extension);
  split.packet = bytesOf(std::string(outline->text.substr(0, rdf.content.begin)) +
                         markOf(*outline, split.name) + rest + std::string(outline->text.substr(at)));
  if (split.packet.size() > room) return std::nullopt;
  return split;
}

}  // namespace ostra
