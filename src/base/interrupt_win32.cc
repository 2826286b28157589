#include <windows.h>

#include <atomic>

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

// The console calls its handler on a thread of its own, which can reach nothing but static storage.
std::atomic<int> interrupts = 0;

BOOL WINAPI count(DWORD event) {
  if (event != CTRL_C_EVENT) return FALSE;
  ++interrupts;
  return TRUE;
}

}  // namespace

InterruptScope::InterruptScope() {
  SetConsoleCtrlHandler(count, TRUE);
}

InterruptScope::~InterruptScope() {
  SetConsoleCtrlHandler(count, FALSE);
}

int pending_interrupts() {
  return interrupts;
}

int take_interrupts() {
  return interrupts.exchange(0);
}

bool interrupted_by_terminal() {
  return true;  // the console's events reach every process of it
}

void check_interrupt() {
  if (interrupts > 0) throw Interrupted();
}

}  // namespace zv
