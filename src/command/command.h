// Commands as records: what each is called, takes, says of itself and does. Parser, help pages,
// shell completions and manual page are made from them.
#pragma once

#include <istream>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "command/args.h"
#include "command/engine.h"

namespace zv {

// What every handler is given beside its arguments.
struct Session {
  std::ostream& out;
  std::ostream& err;  // hints and progress only; what a command reports goes to `out`
  std::istream& in;
  Engine& engine;
};
using Handler = void (*)(const Args& args, Session& session);

enum class Kind { text, integer, real, flag, list };

struct Option {
  std::string_view names;  // "--lines/-n"; without dashes it is a positional
  Kind kind = Kind::text;
  std::string_view help = {};
  std::string_view fallback = {};  // the default as it would be typed; empty is absent (or false)
  std::span<const std::string_view> choices = {};
  bool required = false;            // of a positional; the others take zero or one value
  bool file = false;                // its value names a file or folder
  std::string_view stored_as = {};  // where that is not the first long name

  bool positional() const { return !names.starts_with('-'); }
  // Of the record that the parser makes: "detector_model" for --detector-model.
  std::string field() const;
};

struct Command {
  std::string_view name;
  std::string_view help = {};  // empty: no line of its own in the listing
  std::span<const Option> options = {};
  Handler handler = nullptr;
  std::span<const Command* const> commands = {};
  std::string_view commands_title = {};
  std::string_view commands_field = {};  // the record's field that tells which one was chosen
  std::string_view description = {};
  std::string (*epilog)() = nullptr;
  std::string_view page_help = {};  // where the help page of the family above words it otherwise
  bool calls_engine = true;         // false: it wants no more than the engine's version
};

// The options of commands that talk to a server.
inline constexpr Option SERVER_HOST = {.names = "--host", .help = "Server host"};
inline constexpr Option SERVER_PORT = {
    .names = "--port", .kind = Kind::integer, .help = "Server port"};

}  // namespace zv
