// The engine's operations on server processes, loaded together when a `server` command runs.
#pragma once

#include "command/engine.h"

namespace zv::server {

struct Daemon {
  python::Object start_server;
  python::Object stop_server;
  python::Object restart_server;
  python::Object upgrade_server;
  python::Object get_status;
  python::Object get_installed_version;
  python::Object get_running_version;
  python::Object find_all_servers;
  python::Object print_server_table;
  python::Object get_config_dir;
};

// Throws PythonError; an import error when the packages of the server are not installed.
Daemon load_daemon(Engine& engine);

}  // namespace zv::server
