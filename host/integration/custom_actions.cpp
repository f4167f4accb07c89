#include "host/integration/custom_actions.h"

#include <string_view>

#include <pugixml.hpp>

namespace ostra {
namespace {

constexpr std::string_view kOwnPrefix = "org.ostra.Ostra-";
constexpr std::string_view kEndOfList = "</actions";
constexpr std::string_view kBlanks = " \t\r\n";

struct Range {
  std::size_t begin = 0, end = 0;
};

/// What a list holds: all its elements in order, and where ours lie.
struct Contents {
  std::size_t root = 0;
  bool isEmpty = true;
  std::vector<std::string> others;
  std::vector<Range> ours;
};

bool isOurs(const pugi::xml_node& action) {
  return std::string_view(action.child_value("unique-id")).starts_with(kOwnPrefix);
}

/// Where an element begins. The parser tells where its name does.
std::size_t beginningOf(const pugi::xml_node& element, const std::string& list) {
  const std::ptrdiff_t name = element.offset_debug();
  if (name < 1 || list.at(static_cast<std::size_t>(name) - 1) != '<') {
    throw CustomActionsError("its elements could not be found");
  }
  return static_cast<std::size_t>(name) - 1;
}

/// Behind the end tag of the action that begins there, and behind the line feed that we put there.
std::size_t endOfAction(std::size_t begin, const std::string& list) {
  const std::size_t tag = list.find("</action", begin);
  const std::size_t end = tag == std::string::npos ? tag : list.find('>', tag);
  if (end == std::string::npos) throw CustomActionsError("its elements could not be found");
  return end + 1 < list.size() && list[end + 1] == '\n' ? end + 2 : end + 1;
}

std::string writtenAgain(const pugi::xml_node& node) {
  struct Writer : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
      text.append(static_cast<const char*>(data), size);
    }
  } writer;
  node.print(writer, "", pugi::format_raw);
  return writer.text;
}

/// Throws when the text is no list in UTF-8.
Contents contentsOf(const std::string& list) {
  pugi::xml_document document;
  const auto result = document.load_buffer(list.data(), list.size(), pugi::parse_full, pugi::encoding_utf8);
  if (!result)
    throw CustomActionsError(std::string("it is no well-formed XML (") + result.description() + ")");
  const std::string_view encoding = document.first_child().attribute("encoding").value();
  if (!encoding.empty() && encoding != "UTF-8" && encoding != "utf-8") {
    throw CustomActionsError("it is not in UTF-8");
  }
  const pugi::xml_node root = document.document_element();
  if (std::string_view(root.name()) != "actions") throw CustomActionsError("it holds no list of actions");
  Contents contents{beginningOf(root, list), root.first_child().empty(), {}, {}};
  for (const pugi::xml_node& child : root.children()) {
    if (isOurs(child)) {
      const std::size_t begin = beginningOf(child, list);
      contents.ours.push_back({begin, endOfAction(begin, list)});
    } else if (child.type() == pugi::node_element) {
      contents.others.push_back(writtenAgain(child));
    }
  }
  return contents;
}

std::string without(const std::vector<Range>& ranges, std::string list) {
  for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
    list.erase(range->begin, range->end - range->begin);
  }
  return list;
}

/// The end of an element without content: behind its name and the blanks that follow it.
std::size_t endOfRootName(const Contents& contents, const std::string& list) {
  return list.find_first_not_of(kBlanks, contents.root + std::string_view("<actions").size());
}

// A list that is a single tag gets an end tag, whose blank tells later that it had none.
constexpr std::string_view kOwnEnd = "></actions >";

std::string opened(const Contents& contents, std::string list) {
  const std::size_t end = endOfRootName(contents, list);
  if (contents.isEmpty && list.compare(end, 2, "/>") == 0) list.replace(end, 2, kOwnEnd);
  return list;
}

std::string closed(const Contents& contents, std::string list) {
  const std::size_t end = endOfRootName(contents, list);
  if (contents.isEmpty && list.compare(end, kOwnEnd.size(), kOwnEnd) == 0) {
    list.replace(end, kOwnEnd.size(), "/>");
  }
  return list;
}

/// The list of the others must have come through an edit whole.
std::string checked(const std::string& edited, const Contents& before, std::size_t ours) {
  const Contents after = contentsOf(edited);
  if (after.others != before.others || after.ours.size() != ours) {
    throw CustomActionsError("it could not be edited safely");
  }
  return edited;
}

}  // namespace

std::string withCustomActions(const std::string& list, const std::vector<std::string>& actions) {
  const Contents before = contentsOf(list);
  const std::string others = opened(before, without(before.ours, list));
  std::string ours;
  for (const std::string& action : actions) ours += action;
  const auto inserted = [&](std::size_t place) {
    return checked(std::string(others).insert(place, ours), before, actions.size());
  };
  if (!before.ours.empty()) return inserted(before.ours.front().begin);
  // The last end tag is that of the list, unless it stands in a remark behind it.
  for (std::size_t place = others.rfind(kEndOfList); place != std::string::npos && place > before.root;
       place = others.rfind(kEndOfList, place - 1)) {
    try {
      return inserted(place);
    } catch (const CustomActionsError&) {
      continue;
    }
  }
  throw CustomActionsError("its end could not be found");
}

std::string withoutCustomActions(const std::string& list) {
  const Contents before = contentsOf(list);
  if (before.ours.empty()) return list;
  const std::string edited = without(before.ours, list);
  return checked(closed(contentsOf(edited), edited), before, 0);
}

}  // namespace ostra
