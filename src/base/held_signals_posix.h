// Signals that would end the process, made to wait while something has to be tidied up first.
#pragma once

#include <csignal>

namespace zv {

class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();  // what waited arrives now
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  // Throws Interrupted when one is waiting, or Ctrl+C was pressed: the work is to be given up.
  void check() const;

 private:
  sigset_t held_{};
  sigset_t before_{};
};

}  // namespace zv
