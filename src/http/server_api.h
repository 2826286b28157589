// Requests to a running server: where it is, the token, and one call with its JSON answer.
#pragma once

#include <chrono>
#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "command/command.h"

namespace zv::http {

// "http://127.0.0.1:8000" unless the options `host` and `port` say otherwise.
std::string _server_base_url(const Args& args);

struct Upload {
  std::string file_name;
  std::string content;
  std::string content_type;
};
// By field name, in the order in which they are sent.
using Uploads = std::vector<std::pair<std::string, Upload>>;

struct ServerRequest {
  // Whether the token goes along at once, or only to a server that refuses us without it.
  enum class Token { always, when_asked };

  std::string url;
  std::string method = "GET";
  Map data = {};
  Uploads files = {};
  std::chrono::seconds timeout = std::chrono::seconds(30);
  Token token = Token::always;
};

// Files make it a multipart POST whatever the method; else data goes as JSON with POST and PUT. The
// local API token is asked for anew and goes along when there is one. Throws what fetch throws, and
// JsonError.
Value _server_api(Engine& engine, const ServerRequest& request);

// Files first, then plain fields. Line breaks and quotes in names are escaped as browsers do.
std::string multipart_body(std::string_view boundary, const Uploads& files, const Map& data);

// The answer as an object. Throws Error for anything else.
const Map& object_of(const Value& answer);

}  // namespace zv::http
