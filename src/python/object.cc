#include "python/object.h"

#include <algorithm>
#include <optional>

#include "base/python_text.h"

namespace zv::python {

struct Object::State {
  Host& host;
  Value copy;                      // a Reference where the object can only be asked about there
  std::optional<Reference> there;  // none yet: an item of `whole` that nobody asked the host for
  std::shared_ptr<State> whole;
  Value key;

  State(Host& in, Value known, std::optional<Reference> number)
      : host(in), copy(std::move(known)), there(number) {}
  ~State() {
    if (there) host.drop(*there);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
};

namespace {

bool is_here(const Value& copy) {
  if (const auto* list = copy.as<List>()) return std::all_of(list->begin(), list->end(), is_here);
  if (const auto* map = copy.as<Map>()) {
    const auto& entries = map->entries();
    return std::all_of(entries.begin(), entries.end(),
                       [](const auto& entry) { return is_here(entry.second); });
  }
  return copy.as<Reference>() == nullptr;
}

}  // namespace

Object::Object(Host& host, Kept kept)
    : state_(std::make_shared<State>(host, std::move(kept.copy), kept.object)) {}

Object Object::import(Host& host, std::string_view module, std::string_view name) {
  return {host, host.import(module, name)};
}

Object Object::part(std::shared_ptr<State> of, Value key, Value copy) {
  auto state = std::make_shared<State>(of->host, std::move(copy), std::nullopt);
  state->whole = std::move(of);
  state->key = std::move(key);
  return Object(std::move(state));
}

Reference Object::reference() const {
  if (!state_->there) {
    Host& host = state_->host;
    const Object whole(state_->whole);
    state_->there =
        host.call_keep(host.builtin("operator", "getitem"), {whole, state_->key}, {}).object;
  }
  return *state_->there;
}

Value Object::call(List arguments, Map keywords) const {
  return state_->host.call(reference(), std::move(arguments), std::move(keywords));
}

Object Object::make(List arguments, Map keywords) const {
  Host& host = state_->host;
  return {host, host.call_keep(reference(), std::move(arguments), std::move(keywords))};
}

Object Object::item(Value key) const {
  const auto* map = state_->copy.as<Map>();
  const auto* name = key.as<std::string>();
  const Value* found = map && name ? map->find(*name) : nullptr;
  if (found) return part(state_, std::move(key), *found);
  return apply_keep("operator", "getitem", {*this, std::move(key)});
}

void Object::set_item(Value key, Value value) const {
  apply("operator", "setitem", {*this, std::move(key), std::move(value)});
  state_->copy = reference();
}

Value Object::get(std::string_view key, const Value& fallback) const {
  if (const auto* map = state_->copy.as<Map>()) {
    const Value* found = map->find(key);
    if (!found) return fallback;
    if (is_here(*found)) return *found;
  }
  return apply_keep("builtins", "getattr", {*this, "get"}).call({key, fallback});
}

bool Object::contains(std::string_view key) const {
  if (const auto* map = state_->copy.as<Map>()) return map->find(key) != nullptr;
  return zv::truthy(apply("operator", "contains", {*this, key}));
}

bool Object::truthy() const {
  if (!state_->copy.as<Reference>()) return zv::truthy(state_->copy);
  return zv::truthy(apply("operator", "truth", {*this}));
}

std::vector<Object> Object::elements() const {
  const bool known = state_->copy.as<List>() != nullptr;
  const Object list = known ? *this : apply_keep("builtins", "list", {*this});
  const auto* copies = list.state_->copy.as<List>();
  const Value count =
      copies ? Value(static_cast<std::int64_t>(copies->size())) : apply("builtins", "len", {list});
  std::vector<Object> elements;
  for (std::int64_t i = 0; i < *count.as<std::int64_t>(); ++i) {
    elements.push_back(copies ? part(list.state_, i, copies->at(static_cast<std::size_t>(i)))
                              : list.item(i));
  }
  return elements;
}

std::string Object::text() const {
  const Value& copy = state_->copy;
  const bool single = !copy.as<Reference>() && !copy.as<List>() && !copy.as<Map>();
  return plain_text(single ? copy : apply("builtins", "str", {*this}));
}

Value Object::value() const {
  return is_here(state_->copy) ? state_->copy : state_->host.value(reference());
}

Value Object::apply(const char* module, const char* function, List arguments) const {
  Host& host = state_->host;
  return host.call(host.builtin(module, function), std::move(arguments), {});
}

Object Object::apply_keep(const char* module, const char* function, List arguments) const {
  Host& host = state_->host;
  return {host, host.call_keep(host.builtin(module, function), std::move(arguments), {})};
}

}  // namespace zv::python
