#include "command/network_error.h"

#include <array>

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
