// Formatting, checking and parsing of protocol texts.
#include "channeltext.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "commalocale.h"

using namespace korvex2;

namespace {

std::optional<QByteArray> format(const char* pattern, ...) {
  va_list values;
  va_start(values, pattern);
  const std::optional<QByteArray> text = formatCommand(pattern, values);
  va_end(values);
  return text;
}

}  // namespace

TEST(ChannelText, FormatsAsPrintfDoes) {
  EXPECT_EQ(format("body marker %s b%2.2d m%2.2d %.3f %.3f %.3f", "standard", 3, 12, 1.5, -0.0625, 1000.0),
            QByteArray("body marker standard b03 m12 1.500 -0.062 1000.000"));
}

TEST(ChannelText, FormatsWithADecimalPointUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready()) << "a locale with a comma could not be made";
  EXPECT_EQ(format("%.3f %.8f", 1.5, -0.25), QByteArray("1.500 -0.25000000"));
  EXPECT_TRUE(comma.ready()) << "the thread's own locale is left as it was";
}

TEST(ChannelText, RefusesWhatCannotBeOneLineOfPrintableAscii) {
  EXPECT_FALSE(format(nullptr));
  EXPECT_FALSE(format("%s", ""));
  EXPECT_FALSE(format("body desc %s", "two\nlines"));
  EXPECT_FALSE(format("body desc %s", "carriage\rreturn"));
  EXPECT_FALSE(format("body desc %s", "tab\there"));
  EXPECT_FALSE(format("body desc %s", "\x7f"));
  EXPECT_FALSE(format("body desc %s", "K\xc3\xb6rper"));
  EXPECT_FALSE(format("body %c b01", '\0'));
  EXPECT_TRUE(format("body desc %s", " !~\"'%"));
}

TEST(ChannelText, TakesTheLongestCommandAndNoLongerOne) {
  const std::string longest(1023, 'x');
  EXPECT_EQ(format("%s", longest.c_str()), QByteArray::fromStdString(longest));
  EXPECT_FALSE(format("%s", (longest + "x").c_str()));
  EXPECT_FALSE(format("%*d", 1000000, 1));
}

TEST(ChannelText, TheValueIsWhatFollowsThePrefixAndOneBlank) {
  EXPECT_EQ(valueAfter("korvex2 set a", "korvex2 set a yes"), QByteArray("yes"));
  EXPECT_EQ(valueAfter("korvex2 set a", "korvex2 set a  yes "), QByteArray(" yes "));
  EXPECT_EQ(valueAfter("korvex2 set a", "korvex2 set a"), QByteArray(""));
  EXPECT_EQ(valueAfter("korvex2 set a", "korvex2 set a "), QByteArray(""));
  EXPECT_FALSE(valueAfter("korvex2 set a", "korvex2 set ab yes"));
  EXPECT_FALSE(valueAfter("korvex2 set a", "korvex2 set b yes"));
  EXPECT_FALSE(valueAfter("korvex2 set a", "Korvex2 set a yes"));
  EXPECT_FALSE(valueAfter("korvex2 set a", "korvex2 set"));
  EXPECT_FALSE(valueAfter("korvex2 set a", ""));
}

TEST(ChannelText, AnIntegerIsTheWholeText) {
  EXPECT_EQ(parseInteger("0"), 0);
  EXPECT_EQ(parseInteger("-17"), -17);
  EXPECT_EQ(parseInteger("2147483647"), INT_MAX);
  EXPECT_EQ(parseInteger("-2147483648"), INT_MIN);
  for (const char* text : {"", " 1", "1 ", "1.0", "1e2", "0x10", "one", "+1", "2147483648", "1 2", "-", "12a"}) {
    EXPECT_FALSE(parseInteger(text)) << text;
  }
}

TEST(ChannelText, RealsAreExactlyTheNumbersAskedFor) {
  EXPECT_EQ(parseReals("1 -2.5 3e-3", 3), (std::vector<double>{1.0, -2.5, 0.003}));
  EXPECT_EQ(parseReals(" 1   2 ", 2), (std::vector<double>{1.0, 2.0}));
  EXPECT_EQ(parseReals("0.1", 1), (std::vector<double>{0.1}));
  EXPECT_FALSE(parseReals("1 2", 3)) << "too few";
  EXPECT_FALSE(parseReals("1 2 3 4", 3)) << "too many";
  for (const char* text : {"", " ", "nan", "inf", "-inf", "infinity", "1e999", "0x1p3", "1,5", "1;", "one", "1.5.2",
                           "+1", "1\t", "--1", "1e", "."}) {
    EXPECT_FALSE(parseReals(text, 1)) << text;
  }
}

TEST(ChannelText, RealsAreReadWithADecimalPointUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready()) << "a locale with a comma could not be made";
  EXPECT_EQ(parseReals("1.5 -0.25", 2), (std::vector<double>{1.5, -0.25}));
  EXPECT_FALSE(parseReals("1,5", 1));
}

TEST(ChannelText, LineEndsAreTakenOffTheEndOnly) {
  EXPECT_EQ(withoutLineEnd("korvex2 ok\r\n"), QByteArray("korvex2 ok"));
  EXPECT_EQ(withoutLineEnd("korvex2 ok"), QByteArray("korvex2 ok"));
  EXPECT_EQ(withoutLineEnd("a\nb\n\n"), QByteArray("a\nb"));
  EXPECT_EQ(withoutLineEnd("\n"), QByteArray(""));
}

TEST(ChannelText, ARefusalIsTheWordErrWhole) {
  EXPECT_TRUE(isRefusal("korvex2 err"));
  EXPECT_TRUE(isRefusal("korvex2 err 5 \"no such body\""));
  EXPECT_FALSE(isRefusal("korvex2 ok"));
  EXPECT_FALSE(isRefusal("korvex2 errors 0"));
  EXPECT_FALSE(isRefusal("korvex2 set body desc standard b01 \"korvex2 err\""));
}
