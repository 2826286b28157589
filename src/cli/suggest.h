// "Did you mean": the known word nearest to a mistyped one.
#pragma once

#include <string>
#include <vector>

namespace zv::cli {

// " (did you mean 'server'?)", or nothing when no known word is near.
std::string suggestion(const std::string& typed, const std::vector<std::string>& known);

}  // namespace zv::cli
