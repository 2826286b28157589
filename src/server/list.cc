#include "server/commands.h"

namespace zv::server {

void list(const Args&, Session& session, const Daemon& daemon) {
  // The descriptions stay in the engine: its table gets the very objects that it found.
  const python::Object servers = daemon.find_all_servers.make();
  if (servers.truthy()) {
    daemon.print_server_table.make({servers});
  } else {
    session.out << "\nNo ANPR servers running.\n";
  }
}

}  // namespace zv::server
