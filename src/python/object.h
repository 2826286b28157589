// Object: a Python object in the engine host, used from here as one would there. What is of
// Python's own kinds is read from a copy that came with it; about everything else the host is
// asked.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "python/host.h"

namespace zv::python {

class Object {
 public:
  Object(Host& host, Kept kept);
  static Object import(Host& host, std::string_view module, std::string_view name = {});

  // Calls it; the first form brings the result here as a value, the second keeps it there.
  Value call(List arguments = {}, Map keywords = {}) const;
  Object make(List arguments = {}, Map keywords = {}) const;

  // object[key]; a missing key is the host's PythonError.
  Object item(Value key) const;
  void set_item(Value key, Value value) const;
  // object.get(key, fallback)
  Value get(std::string_view key, const Value& fallback = nullptr) const;
  bool contains(std::string_view key) const;
  bool truthy() const;
  std::vector<Object> elements() const;
  // str(object), as a person reads it.
  std::string text() const;
  Value value() const;

  // For use as an argument of a further call.
  operator Value() const { return reference(); }

 private:
  struct State;
  explicit Object(std::shared_ptr<State> state) : state_(std::move(state)) {}
  static Object part(std::shared_ptr<State> of, Value key, Value copy);
  Reference reference() const;
  Value apply(const char* module, const char* function, List arguments) const;
  Object apply_keep(const char* module, const char* function, List arguments) const;

  std::shared_ptr<State> state_;  // the last copy lets the object go
};

}  // namespace zv::python
