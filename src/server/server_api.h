// Requests to a running server: where it is, and one call with its JSON answer.
#pragma once

#include <chrono>
#include <exception>
#include <string>

#include "command/session.h"
#include "server/multipart.h"

namespace zv::server {

// "http://127.0.0.1:8000" unless the options `host` and `port` say otherwise.
std::string _server_base_url(const Args& args);

struct ServerRequest {
  std::string url;
  std::string method = "GET";
  Map data = {};
  Uploads files = {};
  std::chrono::seconds timeout = std::chrono::seconds(30);
};

// Files make it a multipart POST whatever the method; else data goes as JSON with POST and PUT. The
// local API token is asked for anew and goes along when there is one. Throws what http::fetch
// throws, and JsonError.
Value _server_api(Engine& engine, ServerRequest request);

// A GET without the token, for probes.
Value probe(const std::string& url, std::chrono::seconds timeout);

// "Error: Could not reach server at ..." with what went wrong in parentheses.
std::string unreachable(const std::string& base_url, const std::exception& error);

}  // namespace zv::server
