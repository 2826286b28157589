// Object: a Python object in the engine host, used from here as one would there.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "python/host.h"

namespace zv::python {

class Object {
 public:
  Object(Host& host, Reference reference);
  static Object import(Host& host, std::string_view module, std::string_view name = {});

  // Calls it; the first form brings the result here as a value, the second keeps it there.
  Value call(List arguments = {}, Map keywords = {}) const;
  Object make(List arguments = {}, Map keywords = {}) const;

  Object attribute(std::string_view name) const;
  Object item(Value key) const;
  void set_item(Value key, Value value) const;
  bool contains(Value key) const;
  bool truthy() const;
  std::vector<Object> elements() const;
  // str(object), as a person reads it.
  std::string text() const;
  Value value() const;
  // object.method(...)
  Value call_method(std::string_view method, List arguments = {}, Map keywords = {}) const;

  // For use as an argument of a further call.
  operator Value() const { return *reference_; }

 private:
  Value apply(const char* module, const char* function, List arguments) const;
  Object apply_keep(const char* module, const char* function, List arguments) const;

  Host* host_;
  std::shared_ptr<const Reference> reference_;  // the last copy lets the object go
};

}  // namespace zv::python
