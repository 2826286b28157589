#include "runtime/package_switch.h"

#include "base/unicode.h"
#include "runtime/targets.h"
#include "runtime/verify_provider.h"

namespace zv::runtime {
namespace {

constexpr const char* VERSION_SCRIPT = "import onnxruntime; print(onnxruntime.__version__)";
constexpr std::size_t IMPORT_ERROR_LENGTH = 200;

std::vector<std::string> installed_conflicts(const std::string& package,
                                             const InstalledMap& installed) {
  std::vector<std::string> conflicts;
  for (const std::string_view known : known_packages()) {
    const std::string name(known);
    if (name != package && installed.contains(name)) conflicts.push_back(name);
  }
  return conflicts;
}

}  // namespace

PackageSwitch::PackageSwitch(std::string target, const InstalledMap& installed,
                             const SwitchNote& note, Session& session)
    : target_(std::move(target)),
      package_(target_package(target_)),
      requirement_(pip_requirement(target_)),
      present_(installed.contains(package_)),
      conflicts_(installed_conflicts(package_, installed)),
      note_(note),
      session_(session),
      out_(session.out) {
  if (present_) version_ = installed.at(package_);
}

bool PackageSwitch::confirm() {
  out_ << "\n✅ " << package_ << " " << version_ << " already installed, no conflicts.\n";
  if (requirement_ != package_) {
    out_ << "   Making sure the NVIDIA CUDA libraries are there too...\n";
    note_.write();
    _pip_run({"install", requirement_}, session_);
  }
  return verified();
}

bool PackageSwitch::run() {
  out_ << "\n🔧 Setting up " << target_ << " backend...\n"
       << "   (atomic: install new → verify → remove old; rollback on failure)\n";
  note_.write();
  if (!install()) return false;
  if (!imports_after_install()) {
    roll_back();
    return false;
  }
  if (conflicts_.empty()) return verified();
  remove_conflicts();
  return restore_shared_files() && verified();
}

bool PackageSwitch::install() {
  out_ << "\n  Step 1: " << (present_ ? "Reinstalling " : "Installing ") << package_ << "...\n";
  std::vector<std::string> words = {"install"};
  if (present_) words.emplace_back("--force-reinstall");
  words.push_back(requirement_);
  if (_pip_run(words, session_)) return true;
  out_ << "\n✗ Failed to install " << package_ << ".\n"
       << "   Environment UNCHANGED — your previous setup still works.\n"
       << "   Manual retry: pip install " << package_ << "\n";
  return false;
}

bool PackageSwitch::imports_after_install() {
  out_ << "\n  Step 2: Verifying " << package_ << " import...\n";
  const Completed child = run_script(VERSION_SCRIPT, session_);
  if (child.exit.success()) {
    out_ << "  ✓ onnxruntime " << strip(child.out) << " imports OK\n";
    return true;
  }
  out_ << "  ✗ onnxruntime import failed after install:\n"
       << "    " << first_characters(strip(child.err), IMPORT_ERROR_LENGTH) << "\n";
  return false;
}

void PackageSwitch::roll_back() {
  out_ << "   Rolling back: removing " << package_ << " and reinstalling onnxruntime CPU...\n";
  _pip_run({"uninstall", package_, "-y"}, session_);
  if (package_ != "onnxruntime") _pip_run({"install", "onnxruntime"}, session_);
}

void PackageSwitch::remove_conflicts() {
  out_ << "\n  Step 3: Removing conflicting packages...\n";
  for (const std::string& name : conflicts_) {
    out_ << "  Uninstalling " << name << "...\n";
    if (_pip_run({"uninstall", name, "-y"}, session_)) continue;
    out_ << "  ⚠️  Could not uninstall " << name << " — but " << package_
         << " is installed and works.\n"
         << "     You may see provider conflicts. Run manually: pip uninstall " << name << " -y\n";
  }
}

// The packages share files: removing one took them from the other.
bool PackageSwitch::restore_shared_files() {
  out_ << "\n  Step 3b: Restoring " << package_ << " files shared with the removed package...\n";
  if (!_pip_run({"install", "--force-reinstall", "--no-deps", package_}, session_)) {
    out_ << "\n✗ Could not reinstall " << package_ << " after removing the old package.\n"
         << "   onnxruntime is very likely broken right now. Fix with:\n"
         << "     pip install --force-reinstall " << package_ << "\n";
    return false;
  }
  if (_import_ok(session_)) return true;
  out_ << "\n✗ onnxruntime still does not import cleanly.\n"
       << "   Fix with: pip install --force-reinstall " << package_ << "\n";
  return false;
}

bool PackageSwitch::verified() {
  _verify_provider(target_, session_);
  return true;
}

}  // namespace zv::runtime
