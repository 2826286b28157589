#include "base/process_posix.h"

#include <fcntl.h>
#include <sys/wait.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int FIRST_OF_OURS = 8;  // programs are given fewer descriptors than that
constexpr milliseconds BEFORE_PASSING_ON{200};
constexpr milliseconds KILLED_IS_GONE{5000};  // unless the system itself holds it

// Signals for which this program has handlers, which must not run in another one.
constexpr std::array<int, 4> HANDLED = {SIGINT, SIGCHLD, SIGTERM, SIGHUP};

Descriptor moved_up(int number) {
  const Descriptor before(number);
  Descriptor moved(fcntl(number, F_DUPFD_CLOEXEC, FIRST_OF_OURS));
  if (!moved.open()) throw Error(os_error_text(errno == EINVAL ? EMFILE : errno));
  return moved;
}

struct Start {
  std::vector<char*> words;
  const std::vector<int>& descriptors;
  Process::Bond bond;
  pid_t parent;
  int report;
};

void die_with(pid_t parent) {
#ifdef __linux__
  prctl(PR_SET_PDEATHSIG, SIGTERM);  // reaches the child also when this process is killed
  if (getppid() != parent) _exit(1);
#else
  static_cast<void>(parent);
#endif
}

void reset_signals() {
  for (const int number : HANDLED) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler != SIG_IGN) std::signal(number, SIG_DFL);
  }
  for (const int number : {SIGPIPE, SIGXFSZ}) std::signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Runs between fork and exec, where only what a signal handler may do is allowed.
[[noreturn]] void become(const Start& start) {
  if (start.bond == Process::Bond::ends_with_us) die_with(start.parent);
  bool placed = true;
  for (int i = 0; i < static_cast<int>(start.descriptors.size()); ++i) {
    const int ours = start.descriptors[static_cast<std::size_t>(i)];
    placed = placed && (ours == i || dup2(ours, i) == i);
  }
  reset_signals();
  if (placed) execvp(start.words[0], start.words.data());
  const int problem = errno;
  if (write(start.report, &problem, sizeof problem) < 0) _exit(126);
  _exit(127);
}

// With all signals held back, so that none is lost between the two programs.
pid_t forked(const Start& start) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &before);
  const pid_t child = fork();
  if (child == 0) become(start);
  const int problem = errno;
  sigprocmask(SIG_SETMASK, &before, nullptr);
  errno = problem;
  return child;
}

// The errno of a program that did not come about, or 0 once it runs.
int reported(const Descriptor& report, pid_t child) {
  int problem = 0;
  ssize_t count = 0;
  do {
    count = read(report.number(), &problem, sizeof problem);
  } while (count < 0 && errno == EINTR);
  if (count <= 0) return 0;
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
  return problem;
}

std::vector<char*> as_arguments(const std::vector<std::string>& command) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  return words;
}

}  // namespace

Pipe make_pipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw Error(os_error_text(errno));
  Descriptor second(ends[1]);
  Pipe made;
  made.read = moved_up(ends[0]);
  made.write = moved_up(second.release());
  return made;
}

Process::Process(const std::vector<std::string>& command, const std::vector<int>& descriptors,
                 Relay relay, Bond bond)
    : relay_(relay) {
  wake_socket();  // before there is an end to be told of
  Pipe report = make_pipe();
  id_ = forked({as_arguments(command), descriptors, bond, getpid(), report.write.number()});
  const int not_forked = id_ < 0 ? errno : 0;
  report.write.close();
  const int problem = not_forked != 0 ? not_forked : reported(report.read, id_);
  if (problem != 0) throw Error(os_error_text(problem, command[0]));
}

Process::~Process() {
  kill(SIGKILL);
  const Deadline until = steady_clock::now() + KILLED_IS_GONE;
  std::vector<pollfd> nothing;
  while (!exit_ && steady_clock::now() < *until) wait(nothing, until);
}

void Process::kill(int signal) {
  if (!exit_) ::kill(id_, signal);
}

void Process::wait(std::vector<pollfd>& watched, Deadline until) {
  const bool ended_now = look();
  watched.push_back({static_cast<int>(wake_socket()), POLLIN, 0});
  poll(watched.data(), static_cast<nfds_t>(watched.size()), ended_now ? 0 : milliseconds_to(until));
  watched.pop_back();
  clear_wake();
  look();
}

// Whether it has ended since the last look.
bool Process::look() {
  if (exit_) return false;
  int state = 0;
  const pid_t ended = waitpid(id_, &state, WNOHANG);
  if (ended == 0 || (ended < 0 && errno == EINTR)) {
    relay_interrupt();
    return false;
  }
  exit_ = WIFSIGNALED(state) ? ExitState{0, WTERMSIG(state)} : ExitState{WEXITSTATUS(state), 0};
  return true;
}

void Process::relay_interrupt() {
  const int pending = pending_interrupts();
  if (pending >= 2) kill(SIGKILL);
  const bool knows = relay_ == Relay::unless_from_terminal && interrupted_by_terminal();
  if (pending != 1 || knows || passed_on_) return;
  const auto now = steady_clock::now();
  if (!pass_on_at_) pass_on_at_ = now + BEFORE_PASSING_ON;
  if (now < *pass_on_at_) return;
  passed_on_ = true;
  kill(SIGINT);
}

int Process::milliseconds_to(Deadline until) const {
  if (pass_on_at_ && !passed_on_) until = std::min(until.value_or(*pass_on_at_), *pass_on_at_);
  if (!until) return -1;
  const auto left = std::chrono::ceil<milliseconds>(*until - steady_clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, 1 << 30));
}

}  // namespace zv
