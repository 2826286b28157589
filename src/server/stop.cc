#include "server/commands.h"

namespace zv::server {

void stop(const Args& args, Session&, const Daemon& daemon) {
  daemon.stop_server.make({}, {{"force", args.value("force", false)},
                               {"target_port", args.value("target_port")},
                               {"target_pid", args.value("target_pid")},
                               {"stop_all", args.value("stop_all", false)}});
}

}  // namespace zv::server
