#include "server/commands.h"
#include "server/host_option.h"

namespace zv::server {

void restart(const Args& args, Session& session, const Daemon& daemon) {
  const std::string host = args.text("host");
  if (looks_like_port(host)) {
    session.out << mistaken_port(host);
    return;
  }
  daemon.restart_server.make({}, {{"host", args.value("host")},
                                  {"port", args.value("port")},
                                  {"threads", args.value("threads")}});
}

}  // namespace zv::server
