#include "read/plate.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/error.h"

namespace zv::read {
namespace {

Map record_with(Value bbox) {
  return {{"ocr_text", "AB"}, {"ocr_conf", 0.5}, {"bbox", bbox}};
}

std::string failure(const Map& record) {
  try {
    const Plate plate(record);
    plate.box();
    plate.label();
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(Plate, HoldsTextAndConfidence) {
  const Map record{{"ocr_text", "12AB3456"}, {"ocr_conf", 0.975}, {"bbox", List{10, 20, 110, 60}}};
  EXPECT_EQ(Plate(record).label(), "12AB3456 (0.97)");  // 0.975 lies below its decimal text
}

TEST(Plate, FillsInWhatIsMissing) {
  EXPECT_EQ(Plate(Map{{"bbox", List{0, 0, 1, 1}}}).label(), "N/A (0.00)");
}

TEST(Plate, FormatsAnyNumber) {
  const auto text = [](Value confidence) {
    return Plate(Map{{"ocr_text", ""}, {"ocr_conf", confidence}}).label();
  };
  EXPECT_EQ(text(1), " (1.00)");
  EXPECT_EQ(text(true), " (1.00)");
  EXPECT_EQ(text(0.125), " (0.12)");
  EXPECT_EQ(text(BigInteger{"100000000000000000000"}), " (100000000000000000000.00)");
}

TEST(Plate, ShowsTextsOfAnyKind) {
  EXPECT_EQ(Plate(Map{{"ocr_text", nullptr}, {"bbox", List{0, 0, 1, 1}}}).label(), "None (0.00)");
  EXPECT_EQ(Plate(Map{{"ocr_text", 42}, {"bbox", List{0, 0, 1, 1}}}).label(), "42 (0.00)");
}

TEST(Plate, CutsCoordinatesTowardsZero) {
  const auto box = Plate(record_with(List{10.7, -10.7, true, 20, "ignored"})).box();
  EXPECT_EQ(box.left, 10);
  EXPECT_EQ(box.top, -10);
  EXPECT_EQ(box.right, 1);
  EXPECT_EQ(box.bottom, 20);
}

TEST(Plate, KeepsHugeCoordinatesApart) {
  const auto box = Plate(record_with(List{BigInteger{"-100000000000000000000"}, -1e300,
                                          std::numeric_limits<std::int64_t>::max(),
                                          BigInteger{"100000000000000000000"}}))
                       .box();
  EXPECT_LT(box.left, -1'000'000'000);
  EXPECT_LT(box.top, -1'000'000'000);
  EXPECT_GT(box.right, 1'000'000'000);
  EXPECT_GT(box.bottom, 1'000'000'000);
}

TEST(Plate, NeedsABox) {
  EXPECT_EQ(failure(Map{{"ocr_text", "AB"}}), "'bbox'");
  EXPECT_EQ(failure(record_with(List{})), "list index out of range");
  EXPECT_EQ(failure(record_with(List{1, 2, 3})), "list index out of range");
  EXPECT_EQ(failure(record_with(nullptr)), "bbox None is not a list of numbers");
}

TEST(Plate, NeedsNumbers) {
  EXPECT_EQ(failure(record_with(List{"a", 2})), "a box coordinate must be a number, not 'str'");
  EXPECT_EQ(failure(record_with(List{1, nullptr, 3, 4})),
            "a box coordinate must be a number, not 'NoneType'");
  EXPECT_EQ(failure(record_with(List{1, std::numeric_limits<double>::quiet_NaN(), 3, 4})),
            "cannot convert float NaN to integer");
  EXPECT_EQ(failure(record_with(List{1, 2, 3, std::numeric_limits<double>::infinity()})),
            "cannot convert float infinity to integer");
  EXPECT_EQ(failure(Map{{"ocr_conf", "high"}, {"bbox", List{0, 0, 1, 1}}}),
            "Unknown format code 'f' for object of type 'str'");
}

}  // namespace
}  // namespace zv::read
