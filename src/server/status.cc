#include <optional>

#include "base/output_stream.h"
#include "base/python_number.h"
#include "base/python_text.h"
#include "base/value.h"
#include "http/server_api.h"
#include "python/object.h"
#include "server/answer.h"
#include "server/commands.h"

namespace zv::server {
namespace {

constexpr std::chrono::seconds PROBE_TIMEOUT(5);

python::Object daemon(Session& session, std::string_view name) {
  return session.engine.load(DAEMON_MODULE, name);
}

void print_not_running(Session& session) {
  session.out << "Server is not running\n"
              << "  Installed version: " << daemon(session, "get_installed_version").make().text()
              << "\n"
              << "  Start with: zv-anpr server start --daemon\n";
}

void print_check(const Value& check, std::ostream& out) {
  if (!truthy(check)) return;
  const Map& details = http::object_of(check);
  out << "  Health:   " << (truthy(get(details, "healthy")) ? "OK" : "UNHEALTHY") << "\n";
  const Value memory = get(details, "memory_mb", 0);
  if (truthy(memory)) out << "  Memory:   " + fixed_text(memory, 0) + " MB\n";
}

void print_details(const Map& health, std::ostream& out) {
  out << "  Version:  " << Foreign{shown(health, "version", "?")} << "\n"
      << "  Detector: " << Foreign{shown(health, "detector_version", "?")} << " ("
      << Foreign{shown(health, "sdk_version", "?")} << ")\n"
      << "  OCR:      " << Foreign{shown(health, "ocr_version", "?")} << "\n"
      << "  Region:   " << Foreign{shown(health, "region", "?")} << "\n"
      << "  Threads:  " << Foreign{shown(health, "threads", "?")} << "\n"
      << "  Requests: " << Foreign{shown(health, "requests_served", 0)} << "\n"
      << "  Errors:   " << Foreign{shown(health, "errors", 0)} << "\n";
  const std::string uptime = uptime_text(get(health, "uptime", 0));
  out << "  Uptime:   " << uptime << "\n";
  print_check(get(health, "health_check", Map()), out);
}

Value probe(Engine& engine, const std::string& url) {
  return http::_server_api(
      engine,
      {.url = url, .timeout = PROBE_TIMEOUT, .token = http::ServerRequest::Token::when_asked});
}

std::string mmc_text(const std::string& url, Engine& engine) {
  try {
    const Value answer = probe(engine, url + "/api/mmc/status");
    const Map& mmc = http::object_of(answer);
    const Value problem = get(mmc, "error", "");
    if (truthy(problem)) return "Error - " + plain_text(problem);
    return "Available (" + quota_text(mmc, ", ");
  } catch (const std::exception&) {
    return "Available (quota unknown)";
  }
}

// The version that the server reports; nothing when it does not answer as it should.
std::optional<Value> print_health(const std::string& url, Session& session) {
  try {
    const Value answer = probe(session.engine, url + "/api/health?detailed=true");
    const Map& health = http::object_of(answer);
    print_details(health, session.out);
    if (mmc_available(health)) {
      session.out << "  MMC:      " << mmc_text(url, session.engine) << "\n";
    }
    return get(health, "version", "?");
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void compare_versions(const Value& running, Session& session) {
  const Value installed = daemon(session, "get_installed_version").call();
  if (equal(running, "?") || equal(running, "unknown") || equal(running, installed)) return;
  session.out << "  WARNING: Version mismatch!\n"
              << "    Running server:    " << Foreign{plain_text(running)} << "\n"
              << "    Installed package: " << plain_text(installed) << "\n"
              << "    Run: zv-anpr server upgrade\n";
}

void status(const Args&, Session& session) {
  const python::Object status = daemon(session, "get_status").make();
  if (!status.item("running").truthy()) return print_not_running(session);
  const std::string url = status.item("url").text();
  session.out << "Server running (PID: " << status.item("pid").text() << ")\n"
              << "  URL: " << url << "\n";
  const auto running = print_health(url, session);
  if (running) compare_versions(*running, session);
}

}  // namespace

constinit const Command STATUS = {
    .name = "status", .help = "Check if server is running", .handler = status};

}  // namespace zv::server
