#include "http/client.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/use_future.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <future>

#include "base/interrupt.h"
#include "http/url.h"

namespace zv::http {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using asio::use_future;
using asio::ip::tcp;
using boost::system::error_code;
using boost::system::system_error;
using std::chrono::steady_clock;
using Endpoints = std::vector<tcp::endpoint>;
using Message = beast::http::request<beast::http::string_body>;
using Parser = beast::http::response_parser<beast::http::string_body>;

constexpr std::uint32_t LONGEST_HEADER = 1 << 16;
constexpr std::size_t LARGEST_ANSWER = 16 << 20;
constexpr std::size_t RECEIVE_AT_ONCE = 1 << 16;

template <class Failure>
Failure failure(const error_code& error) {
  if (error == asio::error::timed_out) return Failure("timed out", NetworkFailure::time_out);
  const bool refused = error == asio::error::connection_refused;
  return Failure("[Errno " + std::to_string(error.value()) + "] " + error.message(),
                 refused ? NetworkFailure::refused : NetworkFailure::other);
}

// Under the numbers and texts that the field knows.
UrlError look_up_failure(const error_code& error) {
  if (error == asio::error::timed_out) return failure<UrlError>(error);
  std::string reason = "[Errno -2] Name or service not known";
  if (error == asio::error::host_not_found_try_again) {
    reason = "[Errno -3] Temporary failure in name resolution";
  }
  return UrlError(reason, NetworkFailure::name_resolution);
}

bool hung_up(const error_code& error) {
  return error == asio::error::broken_pipe || error == asio::error::connection_reset ||
         error == asio::error::connection_aborted;
}

HttpError too_large() {
  return HttpError("the answer is larger than 16 MiB");
}

// Makes a context look up whenever a signal came.
class SignalWatch {
 public:
  explicit SignalWatch(asio::io_context& context) : socket_(context) {
    socket_.assign({0, 0}, static_cast<Socket::native_handle_type>(wake_socket()));
    watch();
  }
  ~SignalWatch() {
    error_code ignored;
    socket_.release(ignored);  // others wait for it, too
  }
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

 private:
  using Socket = asio::generic::stream_protocol::socket;

  void watch() {
    socket_.async_wait(tcp::socket::wait_read, [this](const error_code& error) {
      if (error) return;
      clear_wake();
      watch();
    });
  }

  Socket socket_;
};

// One connection whose every operation is limited in time and gives way to Ctrl+C. An operation
// that is given up is never served again; its result lies in the future's own memory.
class Connection {
 public:
  explicit Connection(std::chrono::milliseconds timeout) : timeout_(timeout) {}

  void open(const Url& url) {
    error_code last;
    for (const tcp::endpoint& endpoint : resolve(url)) {
      try {
        socket_ = tcp::socket(*context_);
        await(socket_.async_connect(endpoint, use_future));
        socket_.set_option(tcp::no_delay(true), last);
        return;
      } catch (const system_error& error) {
        last = error.code();
      }
    }
    throw failure<UrlError>(last);
  }

  // Stops when the server answers early: one that refuses an upload need not read all of it.
  void send(const Message& message) {
    beast::http::request_serializer<beast::http::string_body> rest(message);
    error_code ignored;
    try {
      while (!rest.is_done() && socket_.available(ignored) == 0) {
        await(beast::http::async_write_some(socket_, rest, use_future));
      }
    } catch (const system_error& error) {
      if (!hung_up(error.code())) throw failure<HttpError>(error.code());
    }
  }

  // Feeds the parser until `done`; what comes after that is kept for the next one.
  template <class Done>
  void read(Parser& parser, Done done) {
    while (!done()) {
      error_code error = beast::http::error::need_more;
      if (unread_.size() > 0) unread_.consume(parser.put(unread_.data(), error));
      if (error == beast::http::error::need_more) {
        if (receive() == 0) end(parser);
      } else if (error == beast::http::error::body_limit) {
        throw too_large();
      } else if (error) {
        throw HttpError("the answer is no well-formed HTTP (" + error.message() + ")");
      }
    }
  }

 private:
  template <class Result>
  Result await(std::future<Result> pending) {
    const auto end = steady_clock::now() + timeout_;
    while (pending.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
      check_interrupt();
      if (context_->run_one_until(end) == 0) throw system_error(asio::error::timed_out);
    }
    return pending.get();
  }

