// gpu-setup: switches the environment between the distributions of the inference runtime.
#pragma once

#include "command/session.h"

namespace zv::runtime {

// True when the target is installed and works as far as can be told.
bool cmd_gpu_setup(const Args& args, Session& session);

}  // namespace zv::runtime
