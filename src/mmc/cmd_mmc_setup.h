// mmc-setup: downloads the on-device model and provides the llama-server that serves it.
#pragma once

#include "command/session.h"

namespace zv::mmc {

void cmd_mmc_setup(const Args& args, Session& session);

}  // namespace zv::mmc
