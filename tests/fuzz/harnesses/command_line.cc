// The words of the command line, one to a line, and what is said of wrong ones.
#include <string>
#include <variant>
#include <vector>

#include "cli/command_table.h"
#include "cli/documents.h"
#include "cli/parse.h"
#include "harness.h"

namespace zv::fuzz {
namespace {

std::vector<std::string> words_of(std::string_view input) {
  std::vector<std::string> words(1);
  for (const char c : input) {
    if (c == '\n' || c == '\0') {
      words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  return words;
}

}  // namespace

void command_line(std::string_view input) {
  const std::size_t width = 10 + input.size() % 200;
  succeeds([&] {
    const cli::Outcome outcome = cli::parse(cli::program(), cli::with_read(words_of(input)));
    if (const auto* help = std::get_if<cli::HelpWanted>(&outcome)) {
      promise(!cli::help_page(help->path, width).empty(), "a help page");
    }
    if (const auto* error = std::get_if<cli::UsageError>(&outcome)) {
      promise(cli::usage(error->path, width).ends_with('\n'), "a usage line");
      promise(!cli::program_name(error->path).empty() && !error->message.empty(), "a reason");
    }
  });
}

}  // namespace zv::fuzz
