#include "base/interrupt_relay.h"

#include <uv.h>  // has SIGKILL on every system

#include <csignal>

#include "base/interrupt.h"

namespace zv {
namespace {

constexpr int TICKS_BEFORE_PASSING_ON = 10;

}  // namespace

int InterruptRelay::due() {
  const int pending = pending_interrupts();
  if (pending == 0) return 0;
  ++ticks_since_interrupt_;
  if (pending >= 2) return SIGKILL;
  if (relay_ == Relay::unless_from_terminal && interrupted_by_terminal()) return 0;
  return ticks_since_interrupt_ == TICKS_BEFORE_PASSING_ON ? SIGINT : 0;
}

}  // namespace zv
