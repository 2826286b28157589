// Texts of real numbers, and numbers of texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/value.h"

namespace zv {

// Shortest text that reads back exactly: 0.5, 4.0, 1e+16, 1e-05, inf, nan.
std::string real_text(double number);
// A fixed count of decimals, ties of the exact binary value to even: fixed_text(2.5, 0) is "2".
std::string fixed_text(double number, int decimals);
// "42", " -7 ", "+1_000": a whole number of any size, as an int64_t or a BigInteger.
std::optional<Value> parse_integer(std::string_view text);
// "0.5", "1e-3", "inf", "nan", "1_000.5".
std::optional<double> parse_real(std::string_view text);

}  // namespace zv
