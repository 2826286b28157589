// The parts of an http address.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zv::http {

struct Url {
  std::string host;  // without the brackets of an IPv6 address
  std::uint16_t port = 80;
  std::string target;  // path and query, begins with "/"

  // The value of the Host header.
  std::string authority() const;
};

// Throws Error for what is no "http://..." address or holds characters that no request can carry.
Url parse_url(std::string_view text);

}  // namespace zv::http
