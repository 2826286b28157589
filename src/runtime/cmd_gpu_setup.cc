#include <string>

#include "base/error.h"
#include "base/files.h"
#include "runtime/commands.h"
#include "runtime/environment.h"
#include "runtime/package_switch.h"
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

// True when the target is installed and works as far as can be told.
bool cmd_gpu_setup(const Args& args, Session& session) {
  const std::string target = args.text("gpu_target", "cuda");
  session.out << "\nZelvoran ANPR — GPU Setup (" << target << ")\n" << std::string(50, '=') << "\n";
  const auto [supported, reason] =
      _gpu_target_supported(target, system_name(session.engine), machine_name(session.engine));
  if (!supported) {
    session.out << "\n✗ " << reason << "\n";
    return false;
  }
  const std::string folder = environment_folder(session.engine);
  const FolderLock lock(folder);
  if (!lock.ours()) {
    session.out << "\n✗ Another gpu-setup is changing this environment; wait until it has ended.\n";
    return false;
  }
  const SwitchNote note(folder);
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

// The one handler whose result counts.
void end_by_result(const Args& args, Session& session) {
  if (!cmd_gpu_setup(args, session)) throw ExitRequest(1);
}

constexpr std::string_view TARGETS[] = {"cuda", "gpu", "directml", "cpu"};
constexpr Option OPTIONS[] = {
    {.names = "gpu_target",
     .help = "Backend to install (default: cuda)",
     .fallback = "cuda",
     .choices = TARGETS},
};

}  // namespace

constinit const Command GPU_SETUP = {.name = "gpu-setup",
                                     .help = "Install/switch GPU backend (cuda, directml, cpu)",
                                     .options = OPTIONS,
                                     .handler = end_by_result};

}  // namespace zv::runtime
