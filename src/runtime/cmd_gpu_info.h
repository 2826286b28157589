// gpu-info: which image library and inference backends the environment offers. Changes nothing.
#pragma once

#include "command/session.h"

namespace zv::runtime {

void cmd_gpu_info(const Args& args, Session& session);

}  // namespace zv::runtime
