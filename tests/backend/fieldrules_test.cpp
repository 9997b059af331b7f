// How lines and fields are read, which of several errors is told, and the limits of values: what every client meets.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "databasecopy.h"

namespace {

class FieldRules : public korvex2_test::DatabaseCopy {
 protected:
  int errorOfBytes(const QByteArray& line) {
    const QByteArray answer = interpreter->answer("korvex2 " + line);
    return answer.startsWith("korvex2 err ") ? answer.mid(12).split(' ').first().toInt() : 0;
  }
  struct Case {
    const char* line;
    int error;
  };
  void expectErrors(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
      EXPECT_EQ(errorOfBytes(each.line), each.error) << each.line;
    }
  }
};

TEST_F(FieldRules, OfSeveralErrorsTheFirstIsToldLineFieldsLockBody) {
  ASSERT_EQ(ask("korvex2 set config is_changeable no"), "korvex2 ok");
  expectErrors({
      {"set body nothing \x01", 1},                                // the line before the command
      {"set body nothing standard b99", 2},                        // the command before the number of fields
      {"set body calibrated other b99", 3},                        // the number of fields before the fields
      {"set body calibrated other c99 perhaps", 5},                // fields from left to right: the type
      {"set body calibrated standard c99 perhaps", 4},             // the body's form
      {"set body calibrated standard b99 perhaps", 5},             // the body
      {"body delete_marker standard b01 x", 4},                    // the marker's form
      {"body delete_marker standard b01 m99", 6},                  // the marker
      {"set body marker standard b01 m99 x 2 3", 6},               // the marker before the values
      {"set body marker standard b01 m01 x 2 3", 4},               // values before the lock
      {"set body marker standard b01 m01 1e10 2 3", 4},            // also those out of range
      {"set body file standard b01 MQowIDAgMAo=", 4},              // and a file that is none
      {"set body desc standard b01 \"a\tb\"", 4},                  //
      {"set body target_type standard b01 tt-std", 4},             //
      {"set body marker standard b01 m01 1 2 3", 7},               // then the lock
      {"set body number_of_marker standard b01 2", 7},             // before what the body allows
      {"body transform standard b01 0 0 0 2 0 0 0 2 0 0 0 2", 7},  // and before what is no rotation
      {"body transform standard b06 0 0 0 1 0 0 0 1 0 0 0 1", 7},  // or not calibrated
  });
  ASSERT_EQ(ask("korvex2 set config is_changeable yes"), "korvex2 ok");
  expectErrors(
      {{"body transform standard b06 0 0 0 2 0 0 0 2 0 0 0 2", 8}, {"set body number_of_marker standard b01 2", 9}});
}

TEST_F(FieldRules, AnExpectationThatFailsIsToldBeforeEveryErrorOfTheCommandButTheLines) {
  const auto fails = [this](const QByteArray& command) {
    EXPECT_EQ(ask("korvex2 body expect standard b01 0123456789abcdef"), "korvex2 ok");
    return errorOfBytes(command);
  };
  EXPECT_EQ(fails("body delete_marker standard b01 m99"), 11);
  EXPECT_EQ(fails("body delete_marker standard b01"), 11);
  EXPECT_EQ(fails("body transform standard b01 x"), 11);
  EXPECT_EQ(fails("body transform standard b01 0 0 0 2 0 0 0 2 0 0 0 2"), 11);
  ASSERT_EQ(ask("korvex2 set config is_changeable no"), "korvex2 ok");
  EXPECT_EQ(fails("body delete_marker standard b01 m01"), 11);
  EXPECT_EQ(fails("body delete_marker standard b01 \"m01"), 1) << "no command line";
}

TEST_F(FieldRules, ControlCharactersAreErrorOneButATabInQuotesIsErrorFour) {
  expectErrors({{"get\tversion", 0},
                {"get version \x1b", 1},
                {"set body desc standard b01 \"a\x1b\"", 1},
                {"set body desc standard b01 \"a\x7f\"", 1},
                {"set body desc standard b01 \"a\rb\"", 1},
                {"set body desc standard b01 \"a\tb\"", 4},
                {"set body desc standard b01 \"a\xc2\x85\"", 4},      // U+0085
                {"set body desc standard b01 \"a\xe2\x80\xa8\"", 4},  // U+2028
                {"set body desc standard b01 M\xc3\xbcg", 1},         // outside quotes
                {"set body desc standard b01 \"M\xc3\xbcg\"", 0}});
}

