#include "cli/documents.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

constexpr std::string_view HEAD =
    R"(# Completion of zv-anpr for fish; generated from its command table.

# Whether the words before the cursor chose the command whose words are given.
function __zv_anpr_at
    set -l typed (commandline -opc)
    set -e typed[1]
    set -l path zv-anpr
    for word in $typed
        switch "$path $word"
)";

// A first word that is no command is a photo.
constexpr std::string_view AFTER_PATHS = R"(                set path "$path $word"
            case '*'
                if test "$path" = zv-anpr; and not string match -q -- '-*' $word
                    set path 'zv-anpr read'
                end
        end
    end
    test "$path" = "$argv"
end

)";

std::string in_quotes(std::string_view text) {
  std::string out = "'";
  for (const char letter : text) {
    if (letter == '\'' || letter == '\\') out += '\\';
    out += letter;
  }
  return out + "'";
}

std::string start(const CommandPath& path) {
  return "complete -c zv-anpr -n '__zv_anpr_at " + typed_path(path) + "'";
}

// -x: a value, no file; -rF: a value that is a file.
std::string value_part(const Option& option) {
  if (!takes_value(option)) return "";
  if (option.file) return " -rF";
  return option.choices.empty() ? " -x" : " -x -a " + in_quotes(choice_words(option));
}

std::string option_line(const CommandPath& path, const Option& option) {
  std::string line = start(path);
  for (const std::string& name : names_of(option)) {
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  return line + value_part(option) + " -d " + in_quotes(option.help) + "\n";
}

std::string positional_line(const CommandPath& path) {
  const Option* option = positional_at(path);
  if (path.size() == 1 || (option && option->file)) return "";
  const std::string choices = option ? choice_words(*option) : "";
  return start(path) + " -f" + (choices.empty() ? "" : " -a " + in_quotes(choices)) + "\n";
}

}  // namespace

std::string fish_completion(const Command& program) {
  const auto paths = command_paths(program);
  std::string script(HEAD);
  script += "            case";
  for (const CommandPath& path : paths) {
    if (path.size() > 1) script += " \\\n                '" + typed_path(path) + "'";
  }
  script.append("\n").append(AFTER_PATHS);
  for (const CommandPath& path : paths) {
    script += positional_line(path);
    for (const Command* command : path.back()->commands) {
      script += start(path) + " -a " + std::string(command->name) + " -d " +
                in_quotes(command->help) + "\n";
    }
    for (const Option* option : options_at(path)) script += option_line(path, *option);
  }
  return script;
}

}  // namespace zv::cli
