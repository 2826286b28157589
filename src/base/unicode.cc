#include "base/unicode.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace zv {
namespace {

constexpr std::uint32_t SURROGATES = 0xD800;
constexpr std::uint32_t UNDECODABLE = 0xDC00;
constexpr std::uint32_t AFTER_SURROGATES = 0xE000;

unsigned char byte_at(std::string_view text, std::size_t position) {
  return static_cast<unsigned char>(text[position]);
}

// Length of the sequence a lead byte announces, and the bits it contributes.
std::pair<std::size_t, std::uint32_t> lead(unsigned char byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {2, byte & 0x1FU};
  if (byte >= 0xE0 && byte <= 0xEF) return {3, byte & 0x0FU};
  if (byte >= 0xF0 && byte <= 0xF4) return {4, byte & 0x07U};
  return {0, 0};
}

bool well_formed(std::uint32_t point, std::size_t length) {
  if (length == 3) return point >= 0x800 && (point < 0xD800 || point > 0xDFFF);
  return length == 2 || (point >= 0x10000 && point <= 0x10FFFF);
}

bool white_space(std::uint32_t point) {
  constexpr std::array<std::uint32_t, 8> WIDE = {0x85,   0xA0,   0x1680, 0x2028,
                                                 0x2029, 0x202F, 0x205F, 0x3000};
  return (point >= 9 && point <= 13) || (point >= 0x1C && point <= 0x20) ||
         (point >= 0x2000 && point <= 0x200A) ||
         std::find(WIDE.begin(), WIDE.end(), point) != WIDE.end();
}

template <class Next, class Replace>
std::string with_invalid(std::string_view text, Next next, Replace replace) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    const std::uint32_t point = next(text, at);
    if (point >= SURROGATES && point < AFTER_SURROGATES) {
      replace(result, point);
    } else {
      result.append(text.substr(start, at - start));
    }
  }
  return result;
}

}  // namespace

std::uint32_t next_code_point(std::string_view text, std::size_t& position) {
  const unsigned char first = byte_at(text, position++);
  if (first < 0x80) return first;
  const auto [length, bits] = lead(first);
  if (length == 0 || position + length - 1 > text.size()) return UNDECODABLE + first;
  std::uint32_t point = bits;
  for (std::size_t i = 0; i + 1 < length; ++i) {
    const unsigned char next = byte_at(text, position + i);
    if ((next & 0xC0U) != 0x80U) return UNDECODABLE + first;
    point = (point << 6U) | (next & 0x3FU);
  }
  if (!well_formed(point, length)) return UNDECODABLE + first;
  position += length - 1;
  return point;
}

std::uint32_t next_code_point_or_half(std::string_view text, std::size_t& position) {
  const std::string_view bytes = text.substr(position, 3);
  const bool half = bytes.size() == 3 && bytes[0] == '\xED' &&
                    (byte_at(bytes, 1) & 0xE0U) == 0xA0 && (byte_at(bytes, 2) & 0xC0U) == 0x80;
  if (!half) return next_code_point(text, position);
  position += 3;
  return 0xD000U | (byte_at(bytes, 1) & 0x3FU) << 6U | (byte_at(bytes, 2) & 0x3FU);
}

void append_code_point(std::string& text, std::uint32_t point) {
  const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  const auto follow = [&put](std::uint32_t bits) { put(0x80U | (bits & 0x3FU)); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xC0U | (point >> 6U));
    follow(point);
  } else if (point < 0x10000) {
    put(0xE0U | (point >> 12U));
    follow(point >> 6U);
    follow(point);
  } else {
    put(0xF0U | (point >> 18U));
    follow(point >> 12U);
    follow(point >> 6U);
    follow(point);
  }
}

bool valid_utf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::uint32_t point = next_code_point(text, at);
    if (point >= UNDECODABLE && point < AFTER_SURROGATES) return false;
  }
  return true;
}

std::string first_characters(std::string_view text, std::size_t count) {
  std::size_t at = 0;
  for (std::size_t i = 0; i < count && at < text.size(); ++i) next_code_point(text, at);
  return std::string(text.substr(0, at));
}

std::size_t count_characters(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++count) next_code_point(text, at);
  return count;
}

std::string_view strip(std::string_view text) {
  std::size_t begin = text.size();
  std::size_t end = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t start = at;
    if (white_space(next_code_point(text, at))) continue;
    begin = std::min(begin, start);
    end = at;
  }
  return begin < end ? text.substr(begin, end - begin) : std::string_view();
}

std::vector<std::string> split_lines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    lines.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
  }
  return lines;
}

std::string ascii_lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return result;
}

std::string ascii_upper(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  return result;
}

std::string replace_invalid(std::string_view text) {
  return with_invalid(text, next_code_point,
                      [](std::string& to, std::uint32_t) { append_code_point(to, 0xFFFD); });
}

std::string escape_invalid(std::string_view text) {
  return with_invalid(text, next_code_point_or_half, [](std::string& to, std::uint32_t point) {
    std::array<char, 8> escape{};
    std::snprintf(escape.data(), escape.size(), "\\u%04x", point & 0xFFFFU);
    to += escape.data();
  });
}

}  // namespace zv
