#include "command/command.h"

#include <algorithm>

namespace zv {

std::string Option::field() const {
  if (!stored_as.empty()) return std::string(stored_as);
  const auto dashes = names.find("--");
  std::string_view name = names.substr(dashes == std::string_view::npos ? 0 : dashes + 2);
  std::string field(name.substr(0, name.find('/')));
  std::replace(field.begin(), field.end(), '-', '_');
  return field;
}

}  // namespace zv
