#include "cli/documents.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

constexpr std::string_view HEAD = R"(#compdef zv-anpr
# Completion of zv-anpr for zsh; generated from its command table.

)";

// Text inside '...' where _arguments and _describe give colons and brackets a meaning.
std::string escaped(std::string_view text) {
  std::string out;
  for (const char letter : text) {
    if (letter == '\'') {
      out += "'\\''";
      continue;
    }
    if (letter == ':' || letter == '[' || letter == ']' || letter == '\\') out += '\\';
    out += letter;
  }
  return out;
}

// ":cpu or cuda:(cpu cuda)": what the value is called, and where candidates come from.
std::string value_spec(const Option& option) {
  const std::string name = option.positional() ? std::string(option.names) : metavar(option);
  if (!option.choices.empty())
    return ":" + escaped(option.field()) + ":(" + choice_words(option) + ")";
  return ":" + escaped(name) + ":" + (option.file ? "_files" : " ");
}

// One argument for each name; `exclude` are the other names of the same option.
std::string option_specs(const Option& option, const std::string& indent) {
  const auto names = names_of(option);
  std::string exclude;
  for (const std::string& name : names) exclude.append(exclude.empty() ? "" : " ").append(name);
  if (option.field() == "help" || option.field() == "version") exclude = "- *";
  std::string text;
  for (const std::string& name : names) {
    const bool long_name = name.starts_with("--");
    const std::string glue = !takes_value(option) ? "" : long_name ? "=" : "+";
    text += indent + "'(" + exclude + ")" + name + glue + "[" + escaped(option.help) + "]" +
            (takes_value(option) ? value_spec(option) : "") + "' \\\n";
  }
  return text;
}

std::string positional_spec(const Option& option, const std::string& indent) {
  const std::string many = option.kind == Kind::list ? "*" : option.required ? "1" : "1:";
  const std::string spec = many + value_spec(option);
  return indent + "'" + spec + "' \\\n";
}

std::string all_specs(const CommandPath& path) {
  std::string text;
  for (const Option* option : options_at(path)) text += option_specs(*option, "    ");
  if (const Option* option = positional_at(path)) text += positional_spec(*option, "    ");
  return text;
}

std::string leaf_function(const CommandPath& path) {
  return "_zv-anpr" + function_suffix(path) + "() {\n  _arguments -s \\\n" + all_specs(path) +
         "    && return 0\n}\n\n";
}

std::string command_list(const CommandPath& path) {
  std::string text;
  for (const Command* command : path.back()->commands) {
    text += "        '" + std::string(command->name) + ":" + escaped(command->help) + "'\n";
  }
  return text;
}

std::string dispatch(const CommandPath& path) {
  const std::string function = "_zv-anpr" + function_suffix(path);
  std::string text;
  for (const Command* command : path.back()->commands) {
    const std::string name(command->name);
    text += "        " + name + ") " + function + "_" + name + " ;;\n";
  }
  // A first word that is no command is a photo.
  if (path.size() == 1) text += "        *) _zv-anpr_read ;;\n";
  return text;
}

std::string family_function(const CommandPath& path) {
  return "_zv-anpr" + function_suffix(path) +
         "() {\n  local curcontext=$curcontext state line\n  local -a commands\n"
         "  _arguments -C \\\n" +
         all_specs(path) +
         "    '1: :->command' '*:: :->argument' && return 0\n"
         "  case $state in\n    command)\n      commands=(\n" +
         command_list(path) + "      )\n      _describe command commands\n" +
         (path.size() == 1 ? "      _files\n" : "") +
         "      ;;\n    argument)\n      case $words[1] in\n" + dispatch(path) +
         "      esac\n      ;;\n  esac\n}\n\n";
}

}  // namespace

std::string zsh_completion(const Command& program) {
  std::string script(HEAD);
  for (const CommandPath& path : command_paths(program)) {
    script += path.back()->commands.empty() ? leaf_function(path) : family_function(path);
  }
  return script.append("_zv-anpr \"$@\"\n");
}

}  // namespace zv::cli
