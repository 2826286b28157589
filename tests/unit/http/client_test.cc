#include "http/client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "base/interrupt.h"
#include "http/scripted_server.h"

namespace zv::http {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using Socket = ScriptedServer::Socket;

constexpr milliseconds SHORT(150);

std::string get(const std::string& url, milliseconds timeout = std::chrono::seconds(10)) {
  return fetch({.url = url, .timeout = timeout});
}

// What fetching ends with: the error's text, or the body.
template <class Failure>
std::string failure(const std::string& url, milliseconds timeout = std::chrono::seconds(10)) {
  try {
    return "body: " + get(url, timeout);
  } catch (const Failure& error) {
    EXPECT_STREQ(typeid(error).name(), typeid(Failure).name());
    return error.what();
  }
}

std::string ok(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

TEST(Client, SendsExactlyThisForAGet) {
  ScriptedServer server(ok("{}"));
  EXPECT_EQ(get(server.url("/api/x?y=1")), "{}");
  server.join();
  EXPECT_EQ(server.request, "GET /api/x?y=1 HTTP/1.1\r\nHost: 127.0.0.1:" + server.port() +
                                "\r\nUser-Agent: zv-anpr\r\nAccept-Encoding: identity\r\n"
                                "Connection: close\r\n\r\n");
}

TEST(Client, SendsHeadersAndBodyWithItsLength) {
  ScriptedServer server(ok(""));
  fetch({server.url("/"), "PUT", {{"Content-Type", "application/json"}}, "{\"a\": 1}"});
  server.join();
  EXPECT_THAT(server.request, HasSubstr("PUT / HTTP/1.1\r\n"));
  EXPECT_THAT(server.request,
              HasSubstr("Content-Type: application/json\r\nContent-Length: 8\r\n\r\n{\"a\": 1}"));
}

TEST(Client, TellsThatAPostHasNoBody) {
  ScriptedServer server(ok(""));
  fetch({server.url("/"), "POST"});
  server.join();
  EXPECT_THAT(server.request, HasSubstr("Content-Length: 0\r\n"));
}

TEST(Client, RefusesHeadersWithLineBreaks) {
  EXPECT_THROW(fetch({"http://127.0.0.1:1/", "GET", {{"X", "a\r\nY: b"}}}), Error);
}

TEST(Client, ReadsChunkedAnswersHoweverTheyArrive) {
  ScriptedServer server([](Socket& socket) {
    ScriptedServer::read_request(socket);
    const std::string text =
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
        "3;x=y\r\nabc\r\nA\r\n0123456789\r\n0\r\nTrailer: t\r\n\r\n";
    for (const char c : text) ScriptedServer::say(socket, std::string(1, c));
  });
  EXPECT_EQ(get(server.url("/")), "abc0123456789");
}

TEST(Client, ReadsAnswersThatEndWithTheConnection) {
  ScriptedServer server("HTTP/1.0 200 OK\r\n\r\nto the end");
  EXPECT_EQ(get(server.url("/")), "to the end");
}

TEST(Client, ReadsLargeAnswers) {
  const std::string body(9'000'000, 'x');
  ScriptedServer server(ok(body));
  EXPECT_EQ(get(server.url("/")).size(), body.size());
}

TEST(Client, PassesOverInterimAnswers) {
  ScriptedServer server("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\n\r\n" + ok("x"));
  EXPECT_EQ(get(server.url("/")), "x");
}

TEST(Client, TakesNoInterimAnswerForTheRealOne) {
  for (const char* line : {"100 Continue", "199 OK\r\nA: b"}) {
    ScriptedServer server("HTTP/1.1 " + std::string(line) + "\r\n\r\n");
    EXPECT_EQ(failure<HttpError>(server.url("/")),
              "the server closed the connection without an answer");
  }
}

TEST(Client, ReadsNoMoreThanAnAnswerCanHold) {
  const std::string much(17 << 20, 'x');
  for (const std::string& answer :
       {std::string("HTTP/1.1 200 OK\r\nContent-Length: 99999999999\r\n\r\n{}"),
        std::string("HTTP/1.1 200 OK\r\nContent-Length: 18446744073709551615\r\n\r\n{}"),
        std::string("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfffffffffff\r\nab"),
        "HTTP/1.1 200 OK\r\n\r\n" + much}) {
    ScriptedServer server{answer};
    EXPECT_EQ(failure<HttpError>(server.url("/")), "the answer is larger than 16 MiB");
  }
}

TEST(Client, ReadsAnswersInVeryManyChunks) {
  std::string answer = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
  for (int i = 0; i < 200'000; ++i) answer += "1\r\nx\r\n";
  ScriptedServer server(answer + "0\r\n\r\n");
  EXPECT_EQ(get(server.url("/")).size(), 200'000U);
}

TEST(Client, IgnoresWhatFollowsTheAnswer) {
  ScriptedServer server(ok("x") + "more");
  EXPECT_EQ(get(server.url("/")), "x");
}

TEST(Client, SendsLargeBodiesWhole) {
  std::size_t received = 0;
  ScriptedServer server([&received](Socket& socket) {
    received = ScriptedServer::read_request(socket).size();
    ScriptedServer::say(socket, ok("done"));
  });
  const std::string body(3'000'000, 'b');
  EXPECT_EQ(fetch({server.url("/"), "POST", {}, body}), "done");
  server.join();
  EXPECT_GT(received, body.size());
}

TEST(Client, ReportsStatusesOutside2xx) {
  const std::pair<const char*, const char*> cases[] = {
      {"404 Not Found", "HTTP Error 404: Not Found"},
      {"503 Loading models", "HTTP Error 503: Loading models"},
      {"401 Unauthorized", "HTTP Error 401: Unauthorized; see: zv-anpr server token"},
      {"403 Forbidden", "HTTP Error 403: Forbidden; see: zv-anpr server token"},
      {"302 Found\r\nLocation: http://127.0.0.1:1/", "HTTP Error 302: Found"},
      {"413 ", "HTTP Error 413: Payload Too Large"}};
  for (const auto& [line, text] : cases) {
    ScriptedServer server("HTTP/1.1 " + std::string(line) + "\r\nContent-Length: 2\r\n\r\n{}");
    EXPECT_EQ(failure<HttpStatusError>(server.url("/")), text);
  }
}

TEST(Client, CarriesTheStatusAsANumber) {
  ScriptedServer server("HTTP/1.1 429 Too Many Requests\r\nContent-Length: 0\r\n\r\n");
  try {
    get(server.url("/"));
    FAIL();
  } catch (const HttpStatusError& error) {
    EXPECT_EQ(error.code, 429U);
  }
}

TEST(Client, ReportsARefusalThatComesBeforeTheUploadIsRead) {
  ScriptedServer server([](Socket& socket) {
    char some[100];
    socket.read_some(boost::asio::buffer(some));
    ScriptedServer::say(socket, "HTTP/1.1 413 Content Too Large\r\nContent-Length: 0\r\n\r\n");
    boost::system::error_code ignored;
    socket.shutdown(Socket::shutdown_send, ignored);
    char rest[1 << 16];
    while (!ignored) socket.read_some(boost::asio::buffer(rest), ignored);
  });
  EXPECT_THROW(fetch({server.url("/"), "POST", {}, std::string(20'000'000, 'x')}), HttpStatusError);
}

TEST(Client, TellsARefusedConnectionApart) {
  try {
    get("http://127.0.0.1:" + closed_port() + "/");
    FAIL();
  } catch (const UrlError& error) {
    EXPECT_EQ(error.kind, NetworkFailure::refused);
    EXPECT_STREQ(error.what(), "[Errno 111] Connection refused");
  }
}

TEST(Client, TriesEveryAddressOfAName) {
  ScriptedServer server(ok("found"));
  EXPECT_EQ(get("http://localhost:" + server.port() + "/"), "found");
}

TEST(Client, KnowsItsOwnMachineByName) {
  for (const char* address : {"127.0.0.1", "::1"}) {
    ScriptedServer server(
        [](Socket& socket) {
          ScriptedServer::read_request(socket);
          ScriptedServer::say(socket, ok("here"));
        },
        address);
    EXPECT_EQ(get("http://LocalHost:" + server.port() + "/"), "here");
  }
}

TEST(Client, SpeaksIpv6) {
  ScriptedServer server(
      [](Socket& socket) {
        ScriptedServer::read_request(socket);
        ScriptedServer::say(socket, ok("six"));
      },
      "::1");
  EXPECT_EQ(get("http://[::1]:" + server.port() + "/"), "six");
}

TEST(Client, TellsAnUnknownHostApart) {
  try {
    get("http://no-such-host.invalid:8000/");
    FAIL();
  } catch (const UrlError& error) {
    EXPECT_EQ(error.kind, NetworkFailure::name_resolution);
    EXPECT_THAT(error.what(), testing::AnyOf(HasSubstr("Name or service not known"),
                                             HasSubstr("Temporary failure in name resolution")));
  }
}

// A listener whose queue is full lets further connections hang.
TEST(Client, LimitsTheTimeToConnect) {
  boost::asio::io_context context;
  boost::asio::ip::tcp::acceptor acceptor(context);
  acceptor.open(boost::asio::ip::tcp::v4());
  acceptor.bind({boost::asio::ip::make_address("127.0.0.1"), 0});
  acceptor.listen(0);
  std::vector<std::unique_ptr<Socket>> fillers;
  for (int i = 0; i < 4; ++i) {
    auto& filler = fillers.emplace_back(std::make_unique<Socket>(context));
    filler->async_connect(acceptor.local_endpoint(), [](boost::system::error_code) {});
  }
  context.run_for(milliseconds(50));
  const auto port = std::to_string(acceptor.local_endpoint().port());
  EXPECT_EQ(failure<UrlError>("http://127.0.0.1:" + port + "/", SHORT), "timed out");
}

TEST(Client, LimitsEveryRead) {
  ScriptedServer server([](Socket& socket) {
    ScriptedServer::read_request(socket);
    ScriptedServer::say(socket, "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf");
    ScriptedServer::read_request(socket);  // until the client gives up
  });
  EXPECT_EQ(failure<HttpError>(server.url("/"), SHORT), "timed out");
}

TEST(Client, LimitsEachReadOnItsOwn) {
  ScriptedServer server([](Socket& socket) {
    ScriptedServer::read_request(socket);
    for (const char c : ok("slow")) {
      ScriptedServer::say(socket, std::string(1, c));
      std::this_thread::sleep_for(milliseconds(10));
    }
  });
  EXPECT_EQ(get(server.url("/"), milliseconds(300)), "slow");
}

TEST(Client, LimitsEveryWrite) {
  ScriptedServer server([](Socket& socket) {
    char byte[1];
    socket.read_some(boost::asio::buffer(byte));
    std::this_thread::sleep_for(3 * SHORT);
  });
  const Request request{server.url("/"), "POST", {}, std::string(40'000'000, 'x'), SHORT};
  try {
    fetch(request);
    FAIL();
  } catch (const HttpError& error) {
    EXPECT_STREQ(error.what(), "timed out");
    EXPECT_EQ(error.kind, NetworkFailure::time_out);
  }
}

TEST(Client, NoticesACutAnswer) {
  for (const char* part : {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf",
                           "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab",
                           "HTTP/1.1 200 OK\r\nContent-"}) {
    ScriptedServer server{std::string(part)};
    EXPECT_EQ(failure<HttpError>(server.url("/")),
              "the connection was cut in the middle of the answer");
  }
}

TEST(Client, NoticesThatNoAnswerCame) {
  ScriptedServer server(std::string{});
  EXPECT_EQ(failure<HttpError>(server.url("/")),
            "the server closed the connection without an answer");
}

TEST(Client, RefusesWhatIsNoHttp) {
  ScriptedServer server("SSH-2.0-OpenSSH_9.2\r\n\r\n\r\n");
  EXPECT_THAT(failure<HttpError>(server.url("/")), HasSubstr("the answer is no well-formed HTTP"));
}

TEST(Client, GivesWayToCtrlC) {
  const InterruptScope scope;
  ScriptedServer server([](Socket& socket) {
    ScriptedServer::read_request(socket);
    std::raise(SIGINT);
    ScriptedServer::read_request(socket);
  });
  EXPECT_THROW(get(server.url("/")), Interrupted);
  take_interrupts();
}

}  // namespace
}  // namespace zv::http
