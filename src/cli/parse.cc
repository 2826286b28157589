#include "cli/parse.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "base/python_number.h"
#include "base/python_text.h"
#include "cli/options.h"

namespace zv::cli {
namespace {

// Only these are never taken for files; the others are commands unless an entry has their name.
constexpr std::array<std::string_view, 5> PROTECTED = {"gpu-info", "gpu-setup", "model-info",
                                                       "version", "server"};

bool names_files(const std::string& word) {
  if (word.starts_with('-')) return false;
  if (std::find(PROTECTED.begin(), PROTECTED.end(), word) != PROTECTED.end()) return false;
  if (word.find_first_of("./\\*") != std::string::npos) return true;
  std::error_code error;
  return std::filesystem::exists(word, error);
}

class Parser {
 public:
  Parser(const Command& program, const std::vector<std::string>& words) : words_(words) {
    enter(program);
  }

  Outcome run() {
    try {
      while (at_ < words_.size()) {
        if (auto wanted = word(words_[at_++])) return *wanted;
      }
      finish();
    } catch (const Problem& problem) {
      note(problem.message);
    }
    if (first_error_) return *first_error_;
    return Parsed{std::move(args_), path_.size() > 1 ? path_[1] : nullptr};
  }

 private:
  using Wanted = std::optional<Outcome>;

  // What is unknown ends nothing, as help may be asked for behind it. The first error is told.
  void note(const std::string& message) {
    if (!first_error_) first_error_ = UsageError{path_, message};
  }

  const Command& command() const { return *path_.back(); }

  void enter(const Command& command) {
    path_.push_back(&command);
    next_positional_ = 0;
    for (const Option& option : command.options) {
      args_.set(option.field(), default_of(option));
    }
    if (!command.commands.empty()) args_.set(std::string(command.commands_field), nullptr);
  }

  Wanted word(const std::string& word) {
    if (!only_positionals_ && word == "--") {
      only_positionals_ = true;
    } else if (!only_positionals_ && looks_like_option(word)) {
      return option(word);
    } else if (!command().commands.empty()) {
      choose(word);
    } else {
      positional(word);
    }
    return {};
  }

  // A lone dash, negative numbers and texts with blanks are values, unless an option is spelled so.
  bool looks_like_option(const std::string& word) const {
    if (word.size() < 2 || word[0] != '-') return false;
    if (parse_real(word) && !short_option(command(), word[1])) return false;
    const std::string name = word.substr(0, word.find('='));
    return name.find(' ') == std::string::npos;
  }

  Wanted option(const std::string& word) {
    return word.starts_with("--") ? long_option(word) : short_options(word);
  }

  Wanted long_option(const std::string& word) {
    const auto equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const auto candidates = long_candidates(command(), path_.size() == 1, name);
    if (candidates.empty()) return unknown_option(word);
    if (candidates.size() > 1 && !same_option(candidates)) ambiguous(name, candidates);
    const bool has_value = equals != std::string::npos;
    const Candidate& found = candidates.front();
    if (!found.option || !takes_value(*found.option)) {
      if (has_value) ignored_value(found, word.substr(equals + 1));
      return set_flag(found.name, found.option);
    }
    take(*found.option, has_value ? std::optional(word.substr(equals + 1)) : std::nullopt);
    return {};
  }

  // "-d", "-df", "-n5", "-n=5", "-n 5"
  Wanted short_options(const std::string& word) {
    Wanted wanted;
    for (std::size_t i = 1; i < word.size(); ++i) {
      if (word[i] == 'h') {
        wanted = HelpWanted{path_};
        continue;
      }
      const Option* found = short_option(command(), word[i]);
      if (!found) return unknown_option(word);
      if (takes_value(*found)) {
        const std::string rest = word.substr(i + 1);
        take(*found, rest.empty() ? std::nullopt
                                  : std::optional(rest.starts_with('=') ? rest.substr(1) : rest));
        return wanted;
      }
      set_flag(word, found);
    }
    return wanted;
  }

  Wanted set_flag(const std::string& name, const Option* option) {
    if (!option) return name == "--version" ? Outcome(VersionWanted{}) : Outcome(HelpWanted{path_});
    args_.set(option->field(), true);
    return {};
  }

  void take(const Option& option, std::optional<std::string> value) {
    if (!value) {
      const bool there = at_ < words_.size();
      const bool number = there && numeric(option) && parse_real(words_[at_]);
      if (!there || (!number && (words_[at_] == "--" || looks_like_option(words_[at_])))) {
        throw Problem{argument(option) + "expected one argument"};
      }
      value = words_[at_++];
    }
    args_.set(option.field(), converted(option, *value));
  }

  void choose(const std::string& word) {
    std::vector<std::string> names;
    for (const Command* sub : command().commands) {
      if (sub->name == word) {
        args_.set(std::string(command().commands_field), word);
        return enter(*sub);
      }
      names.emplace_back(sub->name);
    }
    throw Problem{"argument " + std::string(command().commands_field) +
                  ": invalid choice: " + quoted_text(word) + " (choose from " +
                  joined(names, ", ") + ")" + suggestion(word, names)};
  }

  void positional(const std::string& word) {
    const auto positionals = positionals_of(command());
    if (next_positional_ >= positionals.size()) {
      return note("unrecognized arguments: " + word);
    }
    const Option& option = *positionals[next_positional_];
    if (option.kind == Kind::list) {
      many_.emplace_back(word);
    } else {
      ++next_positional_;
      args_.set(option.field(), converted(option, word));
    }
  }

  // The words of a list reach the record at once: there may be thousands.
  void finish() {
    for (const Option* option : positionals_of(command())) {
      if (option->required && many_.empty()) {
        throw Problem{"the following arguments are required: " + std::string(option->names)};
      }
      if (option->kind == Kind::list) args_.set(option->field(), std::move(many_));
    }
  }

  static std::vector<const Option*> positionals_of(const Command& command) {
    std::vector<const Option*> found;
    for (const Option& option : command.options) {
      if (option.positional()) found.push_back(&option);
    }
    return found;
  }

  static bool same_option(const std::vector<Candidate>& candidates) {
    for (const Candidate& candidate : candidates) {
      if (candidate.option != candidates.front().option || !candidate.option) return false;
    }
    return true;
  }

  Wanted unknown_option(const std::string& word) {
    std::vector<std::string> names;
    for (const Candidate& candidate : long_candidates(command(), path_.size() == 1, "--")) {
      names.push_back(candidate.name);
    }
    note("unrecognized arguments: " + word + suggestion(word.substr(0, word.find('=')), names));
    return {};
  }

  [[noreturn]] static void ambiguous(const std::string& name,
                                     const std::vector<Candidate>& candidates) {
    std::vector<std::string> names;
    for (const Candidate& candidate : candidates) names.push_back(candidate.name);
    throw Problem{"ambiguous option: " + name + " could match " + joined(names, ", ")};
  }

  [[noreturn]] static void ignored_value(const Candidate& option, const std::string& value) {
    throw Problem{"argument " + option.name + ": takes no value, but got " + quoted_text(value)};
  }

  const std::vector<std::string>& words_;
  std::size_t at_ = 0;
  CommandPath path_;
  Args args_;
  std::optional<UsageError> first_error_;
  std::size_t next_positional_ = 0;
  List many_;
  bool only_positionals_ = false;
};

}  // namespace

std::vector<std::string> with_read(std::vector<std::string> words) {
  if (!words.empty() && names_files(words.front())) words.insert(words.begin(), "read");
  return words;
}

Outcome parse(const Command& program, const std::vector<std::string>& words) {
  return Parser(program, words).run();
}

}  // namespace zv::cli
