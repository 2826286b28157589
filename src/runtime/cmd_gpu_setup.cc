#include "runtime/cmd_gpu_setup.h"

#include <string>

#include "base/error.h"
#include "runtime/distributions.h"
#include "runtime/package_switch.h"
#include "runtime/platform_names.h"
#include "runtime/switch_note.h"
#include "runtime/targets.h"

namespace zv::runtime {
namespace {

void print_conflict(Session& session) {
  const Conflict conflict = _detect_ort_conflict(session.engine);
  if (!conflict.message.empty()) session.out << "\n⚠️  " << conflict.message << "\n";
}

void print_installed(const InstalledMap& installed, Session& session) {
  if (installed.empty()) return;
  session.out << "\n📦 Currently installed:\n";
  for (const auto& [name, version] : installed) {
    session.out << "   " << name << " " << version << "\n";
  }
}

// What an interrupted switch left half installed would make the installer refuse its work.
void tidy_up(const SwitchNote& note, Session& session) {
  if (!note.found()) return;
  session.err << "zv-anpr: an earlier gpu-setup was cut off; installing anew\n";
  sweep_half_installed(session.engine, note.path());
}

bool change_packages(const std::string& target, const SwitchNote& note, Session& session) {
  tidy_up(note, session);
  print_conflict(session);
  const InstalledMap installed = installed_runtimes(session.engine);
  print_installed(installed, session);
  PackageSwitch change(target, installed, note, session);
  return change.already_done() && !note.found() ? change.confirm() : change.run();
}

}  // namespace

bool cmd_gpu_setup(const Args& args, Session& session) {
  const std::string target = args.text("gpu_target", "cuda");
  session.out << "\nZelvoran ANPR — GPU Setup (" << target << ")\n" << std::string(50, '=') << "\n";
  const auto [supported, reason] =
      _gpu_target_supported(target, system_name(session.engine), machine_name(session.engine));
  if (!supported) {
    session.out << "\n✗ " << reason << "\n";
    return false;
  }
  const SwitchNote note(session.engine);
  try {
    const bool done = change_packages(target, note, session);
    note.remove();
    return done;
  } catch (const Interrupted&) {
    if (note.present()) {
      session.err << "zv-anpr: the switch is not finished; run gpu-setup again to repair it\n";
    }
    throw;
  }
}

}  // namespace zv::runtime
