// The commands of this room.
#pragma once

#include "command/command.h"

namespace zv::runtime {

// Which image library and inference backends the environment offers. Changes nothing.
extern const Command GPU_INFO;
// Switches the environment between the distributions of the inference runtime.
extern const Command GPU_SETUP;
// The catalogue of models, regions and backends.
extern const Command MODEL_INFO;

}  // namespace zv::runtime
