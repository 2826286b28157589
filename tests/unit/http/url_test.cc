#include "http/url.h"

#include <gtest/gtest.h>

#include "base/error.h"

namespace zv::http {
namespace {

TEST(Url, TakesApartHostPortAndTarget) {
  const Url url = parse_url("http://localhost:8001/api/health?detailed=true");
  EXPECT_EQ(url.host, "localhost");
  EXPECT_EQ(url.port, 8001);
  EXPECT_EQ(url.target, "/api/health?detailed=true");
  EXPECT_EQ(url.authority(), "localhost:8001");
}

TEST(Url, HasDefaultsForPortAndPath) {
  const Url url = parse_url("http://host");
  EXPECT_EQ(url.port, 80);
  EXPECT_EQ(url.target, "/");
  EXPECT_EQ(url.authority(), "host");
  EXPECT_EQ(parse_url("http://host:/x").port, 80);
  EXPECT_EQ(parse_url("http://host?a=b#c").target, "/?a=b");
}

TEST(Url, KnowsIpv6WithAndWithoutBrackets) {
  for (const char* text : {"http://[::1]:8000/x", "http://::1:8000/x"}) {
    const Url url = parse_url(text);
    EXPECT_EQ(url.host, "::1") << text;
    EXPECT_EQ(url.port, 8000) << text;
    EXPECT_EQ(url.authority(), "[::1]:8000") << text;
  }
  EXPECT_EQ(parse_url("http://[::1]/x").port, 80);
}

TEST(Url, RefusesWhatNoRequestCanCarry) {
  for (const char* text : {"http://a b:80/", "http://a\r\nX: y:80/", "https://host/", "host:80/",
                           "http://:80/", "http://host:65536/", "http://host:-5/", "http://host:x/",
                           "http:///path", "http://[]:1/"}) {
    EXPECT_THROW(parse_url(text), Error) << text;
  }
}

}  // namespace
}  // namespace zv::http
