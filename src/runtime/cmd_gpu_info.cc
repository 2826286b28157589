#include "runtime/cmd_gpu_info.h"

#include "runtime/backend_facts.h"
#include "runtime/backend_report.h"
#include "runtime/platform_names.h"

namespace zv::runtime {

void cmd_gpu_info(const Args&, Session& session) {
  session.out << "Zelvoran ANPR System Information\n"
              << std::string(50, '=') << "\n"
              << "\n📦 Package Version: " << session.engine.version() << "\n";
  const BackendFacts facts = gather_facts(session.engine);
  print_backend_report(facts, system_name(session.engine), session.out);
}

}  // namespace zv::runtime
