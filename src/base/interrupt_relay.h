// Tells a child of a Ctrl+C that it may have missed: after a moment, once; a second one kills it.
#pragma once

namespace zv {

// Which Ctrl+C the child is told of: every one, or only what the terminal did not send it already,
// because a second one would break off its tidying up.
enum class Relay { every, unless_from_terminal };

class InterruptRelay {
 public:
  static constexpr int TICK_MS = 20;

  explicit InterruptRelay(Relay relay = Relay::every) : relay_(relay) {}

  // Asked once a tick; the signal to send now, or 0.
  int due();

 private:
  Relay relay_;
  int ticks_since_interrupt_ = 0;
};

}  // namespace zv
