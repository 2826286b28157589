#include <exception>
#include <string>

#include "base/python_text.h"
#include "base/unicode.h"
#include "http/server_api.h"
#include "mmc/commands.h"
#include "python/object.h"

namespace zv::mmc {
namespace {

constexpr const char* DEFAULT_BACKEND = "cloud";
// The server stops one recogniser and loads the other before it answers.
constexpr std::chrono::seconds SWITCH_TIMEOUT{120};
constexpr std::size_t SCHEME_LENGTH = 7;

// The server's configuration. It stays an object of the engine's, so that whatever else it holds
// goes back into the file as it came out.
class Configuration {
 public:
  explicit Configuration(Engine& engine)
      : engine_(engine), all_(engine.load(CONFIG_MODULE, "load_config").make()) {}

  std::string backend() const {
    if (!has_section()) return DEFAULT_BACKEND;
    return plain_text(all_.item("mmc").get("backend", DEFAULT_BACKEND));
  }

  void choose(const std::string& backend) {
    if (!has_section()) all_.set_item("mmc", Map());
    const python::Object section = all_.item("mmc");
    section.set_item("backend", backend);
    section.set_item("enabled", true);
    engine_.load(CONFIG_MODULE, "save_config").make({all_});
  }

 private:
  // A section left empty in the file reads as none.
  bool has_section() const { return !all_.get("mmc").is_null(); }

  Engine& engine_;
  python::Object all_;
};

// So that it needs no restart. Whatever fails counts as: no server runs there.
void switch_running_server(const std::string& backend, const Args& args, Session& session) {
  const std::string base = http::_server_base_url(args);
  try {
    const Value answer =
        http::_server_api(session.engine, {.url = base + "/api/mmc/backend",
                                           .method = "PUT",
                                           .data = {{"backend", backend}},
                                           .timeout = SWITCH_TIMEOUT,
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

void cmd_mmc_backend(const Args& args, Session& session) {
  Configuration configuration(session.engine);
  const std::string current = configuration.backend();
  const std::string backend = ascii_lower(args.text("backend"));
  if (backend.empty()) {
    session.out << "\nCurrent MMC backend: " << current << "\n"
                << "Switch with: zv-anpr mmc-backend <cloud|local>\n";
    return;
  }
  if (backend != "cloud" && backend != "local") {
    session.out << "✗ backend must be 'cloud' or 'local'\n";
    return;
  }
  configuration.choose(backend);
  session.out << "\n✅ MMC backend set to '" << backend << "' in server_config.yaml (was '"
              << current << "').\n";
  switch_running_server(backend, args, session);
}

constexpr std::string_view BACKENDS[] = {"cloud", "local"};
constexpr Option OPTIONS[] = {
    {.names = "backend", .help = "Backend to use (omit to show current)", .choices = BACKENDS},
    {.names = "--host", .help = "Running server host (for live switch)"},
    {.names = "--port", .kind = Kind::integer, .help = "Running server port (for live switch)"},
};

}  // namespace

constinit const Command MMC_BACKEND = {.name = "mmc-backend",
                                       .help = "View/switch MMC backend (cloud | local)",
                                       .options = OPTIONS,
                                       .handler = cmd_mmc_backend};

}  // namespace zv::mmc
