// The command `server`, its sub-commands, and the engine's operations behind them.
#pragma once

#include "command/command.h"

namespace zv::server {

extern const Command SERVER;

// Run and inspect servers on this machine. Failures of the engine's operations pass through.
extern const Command START, STOP, RESTART, STATUS, TOKEN, LIST, UPGRADE, LOGS;
// Talk to a running server. What goes wrong becomes one line.
extern const Command DETECT, HEALTH, MMC, REGION;

inline constexpr const char* DAEMON_MODULE = "zelvoran_anpr.zelvoran_anpr_server_daemon";
inline constexpr const char* CONFIG_MODULE = "zelvoran_anpr.zelvoran_anpr_server_config";

}  // namespace zv::server
