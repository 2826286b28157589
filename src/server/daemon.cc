#include "server/daemon.h"

namespace zv::server {

Daemon load_daemon(Engine& engine) {
  const auto operation = [&engine](const char* name) {
    return engine.load("zelvoran_anpr.zelvoran_anpr_server_daemon", name);
  };
  return {operation("start_server"),
          operation("stop_server"),
          operation("restart_server"),
          operation("upgrade_server"),
          operation("get_status"),
          operation("get_installed_version"),
          operation("get_running_version"),
          operation("find_all_servers"),
          operation("_print_server_table"),
          engine.load("zelvoran_anpr.zelvoran_anpr_server_config", "get_config_dir")};
}

}  // namespace zv::server
