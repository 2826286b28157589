#include "cli/option_names.h"

#include "base/unicode.h"

namespace zv::cli {

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

std::string display_name(const Option& option) {
  return std::string(option.names);
}

std::string metavar(const Option& option) {
  if (option.choices.empty()) {
    return option.positional() ? std::string(option.names) : ascii_upper(option.field);
  }
  std::string text = "{";
  for (const auto choice : option.choices)
    text += (text.size() > 1 ? "," : "") + std::string(choice);
  return text + "}";
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

}  // namespace zv::cli
