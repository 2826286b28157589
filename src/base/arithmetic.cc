#include "base/arithmetic.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

#include "base/error.h"
#include "base/number_text.h"
#include "base/value_text.h"

namespace zv {
namespace {

std::optional<std::int64_t> small_integer(const Value& value) {
  if (const auto* flag = value.as<bool>()) return *flag ? 1 : 0;
  if (const auto* number = value.as<std::int64_t>()) return *number;
  return std::nullopt;
}

// Reals as they are, whole numbers rounded to the nearest real; nothing for what is no number.
std::optional<double> real(const Value& value) {
  if (const auto* number = value.as<double>()) return *number;
  if (const auto* big = value.as<BigInteger>()) return std::strtod(big->digits.c_str(), nullptr);
  if (const auto small = small_integer(value)) return static_cast<double>(*small);
  return std::nullopt;
}

double real_or_refuse(const Value& value) {
  const auto number = real(value);
  if (!number)
    throw Error("unsupported operand type(s) for /: '" + type_name(value) + "' and 'float'");
  if (value.as<BigInteger>() && std::isinf(*number))
    throw Error("int too large to convert to float");
  return *number;
}

// Exact for whole numbers within 64 bits, by their real value otherwise.
template <class Compare>
bool compare(const Value& left, const Value& right, const char* sign, Compare holds) {
  const auto a = small_integer(left);
  const auto b = small_integer(right);
  if (a && b) return holds(*a, *b);
  const auto x = real(left);
  const auto y = real(right);
  if (x && y) return holds(*x, *y);
  throw Error(std::string("'") + sign + "' not supported between instances of '" + type_name(left) +
              "' and '" + type_name(right) + "'");
}

}  // namespace

bool greater(const Value& left, const Value& right) {
  return compare(left, right, ">", [](auto a, auto b) { return a > b; });
}

bool greater_equal(const Value& left, const Value& right) {
  return compare(left, right, ">=", [](auto a, auto b) { return a >= b; });
}

bool less(const Value& left, const Value& right) {
  return compare(left, right, "<", [](auto a, auto b) { return a < b; });
}

double divide(const Value& number, double by) {
  return real_or_refuse(number) / by;
}

std::string fixed_text(const Value& number, int decimals) {
  if (number.as<std::string>()) throw Error("Unknown format code 'f' for object of type 'str'");
  if (!real(number)) {
    throw Error("unsupported format string passed to " + type_name(number) + ".__format__");
  }
  return fixed_text(real_or_refuse(number), decimals);
}

int truncate(const Value& number) {
  const auto real_number = real(number);
  if (!real_number) {
    throw Error("a box coordinate must be a number, not '" + type_name(number) + "'");
  }
  if (std::isnan(*real_number)) throw Error("cannot convert float NaN to integer");
  if (std::isinf(*real_number)) throw Error("cannot convert float infinity to integer");
  constexpr double LOW = std::numeric_limits<int>::min();
  constexpr double HIGH = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(std::trunc(*real_number), LOW, HIGH));
}

}  // namespace zv
