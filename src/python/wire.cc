#include "python/wire.h"

#include "base/json.h"
#include "base/number_text.h"

namespace zv::python {
namespace {

Value untagged(const Value& value);

std::string from_hex(const std::string& hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string text_of(const Value& value) {
  const Value plain = untagged(value);
  const auto* text = plain.as<std::string>();
  if (!text) throw JsonError("the engine host sent something that is no text");
  return *text;
}

const List& list_of(const Value& value) {
  const auto* list = value.as<List>();
  if (!list) throw JsonError("the engine host sent something that is no list");
  return *list;
}

Value map_of(const List& pairs) {
  Map map;
  for (const Value& pair : pairs) {
    map.set(text_of(list_of(pair).at(0)), untagged(list_of(pair).at(1)));
  }
  return map;
}

Value tagged_value(const std::string& tag, const Value& content) {
  if (tag == "$map") return map_of(list_of(content));
  if (tag == "$int") return BigInteger{text_of(content)};
  if (tag == "$real") return parse_real(text_of(content)).value_or(0);
  if (tag == "$bytes") return from_hex(text_of(content));
  const List& texts = list_of(content);
  return Opaque{text_of(texts.at(0)), text_of(texts.at(1)), text_of(texts.at(2))};
}

Value untagged(const Value& value) {
  if (const auto* list = value.as<List>()) {
    List plain;
    for (const Value& item : *list) plain.push_back(untagged(item));
    return plain;
  }
  const auto* map = value.as<Map>();
  if (!map) return value;
  if (map->size() == 1 && map->entries()[0].first.starts_with('$')) {
    return tagged_value(map->entries()[0].first, map->entries()[0].second);
  }
  Map plain;
  for (const auto& [key, item] : map->entries()) plain.set(key, untagged(item));
  return plain;
}

}  // namespace

Value read_answer(std::string_view line) {
  return untagged(parse_json(line));
}

}  // namespace zv::python
