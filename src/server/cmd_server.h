// `server`: hands its sub-commands on.
#pragma once

#include "command/session.h"

namespace zv::server {

void cmd_server(const Args& args, Session& session);

}  // namespace zv::server
