// Help pages, completions and the manual page say the same as the command table, command by
// command.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "cli/command_table.h"
#include "cli/documents.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

using testing::HasSubstr;

// What lies between two texts, or nothing when the first is not there.
std::string between(const std::string& text, const std::string& first, const std::string& last) {
  const auto begin = text.find(first);
  if (begin == std::string::npos) return {};
  const auto start = begin + first.size();
  return text.substr(start, text.find(last, start) - start);
}

std::string lines_with(const std::string& text, const std::string& part) {
  std::istringstream lines(text);
  std::string found;
  for (std::string line; std::getline(lines, line);) {
    if (line.find(part) != std::string::npos) found += line + "\n";
  }
  return found;
}

std::string in_roff(std::string text) {
  for (std::size_t at = 0; (at = text.find('-', at)) != std::string::npos; at += 2) {
    text.insert(at, "\\");
  }
  return text;
}

class EveryCommand : public testing::TestWithParam<CommandPath> {
 protected:
  const CommandPath& path() const { return GetParam(); }
  std::string words() const { return typed_path(path()); }

  // Every name of every option and every command below, as `show` writes it.
  template <typename Show>
  void expect_names(const std::string& text, Show show) const {
    ASSERT_NE(text, "") << words();
    for (const Option* option : options_at(path())) {
      for (const std::string& name : names_of(*option)) EXPECT_THAT(text, HasSubstr(show(name)));
    }
  }

  void expect_commands(const std::string& text) const {
    for (const Command* command : path().back()->commands) {
      EXPECT_THAT(text, HasSubstr(std::string(command->name)));
    }
  }

  void expect_choices(const std::string& text) const {
    for (const Option& option : path().back()->options) {
      EXPECT_THAT(text, HasSubstr(choice_words(option)));
    }
  }
};

TEST_P(EveryCommand, IsToldByItsHelpPage) {
  const std::string page = help_page(path(), 1000);
  expect_names(page, [](const std::string& name) { return name; });
  expect_commands(page);
  for (const Option& option : path().back()->options) {
    EXPECT_THAT(page, HasSubstr(std::string(option.help)));
    if (takes_value(option)) {
      EXPECT_THAT(page, HasSubstr(metavar(option)));
    }
  }
}

TEST_P(EveryCommand, IsCompletedByBash) {
  const std::string script = bash_completion(program());
  const std::string offered = between(script, "    '" + words() + "')\n", ";;\n");
  expect_names(between(offered, "options='", "\n"), [](const std::string& n) { return n + " "; });
  expect_commands(between(offered, "words='", "\n"));
  expect_choices(offered + lines_with(script, "'" + words() + " -"));
}

TEST_P(EveryCommand, IsCompletedByZsh) {
  const std::string script = zsh_completion(program());
  const std::string function =
      between(script, "\n_zv-anpr" + function_suffix(path()) + "() {", "\n}");
  expect_names(function, [](const std::string& name) { return ")" + name; });
  expect_commands(function);
  expect_choices(function);
}

TEST_P(EveryCommand, IsCompletedByFish) {
  const std::string script = fish_completion(program());
  const std::string lines = lines_with(script, "'__zv_anpr_at " + words() + "'");
  expect_names(lines, [](const std::string& name) {
    return name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  });
  expect_commands(lines);
  expect_choices(lines);
}

TEST_P(EveryCommand, IsDescribedByTheManualPage) {
  const std::string heading = path().size() == 1 ? "options without a command" : words();
  const std::string text =
      between(manual_page(program(), "1.2.3"), ".SS \"" + in_roff(heading) + "\"\n", "\n.S");
  expect_names(text, [](const std::string& name) { return "\\fB" + in_roff(name) + "\\fR"; });
  for (const Option& option : path().back()->options) {
    EXPECT_THAT(text, HasSubstr(in_roff(std::string(option.help))));
    if (takes_value(option)) {
      EXPECT_THAT(text, HasSubstr(in_roff(metavar(option))));
    }
  }
}

std::string test_name(const testing::TestParamInfo<CommandPath>& info) {
  std::string name = "program" + function_suffix(info.param);
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Table, EveryCommand, testing::ValuesIn(command_paths(program())),
                         test_name);

TEST(CommandPaths, ReachEveryCommandOfEveryLevel) {
  std::vector<std::string> typed;
  for (const CommandPath& path : command_paths(program())) typed.push_back(typed_path(path));
  EXPECT_THAT(typed, testing::IsSupersetOf({"zv-anpr", "zv-anpr read", "zv-anpr server",
                                            "zv-anpr server logs", "zv-anpr mmc-uninstall"}));
}

constexpr Option TRICKY[] = {
    {.names = "--odd", .help = "it's a [b:c] \\ thing"},
    {.names = "where", .help = ".dot first", .file = true},
};
constexpr Command GO = {.name = "go", .help = "'quoted'", .options = TRICKY};
constexpr const Command* TRICKY_COMMANDS[] = {&GO};
constexpr Command TRICKY_PROGRAM = {.name = "p", .commands = TRICKY_COMMANDS};

TEST(Texts, AreQuotedForEachReader) {
  EXPECT_THAT(zsh_completion(TRICKY_PROGRAM), HasSubstr(R"([it'\''s a \[b\:c\] \\ thing])"));
  EXPECT_THAT(fish_completion(TRICKY_PROGRAM), HasSubstr(R"('it\'s a [b:c] \\ thing')"));
  const std::string page = manual_page(TRICKY_PROGRAM, "1");
  EXPECT_THAT(page, HasSubstr("\n\\&.dot first\n"));
  EXPECT_THAT(page, HasSubstr("\n\\&'quoted'.\n"));
  EXPECT_THAT(page, HasSubstr("it's a [b:c] \\e thing\n"));
}

}  // namespace
}  // namespace zv::cli
