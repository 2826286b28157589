#include "cli/options.h"

#include <algorithm>
#include <numeric>

#include "base/python_number.h"
#include "base/python_text.h"
#include "base/unicode.h"

namespace zv::cli {
namespace {

std::size_t edit_distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0U);
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, replaced});
    }
  }
  return row.back();
}

template <class Number>
Value number_or_problem(const Option& option, const std::string& text,
                        const std::optional<Number>& number, const char* kind) {
  if (number) return *number;
  throw Problem{argument(option) + "invalid " + kind + " value: " + quoted_text(text)};
}

Value chosen(const Option& option, const std::string& text) {
  const std::vector<std::string> choices(option.choices.begin(), option.choices.end());
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) return text;
  std::vector<std::string> quoted;
  for (const auto& choice : choices) quoted.push_back(quoted_text(choice));
  throw Problem{argument(option) + "invalid choice: " + quoted_text(text) + " (choose from " +
                joined(quoted, ", ") + ")" + suggestion(text, choices)};
}

}  // namespace

std::vector<std::string> names_of(const Option& option) {
  std::vector<std::string> names;
  std::string_view rest = option.names;
  while (!rest.empty()) {
    const auto end = rest.find('/');
    names.emplace_back(rest.substr(0, end));
    rest = end == std::string_view::npos ? "" : rest.substr(end + 1);
  }
  return names;
}

std::string metavar(const Option& option) {
  if (option.choices.empty()) {
    return option.positional() ? std::string(option.names) : ascii_upper(option.field());
  }
  return "{" + joined({option.choices.begin(), option.choices.end()}, ",") + "}";
}

bool takes_value(const Option& option) {
  return option.kind != Kind::flag;
}

bool numeric(const Option& option) {
  return option.kind == Kind::integer || option.kind == Kind::real;
}

std::vector<Candidate> long_candidates(const Command& command, bool top, const std::string& typed) {
  std::vector<Candidate> all = {{"--help", nullptr}};
  if (top) all.push_back({"--version", nullptr});
  for (const Option& option : command.options) {
    for (const std::string& name : names_of(option)) {
      if (name.starts_with("--")) all.push_back({name, &option});
    }
  }
  std::vector<Candidate> found;
  for (const Candidate& candidate : all) {
    if (candidate.name == typed) return {candidate};
    if (candidate.name.starts_with(typed)) found.push_back(candidate);
  }
  return found;
}

const Option* short_option(const Command& command, char letter) {
  for (const Option& option : command.options) {
    for (const std::string& name : names_of(option)) {
      if (name.size() == 2 && name[0] == '-' && name[1] == letter) return &option;
    }
  }
  return nullptr;
}

Value converted(const Option& option, const std::string& text) {
  if (option.kind == Kind::integer) {
    return number_or_problem(option, text, parse_integer(text), "int");
  }
  if (option.kind == Kind::real) return number_or_problem(option, text, parse_real(text), "float");
  return option.choices.empty() ? Value(text) : chosen(option, text);
}

Value default_of(const Option& option) {
  if (option.kind == Kind::flag) return false;
  if (option.kind == Kind::list) return List();
  return option.fallback.empty() ? Value() : converted(option, std::string(option.fallback));
}

std::string argument(const Option& option) {
  return "argument " + std::string(option.names) + ": ";
}

std::string joined(const std::vector<std::string>& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

std::string suggestion(const std::string& typed, const std::vector<std::string>& known) {
  constexpr std::size_t LONGEST = 64;  // nobody mistypes a word that is longer than this
  if (typed.size() > LONGEST) return {};
  std::string nearest;
  std::size_t best = std::max<std::size_t>(2, typed.size() / 3) + 1;
  for (const std::string& word : known) {
    const std::size_t distance = edit_distance(typed, word);
    if (distance >= best) continue;
    best = distance;
    nearest = word;
  }
  return nearest.empty() ? std::string() : " (did you mean '" + nearest + "'?)";
}

}  // namespace zv::cli
