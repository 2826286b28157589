// JSON texts: reading, and writing as pure ASCII in the two layouts the program uses.
#pragma once

#include <string>
#include <string_view>

#include "base/error.h"
#include "base/value.h"

namespace zv {

class JsonError : public Error {
 public:
  using Error::Error;
};

// Whole numbers stay whole at any size, a key given twice keeps the last value. Throws JsonError
// for what is no JSON, has text after it, is no UTF-8, or nests more than 500 deep.
Value parse_json(std::string_view text);

// One line, ", " and ": " as separators. File names in it are read back byte for byte.
std::string json_line(const Value& value);
// Two blanks of indentation per level, one element or member per line, no newline at the end.
// Halves of surrogate pairs stay what they are.
std::string json_indented(const Value& value);

}  // namespace zv
