// Answers of a server: the whole client, over a real connection to a thread of this process.
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <thread>

#include "harness.h"
#include "http/client.h"

namespace zv::fuzz {
namespace {

// A socket that listens on a free port of the loopback address.
class Listener {
 public:
  Listener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    auto* address = reinterpret_cast<sockaddr*>(&address_);
    promise(bind(socket_, address, size) == 0 && listen(socket_, 1) == 0, "a port to listen on");
    promise(getsockname(socket_, address, &size) == 0, "the port's number");
  }
  ~Listener() { close(socket_); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  std::string url() const {
    return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + "/";
  }

  // Takes one connection, says `answer` in pieces and waits for the client to go.
  void serve(std::string_view answer, std::size_t piece) const {
    const int client = accept(socket_, nullptr, nullptr);
    char request[4096];
    if (recv(client, request, sizeof request, 0) <= 0) answer = {};
    while (!answer.empty()) {
      const auto said = send(client, answer.data(), std::min(piece, answer.size()), MSG_NOSIGNAL);
      if (said <= 0) break;
      answer.remove_prefix(static_cast<std::size_t>(said));
    }
    shutdown(client, SHUT_WR);
    while (recv(client, request, sizeof request, 0) > 0) continue;
    close(client);
  }

 private:
  int socket_;
  sockaddr_in address_{};
};

}  // namespace

// The first byte tells the length of the pieces and the method.
void http(std::string_view input) {
  if (input.empty()) return;
  static const Listener LISTENER;
  const auto choice = static_cast<unsigned char>(input[0]);
  const std::string_view answer = input.substr(1);
  const std::size_t piece = choice < 128 ? 65536 : choice - 127U;
  std::thread server([&] { LISTENER.serve(answer, std::max(piece, answer.size() / 64 + 1)); });
  succeeds([&] {
    const std::string method = choice % 16 == 5 ? "HEAD" : "GET";
    const std::string body = zv::http::fetch({.url = LISTENER.url(), .method = method});
    promise(body.size() <= answer.size(), "no more than was sent");
  });
  server.join();
}

}  // namespace zv::fuzz
