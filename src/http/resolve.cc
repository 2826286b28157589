#include "http/resolve.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/asio/io_context.hpp>
#include <future>
#include <thread>

#include "base/interrupt.h"
#include "http/errors.h"

namespace zv::http {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using Endpoints = std::vector<tcp::endpoint>;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds SLICE(20);

struct Lookup {
  error_code error;
  Endpoints endpoints;
};

// The resolver's failures under the numbers and texts that the field knows them by.
std::string reason(const error_code& error) {
  if (error == asio::error::host_not_found || error == asio::error::no_data) {
    return "[Errno -2] Name or service not known";
  }
  if (error == asio::error::host_not_found_try_again) {
    return "[Errno -3] Temporary failure in name resolution";
  }
  if (error == asio::error::no_recovery) {
    return "[Errno -4] Non-recoverable failure in name resolution";
  }
  return error.message();
}

Lookup look_up(const std::string& host, std::uint16_t port) {
  Lookup lookup;
  asio::io_context context;
  tcp::resolver resolver(context);
  const auto found =
      resolver.resolve(host, std::to_string(port), tcp::resolver::numeric_service, lookup.error);
  for (const auto& entry : found) lookup.endpoints.push_back(entry.endpoint());
  if (!lookup.error && lookup.endpoints.empty()) lookup.error = asio::error::host_not_found;
  return lookup;
}

// The system's resolver cannot be called off: it is left behind in a thread of its own.
std::future<Lookup> start_look_up(const Url& url) {
  std::packaged_task<Lookup()> task(
      [host = url.host, port = url.port] { return look_up(host, port); });
  std::future<Lookup> result = task.get_future();
  std::thread(std::move(task)).detach();
  return result;
}

Lookup await_look_up(const Url& url, std::chrono::milliseconds timeout) {
  std::future<Lookup> pending = start_look_up(url);
  const auto end = steady_clock::now() + timeout;
  while (pending.wait_for(SLICE) != std::future_status::ready) {
    check_interrupt();
    if (steady_clock::now() >= end) throw UrlError("timed out", NetworkFailure::time_out);
  }
  return pending.get();
}

// This name means the own machine without asking anybody (RFC 6761): not every system has a table
// of hosts.
Endpoints own_machine(const Url& url) {
  if (!boost::algorithm::iequals(url.host, "localhost")) return {};
  return {{asio::ip::address_v6::loopback(), url.port},
          {asio::ip::address_v4::loopback(), url.port}};
}

}  // namespace

Endpoints resolve(const Url& url, std::chrono::milliseconds timeout) {
  error_code no_number;
  const auto address = asio::ip::make_address(url.host, no_number);
  if (!no_number) return {{address, url.port}};
  if (Endpoints own = own_machine(url); !own.empty()) return own;
  Lookup lookup = await_look_up(url, timeout);
  if (lookup.error) throw UrlError(reason(lookup.error), NetworkFailure::name_resolution);
  return lookup.endpoints;
}

}  // namespace zv::http
