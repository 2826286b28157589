#include "cli/command_table.h"

namespace zv::cli {
namespace {

void cmd_version(const Args&, Session& session) {
  session.out << version_line(session.engine) << "\n";
}

}  // namespace

constinit const Command VERSION = {.name = "version",
                                   .help = "Show version information",
                                   .handler = cmd_version,
                                   .calls_engine = false};

std::string version_line(Engine& engine) {
  return "Zelvoran ANPR CLI v" + engine.version();
}

void cmd_test_api(const Args&, Session& session) {
  session.out << "zv-anpr test-api: the public test service has been retired.\n"
                 "Read plates on this computer instead:\n"
                 "  zv-anpr read <image>            one picture, from the command line\n"
                 "  zv-anpr server                  the local REST API "
                 "(http://127.0.0.1:8000/docs)\n"
                 "or install the separately distributed Zelvoran ANPR SDK server.\n";
  throw ExitRequest(2);
}

}  // namespace zv::cli
