// What a running server says of itself, and of make, model and colour.
#include "base/output_stream.h"
#include "base/python_number.h"
#include "base/python_text.h"
#include "http/server_api.h"
#include "server/answer.h"
#include "server/commands.h"

namespace zv::server {
namespace {

void print_check(const Value& check, std::ostream& out) {
  if (!truthy(check)) return;
  const Map& details = http::object_of(check);
  out << "Healthy:   " << (truthy(get(details, "healthy")) ? "Yes" : "No") << "\n";
  const Value memory = get(details, "memory_mb");
  if (truthy(memory)) out << "Memory:    " + fixed_text(memory, 0) + " MB\n";
}

void print_health(const Map& health, std::ostream& out) {
  out << "Status:    " << Foreign{shown(health, "status", "?")} << "\n"
      << "Version:   " << Foreign{shown(health, "version", "?")} << "\n"
      << "SDK:       " << Foreign{shown(health, "sdk_version", "?")} << "\n"
      << "Detector:  " << Foreign{shown(health, "detector_version", "?")} << "\n"
      << "OCR:       " << Foreign{shown(health, "ocr_version", "?")} << "\n"
      << "Region:    " << Foreign{shown(health, "region", "?")} << "\n"
      << "Threads:   " << Foreign{shown(health, "threads", "?")} << "\n"
      << "Requests:  " << Foreign{shown(health, "requests_served", 0)} << "\n"
      << "Errors:    " << Foreign{shown(health, "errors", 0)} << "\n";
  const std::string uptime = uptime_text(get(health, "uptime", 0));
  out << "Uptime:    " << uptime << "\n";
  print_check(get(health, "health_check", Map()), out);
  out << "MMC:       " << (mmc_available(health) ? "Available" : "Unavailable") << "\n";
}

void print_mmc(const Map& mmc, std::ostream& out) {
  const bool available = truthy(get(mmc, "available"));
  out << "MMC:       " << (available ? "Available" : "Unavailable") << "\n"
      << "Usage:     " << Foreign{quota_text(mmc, " (")} << "\n";
  if (available) {
    out << "Detect:    zv-anpr server detect car.jpg --mmc\n";
  } else {
    out << "Note:      MMC requires internet. Restart server when online.\n";
  }
}

// What goes wrong becomes one line.
void report(const Args& args, Session& session, const std::string& path,
            void (*print)(const Map&, std::ostream&)) {
  const std::string base = http::_server_base_url(args);
  try {
    const Value answer = http::_server_api(session.engine, {.url = base + path});
    print(http::object_of(answer), session.out);
  } catch (const std::exception& error) {
    session.out << Foreign{unreachable(base, error)} << "\n";
  }
}

void cmd_server_health(const Args& args, Session& session) {
  report(args, session, "/api/health?detailed=true", print_health);
}

void cmd_server_mmc(const Args& args, Session& session) {
  report(args, session, "/api/mmc/status", print_mmc);
}

constexpr Option OPTIONS[] = {SERVER_HOST, SERVER_PORT};

}  // namespace

constinit const Command HEALTH = {.name = "health",
                                  .help = "Show server health status",
                                  .options = OPTIONS,
                                  .handler = cmd_server_health};

constinit const Command MMC = {
    .name = "mmc", .help = "MMC status and quota", .options = OPTIONS, .handler = cmd_server_mmc};

}  // namespace zv::server
