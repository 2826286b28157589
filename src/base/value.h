// Value: one piece of loosely typed data as it travels between the engine, JSON texts and commands.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace zv {

class Value;
using List = std::vector<Value>;

// String-keyed, keeps the order of insertion; setting a key again keeps its first place.
class Map {
 public:
  Map() = default;
  Map(std::initializer_list<std::pair<std::string, Value>> entries);

  const Value* find(std::string_view key) const;
  void set(std::string key, Value value);
  // The same for a key that is known to be new, at any size.
  void append(std::string key, Value value);
  bool empty() const;
  std::size_t size() const;
  const std::vector<std::pair<std::string, Value>>& entries() const { return entries_; }

 private:
  std::vector<std::pair<std::string, Value>> entries_;
};

// A whole number beyond 64 bits, kept by its decimal digits (with "-" when negative).
struct BigInteger {
  std::string digits;
};

// An object that lives in the engine host, named by its number there.
struct Reference {
  std::uint64_t id;
};

// Something of the engine's that has no counterpart here: its type, plain text and quoted text.
struct Opaque {
  std::string type;
  std::string text;
  std::string repr;
};

class Value {
 public:
  using Kind = std::variant<std::nullptr_t, bool, std::int64_t, BigInteger, double, std::string,
                            List, Map, Reference, Opaque>;

  Value() = default;
  Value(std::nullptr_t) {}
  Value(bool flag) : kind_(flag) {}
  Value(int number) : kind_(std::int64_t{number}) {}
  Value(std::int64_t number) : kind_(number) {}
  Value(double number) : kind_(number) {}
  Value(const char* text) : kind_(std::string(text)) {}
  Value(std::string text) : kind_(std::move(text)) {}
  Value(std::string_view text) : kind_(std::string(text)) {}
  Value(List list) : kind_(std::move(list)) {}
  Value(Map map) : kind_(std::move(map)) {}
  Value(BigInteger number) : kind_(std::move(number)) {}
  Value(Reference reference) : kind_(reference) {}
  Value(Opaque opaque) : kind_(std::move(opaque)) {}

  template <class T>
  const T* as() const {
    return std::get_if<T>(&kind_);
  }
  template <class T>
  T* as_mutable() {
    return std::get_if<T>(&kind_);
  }
  bool is_null() const { return std::holds_alternative<std::nullptr_t>(kind_); }
  const Kind& kind() const { return kind_; }

 private:
  Kind kind_ = nullptr;
};

// Here, because clang wants to know Value before it looks into the entries.
inline bool Map::empty() const {
  return entries_.empty();
}
inline std::size_t Map::size() const {
  return entries_.size();
}
inline void Map::append(std::string key, Value value) {
  entries_.emplace_back(std::move(key), std::move(value));
}

// Several lambdas as one function object, for std::visit of a kind.
template <class... Ts>
struct Overloaded : Ts... {
  using Ts::operator()...;
};
template <class... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

// The value under a key, or the fallback when the value is no map or lacks the key.
Value get(const Map& map, std::string_view key, const Value& fallback = nullptr);

// False: null, false, zero, empty text, empty list, empty map. Everything else is true.
bool truthy(const Value& value);
// Numbers are the same by their value, maps whatever their order.
bool equal(const Value& left, const Value& right);

}  // namespace zv
