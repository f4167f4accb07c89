#include "platform/imageio/metadata/xml_scanner.h"

#include <algorithm>
#include <utility>

namespace ostra {

namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr std::size_t kMostElements = 100'000;
constexpr std::size_t kMostAttributes = 2000;
constexpr std::size_t kNone = std::string_view::npos;

class Scanner {
 public:
  explicit Scanner(std::string_view document) : document_(document) {}
  bool scan();
  std::vector<XmlElement> take() { return std::move(elements_); }

 private:
  bool scanMarkup();
  bool skipTo(std::string_view terminator);
  bool openElement();
  bool closeElement();
  bool scanAttribute(XmlElement& element, std::size_t from);
  std::string_view takeName();
  void skipSpace();
  bool at(std::string_view text) const { return document_.substr(at_).starts_with(text); }

  std::string_view document_;
  std::size_t at_ = 0;
  std::vector<XmlElement> elements_;
  std::vector<std::size_t> open_;
};

bool Scanner::scan() {
  for (;;) {
    at_ = document_.find('<', at_);
    if (at_ == kNone) return open_.empty() && !elements_.empty();
    if (!scanMarkup() || elements_.size() > kMostElements) return false;
  }
}

bool Scanner::scanMarkup() {
  if (at("<!--")) return skipTo("-->");
  if (at("<![CDATA[")) return skipTo("]]>");
  if (at("<?")) return skipTo("?>");
  if (at("<!")) return false;
  return at("</") ? closeElement() : openElement();
}

bool Scanner::skipTo(std::string_view terminator) {
  const std::size_t found = document_.find(terminator, at_);
  at_ = found == kNone ? found : found + terminator.size();
  return found != kNone;
}

void Scanner::skipSpace() { at_ = std::min(document_.find_first_not_of(kSpace, at_), document_.size()); }

std::string_view Scanner::takeName() {
  const std::size_t begin = at_;
  at_ = std::min(document_.find_first_of(" \t\r\n=/><\"'", at_), document_.size());
  return document_.substr(begin, at_ - begin);
}

bool Scanner::scanAttribute(XmlElement& element, std::size_t from) {
  XmlAttribute attribute;
  attribute.name = takeName();
  skipSpace();
  if (attribute.name.empty() || !at("=")) return false;
  ++at_;
  skipSpace();
  const char quote = at_ < document_.size() ? document_[at_] : '\0';
  if (quote != '"' && quote != '\'') return false;
  const std::size_t end = document_.find(quote, at_ + 1);
  if (end == kNone) return false;
  attribute.valueSpan = {at_ + 1, end};
  attribute.value = document_.substr(at_ + 1, end - at_ - 1);
  at_ = end + 1;
  attribute.span = {from, at_};
  element.attributes.push_back(attribute);
  return true;
}

bool Scanner::openElement() {
  XmlElement element;
  element.span.begin = at_++;
  element.name = takeName();
  if (element.name.empty()) return false;
  element.parent = open_.empty() ? elements_.size() : open_.back();
  element.depth = open_.size();
  for (;;) {
    const std::size_t before = at_;
    skipSpace();
    const bool closed = at("/>");
    if (closed || at(">")) {
      at_ += closed ? 2 : 1;
      element.content = {at_, at_};
      element.span.end = at_;
      if (!closed) open_.push_back(elements_.size());
      elements_.push_back(std::move(element));
      return true;
    }
    if (element.attributes.size() == kMostAttributes || !scanAttribute(element, before)) return false;
  }
}

bool Scanner::closeElement() {
  const std::size_t begin = at_;
  at_ += 2;
  const std::string_view name = takeName();
  skipSpace();
  if (open_.empty() || elements_[open_.back()].name != name || !at(">")) return false;
  XmlElement& element = elements_[open_.back()];
  element.content.end = begin;
  element.span.end = ++at_;
  open_.pop_back();
  return true;
}

}  // namespace

std::optional<std::vector<XmlElement>> scanXml(std::string_view document) {
  Scanner scanner(document);
  if (!scanner.scan()) return std::nullopt;
  return scanner.take();
}

}  // namespace ostra
