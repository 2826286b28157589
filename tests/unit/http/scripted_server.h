// A server for one connection at a time: reads one request, then does as the test says.
#pragma once

#include <sys/socket.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <functional>
#include <string>
#include <thread>

namespace zv::http {

class ScriptedServer {
 public:
  using Socket = boost::asio::ip::tcp::socket;
  using Script = std::function<void(Socket&)>;

  explicit ScriptedServer(Script script, const std::string& address = "127.0.0.1")
      : acceptor_(context_, {boost::asio::ip::make_address(address), 0}),
        thread_([this, script = std::move(script)] {
          Socket socket(context_);
          boost::system::error_code nobody_came;
          acceptor_.accept(socket, nobody_came);
          if (!nobody_came) script(socket);
        }) {}
  // Answers every request with the same bytes and hangs up.
  explicit ScriptedServer(const std::string& answer)
      : ScriptedServer([this, answer](Socket& socket) {
          request = read_request(socket);
          say(socket, answer);
        }) {}
  ~ScriptedServer() {
    // Wakes a thread for which no client came, so that a failed test ends.
    ::shutdown(acceptor_.native_handle(), SHUT_RD);
    join();
  }

  std::string url(const std::string& path) const { return "http://127.0.0.1:" + port() + path; }
  std::string port() const { return std::to_string(acceptor_.local_endpoint().port()); }
  void join() {
    if (thread_.joinable()) thread_.join();
  }

  static void say(Socket& socket, const std::string& text) {
    boost::system::error_code ignored;
    boost::asio::write(socket, boost::asio::buffer(text), ignored);
  }
  // The head, and as much body as it announces.
  static std::string read_request(Socket& socket) {
    std::string text;
    boost::system::error_code error;
    while (!error && !complete(text)) {
      char chunk[4096];
      text.append(chunk, socket.read_some(boost::asio::buffer(chunk), error));
    }
    return text;
  }

  std::string request;  // of the fixed answer; valid after join()

 private:
  static bool complete(const std::string& text) {
    const auto end = text.find("\r\n\r\n");
    if (end == std::string::npos) return false;
    const auto length = text.find("Content-Length: ");
    const std::size_t body = length == std::string::npos ? 0 : std::stoul(text.substr(length + 16));
    return text.size() >= end + 4 + body;
  }

  boost::asio::io_context context_;
  boost::asio::ip::tcp::acceptor acceptor_;
  std::thread thread_;
};

// A port on which nobody listens.
inline std::string closed_port() {
  boost::asio::io_context context;
  boost::asio::ip::tcp::acceptor once(context, {boost::asio::ip::make_address("127.0.0.1"), 0});
  return std::to_string(once.local_endpoint().port());
}

}  // namespace zv::http
