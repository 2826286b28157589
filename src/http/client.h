// A small blocking HTTP/1.1 client: one request, one connection, no redirects, no proxies.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zv::http {

struct Request {
  std::string url;
  std::string method = "GET";
  std::vector<std::pair<std::string, std::string>> headers = {};
  // Pieces that are sent one after the other, so that large ones need not be copied together.
  std::optional<std::vector<std::string>> body = std::nullopt;
  // For the connection, and for every single read and write.
  std::chrono::milliseconds timeout = std::chrono::seconds(30);
};

// The body of the answer, decoded from its transfer form. Throws UrlError when no connection comes
// about, HttpStatusError for a status outside 2xx, HttpError for the rest ("timed out" when the
// server stops talking), and Interrupted after Ctrl+C.
std::string fetch(const Request& request);

}  // namespace zv::http
