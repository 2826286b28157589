#include "http/url.h"

#include <algorithm>
#include <charconv>

#include "base/error.h"
#include "base/python_text.h"

namespace zv::http {
namespace {

constexpr std::string_view SCHEME = "http://";

void refuse_unsendable(std::string_view text) {
  const auto unsendable = [](char c) { return c == 0x7F || (c >= 0 && c <= ' '); };
  if (std::any_of(text.begin(), text.end(), unsendable)) {
    throw Error("an address cannot hold blanks or control characters: " + quoted_text(text));
  }
}

std::uint16_t parse_port(std::string_view digits) {
  std::uint16_t port = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, problem] = std::from_chars(digits.data(), end, port);
  if (problem != std::errc() || stop != end) {
    throw Error("a port is a number from 0 to 65535, not " + quoted_text(digits));
  }
  return port;
}

// The last colon parts host and port, so that a bare IPv6 address with a port works as well.
void take_authority(std::string_view authority, Url& url) {
  const std::size_t colon = authority.rfind(':');
  const std::size_t bracket = authority.rfind(']');
  const bool has_port =
      colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket);
  if (has_port && colon + 1 < authority.size()) url.port = parse_port(authority.substr(colon + 1));
  std::string_view host = has_port ? authority.substr(0, colon) : authority;
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  if (host.empty()) throw Error("no host given");
  url.host = host;
}

}  // namespace

std::string Url::authority() const {
  const bool six = host.find(':') != std::string::npos;
  const std::string name = six ? "[" + host + "]" : host;
  return port == 80 ? name : name + ":" + std::to_string(port);
}

Url parse_url(std::string_view text) {
  refuse_unsendable(text);
  if (!text.starts_with(SCHEME)) throw Error("not an http:// address: " + quoted_text(text));
  std::string_view rest = text.substr(SCHEME.size());
  const std::size_t end = std::min(rest.find_first_of("/?#"), rest.size());
  Url url;
  take_authority(rest.substr(0, end), url);
  rest.remove_prefix(end);
  rest = rest.substr(0, rest.find('#'));
  url.target = rest.starts_with('/') ? std::string(rest) : "/" + std::string(rest);
  return url;
}

}  // namespace zv::http
