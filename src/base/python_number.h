// Numbers as the engine's language compares, divides, writes and reads them. What is no number is
// refused with an Error in that language's words, because users see that text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/value.h"

namespace zv {

// left > right, left >= right, left < right; whole numbers compare exactly at any size.
bool greater(const Value& left, const Value& right);
bool greater_equal(const Value& left, const Value& right);
bool less(const Value& left, const Value& right);
// Whole numbers add up exactly as long as 64 bits hold the sum.
Value sum(const Value& left, const Value& right);
// Real division.
double divide(const Value& number, double by);
// Truncation toward zero, saturated at the ends of int.
int truncate(const Value& number);

// A fixed count of decimals, ties of the exact binary value to even: fixed_text(2.5, 0) is "2".
std::string fixed_text(double number, int decimals);
std::string fixed_text(const Value& number, int decimals);

// "42", " -7 ", "+1_000": a whole number of any size, as an int64_t or a BigInteger.
std::optional<Value> parse_integer(std::string_view text);
// "0.5", "1e-3", "inf", "nan", "1_000.5".
std::optional<double> parse_real(std::string_view text);

}  // namespace zv
