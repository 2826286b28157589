#include "python/object.h"

#include "base/value_text.h"

namespace zv::python {

Object::Object(Host& host, Reference reference)
    : host_(&host), reference_(new Reference(reference), [&host](const Reference* last) {
        host.drop(*last);
        delete last;
      }) {}

Object Object::import(Host& host, std::string_view module, std::string_view name) {
  return {host, host.import(module, name)};
}

Value Object::call(List arguments, Map keywords) const {
  return host_->call(*reference_, std::move(arguments), std::move(keywords));
}

Object Object::make(List arguments, Map keywords) const {
  return {*host_, host_->call_keep(*reference_, std::move(arguments), std::move(keywords))};
}

Object Object::attribute(std::string_view name) const {
  return apply_keep("builtins", "getattr", {*this, name});
}

Object Object::item(Value key) const {
  return apply_keep("operator", "getitem", {*this, std::move(key)});
}

void Object::set_item(Value key, Value value) const {
  apply("operator", "setitem", {*this, std::move(key), std::move(value)});
}

bool Object::contains(Value key) const {
  return zv::truthy(apply("operator", "contains", {*this, std::move(key)}));
}

bool Object::truthy() const {
  return zv::truthy(apply("operator", "truth", {*this}));
}

std::vector<Object> Object::elements() const {
  const Object list = apply_keep("builtins", "list", {*this});
  const Value count = apply("builtins", "len", {list});
  std::vector<Object> elements;
  for (std::int64_t i = 0; i < *count.as<std::int64_t>(); ++i) elements.push_back(list.item(i));
  return elements;
}

std::string Object::text() const {
  return plain_text(apply("builtins", "str", {*this}));
}

Value Object::value() const {
  return host_->value(*reference_);
}

Value Object::call_method(std::string_view method, List arguments, Map keywords) const {
  return attribute(method).call(std::move(arguments), std::move(keywords));
}

Value Object::apply(const char* module, const char* function, List arguments) const {
  return host_->call(host_->builtin(module, function), std::move(arguments), {});
}

Object Object::apply_keep(const char* module, const char* function, List arguments) const {
  return {*host_, host_->call_keep(host_->builtin(module, function), std::move(arguments), {})};
}

}  // namespace zv::python
