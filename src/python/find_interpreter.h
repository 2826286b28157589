// Which interpreter is "the environment's": the first of a fixed list of places that has one.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zv::python {

// What the search looks at; the real surroundings in main, made-up ones in tests.
struct Surroundings {
  std::function<std::optional<std::string>(const std::string&)> variable;
  std::string executable_folder;  // of the program itself, links resolved
};
Surroundings real_surroundings();

struct Found {
  std::string interpreter;         // empty when no place has one
  std::vector<std::string> tried;  // every place looked at, for the message
  std::string hint;                // not empty when a choice of the user's was passed over
};
// Order: ZV_ANPR_PYTHON, beside the program, VIRTUAL_ENV, CONDA_PREFIX, python3 and python on PATH.
Found find_interpreter(const Surroundings& surroundings);

}  // namespace zv::python
