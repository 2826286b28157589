// `read`: plates on image files, as lines, as a JSON file, as annotated copies.
#pragma once

#include "command/session.h"

namespace zv::read {

void cmd_read(const Args& args, Session& session);

}  // namespace zv::read
