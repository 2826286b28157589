#include "server/multipart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zv::server {
namespace {

std::string joined(const std::vector<std::string>& pieces) {
  std::string text;
  for (const std::string& piece : pieces) text += piece;
  return text;
}

TEST(Multipart, PutsFilesBeforeFieldsAndKeepsTheirOrder) {
  const Uploads files = {{"image", {"a \"b\".jpg", std::string("\xff\0\r\n", 4), "image/jpeg"}},
                         {"second", {"ü.png", "", "image/png"}}};
  const Map data = {{"region", "kr"}, {"count", 5}, {"exact", true}};
  EXPECT_EQ(joined(multipart_body("B", files, data)),
            std::string("--B\r\nContent-Disposition: form-data; name=\"image\"; "
                        "filename=\"a \"b\".jpg\"\r\nContent-Type: image/jpeg\r\n\r\n") +
                std::string("\xff\0\r\n", 4) +
                "\r\n--B\r\nContent-Disposition: form-data; name=\"second\"; filename=\"ü.png\"\r\n"
                "Content-Type: image/png\r\n\r\n\r\n"
                "--B\r\nContent-Disposition: form-data; name=\"region\"\r\n\r\nkr\r\n"
                "--B\r\nContent-Disposition: form-data; name=\"count\"\r\n\r\n5\r\n"
                "--B\r\nContent-Disposition: form-data; name=\"exact\"\r\n\r\nTrue\r\n"
                "--B--\r\n");
}

TEST(Multipart, NamesTheBoundaryAfterTheMillisecond) {
  EXPECT_THAT(make_boundary(), testing::MatchesRegex("----Boundary[0-9]{13}"));
}

}  // namespace
}  // namespace zv::server
