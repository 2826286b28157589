#include "base/value.h"

namespace zv {

Map::Map(std::initializer_list<std::pair<std::string, Value>> entries) {
  for (const auto& [key, value] : entries) set(key, value);
}

const Value* Map::find(std::string_view key) const {
  for (const auto& [name, value] : entries_) {
    if (name == key) return &value;
  }
  return nullptr;
}

void Map::set(std::string key, Value value) {
  for (auto& [name, old] : entries_) {
    if (name == key) {
      old = std::move(value);
      return;
    }
  }
  entries_.emplace_back(std::move(key), std::move(value));
}

Value get(const Map& map, std::string_view key, const Value& fallback) {
  const Value* found = map.find(key);
  return found ? *found : fallback;
}

}  // namespace zv
