#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

// A signal handler can reach nothing but static storage, and runs on whichever thread is there.
std::atomic<int> interrupts = 0;
std::atomic<bool> from_terminal = false;
std::atomic<int> wake_end = -1;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "a signal handler may not wait for a lock");

void wake(int) {
  const int kept = errno;
  if (wake_end >= 0) send(wake_end, "", 1, 0);  // full is as good as written
  errno = kept;
}

void count(int number, siginfo_t* info, void*) {
  from_terminal = info->si_pid == 0;  // no process sent it
  ++interrupts;
  wake(number);
}

// The end of a child is told by a signal; before the first child nobody needs it.
int make_wake_socket() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) throw Error(os_error_text(errno));
  for (const int end : ends) {
    const bool closes = fcntl(end, F_SETFD, FD_CLOEXEC) == 0;
    if (!closes || fcntl(end, F_SETFL, O_NONBLOCK) != 0) throw Error(os_error_text(errno));
  }
  wake_end = ends[1];
  struct sigaction action {};
  action.sa_handler = wake;
  action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
  sigaction(SIGCHLD, &action, nullptr);
  return ends[0];
}

}  // namespace

InterruptScope::InterruptScope() {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  struct sigaction before {};
  sigaction(SIGINT, nullptr, &before);
  if (before.sa_handler == SIG_IGN) return;
  struct sigaction action {};
  action.sa_sigaction = count;
  action.sa_flags = SA_SIGINFO;  // without SA_RESTART, so that a read at the prompt ends
  sigaction(SIGINT, &action, nullptr);
}

InterruptScope::~InterruptScope() {
  struct sigaction action {};
  sigaction(SIGINT, nullptr, &action);
  if (action.sa_handler == SIG_IGN) return;
  action.sa_flags = 0;
  action.sa_handler = SIG_DFL;
  sigaction(SIGINT, &action, nullptr);
}

int pending_interrupts() {
  return interrupts;
}

int take_interrupts() {
  return interrupts.exchange(0);
}

bool interrupted_by_terminal() {
  return from_terminal;
}

void check_interrupt() {
  if (interrupts > 0) throw Interrupted();
}

std::intptr_t wake_socket() {
  static const int made = make_wake_socket();
  return made;
}

void clear_wake() {
  std::array<char, 64> taken;
  while (recv(static_cast<int>(wake_socket()), taken.data(), taken.size(), 0) > 0) {
  }
}

}  // namespace zv
