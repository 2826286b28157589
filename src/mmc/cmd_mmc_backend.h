// mmc-backend: shows or chooses who recognises make, model and colour.
#pragma once

#include "command/session.h"

namespace zv::mmc {

void cmd_mmc_backend(const Args& args, Session& session);

}  // namespace zv::mmc
