// How the engine's language writes values: as str() does ("True", "None", 4.0), as repr() does
// ('it', ['a', 1]), and the names of their types.
#pragma once

#include <string>

#include "base/value.h"

namespace zv {

std::string plain_text(const Value& value);
std::string quoted_text(const Value& value);
// Shortest text that reads back exactly: 0.5, 4.0, 1e+16, 1e-05, inf, nan.
std::string real_text(double number);
// "int", "float", "str", "NoneType", ...
std::string type_name(const Value& value);

}  // namespace zv
