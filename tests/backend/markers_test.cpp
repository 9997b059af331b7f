// Markers: positions, emissions, their number, and the deletion of one.
#include <gtest/gtest.h>

#include <vector>

#include "databasecopy.h"

namespace {

using korvex2::BodyLine;

class Markers : public korvex2_test::DatabaseCopy {
 protected:
  std::string get(const std::string& query) {
    const std::string head = "korvex2 set " + query + " ";
    const std::string answer = ask("korvex2 get " + query);
    return answer.rfind(head, 0) == 0 ? answer.substr(head.size()) : answer;
  }
  std::vector<BodyLine> lines(int number) { return database->find({"standard", number})->lines; }
};

TEST_F(Markers, PositionCanBeSet) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m02 1.000 -2.500 3.125"));
  EXPECT_EQ("1 -2.5 3.125", get("body marker standard b01 m02"));
  EXPECT_EQ("-16.4095 43.2385 -7.37501", get("body marker standard b01 m01"));
  EXPECT_EQ("-6.34369 -32.7491 -24.3912", get("body marker standard b01 m03"));
}

TEST_F(Markers, PositionIsReadBackAsTheSameDouble) {
  ASSERT_TRUE(database->setMarkerPosition({"standard", 1}, 1, {{0.1 + 0.2, 1.0 / 3.0, -1e-17}}));
  EXPECT_EQ("0.30000000000000004 0.3333333333333333 -1e-17", get("body marker standard b01 m01"));
  open();
  EXPECT_EQ("0.30000000000000004 0.3333333333333333 -1e-17", get("body marker standard b01 m01"));
}

TEST_F(Markers, NegativeZeroIsZero) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m02 -0.000 0 0"));
  EXPECT_EQ("0 0 0", get("body marker standard b01 m02"));
}

TEST_F(Markers, EmissionCanBeSetAndIsNotNormalised) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker_emission standard b01 m05 0.000 0.000 2.000 45.500"));
  EXPECT_EQ("0 0 2 45.5", get("body marker_emission standard b01 m05"));
  EXPECT_EQ("0 0 0 0", get("body marker_emission standard b01 m04"));
  open();
  EXPECT_EQ("0 0 2 45.5", get("body marker_emission standard b01 m05"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker_emission standard b01 m05 0 0 0 0"));
  open();
  EXPECT_EQ("0 0 0 0", get("body marker_emission standard b01 m05"));
}

TEST_F(Markers, NumberGrowsWithMarkersAtTheOrigin) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body number_of_marker standard b07 7"));
  EXPECT_EQ("7", get("body number_of_marker standard b07"));
  EXPECT_EQ("-45.6959 15.6258 15.5529", get("body marker standard b07 m05"));
  EXPECT_EQ("0 0 0", get("body marker standard b07 m06"));
  EXPECT_EQ("0 0 0", get("body marker standard b07 m07"));
  EXPECT_EQ("0 0 0 0", get("body marker_emission standard b07 m07"));
  EXPECT_EQ("-0.900655 0.30798 0.306544 60", get("body marker_emission standard b07 m05"));
}

TEST_F(Markers, NumberShrinksFromTheEndTogetherWithLines) {
  // Lines of the cup: 0-1 and 2-3.
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body number_of_marker standard b01 3"));
  EXPECT_EQ("3", get("body number_of_marker standard b01"));
  EXPECT_EQ("-6.34369 -32.7491 -24.3912", get("body marker standard b01 m03"));
  EXPECT_EQ(6, errorOf("korvex2 get body marker standard b01 m04"));
  EXPECT_EQ((std::vector<BodyLine>{{0, 1}}), lines(1));
}

TEST_F(Markers, NumberStaysWithinItsLimits) {
  const std::string before = dump();
  for (const char* wrong : {"0", "1", "2"}) {
    EXPECT_EQ("korvex2 err 9 \"a body needs at least 3 markers\"",
              ask(std::string("korvex2 set body number_of_marker standard b01 ") + wrong));
  }
  for (const char* wrong : {"-1", "100", "2147483647", "99999999999", "5.0", "five", "\"5\""}) {
    EXPECT_EQ(4, errorOf(std::string("korvex2 set body number_of_marker standard b01 ") + wrong)) << wrong;
  }
  EXPECT_EQ(before, dump());
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body number_of_marker standard b01 99"));
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ("99", get("body number_of_marker standard b01"));
}

TEST_F(Markers, DeletedMarkerIsGoneAndLaterNumbersMoveDown) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 body delete_marker standard b07 m02"));
  EXPECT_EQ("4", get("body number_of_marker standard b07"));
  EXPECT_EQ("-16.4095 43.2385 -7.37501", get("body marker standard b07 m01"));
  EXPECT_EQ("-6.34369 -32.7491 -24.3912", get("body marker standard b07 m02"));
  EXPECT_EQ("27.2115 -35.511 31.2081", get("body marker standard b07 m03"));
  EXPECT_EQ("-45.6959 15.6258 15.5529", get("body marker standard b07 m04"));
  EXPECT_EQ("-0.153511 -0.792495 -0.590242 60", get("body marker_emission standard b07 m02"));
  EXPECT_EQ("-0.900655 0.30798 0.306544 60", get("body marker_emission standard b07 m04"));
  EXPECT_EQ(6, errorOf("korvex2 get body marker standard b07 m05"));
}

