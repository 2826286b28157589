// Comparison, division and number formats of loosely typed values. What is no number is refused
// with an Error in the words of the engine's language, because users see that text.
#pragma once

#include <string>

#include "base/value.h"

namespace zv {

// left > right, left >= right, left < right; whole numbers compare exactly at any size.
bool greater(const Value& left, const Value& right);
bool greater_equal(const Value& left, const Value& right);
bool less(const Value& left, const Value& right);
// Real division.
double divide(const Value& number, double by);
// Decimal text with a fixed count of decimals.
std::string fixed_text(const Value& number, int decimals);
// Truncation toward zero, saturated at the ends of int.
int truncate(const Value& number);

}  // namespace zv
