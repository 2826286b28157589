#include "mmc/live_switch.h"

#include <chrono>
#include <exception>
#include <string>
#include <vector>

#include "base/json.h"
#include "base/value_text.h"
#include "http/client.h"

namespace zv::mmc {
namespace {

// The server stops one recogniser and loads the other before it answers.
constexpr std::chrono::seconds TIMEOUT{120};

struct Endpoint {
  std::string host;
  std::string port;

  explicit Endpoint(const Args& args) : host(args.text("host")) {
    if (host.empty()) host = "127.0.0.1";
    const Value chosen = args.value("port");
    port = truthy(chosen) ? plain_text(chosen) : "8000";
  }
  std::string text() const { return host + ":" + port; }
};

Map ask(const std::string& backend, const Endpoint& server) {
  const std::string answer = http::fetch({.url = "http://" + server.text() + "/api/mmc/backend",
                                          .method = "PUT",
                                          .headers = {{"Content-Type", "application/json"}},
                                          .body = std::vector{json_line(Map{{"backend", backend}})},
                                          .timeout = TIMEOUT});
  const Value parsed = parse_json(answer);
  if (const auto* map = parsed.as<Map>()) return *map;
  throw JsonError("the server's answer is no object");
}

}  // namespace

void switch_running_server(const std::string& backend, const Args& args, std::ostream& out) {
  const Endpoint server(args);
  try {
    const Map answer = ask(backend, server);
    if (truthy(get(answer, "success"))) {
      out << "   ↻ Live server switched to '" << plain_text(get(answer, "backend", backend))
          << "' (no restart needed).\n";
    } else {
      out << "   ⚠️  Live switch reported failure; check server logs.\n";
    }
  } catch (const std::exception&) {
    out << "   (No running server on " << server.text()
        << " — change applies on next `zv-anpr server start`.)\n";
  }
}

}  // namespace zv::mmc
