// `server`: hands its sub-commands on.
#include <array>

#include "python/object.h"
#include "server/commands.h"

namespace zv::server {
namespace {

using Commands = std::span<const Command* const>;

constexpr std::array SUB_COMMANDS = {&START,   &STOP, &RESTART, &STATUS, &TOKEN, &LIST,
                                     &UPGRADE, &LOGS, &DETECT,  &HEALTH, &MMC,   &REGION};
// In the order of the help page.
constexpr std::array LIFECYCLE = {&START, &STOP, &RESTART, &STATUS, &LIST, &UPGRADE, &LOGS, &TOKEN};
constexpr std::array API = {&DETECT, &HEALTH, &MMC, &REGION};

constexpr const char* QUICK_START = R"(
Quick start:
  zv-anpr server start --daemon            # start in background
  zv-anpr server detect car.jpg            # detect (local only)
  zv-anpr server detect car.jpg --mmc      # detect + MMC enrichment
  zv-anpr server detect *.jpg --region kr  # batch with region
  zv-anpr server health                    # check health
  zv-anpr server list                      # list all running instances
  zv-anpr server stop --port 8001          # stop specific instance
  zv-anpr server stop --all                # stop all instances
  zv-anpr server mmc                       # MMC status
  zv-anpr server region                    # view region
  zv-anpr server region korea              # change region

REST API (curl):
  curl -X POST http://127.0.0.1:8000/api/anpr -F "image=@car.jpg"
  curl -X POST http://127.0.0.1:8000/api/anpr/mmc -F "image=@car.jpg"
  curl http://127.0.0.1:8000/api/health
  (Windows PowerShell: use curl.exe instead of curl)

Web UI & docs:
  http://127.0.0.1:8000/                    # Dashboard
  http://127.0.0.1:8000/docs                # Swagger UI

Run 'zv-anpr server <command> -h' for command options.
)";

std::string listed(const char* title, Commands commands) {
  std::string text = std::string("\n") + title + ":\n";
  for (const Command* command : commands) {
    std::string name(command->name);
    name.resize(9, ' ');
    const auto help = command->page_help.empty() ? command->help : command->page_help;
    text.append("  ").append(name).append(help).append("\n");
  }
  return text;
}

// Below the usage line.
std::string help_page() {
  return listed("Server lifecycle", LIFECYCLE) +
         listed("Server API (talk to running server)", API) + QUICK_START;
}

// What a server needs is all there, or a line of advice is printed.
bool dependencies_installed(Session& session) {
  try {
    session.engine.require(DAEMON_MODULE,
                           "start_server, stop_server, restart_server, upgrade_server, get_status, "
                           "get_installed_version, get_running_version, find_all_servers, "
                           "_print_server_table");
    session.engine.require(CONFIG_MODULE, "get_config_dir");
    return true;
  } catch (const python::PythonError& error) {
    if (!error.import_error) throw;
    session.out << "Error: Server dependencies not installed: " << error.what() << "\n"
                << "Install with: pip install zelvoran-anpr\n";
    return false;
  }
}

void cmd_server(const Args& args, Session& session) {
  const std::string name = args.text("server_command");
  if (name.empty()) {
    session.out << "Usage: zv-anpr server <command>\n" << help_page();
    return;
  }
  if (!dependencies_installed(session)) return;
  for (const Command* command : SUB_COMMANDS) {
    if (command->name == name) return command->handler(args, session);
  }
}

}  // namespace

constinit const Command SERVER = {.name = "server",
                                  .help = "Manage ANPR REST API server",
                                  .handler = cmd_server,
                                  .commands = SUB_COMMANDS,
                                  .commands_title = "Server commands",
                                  .commands_field = "server_command",
                                  .epilog = help_page};

}  // namespace zv::server
