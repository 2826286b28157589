#include "read/label_font.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace zv::read {
namespace {

using Paths = std::vector<std::filesystem::path>;

TEST(LabelFont, DependsOnTheSystem) {
  EXPECT_EQ(font_candidates("Windows"),
            (Paths{"C:/Windows/Fonts/arial.ttf", "C:/Windows/Fonts/consola.ttf"}));
  EXPECT_EQ(font_candidates("Darwin"),
            (Paths{"/System/Library/Fonts/Helvetica.ttc", "/System/Library/Fonts/SFNSMono.ttf"}));
  const Paths others{"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
                     "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf"};
  EXPECT_EQ(font_candidates("Linux"), others);
  EXPECT_EQ(font_candidates("FreeBSD"), others);
  EXPECT_EQ(font_candidates("windows"), others);
  EXPECT_EQ(font_candidates(""), others);
}

TEST(LabelFont, IsTheBuiltInOneWhenNoneLoads) {
  const auto font = first_font({"/none.ttf", "/dev/null"}, 40);
  EXPECT_EQ(font->text_box("ABC").width(), image::builtin_font()->text_box("ABC").width());
}

TEST(LabelFont, SkipsCandidatesThatDoNotLoad) {
  const Paths installed = font_candidates("Linux");
  if (!std::filesystem::exists(installed[0])) GTEST_SKIP() << installed[0] << " is not installed";
  const auto font = first_font({"/none.ttf", installed[0]}, 16);
  EXPECT_EQ(font->text_box("12AB3456 (0.98)").width(), 134);
}

TEST(LabelFont, ExistsOnThisSystem) {
  EXPECT_GT(_get_cli_font()->text_box("ABC").width(), 0);
  EXPECT_GE(_get_cli_font(32)->text_box("ABC").width(), _get_cli_font(16)->text_box("ABC").width());
}

}  // namespace
}  // namespace zv::read
