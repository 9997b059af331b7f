// Numbers in live lines: every notation of the C library, the decimal point in every locale.
#include <cmath>
#include <cstdlib>

#include "commalocale.h"
#include "livelines.h"
#include "trackingstream.h"

using korvex2::TrackedPose;
using korvex2::TrackingStream;

namespace {

/// The x coordinate that a record with this text has; fails the test when the line is malformed.
double xOf(const std::string& text) {
  TrackingStream stream;
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(stream.parse("6d", ("6d 1 [0 1][" + text + " 2 3][1 0 0 0 1 0 0 0 1]").c_str()), 0) << text;
  EXPECT_EQ(stream.state().body.position.y, 2.0) << text;
  return stream.state().body.position.x;
}

/// The button value that a record with this text has.
int buttonsOf(const std::string& text) {
  TrackingStream stream;
  stream.setChosenBody("wandgrip", 0);
  EXPECT_EQ(stream.parse("6dw", ("6dw 1 " + device("0", "1", text)).c_str()), 0) << text;
  return stream.state().device.buttons;
}

int linesRead(const std::string& count, int records) {
  TrackingStream stream;
  stream.setChosenBody("standard", 0);
  std::string line = "6d " + count + " ";
  for (int i = 0; i < records; ++i) {
    line += body(std::to_string(i), "1");
  }
  return stream.parse("6d", line.c_str());
}

void expectNumbersWithDecimalPoint() {
  EXPECT_EQ(xOf("1.5"), 1.5);
  EXPECT_EQ(xOf("-1234.0625"), -1234.0625);
  EXPECT_EQ(xOf(".5"), 0.5);
  EXPECT_EQ(xOf("5."), 5.0);
  EXPECT_EQ(xOf("+2.5e-1"), 0.25);
  EXPECT_EQ(xOf("0x1.8p1"), 3.0);
  TrackingStream stream;
  stream.setChosenBody("standard", 3);
  EXPECT_EQ(stream.parse("6d", "6d 1 [3 0.75][1.5 -2.25 1000.125][0.5 1.5 2.5 3.5 4.5 5.5 6.5 7.5 8.5]"), 0);
  const TrackedPose pose = stream.state().body;
  EXPECT_EQ(pose.quality, 0.75F);
  EXPECT_EQ(pose.position.x, 1.5);
  EXPECT_EQ(pose.position.y, -2.25);
  EXPECT_EQ(pose.position.z, 1000.125);
  expectRotation(pose.rotation, {0.5, 3.5, 6.5, 1.5, 4.5, 7.5, 2.5, 5.5, 8.5});
  EXPECT_EQ(stream.parse("6d", "6d 1 [3 1][1,5 2 3][1 0 0 0 1 0 0 0 1]"), -1) << "a comma ends a number";
}

}  // namespace

TEST(LiveNumbers, AreReadWithADecimalPoint) { expectNumbersWithDecimalPoint(); }

TEST(LiveNumbers, AreReadWithADecimalPointUnderACommaLocale) {
  const CommaLocale german;
  ASSERT_TRUE(german.ready());
  ASSERT_EQ(std::strtod("1.5", nullptr), 1.0) << "the C library's own reading must stop at the point here";
  expectNumbersWithDecimalPoint();
}

TEST(LiveNumbers, IntegersAreReadWithBaseZero) {
  EXPECT_EQ(buttonsOf("12"), 12);
  EXPECT_EQ(buttonsOf("-12"), -12);
  EXPECT_EQ(buttonsOf("+12"), 12);
  EXPECT_EQ(buttonsOf("012"), 10);
  EXPECT_EQ(buttonsOf("0x12"), 18);
  EXPECT_EQ(buttonsOf("0X1f"), 31);
  EXPECT_EQ(buttonsOf("-0x1"), -1);
  EXPECT_EQ(buttonsOf("09"), 0) << "9 is no octal digit";
  EXPECT_EQ(buttonsOf("\t 7"), 7);
  EXPECT_EQ(buttonsOf("7.9"), 7);
}

TEST(LiveNumbers, IntegersBeyondIntAreHeldAtItsLimits) {
  EXPECT_EQ(buttonsOf("2147483647"), 2147483647);
  EXPECT_EQ(buttonsOf("2147483648"), 2147483647);
  EXPECT_EQ(buttonsOf("4294967296"), 2147483647);
  EXPECT_EQ(buttonsOf("99999999999999999999999"), 2147483647);
  EXPECT_EQ(buttonsOf("-2147483648"), -2147483647 - 1);
  EXPECT_EQ(buttonsOf("-2147483649"), -2147483647 - 1);
  EXPECT_EQ(buttonsOf("-99999999999999999999999"), -2147483647 - 1);
}

TEST(LiveNumbers, ACountWithALeadingZeroIsOctal) {
  EXPECT_EQ(linesRead("010", 8), 0);
  EXPECT_EQ(linesRead("010", 7), -1) << "eight are announced";
  EXPECT_EQ(linesRead("0x0a", 10), 0);
  EXPECT_EQ(linesRead("0x0a", 9), -1);
  EXPECT_EQ(linesRead("10", 9), -1);
  EXPECT_EQ(linesRead("08", 0), 0) << "8 is no octal digit: no records";
}

TEST(LiveNumbers, ReadOctalCountsDoNotReachFurtherRecords) {
  TrackingStream stream;
  stream.setChosenBody("standard", 8);
  std::string line = "6d 010 ";
  for (int i = 0; i < 9; ++i) {
    line += body(std::to_string(i), "1");
  }
  EXPECT_EQ(stream.parse("6d", line.c_str()), 0);
  EXPECT_EQ(stream.state().tracked, TrackingStream::Tracked::No) << "the ninth record is not read";
}

TEST(LiveNumbers, RealsAreKeptInSinglePrecision) {
  EXPECT_EQ(xOf("0.1"), static_cast<double>(0.1F));
  EXPECT_NE(xOf("0.1"), 0.1);
  EXPECT_EQ(xOf("16777217"), 16777216.0);
  EXPECT_EQ(xOf("1e-60"), 0.0);
  EXPECT_EQ(xOf("1e300"), HUGE_VAL) << "beyond single precision";
  EXPECT_EQ(xOf("-1e999"), -HUGE_VAL) << "beyond double precision";
}

TEST(LiveNumbers, WordsOfTheCLibraryAreNumbers) {
  EXPECT_TRUE(std::isnan(xOf("nan")));
  EXPECT_EQ(xOf("inf"), HUGE_VAL);
  EXPECT_EQ(xOf("-INFINITY"), -HUGE_VAL);
}
