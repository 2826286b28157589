// Checks of the installed inference runtime, each in a fresh process of the interpreter.
#pragma once

#include <string>

#include "base/run.h"
#include "command/command.h"

namespace zv::runtime {

// "<interpreter> -c <script>", run to its end.
Completed run_script(const std::string& script, Session& session);

// Whether the runtime imports cleanly; prints the version or the failure.
bool _import_ok(Session& session);

// Prints whether the target's provider is there, whether CUDA starts, and how to use it.
void _verify_provider(const std::string& target, Session& session);

}  // namespace zv::runtime
