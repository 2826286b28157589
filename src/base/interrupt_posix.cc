#include <csignal>

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

// A signal handler can reach nothing but variables of static storage.
volatile std::sig_atomic_t interrupts = 0;
volatile std::sig_atomic_t from_terminal = 0;

void count(int, siginfo_t* info, void*) {
  from_terminal = info->si_pid == 0 ? 1 : 0;  // no process sent it
  interrupts = interrupts + 1;
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
  const int taken = interrupts;
  interrupts = 0;
  return taken;
}

bool interrupted_by_terminal() {
  return from_terminal != 0;
}

void check_interrupt() {
  if (interrupts > 0) throw Interrupted();
}

}  // namespace zv
