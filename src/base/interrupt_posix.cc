#include <atomic>
#include <csignal>

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

// A signal handler can reach nothing but static storage, and runs on whichever thread is there.
std::atomic<int> interrupts = 0;
std::atomic<bool> from_terminal = false;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "a signal handler may not wait for a lock");

void count(int, siginfo_t* info, void*) {
  from_terminal = info->si_pid == 0;  // no process sent it
  ++interrupts;
}

}  // namespace

InterruptScope::InterruptScope() {
  struct sigaction action {};
  action.sa_sigaction = count;
  action.sa_flags = SA_SIGINFO;  // without SA_RESTART, so that a read at the prompt ends
  sigaction(SIGINT, &action, nullptr);
}

InterruptScope::~InterruptScope() {
  struct sigaction action {};
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

}  // namespace zv
