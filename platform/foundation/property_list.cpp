#include "platform/foundation/property_list.h"

#include <cstdlib>
#include <limits>
#include <memory>

#include <plist/plist.h>

#include "platform/foundation/error.h"

namespace ostra {
namespace {

/// No list of ours is deeper than four; a deeper one is junk, and the conversion below recurses.
constexpr int kDeepest = 64;

struct FreeNode {
  void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

struct FreeText {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

NSError notAPropertyList() { return NSError(NSCocoaErrorDomain, NSFileReadCorruptFileError); }

std::optional<Value> valueOf(plist_t node, int depth);

Value arrayOf(plist_t node, int depth) {
  Array values;
  for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
    if (auto value = valueOf(plist_array_get_item(node, i), depth + 1)) values.push_back(std::move(*value));
  }
  return values;
}

Value dictionaryOf(plist_t node, int depth) {
  Dictionary values;
  plist_dict_iter position = nullptr;
  plist_dict_new_iter(node, &position);
  const Text owner(static_cast<char*>(position));
  for (;;) {
    char* key = nullptr;
    plist_t item = nullptr;
    plist_dict_next_item(node, position, &key, &item);
    const Text name(key);
    if (name == nullptr) return values;
    if (auto value = valueOf(item, depth + 1)) values.insert_or_assign(name.get(), std::move(*value));
  }
}

std::string textOf(plist_t node) {
  std::uint64_t length = 0;
  const char* text = plist_get_string_ptr(node, &length);
  return text != nullptr ? std::string(text, length) : std::string();
}

Bytes bytesOf(plist_t node) {
  std::uint64_t length = 0;
  const char* data = plist_get_data_ptr(node, &length);
  return data != nullptr ? Bytes(data, data + length) : Bytes();
}

/// Nothing for the kinds that a `Value` does not hold.
std::optional<Value> valueOf(plist_t node, int depth) {
  if (depth > kDeepest) throw notAPropertyList();
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t truth = 0;
      plist_get_bool_val(node, &truth);
      return Value(truth != 0);
    }
    case PLIST_UINT: {
      std::uint64_t integer = 0;
      plist_get_uint_val(node, &integer);
      return Value(static_cast<std::int64_t>(integer));
    }
    case PLIST_REAL: {
      double real = 0;
      plist_get_real_val(node, &real);
      return Value(real);
    }
    case PLIST_STRING:
      return Value(textOf(node));
    case PLIST_DATA:
      return Value(bytesOf(node));
    case PLIST_ARRAY:
      return arrayOf(node, depth);
    case PLIST_DICT:
      return dictionaryOf(node, depth);
    default:
      return std::nullopt;
  }
}

struct MakeNode {
  plist_t operator()(bool truth) const { return plist_new_bool(truth ? 1 : 0); }
  plist_t operator()(std::int64_t integer) const {
    return plist_new_uint(static_cast<std::uint64_t>(integer));
  }
  plist_t operator()(double real) const { return plist_new_real(real); }
  plist_t operator()(const std::string& text) const { return plist_new_string(text.c_str()); }
  plist_t operator()(const Bytes& bytes) const {
    return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  plist_t operator()(const Array& values) const {
    plist_t node = plist_new_array();
    for (const Value& value : values) plist_array_append_item(node, std::visit(*this, value.storage()));
    return node;
  }
  plist_t operator()(const Dictionary& values) const {
    plist_t node = plist_new_dict();
    for (const auto& [key, value] : values) {
      plist_dict_set_item(node, key.c_str(), std::visit(*this, value.storage()));
    }
    return node;
  }
};

}  // namespace

Value readPropertyList(ByteView data) {
  if (data.size() > std::numeric_limits<std::uint32_t>::max()) throw notAPropertyList();
  plist_t parsed = nullptr;
  plist_from_memory(reinterpret_cast<const char*>(data.data()), static_cast<std::uint32_t>(data.size()),
                    &parsed);
  const Node root(parsed);
  if (root == nullptr) throw notAPropertyList();
  auto value = valueOf(root.get(), 0);
  if (!value) throw notAPropertyList();
  return std::move(*value);
}

Bytes writePropertyList(const Value& value) {
  const Node root(std::visit(MakeNode(), value.storage()));
  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(root.get(), &text, &length);
  const std::unique_ptr<char, decltype(&plist_to_xml_free)> owner(text, plist_to_xml_free);
  return Bytes(text, text + length);
}

}  // namespace ostra
