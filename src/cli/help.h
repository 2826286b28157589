// Usage lines and help pages in the layout that users of sub-command parsers know.
#pragma once

#include <string>

#include "cli/parse.h"

namespace zv::cli {

// "zelvoran-anpr server start"
std::string program_name(const CommandPath& path);
// "usage: ..." with a line end; `width` in columns.
std::string usage(const CommandPath& path, std::size_t width);
std::string help_page(const CommandPath& path, std::size_t width);
// COLUMNS when set, else 80, less the two columns that are left free at the right.
std::size_t help_width();

}  // namespace zv::cli