TEST_F(FieldRules, QuotesAreForTextsAndWordsOnly) {
  expectErrors({{"set body desc standard b01 Mug", 0},
                {"set body target_type standard b01 \"tt_cyl\"", 0},
                {"set body target_type standard b01 \"'tt_cyl'\"", 0},
                {"set body calibrated standard b01 \"yes\"", 4},
                {"set body calibrated \"standard\" b01 yes", 4},
                {"get body desc standard \"b01\"", 4},
                {"get \"version\"", 2}});
}

TEST_F(FieldRules, AnswersRepeatTheFieldsAsTheyWereSentWithOneBlankBetween) {
  EXPECT_EQ(ask("korvex2 get   body \t desc  standard b1  "), "korvex2 set body desc standard b1 \"Cup\"");
  EXPECT_EQ(ask("korvex2 get body desc standard b001"), "korvex2 set body desc standard b001 \"Cup\"");
  expectErrors({{"get body desc standard b0", 5},
                {"get body desc standard B01", 4},
                {"get body desc standard b-1", 4},
                {"get body desc standard 1", 4},
                {"get body type t0", 5},
                {"get body marker standard b01 m0", 6},
                {"get body marker standard b01 M1", 4}});
}

TEST_F(FieldRules, TextsWordsAndVersionsHaveTheirLimits) {
  const QByteArray umlaut = "\xc3\xbc";  // two bytes
  EXPECT_EQ(errorOfBytes("set body desc standard b01 \"" + umlaut.repeated(60) + '"'), 0);
  EXPECT_EQ(errorOfBytes("set body desc standard b01 \"x" + umlaut.repeated(60) + '"'), 4);
  EXPECT_EQ(errorOfBytes("set body target_type standard b01 " + QByteArray(32, 'x')), 0);
  EXPECT_EQ(errorOfBytes("set body target_type standard b01 " + QByteArray(33, 'x')), 4);
  expectErrors({{"set version 0.0.-1", 0},
                {"set version 9999.9999.9999", 0},
                {"set version 10000.0.0", 4},
                {"set version -1.0.0", 4},
                {"set version 1.20", 4}});
}

TEST_F(FieldRules, EmissionsNeedNoUnitVectorAndNoSensibleAngle) {
  for (const char* emission : {"0 0 2 45", "0 0 0 0", "0 0 0 -720", "1e9 1e9 1e9 1e9", "0.1 0 0 400"}) {
    EXPECT_EQ(ask(std::string("korvex2 set body marker_emission standard b01 m01 ") + emission), "korvex2 ok");
  }
  expectErrors({{"set body marker_emission standard b01 m01 0 0 1.1e9 1", 4},
                {"set body marker_emission standard b01 m01 0 0 1 1.1e9", 4}});
}

TEST_F(FieldRules, ATransformNeedsARotationThatKeepsTheHandAndAResultWithinRange) {
  const std::string before = dump();
  expectErrors({{"body transform standard b01 0 0 0 1 0 0 0 1 0 0 0 -1", 4},       // a mirror
                {"body transform standard b01 0 0 0 -1 0 0 0 -1 0 0 0 -1", 4},     //
                {"body transform standard b01 0 0 0 1.00002 0 0 0 1 0 0 0 1", 4},  // product 1.00004
                {"body transform standard b01 1.1e9 0 0 1 0 0 0 1 0 0 0 1", 4},
                {"body transform standard b01 1e9 0 0 1 0 0 0 1 0 0 0 1", 4}});  // m02 would be beyond
  EXPECT_EQ(dump(), before);
  expectErrors({{"body transform standard b01 0 0 0 1.000004 0 0 0 1 0 0 0 1", 0}});
}

TEST_F(FieldRules, SettingsThatCannotBeSavedAreErrorTen) {
  const auto second = korvex2::openDatabase(folder());  // held by this one
  korvex2::Interpreter other(*second);
  for (const char* setting : {"version 1.0.0", "config is_changeable no", "tracking available no",
                              "wandgrip output_6dw yes", "wandgrip multiuser yes", "body desc standard b01 Mug"}) {
    const QByteArray answer = other.answer(QByteArray("korvex2 set ") + setting);
    EXPECT_TRUE(answer.startsWith("korvex2 err 10 ")) << setting << ": " << answer.constData();
  }
}

}  // namespace
