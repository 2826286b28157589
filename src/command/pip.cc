#include "command/pip.h"

#include "base/run.h"
#include "base/unicode.h"

namespace zv {

bool _pip_run(const std::vector<std::string>& pip_arguments, Session& session) {
  std::vector<std::string> command = {session.engine.python(), "-m", "pip"};
  command.insert(command.end(), pip_arguments.begin(), pip_arguments.end());
  session.out << "  →";
  for (const std::string& word : command) session.out << " " << word;
  session.out << "\n";
  const Completed pip = run_captured(command);
  if (pip.exit.success()) return true;
  const std::string_view errors = strip(pip.err);
  session.out << "  ✗ Failed: " << (errors.empty() ? strip(pip.out) : errors) << "\n";
  return false;
}

}  // namespace zv
