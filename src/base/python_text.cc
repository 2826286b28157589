#include "base/python_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "base/unicode.h"

namespace zv {
namespace {

struct Range {
  std::uint32_t first, last;
};

// Code points that are shown escaped: controls, separators, format characters, private use.
constexpr std::array<Range, 17> UNPRINTABLE = {{{0x00, 0x1F},
                                                {0x7F, 0xA0},
                                                {0xAD, 0xAD},
                                                {0x600, 0x605},
                                                {0x61C, 0x61C},
                                                {0x6DD, 0x6DD},
                                                {0x70F, 0x70F},
                                                {0x1680, 0x1680},
                                                {0x180E, 0x180E},
                                                {0x2000, 0x200F},
                                                {0x2028, 0x202F},
                                                {0x205F, 0x206F},
                                                {0x3000, 0x3000},
                                                {0xD800, 0xF8FF},
                                                {0xFEFF, 0xFEFF},
                                                {0xFFF0, 0xFFFB},
                                                {0xE0000, 0x10FFFF}}};

bool printable(std::uint32_t point) {
  for (const Range& range : UNPRINTABLE) {
    if (point >= range.first && point <= range.last) return false;
  }
  return true;
}

std::string escape(std::uint32_t point) {
  std::array<char, 12> text{};
  const char* format = point > 0xFFFF ? "\\U%08x" : point > 0xFF ? "\\u%04x" : "\\x%02x";
  std::snprintf(text.data(), text.size(), format, point);
  return text.data();
}

void append_quoted(std::string& to, std::uint32_t point, char quote) {
  constexpr std::string_view NAMED = "\n\r\t";
  constexpr std::string_view NAMES = "nrt";
  const auto named = point < 0x80 ? NAMED.find(static_cast<char>(point)) : NAMED.npos;
  if (named != NAMED.npos) {
    to.append({'\\', NAMES[named]});
  } else if (point == '\\' || point == static_cast<std::uint32_t>(quote)) {
    to.append({'\\', static_cast<char>(point)});
  } else if (printable(point)) {
    append_code_point(to, point);
  } else {
    to += escape(point);
  }
}

std::string in_quotes(std::string_view text) {
  const bool single = text.find('\'') != std::string_view::npos;
  const bool both = single && text.find('"') != std::string_view::npos;
  const char quote = single && !both ? '"' : '\'';
  std::string result(1, quote);
  for (std::size_t at = 0; at < text.size();)
    append_quoted(result, next_code_point(text, at), quote);
  return result + quote;
}

std::string list_text(const List& list) {
  std::string text = "[";
  for (const Value& item : list) text += (text.size() > 1 ? ", " : "") + quoted_text(item);
  return text + "]";
}

std::string map_text(const Map& map) {
  std::string text = "{";
  for (const auto& [key, value] : map.entries()) {
    text += (text.size() > 1 ? ", " : "") + in_quotes(key) + ": " + quoted_text(value);
  }
  return text + "}";
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

std::string plain_text(const Value& value) {
  return std::visit(Overloaded{[](std::nullptr_t) { return std::string("None"); },
                               [](bool flag) { return std::string(flag ? "True" : "False"); },
                               [](std::int64_t number) { return std::to_string(number); },
                               [](const BigInteger& number) { return number.digits; },
                               [](double number) { return real_text(number); },
                               [](const std::string& text) { return text; },
                               [](const List& list) { return list_text(list); },
                               [](const Map& map) { return map_text(map); },
                               [](Reference) { return std::string("<object>"); },
                               [](const Opaque& opaque) { return opaque.text; }},
                    value.kind());
}

std::string quoted_text(const Value& value) {
  if (const auto* text = value.as<std::string>()) return in_quotes(*text);
  if (const auto* opaque = value.as<Opaque>()) return opaque->repr;
  return plain_text(value);
}

std::string type_name(const Value& value) {
  return std::visit(Overloaded{[](std::nullptr_t) { return std::string("NoneType"); },
                               [](bool) { return std::string("bool"); },
                               [](std::int64_t) { return std::string("int"); },
                               [](const BigInteger&) { return std::string("int"); },
                               [](double) { return std::string("float"); },
                               [](const std::string&) { return std::string("str"); },
                               [](const List&) { return std::string("list"); },
                               [](const Map&) { return std::string("dict"); },
                               [](Reference) { return std::string("object"); },
                               [](const Opaque& opaque) { return opaque.type; }},
                    value.kind());
}

}  // namespace zv
