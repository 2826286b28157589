// How values look to a person: plain ("True", "None", 4.0), quoted ('it', ['a', 1]), their kind's
// name, and whether they count as true. The conventions are those of the engine's language.
#pragma once

#include <string>

#include "base/value.h"

namespace zv {

std::string plain_text(const Value& value);
std::string quoted_text(const Value& value);
// "int", "float", "str", "NoneType", ...
std::string type_name(const Value& value);
// False: null, false, zero, empty text, empty list, empty map. Everything else is true.
bool truthy(const Value& value);

}  // namespace zv
