#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include "base/error.h"
#include "base/interrupt.h"
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
  SharedEnd() {
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

// Runs between fork and exec, where only what a signal handler may do is allowed.
[[noreturn]] void become(char* const* words, pid_t parent, int report) {
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGTERM);  // reaches the child also when this process is killed
  if (getppid() != parent) _exit(1);
#else
  static_cast<void>(parent);
#endif
  std::signal(SIGPIPE, SIG_DFL);
  std::signal(SIGXFSZ, SIG_DFL);
  execvp(words[0], words);
  const int problem = errno;
  if (write(report, &problem, sizeof problem) < 0) _exit(126);
  _exit(127);
}

// The child's id. Throws Error when the program cannot be started.
pid_t start(const std::vector<std::string>& command) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  std::array<int, 2> report{};
  if (pipe(report.data()) != 0) throw Error(os_error_text(errno, command[0]));
  for (const int end : report) fcntl(end, F_SETFD, FD_CLOEXEC);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) become(words.data(), parent, report[1]);
  int problem = child < 0 ? errno : 0;
  if (child > 0) child_to_end = child;
  close(report[1]);
  if (child > 0 && read(report[0], &problem, sizeof problem) > 0) waitpid(child, nullptr, 0);
  close(report[0]);
  if (problem != 0) throw Error(os_error_text(problem, command[0]));
  return child;
}

ExitState wait_for(pid_t child) {
  InterruptRelay relay(Relay::unless_from_terminal);
  int state = 0;
  while (waitpid(child, &state, WNOHANG) == 0) {
    if (const int number = relay.due()) kill(child, number);
    std::this_thread::sleep_for(std::chrono::milliseconds(InterruptRelay::TICK_MS));
  }
  if (WIFSIGNALED(state)) return {0, WTERMSIG(state)};
  return {WEXITSTATUS(state), 0};
}

}  // namespace

ExitState run_attached(const std::vector<std::string>& command) {
  check_interrupt();
  const SharedEnd shared;
  const ExitState exit = wait_for(start(command));
  check_interrupt();
  return exit;
}

}  // namespace zv
