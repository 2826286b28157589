// mmc-uninstall: removes the on-device llama-server and, on request, the model.
#pragma once

#include "command/session.h"

namespace zv::mmc {

void cmd_mmc_uninstall(const Args& args, Session& session);

}  // namespace zv::mmc
