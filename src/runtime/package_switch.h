// The switch itself: install the new package, check it, remove the others, check again.
#pragma once

#include <string>
#include <vector>

#include "command/command.h"
#include "runtime/environment.h"

namespace zv::runtime {

class PackageSwitch {
 public:
  PackageSwitch(std::string target, const InstalledMap& installed, const SwitchNote& note,
                Session& session);

  // The target's package is the only one installed.
  bool already_done() const { return present_ && conflicts_.empty(); }
  // For what is already done: completes the extras and verifies. Always true.
  bool confirm();
  // All steps; false when the target is not usable afterwards.
  bool run();

 private:
  bool install();
  bool imports_after_install();
  void roll_back();
  void remove_conflicts();
  bool restore_shared_files();
  bool verified();

  std::string target_;
  std::string package_;
  std::string requirement_;
  std::string version_;  // of the installed one
  bool present_;
  std::vector<std::string> conflicts_;
  const SwitchNote& note_;
  Session& session_;
  std::ostream& out_;
};

}  // namespace zv::runtime
