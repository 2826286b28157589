// A small blocking HTTP/1.1 client: one request, one connection, no redirects, no proxies.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "base/error.h"
#include "command/texts.h"

namespace zv::http {

// The answer did not come in whole and well-formed; also the base of the more precise kinds.
class HttpError : public Error {
 public:
  explicit HttpError(const std::string& text, NetworkFailure of = NetworkFailure::other)
      : Error(text), kind(of) {}
  NetworkFailure kind;
};

// No connection came about; the text is the reason, "[Errno 111] Connection refused".
class UrlError : public HttpError {
 public:
  using HttpError::HttpError;
};

// The server answered with a status outside 2xx; "HTTP Error 404: Not Found".
class HttpStatusError : public HttpError {
 public:
  HttpStatusError(unsigned status, const std::string& reason);
  unsigned code;
};

struct Request {
  std::string url;
  std::string method = "GET";
  std::vector<std::pair<std::string, std::string>> headers = {};
  std::string body = {};
  // For the connection, and for every single read and write.
  std::chrono::milliseconds timeout = std::chrono::seconds(30);
};

// The body of the answer, decoded from its transfer form. Throws UrlError, HttpStatusError,
// HttpError for the rest ("timed out" when the server stops talking, and answers beyond 16 MiB),
// Error for what no request can carry, and Interrupted after Ctrl+C.
std::string fetch(Request request);

}  // namespace zv::http
