// Ctrl+C: counted from its arrival until somebody takes it. One scope lives in main.
#pragma once

namespace zv {

// While it lives, Ctrl+C is counted and breaks off blocking reads instead of ending the process.
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

}  // namespace zv
