#include "server/cmd_server.h"

#include <array>
#include <optional>

#include "server/commands.h"
#include "server/server_help.h"

namespace zv::server {
namespace {

template <Handler handler>
void forward(const Args& args, Session& session, const Daemon&) {
  handler(args, session);
}

struct SubCommand {
  std::string_view name;
  void (*run)(const Args&, Session&, const Daemon&);
};

constexpr std::array<SubCommand, 12> SUB_COMMANDS = {{
    {"start", start},
    {"token", token},
    {"stop", stop},
    {"restart", restart},
    {"upgrade", upgrade},
    {"status", status},
    {"list", list},
    {"detect", forward<cmd_server_detect>},
    {"health", forward<cmd_server_health>},
    {"mmc", forward<cmd_server_mmc>},
    {"region", forward<cmd_server_region>},
    {"logs", logs},
}};

// Nothing, and a line of advice, when the server's packages are missing.
std::optional<Daemon> available_daemon(Session& session) {
  try {
    return load_daemon(session.engine);
  } catch (const python::PythonError& error) {
    if (!error.import_error) throw;
    session.out << "Error: Server dependencies not installed: " << error.what() << "\n"
                << "Install with: pip install zelvoran-anpr\n";
    return std::nullopt;
  }
}

}  // namespace

void cmd_server(const Args& args, Session& session) {
  const std::string name = args.text("server_command");
  if (name.empty()) {
    session.out << SERVER_HELP;
    return;
  }
  const auto daemon = available_daemon(session);
  if (!daemon) return;
  for (const SubCommand& command : SUB_COMMANDS) {
    if (command.name == name) return command.run(args, session, *daemon);
  }
}

}  // namespace zv::server
