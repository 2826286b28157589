#include "http/connection.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <optional>

#include "base/interrupt.h"
#include "http/errors.h"
#include "http/resolve.h"

namespace zv::http {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds SLICE(20);
constexpr std::size_t SEND_AT_ONCE = 1 << 18;

std::string reason(const error_code& error) {
  if (error == asio::error::timed_out) return "timed out";
  return "[Errno " + std::to_string(error.value()) + "] " + error.message();
}

NetworkFailure kind(const error_code& error) {
  if (error == asio::error::timed_out) return NetworkFailure::time_out;
  if (error == asio::error::connection_refused) return NetworkFailure::refused;
  return NetworkFailure::other;
}

bool hung_up(const error_code& error) {
  return error == asio::error::broken_pipe || error == asio::error::connection_reset ||
         error == asio::error::connection_aborted;
}

}  // namespace

struct Connection::State {
  asio::io_context context{1};
  tcp::socket socket{context};
  std::chrono::milliseconds timeout;

  explicit State(std::chrono::milliseconds limit) : timeout(limit) {}

  struct Result {
    error_code error;
    std::size_t count = 0;
  };

  // Starts one operation and serves it to its end; what takes too long ends as timed_out.
  template <class Start>
  Result perform(Start start) {
    std::optional<Result> result;
    start([&result](error_code error, std::size_t count = 0) { result = Result{error, count}; });
    const auto end = steady_clock::now() + timeout;
    context.restart();
    while (!result && steady_clock::now() < end && pending_interrupts() == 0) {
      context.run_one_for(std::min<steady_clock::duration>(SLICE, end - steady_clock::now()));
    }
    if (result) return *result;
    // The handler refers to this frame: it must have run before the frame goes.
    error_code ignored;
    socket.close(ignored);
    context.run();
    check_interrupt();
    return {asio::error::timed_out, 0};
  }
};

Connection::Connection(const Url& url, std::chrono::milliseconds timeout)
    : state_(std::make_unique<State>(timeout)) {
  error_code error;
  for (const tcp::endpoint& endpoint : resolve(url, timeout)) {
    error_code ignored;
    state_->socket.close(ignored);
    const auto result =
        state_->perform([&](auto done) { state_->socket.async_connect(endpoint, done); });
    error = result.error;
    if (!error) break;
  }
  if (error) throw UrlError(reason(error), kind(error));
  state_->socket.set_option(tcp::no_delay(true), error);
}

Connection::~Connection() = default;

bool Connection::send(std::string_view data) {
  while (!data.empty()) {
    error_code ignored;
    if (state_->socket.available(ignored) > 0) return false;
    const auto part = asio::buffer(data.data(), std::min(data.size(), SEND_AT_ONCE));
    const auto result =
        state_->perform([&](auto done) { state_->socket.async_write_some(part, done); });
    if (hung_up(result.error)) return false;
    if (result.error) throw HttpError(reason(result.error), kind(result.error));
    data.remove_prefix(result.count);
  }
  return true;
}

std::size_t Connection::receive(std::span<char> buffer) {
  const auto target = asio::buffer(buffer.data(), buffer.size());
  const auto result =
      state_->perform([&](auto done) { state_->socket.async_read_some(target, done); });
  if (result.error == asio::error::eof) return 0;
  if (result.error) throw HttpError(reason(result.error), kind(result.error));
  return result.count;
}

}  // namespace zv::http
