// model-info: the catalogue of models, regions and backends.
#pragma once

#include "command/session.h"

namespace zv::runtime {

void cmd_model_info(const Args& args, Session& session);

}  // namespace zv::runtime
