// Ctrl+C: counted from its arrival until somebody takes it. One scope lives in main.
#pragma once

#include <cstdint>

namespace zv {

// While it lives, Ctrl+C is counted and breaks off blocking reads instead of ending the process;
// unless whoever started us had it ignored (`nohup`, background jobs of scripts): then it stays so.
// Signals that were held back when we were started arrive from now on.
class InterruptScope {
 public:
  InterruptScope();
  ~InterruptScope();
  InterruptScope(const InterruptScope&) = delete;
  InterruptScope& operator=(const InterruptScope&) = delete;
};

// How often Ctrl+C was pressed since the last take_interrupts().
int pending_interrupts();
// The same, and forgets them.
int take_interrupts();
// Whether the last one came from the terminal, which sends it to the children as well.
bool interrupted_by_terminal();
// Throws Interrupted when Ctrl+C was pressed; the place for long loops.
void check_interrupt();

// A socket that is readable after Ctrl+C and (POSIX) the end of a child, for those who wait for
// other things as well. Throws Error when there are no descriptors left.
std::intptr_t wake_socket();
// Makes it unreadable again; to be called before one looks at what may have happened.
void clear_wake();

}  // namespace zv
