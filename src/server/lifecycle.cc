// The sub-commands that hand their work to the engine's operations on server processes.
#include <algorithm>
#include <array>

#include "base/python_text.h"
#include "base/unicode.h"
#include "python/object.h"
#include "server/commands.h"

namespace zv::server {
namespace {

// The zeros of scripts whose ten digits follow each other: Latin, Arabic, Persian, Devanagari,
// Bengali, Thai, full width.
constexpr std::array<std::uint32_t, 7> ZEROS = {0x30, 0x660, 0x6F0, 0x966, 0x9E6, 0xE50, 0xFF10};

bool digit(std::uint32_t point) {
  return std::any_of(ZEROS.begin(), ZEROS.end(),
                     [point](std::uint32_t zero) { return point >= zero && point < zero + 10; });
}

// Digits only, white space aside: a port that was meant for --port.
bool looks_like_port(std::string_view host) {
  const std::string_view word = strip(host);
  for (std::size_t at = 0; at < word.size();) {
    if (!digit(next_code_point(word, at))) return false;
  }
  return !word.empty();
}

python::Object operation(Session& session, std::string_view name) {
  return session.engine.load(DAEMON_MODULE, name);
}

void start(const Args& args, Session& session) {
  const std::string host = args.text("host");
  if (looks_like_port(host)) {
    session.out << "\n✗ Invalid --host value: " << quoted_text(host) << "\n"
                << "   '" << host << "' looks like a port number, not a hostname.\n"
                << "   Did you mean: zv-anpr server start --port " << host << " ?\n"
                << "   Valid --host examples: 127.0.0.1, localhost, 0.0.0.0, 192.168.1.10\n";
    return;
  }
  operation(session, "start_server")
      .make({}, {{"host", args.value("host")},
                 {"port", args.value("port")},
                 {"daemon", args.value("daemon", false)},
                 {"threads", args.value("threads")},
                 {"config_path", args.value("config")}});
}

void stop(const Args& args, Session& session) {
  operation(session, "stop_server")
      .make({}, {{"force", args.value("force", false)},
                 {"target_port", args.value("target_port")},
                 {"target_pid", args.value("target_pid")},
                 {"stop_all", args.value("stop_all", false)}});
}

// For what starts a server anew at an address: `third` is the operation's further option.
void start_again(const char* name, const char* third, const Args& args, Session& session) {
  const std::string host = args.text("host");
  if (looks_like_port(host)) {
    session.out << "\n✗ Invalid --host: " << quoted_text(host) << ". Did you mean --port " << host
                << "?\n";
    return;
  }
  operation(session, name)
      .make(
          {},
          {{"host", args.value("host")}, {"port", args.value("port")}, {third, args.value(third)}});
}

void restart(const Args& args, Session& session) {
  start_again("restart_server", "threads", args, session);
}

void upgrade(const Args& args, Session& session) {
  start_again("upgrade_server", "pip_args", args, session);
}

void list(const Args&, Session& session) {
  // The descriptions stay in the engine: its table gets the very objects that it found.
  const python::Object servers = operation(session, "find_all_servers").make();
  if (servers.truthy()) {
    operation(session, "_print_server_table").make({servers});
  } else {
    session.out << "\nNo ANPR servers running.\n";
  }
}

constexpr Option START_OPTIONS[] = {
    {.names = "--host", .help = "Host to bind to (default: 127.0.0.1)"},
    {.names = "--port", .kind = Kind::integer, .help = "Port (default: 8000)"},
    {.names = "--daemon/-d", .kind = Kind::flag, .help = "Run in background"},
    {.names = "--workers/--threads",
     .kind = Kind::integer,
     .help = "Worker thread pool size (default: 4)",
     .stored_as = "threads"},
    {.names = "--config", .help = "Path to server_config.yaml", .file = true},
};
constexpr Option STOP_OPTIONS[] = {
    {.names = "--force/-f", .kind = Kind::flag, .help = "Force kill (SIGKILL)"},
    {.names = "--port",
     .kind = Kind::integer,
     .help = "Stop server on this port",
     .stored_as = "target_port"},
    {.names = "--pid",
     .kind = Kind::integer,
     .help = "Stop server with this PID",
     .stored_as = "target_pid"},
    {.names = "--all",
     .kind = Kind::flag,
     .help = "Stop all running ANPR servers",
     .stored_as = "stop_all"},
};
constexpr Option RESTART_OPTIONS[] = {
    {.names = "--host", .help = "Host to bind to"},
    {.names = "--port", .kind = Kind::integer, .help = "Port"},
    {.names = "--workers/--threads",
     .kind = Kind::integer,
     .help = "Worker thread pool size",
     .stored_as = "threads"},
};
constexpr Option UPGRADE_OPTIONS[] = {
    {.names = "--host", .help = "Host after restart"},
    {.names = "--port", .kind = Kind::integer, .help = "Port after restart"},
    {.names = "--pip-args", .help = "Extra pip arguments"},
};

}  // namespace

constinit const Command START = {.name = "start",
                                 .help = "Start the ANPR server",
                                 .options = START_OPTIONS,
                                 .handler = start,
                                 .page_help = "Start the ANPR REST API server"};
constinit const Command STOP = {
    .name = "stop", .help = "Stop the background server", .options = STOP_OPTIONS, .handler = stop};
constinit const Command RESTART = {.name = "restart",
                                   .help = "Restart the server",
                                   .options = RESTART_OPTIONS,
                                   .handler = restart};
constinit const Command UPGRADE = {.name = "upgrade",
                                   .help = "Upgrade package and restart server",
                                   .options = UPGRADE_OPTIONS,
                                   .handler = upgrade};
constinit const Command LIST = {
    .name = "list", .help = "List all running ANPR server instances", .handler = list};

}  // namespace zv::server
