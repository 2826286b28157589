#include "cli/documents.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

constexpr std::string_view HEAD =
    R"(# Completion of zv-anpr for bash; generated from its command table.

_zv_anpr() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
  local path=zv-anpr options= words= i
  # bash makes three words of --option=value
  if [[ $cur == '=' ]]; then
    cur=
  elif [[ $prev == '=' ]]; then
    prev=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for ((i = 1; i < COMP_CWORD; i++)); do
    case "$path ${COMP_WORDS[i]}" in
)";

// A first word that is no command is a photo.
constexpr std::string_view AFTER_PATHS =
    R"(      *) [[ $path == zv-anpr && ${COMP_WORDS[i]} != -* ]] && path='zv-anpr read' ;;
    esac
  done
  COMPREPLY=()
  case "$path $prev" in
)";

constexpr std::string_view AFTER_VALUES = R"(  esac
  case $path in
)";

constexpr std::string_view TAIL = R"(  esac
  if [[ $cur == -* ]]; then
    words=$options
    _zv_anpr_no_files
  fi
  COMPREPLY=($(compgen -W "$words" -- "$cur"))
}

# The words that go on from what is typed, and no files beside them.
_zv_anpr_choices() {
  _zv_anpr_no_files
  COMPREPLY=($(compgen -W "$*" -- "$cur"))
}

# Without an answer of ours bash offers files; this stops it, where bash is new enough to be told.
_zv_anpr_no_files() {
  type compopt >/dev/null 2>&1 && compopt +o default 2>/dev/null
  return 0
}

complete -o default -F _zv_anpr zv-anpr
)";

// The values of an option: the choices, files, or nothing that could be known.
std::string answer(const Option& option) {
  if (option.file) return "return";
  if (option.choices.empty()) return "_zv_anpr_no_files; return";
  return "_zv_anpr_choices " + choice_words(option) + "; return";
}

std::string value_case(const CommandPath& path, const Option& option) {
  std::string patterns;
  for (const std::string& name : names_of(option)) {
    patterns.append(patterns.empty() ? "'" : "|'").append(typed_path(path)).append(" ");
    patterns.append(name).append("'");
  }
  return "    " + patterns + ") " + answer(option) + " ;;\n";
}

std::string word_list(const CommandPath& path) {
  std::string words;
  for (const Command* command : path.back()->commands) words.append(command->name).append(" ");
  if (const Option* positional = positional_at(path)) words += choice_words(*positional);
  return words;
}

// What can stand after the command; a path such as the program's takes files too.
std::string command_case(const CommandPath& path) {
  std::string names;
  for (const Option* option : options_at(path)) {
    for (const std::string& name : names_of(*option)) names.append(name).append(" ");
  }
  const Option* positional = positional_at(path);
  const bool files = path.size() == 1 || (positional && positional->file);
  return "    '" + typed_path(path) + "')\n      options='" + names + "'\n      words='" +
         word_list(path) + "'\n" + (files ? "" : "      _zv_anpr_no_files\n") + "      ;;\n";
}

}  // namespace

std::string bash_completion(const Command& program) {
  const auto paths = command_paths(program);
  std::string script(HEAD);
  for (const CommandPath& path : paths) {
    if (path.size() > 1) {
      script += "      '" + typed_path(path) + "') path+=\" ${COMP_WORDS[i]}\" ;;\n";
    }
  }
  script += AFTER_PATHS;
  for (const CommandPath& path : paths) {
    for (const Option* option : options_at(path)) {
      if (takes_value(*option)) script += value_case(path, *option);
    }
  }
  script += AFTER_VALUES;
  for (const CommandPath& path : paths) script += command_case(path);
  return script.append(TAIL);
}

}  // namespace zv::cli
