// Commands as records: what each is called, takes, says of itself and does. Parser, help pages,
// shell completions and manual page are made from them.
#pragma once

#include <istream>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/value.h"
#include "command/engine.h"

namespace zv {

// The parsed command line: a flat record of named fields, the one argument of every handler.
// A field exists when the command defines it; "absent" is a field without a value (null). Readers
// give the default that counts when the record lacks the field altogether.
class Args {
 public:
  Args() = default;
  Args(std::initializer_list<std::pair<std::string, Value>> fields) : fields_(fields) {}

  bool has(std::string_view name) const { return fields_.find(name) != nullptr; }
  void set(const std::string& name, Value value) { fields_.set(name, std::move(value)); }
  Value value(std::string_view name, const Value& fallback = nullptr) const;
  // Empty when absent.
  std::string text(std::string_view name, std::string_view fallback = {}) const;
  bool flag(std::string_view name) const;
  double real(std::string_view name) const;
  // The texts of a list field; empty when absent.
  List list(std::string_view name) const;

 private:
  Map fields_;
};

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

// Runs "<interpreter> -m pip <arguments>" to its end, showing the command, and its error text when
// it fails. True when it succeeded.
bool _pip_run(const std::vector<std::string>& pip_arguments, Session& session);

}  // namespace zv
