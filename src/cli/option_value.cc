#include "cli/option_value.h"

#include "base/number_text.h"
#include "base/value_text.h"
#include "cli/option_names.h"
#include "cli/suggest.h"

namespace zv::cli {

std::string argument(const Option& option) {
  return "argument " + display_name(option) + ": ";
}

std::string joined(const std::vector<std::string>& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

Value converted(const Option& option, const std::string& text) {
  if (option.kind == Kind::integer) {
    if (const auto number = parse_integer(text)) return *number;
    throw Problem{argument(option) + "invalid int value: " + quoted_text(text)};
  }
  if (option.kind == Kind::real) {
    if (const auto number = parse_real(text)) return *number;
    throw Problem{argument(option) + "invalid float value: " + quoted_text(text)};
  }
  std::vector<std::string> choices;
  for (const auto choice : option.choices) choices.emplace_back(choice);
  for (const auto& choice : choices) {
    if (choice == text) return text;
  }
  if (choices.empty()) return text;
  std::vector<std::string> quoted;
  for (const auto& choice : choices) quoted.push_back(quoted_text(choice));
  throw Problem{argument(option) + "invalid choice: " + quoted_text(text) + " (choose from " +
                joined(quoted, ", ") + ")" + suggestion(text, choices)};
}

Value default_of(const Option& option) {
  if (option.kind == Kind::flag) return false;
  if (option.kind == Kind::list) return List();
  return option.fallback.empty() ? Value() : converted(option, std::string(option.fallback));
}

bool numeric(const Option& option) {
  return option.kind == Kind::integer || option.kind == Kind::real;
}

}  // namespace zv::cli
