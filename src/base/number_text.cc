#include "base/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "base/unicode.h"

namespace zv {
namespace {

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

// Exponents outside [-4, 16) are written with "e", as the engine's language does.
std::string shortest(double number) {
  std::array<char, 32> buffer{};
  const auto scientific = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                        std::chars_format::scientific);
  std::string text(buffer.data(), scientific.ptr);
  const int exponent = std::atoi(text.c_str() + text.find('e') + 1);
  if (exponent < -4 || exponent >= 16) return text;
  std::array<char, 64> plain{};
  const auto fixed =
      std::to_chars(plain.data(), plain.data() + plain.size(), number, std::chars_format::fixed);
  return {plain.data(), fixed.ptr};
}

}  // namespace

std::string real_text(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
  std::string text = shortest(number);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

std::string fixed_text(double number, int decimals) {
  if (!std::isfinite(number)) return real_text(number);
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, "%.*f", decimals, number)),
                   ' ');
  std::snprintf(text.data(), text.size() + 1, "%.*f", decimals, number);
  return text;
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
