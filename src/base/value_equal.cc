#include "base/value_equal.h"

#include <algorithm>

#include "base/arithmetic.h"
#include "base/value_text.h"

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
