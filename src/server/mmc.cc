#include "base/output_stream.h"
#include "base/python_text.h"
#include "http/server_api.h"
#include "server/answer.h"
#include "server/commands.h"

namespace zv::server {
namespace {

void print_report(const Map& mmc, std::ostream& out) {
  const bool available = truthy(get(mmc, "available"));
  out << "MMC:       " << (available ? "Available" : "Unavailable") << "\n"
      << "Usage:     " << Foreign{quota_text(mmc, " (")} << "\n";
  if (available) {
    out << "Detect:    zv-anpr server detect car.jpg --mmc\n";
  } else {
    out << "Note:      MMC requires internet. Restart server when online.\n";
  }
}

void cmd_server_mmc(const Args& args, Session& session) {
  const std::string base = http::_server_base_url(args);
  try {
    const Value answer = http::_server_api(session.engine, {.url = base + "/api/mmc/status"});
    print_report(http::object_of(answer), session.out);
  } catch (const std::exception& error) {
    session.out << Foreign{unreachable(base, error)} << "\n";
  }
}

constexpr Option OPTIONS[] = {SERVER_HOST, SERVER_PORT};

}  // namespace

constinit const Command MMC = {
    .name = "mmc", .help = "MMC status and quota", .options = OPTIONS, .handler = cmd_server_mmc};

}  // namespace zv::server
