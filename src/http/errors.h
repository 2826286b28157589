// What can go wrong with a request, as types that callers tell apart.
#pragma once

#include <string>

#include "base/error.h"
#include "base/network_failure.h"

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
  HttpStatusError(int status, const std::string& reason)
      : HttpError("HTTP Error " + std::to_string(status) + ": " + reason), code(status) {}
  int code;
};

}  // namespace zv::http
