// One run of the program: load the engine, parse, call one handler, turn what escapes it into text
// and an exit status.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "base/output_stream.h"

namespace zv::cli {

// `words` are the user's, without the program's path.
int run(const std::vector<std::string>& words, std::ostream& out, std::ostream& err,
        std::istream& in);

}  // namespace zv::cli
