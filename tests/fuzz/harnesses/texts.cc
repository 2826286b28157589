// JSON, the bridge's answers, addresses, patterns, UTF-8 and numbers.
#include <cmath>
#include <cstring>
#include <string>
#include <utility>

#include "base/glob.h"
#include "base/json.h"
#include "base/python_number.h"
#include "base/python_text.h"
#include "base/unicode.h"
#include "harness.h"
#include "http/url.h"
#include "python/wire.h"

namespace zv::fuzz {
namespace {

// Before and after the first line end.
std::pair<std::string_view, std::string_view> halves(std::string_view input) {
  const std::size_t end = std::min(input.find('\n'), input.size());
  return {input.substr(0, end), input.substr(std::min(end + 1, input.size()))};
}

Value number_of(std::string_view text) {
  if (auto whole = parse_integer(text)) return *whole;
  return parse_real(text).value_or(0);
}

void look_at(const Value& value) {
  plain_text(value);
  quoted_text(value);
  type_name(value);
  truthy(value);
}

// Code points put together again are the text they were taken from.
void take_apart(std::string_view text) {
  std::string again;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t before = at;
    const std::uint32_t code_point = next_code_point(text, at);
    promise(at > before && at <= text.size(), "a step forward");
    const bool stands_for_byte = code_point >= 0xDC00 && code_point <= 0xDFFF;
    if (stands_for_byte) again += text[before];
    if (!stands_for_byte) append_code_point(again, code_point);
  }
  promise(again == text, "the text that was taken apart");
}

}  // namespace

void json(std::string_view input) {
  succeeds([&] {
    const Value value = parse_json(input);
    parse_json(json_line(value));
    const std::string text = json_indented(value);
    promise(json_indented(parse_json(text)) == text, "a layout that reads back");
    equal(value, parse_json(text));
    look_at(value);
  });
}

void wire(std::string_view input) {
  succeeds([&] { look_at(python::read_answer(input)); });
}

void url(std::string_view input) {
  for (const std::string& text : {std::string(input), "http://" + std::string(input)}) {
    succeeds([&] {
      const http::Url found = http::parse_url(text);
      promise(!found.host.empty() && found.target.starts_with('/'), "a host and a target");
      for (const char c : found.authority() + found.target) {
        promise(c < 0 || (c > ' ' && c != '\x7F'), "no blanks and control characters");
      }
    });
  }
}

void glob(std::string_view input) {
  const auto [pattern, name] = halves(input);
  succeeds([pattern = pattern, name = name] {
    if (!has_wildcards(pattern)) promise(matches(pattern, pattern), "a name matches itself");
    matches(pattern, name);
    promise(matches("*", name), "a star matches all");
    const bool one_folder = pattern.find_first_of(std::string_view("/\0", 2)) == pattern.npos;
    if (one_folder) zv::glob(std::string(pattern));
  });
}

void unicode(std::string_view input) {
  succeeds([&] {
    take_apart(input);
    const std::string replaced = replace_invalid(input);
    promise(valid_utf8(replaced), "valid UTF-8");
    promise(!valid_utf8(input) || replaced == input, "valid text stays");
    promise(valid_utf8(escape_invalid(input)), "valid UTF-8");
    promise(strip(strip(input)) == strip(input), "stripped once and for all");
    promise(first_characters(input, count_characters(input)) == input, "all characters");
    first_characters(input, count_characters(input) / 2);
    for (std::size_t at = 0; at < input.size();) {
      const std::size_t before = at;
      next_code_point_or_half(input, at);
      promise(at > before && at <= input.size(), "a step forward");
    }
    std::size_t total = 0;
    for (const std::string& line : split_lines(input)) total += line.size();
    promise(total <= input.size(), "lines are no longer than the text");
    promise(ascii_lower(ascii_upper(input)) == ascii_lower(input), "the same letters");
    quoted_text(input);
  });
}

void numbers(std::string_view input) {
  double real = 0;
  if (input.size() >= sizeof real) {
    std::memcpy(&real, input.data(), sizeof real);
    succeeds([&] {
      const auto read = parse_real(real_text(real));
      promise(read && (*read == real || (std::isnan(real) && std::isnan(*read))), "reads back");
      fixed_text(real, static_cast<int>(input.size() % 10));
    });
    succeeds([&] { truncate(real); });
  }
  const auto [first, second] = halves(input);
  const Value left = number_of(first), right = number_of(second);
  succeeds([&] { promise(!greater(left, right) || !less(left, right), "one or the other"); });
  succeeds([&] { greater_equal(left, right), sum(left, right), equal(left, right); });
  succeeds([&] { divide(left, 100); });
  succeeds([&] { fixed_text(left, 2); });
  succeeds([&] { truncate(left); });
}

}  // namespace zv::fuzz
