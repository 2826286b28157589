#include <uv.h>

#include <array>
#include <atomic>

#include "base/error.h"
#include "base/interrupt.h"

namespace zv {
namespace {

// The console calls its handler on a thread of its own, which can reach nothing but static storage.
std::atomic<int> interrupts = 0;
std::atomic<uv_os_sock_t> wake_end = INVALID_SOCKET;

BOOL WINAPI count(DWORD event) {
  if (event != CTRL_C_EVENT) return FALSE;
  ++interrupts;
  if (wake_end != INVALID_SOCKET) send(wake_end, "", 1, 0);
  return TRUE;
}

uv_os_sock_t make_wake_socket() {
  std::array<uv_os_sock_t, 2> ends{};
  const int failed = uv_socketpair(SOCK_STREAM, 0, ends.data(), UV_NONBLOCK_PIPE, UV_NONBLOCK_PIPE);
  if (failed != 0) throw Error(os_error_text(-failed));
  wake_end = ends[1];
  return ends[0];
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

std::intptr_t wake_socket() {
  static const uv_os_sock_t made = make_wake_socket();
  return static_cast<std::intptr_t>(made);
}

void clear_wake() {
  std::array<char, 64> taken;
  const auto socket = static_cast<uv_os_sock_t>(wake_socket());
  while (recv(socket, taken.data(), static_cast<int>(taken.size()), 0) > 0) {
  }
}

}  // namespace zv
