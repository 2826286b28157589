// Hangups: what tells the programs of a terminal that it was closed.
#pragma once

#include <string>
#include <vector>

namespace zv {

// The command to start so that the child ignores hangups when this process was told to, by `nohup`:
// the library that starts children makes them listen to every signal again.
std::vector<std::string> with_hangups_as_here(const std::vector<std::string>& command);

}  // namespace zv
