// The short form without a command: `zv-anpr car.jpg` stands for `zv-anpr read car.jpg`.
#pragma once

#include <string>
#include <vector>

namespace zv::cli {

// Puts `read` in front of the user's words where the first one looks like a path or names an entry
// of the working directory.
std::vector<std::string> with_read(std::vector<std::string> words);

}  // namespace zv::cli
