#include "cli/documents.h"

#include "cli/command_table.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

void add_below(const CommandPath& path, std::vector<CommandPath>& all) {
  all.push_back(path);
  for (const Command* command : path.back()->commands) {
    CommandPath longer = path;
    longer.push_back(command);
    add_below(longer, all);
  }
}

}  // namespace

std::vector<CommandPath> command_paths(const Command& program) {
  std::vector<CommandPath> all;
  add_below({&program}, all);
  return all;
}

std::string typed_path(const CommandPath& path) {
  std::string text = "zv-anpr";
  for (std::size_t i = 1; i < path.size(); ++i) text.append(" ").append(path[i]->name);
  return text;
}

std::string function_suffix(const CommandPath& path) {
  std::string text;
  for (std::size_t i = 1; i < path.size(); ++i) text.append("_").append(path[i]->name);
  return text;
}

std::vector<const Option*> options_at(const CommandPath& path) {
  std::vector<const Option*> options;
  for (const Option& option : common_options(path.size() == 1)) options.push_back(&option);
  for (const Option& option : path.back()->options) {
    if (!option.positional()) options.push_back(&option);
  }
  return options;
}

const Option* positional_at(const CommandPath& path) {
  for (const Option& option : path.back()->options) {
    if (option.positional()) return &option;
  }
  return nullptr;
}

std::string choice_words(const Option& option) {
  return joined({option.choices.begin(), option.choices.end()}, " ");
}

}  // namespace zv::cli
