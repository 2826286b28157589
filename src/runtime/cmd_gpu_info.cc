#include "runtime/cmd_gpu_info.h"

#include "base/system_name.h"
#include "runtime/backend_facts.h"
#include "runtime/backend_report.h"

namespace zv::runtime {

void cmd_gpu_info(const Args&, Session& session) {
  session.out << "Zelvoran ANPR System Information\n"
              << std::string(50, '=') << "\n"
              << "\n📦 Package Version: " << session.engine.version() << "\n";
  print_backend_report(gather_facts(session.engine), system_name(), session.out);
}

}  // namespace zv::runtime
