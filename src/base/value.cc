#include "base/value.h"

#include <algorithm>

#include "base/python_number.h"
#include "base/python_text.h"

namespace zv {
namespace {

bool number(const Value& value) {
  return value.as<bool>() || value.as<std::int64_t>() || value.as<double>() ||
         value.as<BigInteger>();
}

bool equal_numbers(const Value& left, const Value& right) {
  const auto* a = left.as<BigInteger>();
  const auto* b = right.as<BigInteger>();
  if (a && b) return a->digits == b->digits;
  return greater_equal(left, right) && greater_equal(right, left);
}

bool equal_maps(const Map& left, const Map& right) {
  const auto in_right = [&right](const auto& entry) {
    const Value* other = right.find(entry.first);
    return other && equal(entry.second, *other);
  };
  return left.size() == right.size() &&
         std::all_of(left.entries().begin(), left.entries().end(), in_right);
}

}  // namespace

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

bool truthy(const Value& value) {
  return std::visit(Overloaded{[](std::nullptr_t) { return false; }, [](bool flag) { return flag; },
                               [](std::int64_t number) { return number != 0; },
                               [](const BigInteger&) { return true; },
                               [](double number) { return number != 0.0; },
                               [](const std::string& text) { return !text.empty(); },
                               [](const List& list) { return !list.empty(); },
                               [](const Map& map) { return !map.empty(); },
                               [](Reference) { return true; }, [](const Opaque&) { return true; }},
                    value.kind());
}

bool equal(const Value& left, const Value& right) {
  if (number(left) && number(right)) return equal_numbers(left, right);
  if (left.kind().index() != right.kind().index()) return false;
  if (const auto* list = left.as<List>()) {
    const auto& other = *right.as<List>();
    return std::equal(list->begin(), list->end(), other.begin(), other.end(), equal);
  }
  if (const auto* map = left.as<Map>()) return equal_maps(*map, *right.as<Map>());
  return quoted_text(left) == quoted_text(right);
}

}  // namespace zv
