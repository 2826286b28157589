#include <csignal>

#include "base/hangup.h"

namespace zv {
namespace {

bool hangups_are_ignored() {
  struct sigaction action {};
  return sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

std::vector<std::string> with_hangups_as_here(const std::vector<std::string>& command) {
  if (!hangups_are_ignored()) return command;
  std::vector<std::string> words = {"/bin/sh", "-c", "trap '' HUP; exec \"$@\"", "sh"};
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

}  // namespace zv
