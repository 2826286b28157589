// The grammar as data: every command and option, once. The parser, the help pages, the shell
// completions and the manual page are all made from it.
#pragma once

#include <span>
#include <string_view>

#include "base/value.h"
#include "command/session.h"

namespace zv::cli {

enum class Kind { text, integer, real, flag, list };

struct Option {
  std::string_view names;  // "--lines/-n"; without dashes it is a positional
  std::string_view field;
  Kind kind = Kind::text;
  std::string_view help = {};
  std::string_view fallback = {};  // the default as it would be typed; empty is absent (or false)
  std::span<const std::string_view> choices = {};
  bool required = false;  // of a positional; the others take zero or one value
  bool file = false;      // its value names a file or folder

  bool positional() const { return !names.starts_with('-'); }
};

struct Command {
  std::string_view name;
  std::string_view help = {};  // empty: no line of its own in the listing
  std::span<const Option> options = {};
  std::span<const Command> commands = {};
  std::string_view commands_title = {};
  std::string_view commands_field = {};  // the record's field that tells which one was chosen
  std::string_view description = {};
  std::string_view epilog = {};
  Handler handler = nullptr;
  bool calls_engine = true;  // false: it wants no more than the engine's version
};

// The program itself: its commands, their options, the text above them.
const Command& program();
// The options that every command has; the program itself has more.
std::span<const Option> common_options(bool top);

}  // namespace zv::cli