TEST_F(Markers, LinesFollowADeletedMarker) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 body delete_marker standard b01 m01"));
  EXPECT_EQ((std::vector<BodyLine>{{1, 2}}), lines(1));  // 0-1 goes, 2-3 becomes 1-2
  // Lines of the quadrotor: 0-1, 1-2, 2-3, 3-0. Without marker 3: 0-1 and 1-2.
  EXPECT_EQ("korvex2 ok", ask("korvex2 body delete_marker standard b03 m04"));
  EXPECT_EQ((std::vector<BodyLine>{{0, 1}, {1, 2}}), lines(3));
  open();
  EXPECT_EQ((std::vector<BodyLine>{{1, 2}}), lines(1));
  EXPECT_EQ((std::vector<BodyLine>{{0, 1}, {1, 2}}), lines(3));
}

TEST_F(Markers, ThreeMarkersAreKept) {
  ASSERT_EQ("korvex2 ok", ask("korvex2 body delete_marker standard b01 m05"));
  ASSERT_EQ("korvex2 ok", ask("korvex2 body delete_marker standard b01 m04"));
  const std::string before = dump();
  EXPECT_EQ("korvex2 err 9 \"a body needs at least 3 markers\"", ask("korvex2 body delete_marker standard b01 m03"));
  EXPECT_EQ(before, dump());
}

TEST_F(Markers, MarkersAndBodiesThatDoNotExistAreRefused) {
  const std::string before = dump();
  EXPECT_EQ("korvex2 err 6 \"there is no marker m06\"", ask("korvex2 body delete_marker standard b01 m06"));
  EXPECT_EQ(6, errorOf("korvex2 body delete_marker standard b01 m00"));
  EXPECT_EQ(5, errorOf("korvex2 body delete_marker standard b09 m01"));
  EXPECT_EQ(5, errorOf("korvex2 body delete_marker wandgrip b03 m01"));
  EXPECT_EQ(4, errorOf("korvex2 body delete_marker standard b01 m"));
  EXPECT_EQ(4, errorOf("korvex2 body delete_marker standard b01 5"));
  EXPECT_EQ(6, errorOf("korvex2 set body marker standard b01 m06 1 2 3"));
  EXPECT_EQ(6, errorOf("korvex2 set body marker_emission standard b01 m06 1 2 3 4"));
  EXPECT_EQ(6, errorOf("korvex2 get body marker standard b01 m06"));
  EXPECT_EQ(6, errorOf("korvex2 get body marker_emission standard b01 m06"));
  EXPECT_EQ(before, dump());
}

TEST_F(Markers, DatabaseRefusesWhatTheInterpreterWouldCatch) {
  const korvex2::BodyKey none{"standard", 99};
  EXPECT_EQ(korvex2::ErrorNumber::NoSuchBody, database->deleteMarker(none, 1).number);
  EXPECT_EQ(korvex2::ErrorNumber::NoSuchBody, database->transform(none, {}).number);
  for (const int marker : {-1, 0, 6}) {
    EXPECT_EQ(korvex2::ErrorNumber::NoSuchMarker, database->deleteMarker({"standard", 1}, marker).number);
    EXPECT_EQ(korvex2::ErrorNumber::NoSuchMarker, database->setMarkerPosition({"standard", 1}, marker, {}).number);
  }
  const double nan = std::nan("");
  EXPECT_EQ(korvex2::ErrorNumber::BadValue, database->setMarkerPosition({"standard", 1}, 1, {{0, nan, 0}}).number);
  EXPECT_EQ(korvex2::ErrorNumber::BadValue, database->setMarkerEmission({"standard", 1}, 1, {{}, nan}).number);
}

TEST_F(Markers, WrittenBackAfterADeletionTheBodyIsWholeAgain) {
  const std::string before = dump();
  ASSERT_EQ("korvex2 ok", ask("korvex2 body delete_marker standard b07 m02"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body number_of_marker standard b07 5"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b07 m02 41.2376 9.39587 -14.9949"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker_emission standard b07 m02 0.918966 0.209383 -0.334156 60"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b07 m03 -6.34369 -32.7491 -24.3912"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker_emission standard b07 m03 -0.153511 -0.792495 -0.590242 60"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b07 m04 27.2115 -35.511 31.2081"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker_emission standard b07 m04 0.498858 -0.651009 0.572126 60"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b07 m05 -45.6959 15.6258 15.5529"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker_emission standard b07 m05 -0.900655 0.30798 0.306544 60"));
  EXPECT_EQ(before, dump());
}

TEST_F(Markers, BodyWithoutAFileGetsOneWithItsFirstMarkers) {
  korvex2_test::writeBytes(path("catalogue.json"),
                           R"({"types": [{"name": "standard"}], "bodies": [{"type": "standard", "number": 1}]})");
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ("0", get("body number_of_marker standard b01"));
  EXPECT_EQ(9, errorOf("korvex2 set body calibrated standard b01 yes"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body number_of_marker standard b01 3"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m02 10 0 0"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body calibrated standard b01 yes"));
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ("3", get("body number_of_marker standard b01"));
  EXPECT_EQ("10 0 0", get("body marker standard b01 m02"));
  EXPECT_EQ("yes", get("body calibrated standard b01"));
}

}  // namespace
