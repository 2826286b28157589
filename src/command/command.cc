#include "command/command.h"

#include <algorithm>

#include "base/python_text.h"
#include "base/run.h"
#include "base/unicode.h"

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

std::string Option::field() const {
  if (!stored_as.empty()) return std::string(stored_as);
  const auto dashes = names.find("--");
  std::string_view name = names.substr(dashes == std::string_view::npos ? 0 : dashes + 2);
  std::string field(name.substr(0, name.find('/')));
  std::replace(field.begin(), field.end(), '-', '_');
  return field;
}

bool _pip_run(const std::vector<std::string>& pip_arguments, Session& session) {
  std::vector<std::string> command = {session.engine.python(), "-m", "pip"};
  command.insert(command.end(), pip_arguments.begin(), pip_arguments.end());
  session.out << "  →";
  for (const std::string& word : command) session.out << " " << word;
  session.out << "\n";
  const Completed pip = run_captured(command);
  if (pip.exit.success()) return true;
  const std::string_view errors = strip(pip.err);
  session.out << "  ✗ Failed: " << (errors.empty() ? strip(pip.out) : errors) << "\n";
  return false;
}

}  // namespace zv
