// The sub-commands of `server`, one file each.
#pragma once

#include "command/session.h"
#include "server/daemon.h"

namespace zv::server {

// Talk to a running server. What goes wrong becomes one line.
void cmd_server_detect(const Args& args, Session& session);
void cmd_server_health(const Args& args, Session& session);
void cmd_server_mmc(const Args& args, Session& session);
void cmd_server_region(const Args& args, Session& session);

// Run and inspect servers on this machine. Failures of the engine's operations pass through.
void start(const Args& args, Session& session, const Daemon& daemon);
void stop(const Args& args, Session& session, const Daemon& daemon);
void restart(const Args& args, Session& session, const Daemon& daemon);
void upgrade(const Args& args, Session& session, const Daemon& daemon);
void status(const Args& args, Session& session, const Daemon& daemon);
void list(const Args& args, Session& session, const Daemon& daemon);
void logs(const Args& args, Session& session, const Daemon& daemon);
void token(const Args& args, Session& session, const Daemon& daemon);

}  // namespace zv::server
