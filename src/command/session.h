// Session: what every command handler is given beside its arguments.
#pragma once

#include <istream>
#include <ostream>
#include <string>

#include "command/args.h"
#include "command/engine.h"

namespace zv {

struct Session {
  std::ostream& out;
  std::ostream& err;  // hints and progress only; what a command reports goes to `out`
  std::istream& in;
  Engine& engine;
};

// Every handler has this shape.
using Handler = void (*)(const Args& args, Session& session);

}  // namespace zv