  // "localhost" means the own machine without asking anybody (RFC 6761): not every system has a
  // table of hosts.
  Endpoints resolve(const Url& url) {
    error_code no_number;
    const auto address = asio::ip::make_address(url.host, no_number);
    if (!no_number) return {{address, url.port}};
    if (!boost::algorithm::iequals(url.host, "localhost")) return look_up(url);
    return {{asio::ip::address_v6::loopback(), url.port},
            {asio::ip::address_v4::loopback(), url.port}};
  }

  // The system's resolver cannot be called off, and the context's end would wait for it: when we
  // do not wait any longer, the context never ends.
  Endpoints look_up(const Url& url) {
    tcp::resolver resolver(*context_);
    try {
      const auto found = await(resolver.async_resolve(url.host, std::to_string(url.port),
                                                      tcp::resolver::numeric_service, use_future));
      return {found.begin(), found.end()};
    } catch (const system_error& error) {
      if (error.code() == asio::error::timed_out) static_cast<void>(context_.release());
      throw look_up_failure(error.code());
    } catch (const Interrupted&) {
      static_cast<void>(context_.release());
      throw;
    }
  }

  std::size_t receive() {
    try {
      const std::size_t count =
          await(socket_.async_read_some(unread_.prepare(RECEIVE_AT_ONCE), use_future));
      unread_.commit(count);
      received_ += count;
      if (received_ <= LARGEST_ANSWER) return count;
    } catch (const system_error& error) {
      if (error.code() == asio::error::eof) return 0;
      throw failure<HttpError>(error.code());
    }
    throw too_large();
  }

  // The end of the connection is the end of an answer that did not tell its length.
  static void end(Parser& parser) {
    if (!parser.got_some()) throw HttpError("the server closed the connection without an answer");
    error_code error;
    parser.put_eof(error);
    if (error) throw HttpError("the connection was cut in the middle of the answer");
  }

  std::chrono::milliseconds timeout_;
  std::unique_ptr<asio::io_context> context_ = std::make_unique<asio::io_context>(1);
  SignalWatch signals_{*context_};
  tcp::socket socket_{*context_};
  beast::flat_buffer unread_;
  std::size_t received_ = 0;
};

Message message_of(Request request, const Url& url) {
  using beast::http::field;
  Message message;
  message.method_string(request.method);
  message.target(url.target);
  message.set(field::host, url.authority());
  message.set(field::user_agent, "zv-anpr");
  message.set(field::accept_encoding, "identity");
  message.set(field::connection, "close");
  for (const auto& [name, value] : request.headers) {
    if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
      throw Error("the header " + name + " cannot hold a line break");
    }
    message.set(name, value);
  }
  message.body() = std::move(request.body);
  message.prepare_payload();
  return message;
}

// An answer without a body of its own that only announces the real one.
bool interim(unsigned status) {
  return status >= 100 && status < 200 && status != 101;
}

HttpStatusError refusal(const Parser::value_type& head) {
  const std::string sent(head.reason());
  const std::string usual(beast::http::obsolete_reason(head.result()));
  return {head.result_int(), sent.empty() ? usual : sent};
}

std::string read_answer(Connection& connection, bool without_body) {
  while (true) {
    Parser parser;
    parser.header_limit(LONGEST_HEADER);
    parser.body_limit(LARGEST_ANSWER);
    parser.skip(without_body);
    connection.read(parser, [&] { return parser.is_header_done(); });
    const unsigned status = parser.get().result_int();
    if (interim(status)) continue;
    if (status < 200 || status > 299) throw refusal(parser.get());
    connection.read(parser, [&] { return parser.is_done(); });
    return std::move(parser.get().body());
  }
}

}  // namespace

HttpStatusError::HttpStatusError(unsigned status, const std::string& reason)
    : HttpError("HTTP Error " + std::to_string(status) + ": " + reason +
                (status == 401 || status == 403 ? "; see: zv-anpr server token" : "")),
      code(status) {}

std::string fetch(Request request) {
  const Url url = parse_url(request.url);
  Connection connection(request.timeout);
  const Message message = message_of(std::move(request), url);
  connection.open(url);
  connection.send(message);
  return read_answer(connection, message.method() == beast::http::verb::head);
}

}  // namespace zv::http
