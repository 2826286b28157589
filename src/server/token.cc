#include <algorithm>
#include <array>

#include "base/python_text.h"
#include "python/object.h"
#include "server/commands.h"

namespace zv::server {
namespace {

struct Address {
  std::string host = "127.0.0.1";
  std::string port = "8000";
};

// Nobody can open a wildcard address in a browser.
std::string reachable(const std::string& host) {
  constexpr std::array<std::string_view, 3> WILDCARDS = {"0.0.0.0", "::", ""};
  const bool wildcard = std::find(WILDCARDS.begin(), WILDCARDS.end(), host) != WILDCARDS.end();
  return wildcard ? "127.0.0.1" : host;
}

// Where the configuration lets the server listen.
Address configured(const python::Object& load_config) {
  const python::Object config = load_config.make();
  Address address;
  if (!truthy(config.get("server"))) return address;
  const python::Object section = config.item("server");
  const Value host = section.get("host", address.host);
  const Value port = section.get("port", address.port);
  if (!host.is_null()) address.host = reachable(plain_text(host));
  if (!port.is_null()) address.port = plain_text(port);
  return address;
}

void token(const Args& args, Session& session) {
  const auto ensure_api_token = session.engine.load(CONFIG_MODULE, "ensure_api_token");
  const auto load_config = session.engine.load(CONFIG_MODULE, "load_config");
  const bool rotate = args.flag("rotate");
  const std::string token = plain_text(ensure_api_token.call({}, {{"rotate", rotate}}));
  const Address address = configured(load_config);
  session.out << "API token: " << token << "\n"
              << "Dashboard sign-in: http://" << address.host << ":" << address.port
              << "/login#t=" << token << "\n"
              << "Scripts from other machines send it as:  Authorization: Bearer <token>\n";
  if (rotate) {
    session.out << "New token written. Restart the server to use it: zv-anpr server restart\n";
  }
}

constexpr Option OPTIONS[] = {
    {.names = "--rotate", .kind = Kind::flag, .help = "Replace the token with a new one"},
};

}  // namespace

constinit const Command TOKEN = {
    .name = "token",
    .help = "Show the API token and a dashboard sign-in link",
    .options = OPTIONS,
    .handler = token,
    .page_help = "Show the API token and a dashboard sign-in link (--rotate for a new one)"};

}  // namespace zv::server
