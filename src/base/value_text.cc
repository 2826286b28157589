#include "base/value_text.h"

#include <array>
#include <cstdio>

#include "base/number_text.h"
#include "base/unicode.h"

namespace zv {
namespace {

template <class... Ts>
struct Overloaded : Ts... {
  using Ts::operator()...;
};
template <class... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

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
  if (point == '\n') {
    to += "\\n";
  } else if (point == '\r') {
    to += "\\r";
  } else if (point == '\t') {
    to += "\\t";
  } else if (point == '\\' || point == static_cast<std::uint32_t>(quote)) {
    to += '\\';
    to += static_cast<char>(point);
  } else if (printable(point)) {
    append_code_point(to, point);
  } else {
    to += escape(point);
  }
}

std::string quoted(std::string_view text) {
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
    text += (text.size() > 1 ? ", " : "") + quoted(key) + ": " + quoted_text(value);
  }
  return text + "}";
}

}  // namespace

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
  if (const auto* text = value.as<std::string>()) return quoted(*text);
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

bool truthy(const Value& value) {
  return std::visit(Overloaded{[](std::nullptr_t) { return false; }, [](bool flag) { return flag; },
                               [](std::int64_t number) { return number != 0; },
                               [](const BigInteger&) { return true; },
                               [](double number) { return number != 0.0; },
                               [](const std::string& text) { return !text.empty(); },
                               [](const List& list) { return !list.empty(); },
                               [](const Map& map) { return !map.empty(); },
                               [](Reference) { return true; }, [](const Opaque&) { return true; }},
                    value.kind());
}

}  // namespace zv
