#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "base/python_number.h"
#include "base/unicode.h"
#include "cli/documents.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

constexpr std::size_t HELP_COLUMN = 24;

// Lines of at most `width` columns; a longer word stands alone on its line.
std::vector<std::string> wrap_words(const std::vector<std::string>& words, std::size_t width) {
  std::vector<std::string> lines;
  for (const std::string& word : words) {
    const bool fits =
        !lines.empty() && count_characters(lines.back()) + 1 + count_characters(word) <= width;
    if (fits) {
      lines.back() += " " + word;
    } else {
      lines.push_back(word);
    }
  }
  return lines;
}

std::vector<std::string> wrap(const std::string& text, std::size_t width) {
  std::istringstream stream(text);
  return wrap_words({std::istream_iterator<std::string>{stream}, {}}, width);
}

// One line of a listing: what is typed, what it does, how far it is indented.
struct Entry {
  std::string typed;
  std::string help;
  std::size_t indent = 2;
};

std::string command_choices(const Command& command) {
  std::vector<std::string> names;
  for (const Command* sub : command.commands) names.emplace_back(sub->name);
  return "{" + joined(names, ",") + "}";
}

// "--lines LINES, -n LINES"
std::string invocation(const Option& option) {
  std::vector<std::string> names = names_of(option);
  for (std::string& name : names) name += takes_value(option) ? " " + metavar(option) : "";
  return joined(names, ", ");
}

std::vector<std::string> option_parts(const CommandPath& path) {
  std::vector<std::string> parts;
  for (const Option* option : options_at(path)) {
    const std::string value = takes_value(*option) ? " " + metavar(*option) : "";
    parts.push_back("[" + names_of(*option).front() + value + "]");
  }
  return parts;
}

std::vector<std::string> positional_parts(const Command& command) {
  std::vector<std::string> parts;
  for (const Option& option : command.options) {
    if (!option.positional()) continue;
    const std::string name = metavar(option);
    if (option.kind == Kind::list) {
      parts.push_back(name);
      parts.push_back("[" + name + " ...]");
    } else {
      parts.push_back("[" + name + "]");
    }
  }
  if (!command.commands.empty()) {
    parts.push_back(command_choices(command));
    parts.emplace_back("...");
  }
  return parts;
}

std::vector<Entry> positional_entries(const Command& command) {
  std::vector<Entry> entries;
  for (const Option& option : command.options) {
    if (option.positional()) entries.push_back({metavar(option), std::string(option.help)});
  }
  if (command.commands.empty()) return entries;
  entries.push_back({command_choices(command), std::string(command.commands_title)});
  for (const Command* sub : command.commands) {
    if (!sub->help.empty()) entries.push_back({std::string(sub->name), std::string(sub->help), 4});
  }
  return entries;
}

std::vector<Entry> option_entries(const CommandPath& path) {
  std::vector<Entry> entries;
  for (const Option* option : options_at(path)) {
    entries.push_back({invocation(*option), std::string(option->help)});
  }
  return entries;
}

std::string entry_text(const Entry& entry, std::size_t column, std::size_t width) {
  const std::size_t used = entry.indent + count_characters(entry.typed);
  std::string text = std::string(entry.indent, ' ') + entry.typed;
  bool beside = used + 2 <= column;
  for (const std::string& line : wrap(entry.help, std::max<std::size_t>(width - column, 11))) {
    text += beside ? std::string(column - used, ' ') : "\n" + std::string(column, ' ');
    text += line;
    beside = false;
  }
  return text + "\n";
}

std::string section(const char* title, const std::vector<Entry>& entries, std::size_t column,
                    std::size_t width) {
  if (entries.empty()) return {};
  std::string text = std::string("\n") + title + ":\n";
  for (const Entry& entry : entries) text += entry_text(entry, column, width);
  return text;
}

std::size_t help_column(const std::vector<Entry>& first, const std::vector<Entry>& second) {
  std::size_t longest = 0;
  for (const auto* entries : {&first, &second}) {
    for (const Entry& entry : *entries) {
      longest = std::max(longest, entry.indent + count_characters(entry.typed) + 2);
    }
  }
  return std::min(longest, HELP_COLUMN);
}

}  // namespace

std::string program_name(const CommandPath& path) {
  std::vector<std::string> names;
  for (const Command* command : path) names.emplace_back(command->name);
  return joined(names, " ");
}

std::string usage(const CommandPath& path, std::size_t width) {
  const std::string start = "usage: " + program_name(path) + " ";
  const auto options = option_parts(path);
  const auto positionals = positional_parts(*path.back());
  std::vector<std::string> all = options;
  all.insert(all.end(), positionals.begin(), positionals.end());
  const auto one_line = wrap_words(all, SIZE_MAX / 2);
  if (start.size() + one_line[0].size() <= width) return start + one_line[0] + "\n";
  const std::size_t room = width > start.size() ? width - start.size() : 1;
  std::string text = start;
  bool first = true;
  for (const auto& parts : {options, positionals}) {
    for (const std::string& line : wrap_words(parts, room)) {
      text += (first ? "" : std::string(start.size(), ' ')) + line + "\n";
      first = false;
    }
  }
  return text;
}

std::string help_page(const CommandPath& path, std::size_t width) {
  const Command& command = *path.back();
  const auto positionals = positional_entries(command);
  const auto options = option_entries(path);
  const std::size_t column = help_column(positionals, options);
  std::string page = usage(path, width);
  if (!command.description.empty()) page += "\n" + std::string(command.description) + "\n";
  page += section("positional arguments", positionals, column, width);
  page += section("options", options, column, width);
  if (command.epilog) page += command.epilog();  // begins with an empty line
  return page;
}

std::size_t help_width() {
  constexpr std::size_t USUAL = 80;
  constexpr std::size_t NARROWEST = 40;
  const char* columns = std::getenv("COLUMNS");
  const auto number = columns ? parse_integer(columns) : std::nullopt;
  const auto* small = number ? number->as<std::int64_t>() : nullptr;
  const std::size_t width = small && *small > 0 ? static_cast<std::size_t>(*small) : USUAL;
  return std::max(width, NARROWEST) - 2;
}

}  // namespace zv::cli
