// Numbers in texts and files: decimal point and full precision, whatever the locale.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "commalocale.h"
#include "databasecopy.h"
#include "numbertext.h"

namespace {

using korvex2::integerFromText;
using korvex2::numberText;
using korvex2::realFromText;

TEST(NumberText, IsTheShortestThatIsReadBack) {
  EXPECT_EQ("0.1", numberText(0.1));
  EXPECT_EQ("-14.9949", numberText(-14.9949));
  EXPECT_EQ("1", numberText(1.0));
  EXPECT_EQ("0", numberText(-0.0));
  EXPECT_EQ("0.30000000000000004", numberText(0.1 + 0.2));
  EXPECT_EQ("1.7976931348623157e+308", numberText(std::numeric_limits<double>::max()));
  EXPECT_EQ("-2.2250738585072014e-308", numberText(-std::numeric_limits<double>::min()));
}

TEST(NumberText, IsReadBackAsTheSameDouble) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> mantissa(-1, 1);
  std::uniform_int_distribution<int> exponent(-300, 300);
  for (int n = 0; n < 10000; ++n) {
    const double value = mantissa(random) * std::pow(10.0, exponent(random));
    EXPECT_EQ(value, realFromText(numberText(value)));
  }
}

TEST(NumberText, OnlyWholeNumbersAreRead) {
  EXPECT_EQ(1.5, realFromText("1.5"));
  EXPECT_EQ(1.5, realFromText("+1.5"));
  EXPECT_EQ(-0.001, realFromText("-1e-3"));
  EXPECT_EQ(12, integerFromText("12"));
  EXPECT_EQ(-12, integerFromText("-12"));
  EXPECT_EQ(12, integerFromText("+012"));
  for (const char* wrong :
       {"", " ", "+", "-", "+-1", "-+1", "++1", "1 ", " 1", "1x", "x", "nan", "inf", "-inf", "0x1", "1,5"}) {
    EXPECT_EQ(std::nullopt, realFromText(wrong)) << wrong;
    EXPECT_EQ(std::nullopt, integerFromText(wrong)) << wrong;
  }
  EXPECT_EQ(std::nullopt, realFromText("1e309"));
  EXPECT_EQ(std::nullopt, realFromText(QByteArray("1\0", 2)));
  EXPECT_EQ(std::nullopt, integerFromText("1.0"));
  EXPECT_EQ(std::nullopt, integerFromText("2147483648"));
  EXPECT_EQ(-2147483647 - 1, integerFromText("-2147483648"));
}

class CommaCountry : public korvex2_test::DatabaseCopy {};

TEST_F(CommaCountry, AnswersSettingsAndFilesAreTheSameAsEverywhere) {
  const char* const lines[] = {
      "korvex2 body transform standard b07 10.125 -0.5 3e2 0.6 0.8 0 -0.8 0.6 0 0 0 1",
      "korvex2 set body marker standard b02 m01 1234567.250 -2.5 0.125",
      "korvex2 set body marker_emission standard b02 m01 0.500 0.000 -0.500 1234.5",
      "korvex2 body delete_marker standard b01 m05",
      "korvex2 set version 1.20.-1",
  };
  for (const char* line : lines) {
    ASSERT_EQ("korvex2 ok", ask(line));
  }
  open();
  const std::string answers = dump();
  const QMap<QString, QByteArray> files = korvex2_test::allFiles(folder());
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready()) << "localedef made no locale with a decimal comma";
  copyAgain();
  EXPECT_EQ("", problems());
  for (const char* line : lines) {
    EXPECT_EQ("korvex2 ok", ask(line));
  }
  EXPECT_EQ(4, errorOf("korvex2 set body marker standard b02 m01 1,5 2 3"));
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ(answers, dump());
  EXPECT_EQ(files, korvex2_test::allFiles(folder()));
  EXPECT_EQ("korvex2 set body marker standard b02 m01 1234567.25 -2.5 0.125",
            ask("korvex2 get body marker standard b02 m01"));
}

}  // namespace
