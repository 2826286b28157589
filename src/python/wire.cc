#include "python/wire.h"

#include <charconv>

#include "base/json.h"
#include "base/python_number.h"

namespace zv::python {
namespace {

Value untagged(const Value& value);

std::string from_hex(std::string_view hex) {
  std::string bytes;
  for (; hex.size() >= 2; hex.remove_prefix(2)) {
    unsigned char byte = 0;
    const auto [end, error] = std::from_chars(hex.data(), hex.data() + 2, byte, 16);
    if (error != std::errc() || end != hex.data() + 2) throw Error(NO_ANSWER);
    bytes += static_cast<char>(byte);
  }
  if (!hex.empty()) throw Error(NO_ANSWER);
  return bytes;
}

std::string text_of(const Value& value) {
  return expected<std::string>(untagged(value));
}

// A list of exactly so many.
List list_of(const Value& value, std::size_t count) {
  List list = expected<List>(value);
  if (list.size() != count) throw Error(NO_ANSWER);
  return list;
}

Value map_of(const List& pairs) {
  Map map;
  for (const Value& entry : pairs) {
    const List pair = list_of(entry, 2);
    map.set(text_of(pair[0]), untagged(pair[1]));
  }
  return map;
}

Value tagged_value(const std::string& tag, const Value& content) {
  if (tag == "$map") return map_of(expected<List>(content));
  if (tag == "$there") return Reference{0};
  if (tag == "$int") return BigInteger{text_of(content)};
  if (tag == "$real") return parse_real(text_of(content)).value_or(0);
  if (tag == "$bytes") return from_hex(text_of(content));
  const List texts = list_of(content, 3);
  return Opaque{text_of(texts[0]), text_of(texts[1]), text_of(texts[2])};
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
  try {
    return untagged(parse_json(line));
  } catch (const JsonError&) {
    throw Error(NO_ANSWER);
  }
}

}  // namespace zv::python
