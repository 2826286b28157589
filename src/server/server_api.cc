#include "server/server_api.h"

#include <algorithm>

#include "base/json.h"
#include "base/value_text.h"
#include "http/client.h"

namespace zv::server {
namespace {

constexpr const char* CONFIG_MODULE = "zelvoran_anpr.zelvoran_anpr_server_config";

bool sendable(const std::string& token) {
  const auto control = [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; };
  return std::none_of(token.begin(), token.end(), control);
}

// Empty when there is none. Whatever goes wrong here, the request goes out without a token.
std::string api_token(Engine& engine) {
  try {
    const Value token = engine.load(CONFIG_MODULE, "local_api_token").call();
    if (truthy(token) && sendable(plain_text(token))) return plain_text(token);
  } catch (const std::exception&) {
  }
  return {};
}

http::Request built(ServerRequest request) {
  http::Request built{request.url, request.method, {}, std::nullopt, request.timeout};
  if (!request.files.empty()) {
    const std::string boundary = make_boundary();
    built.method = "POST";
    built.headers.emplace_back("Content-Type", "multipart/form-data; boundary=" + boundary);
    built.body = multipart_body(boundary, std::move(request.files), request.data);
  } else if (!request.data.empty() && (request.method == "POST" || request.method == "PUT")) {
    built.headers.emplace_back("Content-Type", "application/json");
    built.body = std::vector{json_line(request.data)};
  }
  return built;
}

}  // namespace

std::string _server_base_url(const Args& args) {
  const std::string host = args.text("host");
  const Value port = args.value("port");
  return "http://" + (host.empty() ? "127.0.0.1" : host) + ":" +
         (truthy(port) ? plain_text(port) : "8000");
}

Value _server_api(Engine& engine, ServerRequest request) {
  http::Request prepared = built(std::move(request));
  const std::string token = api_token(engine);
  if (!token.empty()) prepared.headers.emplace_back("X-ZV-ANPR-Token", token);
  return parse_json(http::fetch(prepared));
}

Value probe(const std::string& url, std::chrono::seconds timeout) {
  return parse_json(http::fetch({url, "GET", {}, std::nullopt, timeout}));
}

std::string unreachable(const std::string& base_url, const std::exception& error) {
  return "Error: Could not reach server at " + base_url + " (" + error.what() + ")";
}

}  // namespace zv::server
