#include "command/args.h"

#include "base/python_text.h"

namespace zv {

Value Args::value(std::string_view name, const Value& fallback) const {
  return get(fields_, name, fallback);
}

std::string Args::text(std::string_view name, std::string_view fallback) const {
  const Value found = value(name, fallback);
  return found.is_null() ? std::string() : plain_text(found);
}

bool Args::flag(std::string_view name) const {
  return truthy(value(name));
}

double Args::real(std::string_view name) const {
  const Value found = value(name);
  const auto* number = found.as<double>();
  return number ? *number : 0;
}

List Args::list(std::string_view name) const {
  const Value found = value(name);
  const auto* list = found.as<List>();
  return list ? *list : List();
}

}  // namespace zv
