#include "base/held_signals_posix.h"

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

constexpr int ENDING[] = {SIGHUP,  SIGTERM, SIGQUIT, SIGALRM,  SIGUSR1,
                          SIGUSR2, SIGXCPU, SIGPROF, SIGVTALRM};

bool ignored(int number) {
  struct sigaction action {};
  return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

HeldSignals::HeldSignals() {
  sigemptyset(&held_);
  for (const int number : ENDING) {
    if (!ignored(number)) sigaddset(&held_, number);
  }
  pthread_sigmask(SIG_BLOCK, &held_, &before_);
  for (const int number : ENDING) {
    if (sigismember(&before_, number) == 1) sigdelset(&held_, number);
  }
}

HeldSignals::~HeldSignals() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void HeldSignals::check() const {
  check_interrupt();
  sigset_t waiting;
  if (sigpending(&waiting) != 0) return;
  for (const int number : ENDING) {
    if (sigismember(&held_, number) == 1 && sigismember(&waiting, number) == 1) throw Interrupted();
  }
}

}  // namespace zv
