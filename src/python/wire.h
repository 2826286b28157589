// The JSON of the bridge: plain values as they are, {"$...": ...} for what JSON cannot carry.
#pragma once

#include <string>
#include <string_view>

#include "base/value.h"

namespace zv::python {

// Turns the host's tagged JSON back into values. Throws JsonError.
Value read_answer(std::string_view line);

}  // namespace zv::python
