// The JSON of the bridge: plain values as they are, {"$...": ...} for what JSON cannot carry.
#pragma once

#include <string>
#include <string_view>

#include "base/value.h"

namespace zv::python {

// What is said of an answer that is none.
inline constexpr const char* NO_ANSWER =
    "the engine process sent something that is no answer of its bridge";

// Turns the host's tagged JSON back into values. Throws Error.
Value read_answer(std::string_view line);

}  // namespace zv::python
