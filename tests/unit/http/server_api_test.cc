#include "http/server_api.h"

#include <gtest/gtest.h>

#include "base/error.h"

namespace zv::http {
namespace {

TEST(ServerBaseUrl, HasDefaults) {
  EXPECT_EQ(_server_base_url({}), "http://127.0.0.1:8000");
  EXPECT_EQ(_server_base_url({{"host", nullptr}, {"port", nullptr}}), "http://127.0.0.1:8000");
  EXPECT_EQ(_server_base_url({{"host", ""}, {"port", 0}}), "http://127.0.0.1:8000");
}

TEST(ServerBaseUrl, TakesHostAndPortAsGiven) {
  EXPECT_EQ(_server_base_url({{"host", "0.0.0.0"}, {"port", 8001}}), "http://0.0.0.0:8001");
  EXPECT_EQ(_server_base_url({{"host", "[::1]"}}), "http://[::1]:8000");
  EXPECT_EQ(_server_base_url({{"host", "a b"}, {"port", -1}}), "http://a b:-1");
  EXPECT_EQ(_server_base_url({{"port", 70000}}), "http://127.0.0.1:70000");
}

TEST(Answer, MustBeAnObject) {
  EXPECT_THROW(object_of(List{}), Error);
  EXPECT_THROW(object_of(nullptr), Error);
  EXPECT_TRUE(object_of(Map{}).empty());
}

TEST(Multipart, PutsFilesBeforeFieldsAndKeepsTheirOrder) {
  const Uploads files = {{"image", {"a.jpg", std::string("\xff\0\r\n", 4), "image/jpeg"}},
                         {"second", {"ü.png", "", "image/png"}}};
  const Map data = {{"region", "kr"}, {"count", 5}, {"exact", true}};
  EXPECT_EQ(multipart_body("B", files, data),
            std::string("--B\r\nContent-Disposition: form-data; name=\"image\"; "
                        "filename=\"a.jpg\"\r\nContent-Type: image/jpeg\r\n\r\n") +
                std::string("\xff\0\r\n", 4) +
                "\r\n--B\r\nContent-Disposition: form-data; name=\"second\"; filename=\"ü.png\"\r\n"
                "Content-Type: image/png\r\n\r\n\r\n"
                "--B\r\nContent-Disposition: form-data; name=\"region\"\r\n\r\nkr\r\n"
                "--B\r\nContent-Disposition: form-data; name=\"count\"\r\n\r\n5\r\n"
                "--B\r\nContent-Disposition: form-data; name=\"exact\"\r\n\r\nTrue\r\n"
                "--B--\r\n");
}

TEST(Multipart, LetsNoFileNameEndItsLine) {
  const Uploads files = {{"image", {"q\"; x=\"\r\nX: y%22.jpg", "", "image/jpeg"}}};
  EXPECT_EQ(multipart_body("B", files, {}),
            "--B\r\nContent-Disposition: form-data; name=\"image\"; "
            "filename=\"q\"; x=\"%0D%0AX: y%22.jpg\"\r\nContent-Type: image/jpeg\r\n\r\n\r\n"
            "--B--\r\n");
}

}  // namespace
}  // namespace zv::http
