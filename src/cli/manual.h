// The manual page, made from the command table.
#pragma once

#include <string>
#include <string_view>

#include "cli/command_table.h"

namespace zv::cli {

// A page for section 1 in the `man` macros.
std::string manual_page(const Command& program, std::string_view version);

}  // namespace zv::cli
