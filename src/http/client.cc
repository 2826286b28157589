#include "http/client.h"

#include "base/error.h"
#include "http/connection.h"
#include "http/read_answer.h"

namespace zv::http {
namespace {

constexpr std::size_t SENT_TOGETHER = 1 << 14;

std::string header_line(std::string_view name, std::string_view value) {
  if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) {
    throw Error("the header " + std::string(name) + " cannot hold a line break");
  }
  return std::string(name) + ": " + std::string(value) + "\r\n";
}

std::size_t length_of(const Request& request) {
  std::size_t length = 0;
  if (request.body) {
    for (const std::string& piece : *request.body) length += piece.size();
  }
  return length;
}

std::string head_of(const Request& request, const Url& url) {
  std::string head = request.method + " " + url.target + " HTTP/1.1\r\n";
  head += header_line("Host", url.authority());
  head += header_line("User-Agent", "zv-anpr");
  head += header_line("Accept-Encoding", "identity");
  head += header_line("Connection", "close");
  for (const auto& [name, value] : request.headers) head += header_line(name, value);
  const bool needs_length = request.body || request.method == "POST" || request.method == "PUT";
  if (needs_length) head += header_line("Content-Length", std::to_string(length_of(request)));
  return head + "\r\n";
}

// Stops when the server answers early: one that refuses an upload need not read all of it.
void send(const Request& request, std::string head, Connection& connection) {
  std::string pending = std::move(head);
  const std::vector<std::string> none;
  for (const std::string& piece : request.body ? *request.body : none) {
    if (piece.size() <= SENT_TOGETHER) {
      pending += piece;
      continue;
    }
    if (!connection.send(pending) || !connection.send(piece)) return;
    pending.clear();
  }
  connection.send(pending);
}

}  // namespace

std::string fetch(const Request& request) {
  const Url url = parse_url(request.url);
  std::string head = head_of(request, url);
  Connection connection(url, request.timeout);
  send(request, std::move(head), connection);
  return read_answer(connection, request.method == "HEAD");
}

}  // namespace zv::http
