#include "cli/command_table.h"

#include "mmc/commands.h"
#include "read/commands.h"
#include "runtime/commands.h"
#include "server/commands.h"

namespace zv::cli {
namespace {

constexpr Option COMMON[] = {
    {.names = "-h/--help", .kind = Kind::flag, .help = "show this help message and exit"},
    {.names = "--version", .kind = Kind::flag, .help = "show program's version number and exit"},
};

// In the order of the help page.
constexpr const Command* COMMANDS[] = {
    &runtime::GPU_INFO, &runtime::GPU_SETUP, &runtime::MODEL_INFO, &VERSION,        &mmc::MMC_SETUP,
    &mmc::MMC_BACKEND,  &mmc::MMC_UNINSTALL, &read::READ,          &server::SERVER,
};

constexpr Command PROGRAM = {
    .name = "zelvoran-anpr",
    .commands = COMMANDS,
    .commands_title = "Available commands",
    .commands_field = "command",
    .description = "Zelvoran ANPR CLI - License Plate Detection and Recognition",
};

}  // namespace

const Command& program() {
  return PROGRAM;
}

std::span<const Option> common_options(bool top) {
  return std::span(COMMON).first(top ? 2 : 1);
}

}  // namespace zv::cli
