#include "image/raw_profile.h"

#include <charconv>
#include <cstddef>

namespace zv::image {
namespace {

// What stands after the third line break: the text opens with one, then name and length follow.
std::string_view digits_of(std::string_view text) {
  for (int line = 0; line < 3; ++line) {
    const std::size_t end = text.find('\n');
    if (end == text.npos) return {};
    text.remove_prefix(end + 1);
  }
  return text;
}

}  // namespace

std::vector<std::uint8_t> parse_raw_profile(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  std::string_view digits = digits_of(text);
  while (!digits.empty()) {
    if (digits[0] == '\n') {
      digits.remove_prefix(1);
      continue;
    }
    std::uint8_t byte = 0;
    const auto pair = digits.substr(0, 2);
    const auto [end, error] = std::from_chars(pair.begin(), pair.end(), byte, 16);
    if (error != std::errc() || end != pair.begin() + 2) break;
    bytes.push_back(byte);
    digits.remove_prefix(2);
  }
  return bytes;
}

}  // namespace zv::image
