#include <array>
#include <atomic>
#include <csignal>

#include "base/interrupt.h"
#include "base/process_posix.h"
#include "base/run.h"

namespace zv {
namespace {

constexpr std::array<int, 2> ENDING = {SIGTERM, SIGHUP};

// A signal handler can reach nothing but variables of static storage, and runs on any thread.
std::atomic<pid_t> child_to_end = 0;

void end_with_child(int number) {
  const pid_t child = child_to_end;
  if (child != 0) kill(child, number);
  std::signal(number, SIG_DFL);
  std::raise(number);
}

// While it lives, what ends this process ends the child as well, unless we were told to ignore it.
class SharedEnd {
 public:
  explicit SharedEnd(pid_t child) {
    child_to_end = child;
    for (std::size_t i = 0; i < ENDING.size(); ++i) {
      sigaction(ENDING[i], nullptr, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) std::signal(ENDING[i], end_with_child);
    }
  }
  ~SharedEnd() {
    child_to_end = 0;
    for (std::size_t i = 0; i < ENDING.size(); ++i) sigaction(ENDING[i], &before_[i], nullptr);
  }
  SharedEnd(const SharedEnd&) = delete;
  SharedEnd& operator=(const SharedEnd&) = delete;

 private:
  std::array<struct sigaction, ENDING.size()> before_{};
};

}  // namespace

ExitState run_attached(const std::vector<std::string>& command) {
  check_interrupt();
  Process process(command, {0, 1, 2}, Relay::unless_from_terminal, Process::Bond::ends_with_us);
  const SharedEnd shared(process.id());
  std::vector<pollfd> nothing;
  while (!process.exit()) process.wait(nothing);
  check_interrupt();
  return *process.exit();
}

}  // namespace zv
