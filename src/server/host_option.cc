#include "server/host_option.h"

#include <algorithm>
#include <array>

#include "base/python_text.h"
#include "base/unicode.h"

namespace zv::server {
namespace {

// The zeros of scripts whose ten digits follow each other: Latin, Arabic, Persian, Devanagari,
// Bengali, Thai, full width.
constexpr std::array<std::uint32_t, 7> ZEROS = {0x30, 0x660, 0x6F0, 0x966, 0x9E6, 0xE50, 0xFF10};

bool digit(std::uint32_t point) {
  return std::any_of(ZEROS.begin(), ZEROS.end(),
                     [point](std::uint32_t zero) { return point >= zero && point < zero + 10; });
}

}  // namespace

bool looks_like_port(std::string_view host) {
  const std::string_view word = strip(host);
  for (std::size_t at = 0; at < word.size();) {
    if (!digit(next_code_point(word, at))) return false;
  }
  return !word.empty();
}

std::string mistaken_port(const std::string& host) {
  return "\n✗ Invalid --host: " + quoted_text(host) + ". Did you mean --port " + host + "?\n";
}

}  // namespace zv::server
