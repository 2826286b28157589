#include "mmc/live_switch.h"

#include <exception>

#include "base/python_text.h"
#include "http/server_api.h"

namespace zv::mmc {
namespace {

// The server stops one recogniser and loads the other before it answers.
constexpr std::chrono::seconds TIMEOUT{120};
constexpr std::size_t SCHEME_LENGTH = 7;

}  // namespace

void switch_running_server(const std::string& backend, const Args& args, Session& session) {
  const std::string base = http::_server_base_url(args);
  try {
    const Value answer =
        http::_server_api(session.engine, {.url = base + "/api/mmc/backend",
                                           .method = "PUT",
                                           .data = {{"backend", backend}},
                                           .timeout = TIMEOUT,
                                           .token = http::ServerRequest::Token::when_asked});
    const Map& verdict = http::object_of(answer);
    if (truthy(get(verdict, "success"))) {
      session.out << "   ↻ Live server switched to '"
                  << plain_text(get(verdict, "backend", backend)) << "' (no restart needed).\n";
    } else {
      session.out << "   ⚠️  Live switch reported failure; check server logs.\n";
    }
  } catch (const std::exception&) {
    session.out << "   (No running server on " << base.substr(SCHEME_LENGTH)
                << " — change applies on next `zv-anpr server start`.)\n";
  }
}

}  // namespace zv::mmc
