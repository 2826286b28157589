#include <array>
#include <cmath>
#include <cstdio>

#include "base/json.h"
#include "base/python_number.h"
#include "base/python_text.h"
#include "base/unicode.h"

namespace zv {
namespace {

std::string unit_escape(std::uint32_t unit) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "\\u%04x", unit & 0xFFFFU);
  return text.data();
}

std::string escaped(std::uint32_t point) {
  constexpr std::string_view NAMED = "\"\\\n\r\t\f\b";
  constexpr std::string_view NAMES = "\"\\nrtfb";
  const auto named = point < 0x80 ? NAMED.find(static_cast<char>(point)) : NAMED.npos;
  if (named != NAMED.npos) return {'\\', NAMES[named]};
  if (point >= 0x20 && point < 0x7F) return std::string(1, static_cast<char>(point));
  if (point <= 0xFFFF) return unit_escape(point);
  const std::uint32_t rest = point - 0x10000;
  return unit_escape(0xD800 + (rest >> 10U)) + unit_escape(0xDC00 + (rest & 0x3FFU));
}

using Next = std::uint32_t (*)(std::string_view text, std::size_t& position);

std::string text_json(std::string_view text, Next next) {
  std::string result = "\"";
  for (std::size_t at = 0; at < text.size();) result += escaped(next(text, at));
  return result + '"';
}

std::string real_json(double number) {
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number < 0 ? "-Infinity" : "Infinity";
  return real_text(number);
}

// Writes containers either on one line (indent 0) or with `indent` blanks per level.
class Writer {
 public:
  Writer(std::size_t indent, Next next) : indent_(indent), next_(next) {}

  void write(const Value& value, std::size_t level) {
    if (const auto* list = value.as<List>()) {
      container('[', ']', *list, level, [&](const Value& item) { write(item, level + 1); });
    } else if (const auto* map = value.as<Map>()) {
      container('{', '}', map->entries(), level, [&](const auto& entry) {
        text += text_json(entry.first, next_) + ": ";
        write(entry.second, level + 1);
      });
    } else {
      text += scalar(value);
    }
  }

  std::string text;

 private:
  std::string scalar(const Value& value) const {
    if (value.is_null()) return "null";
    if (const auto* flag = value.as<bool>()) return *flag ? "true" : "false";
    if (const auto* number = value.as<double>()) return real_json(*number);
    if (const auto* string = value.as<std::string>()) return text_json(*string, next_);
    if (const auto* reference = value.as<Reference>()) {
      return "{\"$ref\": " + std::to_string(reference->id) + "}";
    }
    if (value.as<Opaque>()) {
      throw JsonError("Object of type " + type_name(value) + " is not JSON serializable");
    }
    return plain_text(value);
  }

  void new_line(std::size_t level) { text += '\n' + std::string(indent_ * level, ' '); }

  template <class Items, class WriteItem>
  void container(char open, char close, const Items& items, std::size_t level, WriteItem item) {
    text += open;
    bool first = true;
    for (const auto& element : items) {
      if (!first) text += indent_ ? "," : ", ";
      first = false;
      if (indent_) new_line(level + 1);
      item(element);
    }
    if (indent_ && !first) new_line(level);
    text += close;
  }

  std::size_t indent_;
  Next next_;
};

std::string written(const Value& value, std::size_t indent, Next next) {
  Writer writer(indent, next);
  writer.write(value, 0);
  return std::move(writer.text);
}

}  // namespace

std::string json_line(const Value& value) {
  return written(value, 0, next_code_point);
}

std::string json_indented(const Value& value) {
  return written(value, 2, next_code_point_or_half);
}

}  // namespace zv
