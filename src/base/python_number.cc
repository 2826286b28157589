#include "base/python_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "base/error.h"
#include "base/python_text.h"
#include "base/unicode.h"

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

double real_or_refuse(const Value& value, const char* sign = "/") {
  const auto number = real(value);
  if (!number) {
    throw Error(std::string("unsupported operand type(s) for ") + sign + ": '" + type_name(value) +
                "' and '" + (*sign == '/' ? "float" : "int") + "'");
  }
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

bool digit(char c) {
  return c >= '0' && c <= '9';
}

// Removes single underscores between digits; nothing when one stands elsewhere.
std::optional<std::string> without_underscores(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '_') {
      plain += text[i];
    } else if (i == 0 || i + 1 == text.size() || !digit(text[i - 1]) || !digit(text[i + 1])) {
      return std::nullopt;
    }
  }
  return plain;
}

Value whole_number(const std::string& digits) {
  std::int64_t small = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), small);
  if (error == std::errc() && end == digits.data() + digits.size()) return small;
  return BigInteger{digits};
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

Value sum(const Value& left, const Value& right) {
  const auto a = small_integer(left);
  const auto b = small_integer(right);
  using Limits = std::numeric_limits<std::int64_t>;
  const bool fits = a && b && (*b < 0 ? *a >= Limits::min() - *b : *a <= Limits::max() - *b);
  if (fits) return *a + *b;
  return real_or_refuse(left, "+") + real_or_refuse(right, "+");
}

double divide(const Value& number, double by) {
  return real_or_refuse(number) / by;
}

std::string fixed_text(double number, int decimals) {
  if (!std::isfinite(number)) return real_text(number);
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, "%.*f", decimals, number)),
                   ' ');
  std::snprintf(text.data(), text.size() + 1, "%.*f", decimals, number);
  return text;
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

std::optional<Value> parse_integer(std::string_view text) {
  text = strip(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const auto plain = without_underscores(text);
  if (!plain || plain->empty()) return std::nullopt;
  for (const char c : *plain) {
    if (!digit(c)) return std::nullopt;
  }
  const auto first = plain->find_first_not_of('0');
  const std::string digits = first == std::string::npos ? "0" : plain->substr(first);
  return whole_number((negative && digits != "0" ? "-" : "") + digits);
}

std::optional<double> parse_real(std::string_view text) {
  const auto plain = without_underscores(strip(text));
  if (!plain || plain->empty()) return std::nullopt;
  std::string_view rest = *plain;
  if (rest.starts_with("+-") || rest.find('(') != std::string_view::npos) return std::nullopt;
  if (rest.starts_with('+')) rest.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
  if (end != rest.data() + rest.size()) return std::nullopt;
  if (error == std::errc::result_out_of_range)
    return std::strtod(std::string(rest).c_str(), nullptr);
  if (error != std::errc()) return std::nullopt;
  return number;
}

}  // namespace zv
