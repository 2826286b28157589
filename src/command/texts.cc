#include "command/texts.h"

#include <array>

#include "base/python_number.h"
#include "base/python_text.h"
#include "base/unicode.h"

namespace zv {
namespace {

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool resolution_message(std::string_view message) {
  constexpr std::array<std::string_view, 4> MARKS = {
      "nodename nor servname", "Name or service not known", "getaddrinfo failed",
      "Temporary failure in name resolution"};
  for (const std::string_view mark : MARKS) {
    if (contains(message, mark)) return true;
  }
  return false;
}

}  // namespace

std::string _fmt_size(const Value& bytes) {
  if (less(bytes, 1024)) return plain_text(bytes) + " B";
  Value rest = divide(bytes, 1024);
  constexpr std::array<const char*, 3> UNITS = {" KB", " MB", " GB"};
  std::size_t unit = 0;
  while (!less(rest, 1024) && unit + 1 < UNITS.size()) {
    rest = divide(rest, 1024);
    ++unit;
  }
  return fixed_text(rest, 1) + UNITS[unit];
}

std::string _humanize_network_error(const std::string& message, NetworkFailure kind) {
  if (kind == NetworkFailure::name_resolution || resolution_message(message)) {
    return "DNS lookup failed — check your internet connection";
  }
  if (kind == NetworkFailure::time_out || contains(ascii_lower(message), "timed out")) {
    return "connection timed out — check your internet connection";
  }
  if (kind == NetworkFailure::refused || contains(message, "Connection refused")) {
    return "connection refused by MMC server";
  }
  if (contains(message, "SSL") || contains(ascii_upper(message), "CERTIFICATE")) {
    return "SSL/TLS error — " + first_characters(message, 80);
  }
  return first_characters(message, 120);
}

}  // namespace zv
