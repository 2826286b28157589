#include "http/server_api.h"

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>

#include "base/json.h"
#include "base/python_text.h"
#include "http/client.h"

namespace zv::http {
namespace {

constexpr const char* CONFIG_MODULE = "zelvoran_anpr.zelvoran_anpr_server_config";
constexpr unsigned UNAUTHORIZED = 401;

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

// Unique per millisecond.
std::string make_boundary() {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  return "----Boundary" + std::to_string(duration_cast<milliseconds>(now).count());
}

Request built(const ServerRequest& request) {
  Request built{.url = request.url, .method = request.method, .timeout = request.timeout};
  if (!request.files.empty()) {
    const std::string boundary = make_boundary();
    built.method = "POST";
    built.headers.emplace_back("Content-Type", "multipart/form-data; boundary=" + boundary);
    built.body = multipart_body(boundary, request.files, request.data);
  } else if (!request.data.empty() && (request.method == "POST" || request.method == "PUT")) {
    built.headers.emplace_back("Content-Type", "application/json");
    built.body = json_line(request.data);
  }
  return built;
}

Value ask(Request request, const std::string& token) {
  if (!token.empty()) request.headers.emplace_back("X-ZV-ANPR-Token", token);
  return parse_json(fetch(std::move(request)));
}

// A name as it is, except for line breaks, which a header line cannot hold: they are written as the
// HTML standard has it.
std::string escaped(std::string name) {
  boost::replace_all(name, "\r", "%0D");
  boost::replace_all(name, "\n", "%0A");
  return name;
}

}  // namespace

std::string _server_base_url(const Args& args) {
  const std::string host = args.text("host");
  const Value port = args.value("port");
  return "http://" + (host.empty() ? "127.0.0.1" : host) + ":" +
         (truthy(port) ? plain_text(port) : "8000");
}

Value _server_api(Engine& engine, const ServerRequest& request) {
  const Request prepared = built(request);
  if (request.token == ServerRequest::Token::always) return ask(prepared, api_token(engine));
  try {
    return ask(prepared, {});
  } catch (const HttpStatusError& refusal) {
    const std::string token = refusal.code == UNAUTHORIZED ? api_token(engine) : "";
    if (token.empty()) throw;
    return ask(prepared, token);
  }
}

std::string multipart_body(std::string_view boundary, const Uploads& files, const Map& data) {
  const std::string open = "--" + std::string(boundary) + "\r\n";
  const std::string field = "Content-Disposition: form-data; name=\"";
  std::string body;
  for (const auto& [name, file] : files) {
    body += open + field + name + "\"; filename=\"" + escaped(file.file_name) + "\"\r\n";
    body += "Content-Type: " + file.content_type + "\r\n\r\n" + file.content + "\r\n";
  }
  for (const auto& [name, value] : data.entries()) {
    body += open + field + name + "\"\r\n\r\n" + plain_text(value) + "\r\n";
  }
  return body + "--" + std::string(boundary) + "--\r\n";
}

const Map& object_of(const Value& answer) {
  if (const auto* map = answer.as<Map>()) return *map;
  throw Error("'" + type_name(answer) + "' object has no attribute 'get'");
}

}  // namespace zv::http
