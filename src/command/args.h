// The parsed command line: a flat record of named fields, the one argument of every handler.
#pragma once

#include <string>
#include <string_view>

#include "base/value.h"

namespace zv {

// A field exists when the command defines it; "absent" is a field without a value (null). Readers
// give the default that counts when the record lacks the field altogether.
class Args {
 public:
  Args() = default;
  Args(std::initializer_list<std::pair<std::string, Value>> fields) : fields_(fields) {}

  bool has(std::string_view name) const { return fields_.find(name) != nullptr; }
  void set(const std::string& name, Value value) { fields_.set(name, std::move(value)); }
  Value value(std::string_view name, const Value& fallback = nullptr) const;
  // Empty when absent.
  std::string text(std::string_view name, std::string_view fallback = {}) const;
  bool flag(std::string_view name) const;
  double real(std::string_view name) const;
  // The texts of a list field; empty when absent.
  List list(std::string_view name) const;

 private:
  Map fields_;
};

}  // namespace zv
