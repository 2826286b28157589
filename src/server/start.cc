#include "base/value_text.h"
#include "server/commands.h"
#include "server/host_option.h"

namespace zv::server {

void start(const Args& args, Session& session, const Daemon& daemon) {
  const std::string host = args.text("host");
  if (looks_like_port(host)) {
    session.out << "\n✗ Invalid --host value: " << quoted_text(host) << "\n"
                << "   '" << host << "' looks like a port number, not a hostname.\n"
                << "   Did you mean: zv-anpr server start --port " << host << " ?\n"
                << "   Valid --host examples: 127.0.0.1, localhost, 0.0.0.0, 192.168.1.10\n";
    return;
  }
  daemon.start_server.make({}, {{"host", args.value("host")},
                                {"port", args.value("port")},
                                {"daemon", args.value("daemon", false)},
                                {"threads", args.value("threads")},
                                {"config_path", args.value("config")}});
}

}  // namespace zv::server
