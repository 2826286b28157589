// The command of this room.
#pragma once

#include "command/command.h"

namespace zv::read {

// Plates on image files, as lines, as a JSON file, as annotated copies.
extern const Command READ;

}  // namespace zv::read
