// Every query of the command language, asked of the shipped database.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "databasecopy.h"

namespace {

class Queries : public korvex2_test::DatabaseCopy {
 protected:
  void expectAnswers(const std::vector<std::pair<std::string, std::string>>& expected) {
    for (const auto& [query, value] : expected) {
      EXPECT_EQ("korvex2 set " + query + " " + value, ask("korvex2 get " + query));
    }
  }
};

TEST_F(Queries, ShippedDatabaseHasNoProblem) { EXPECT_EQ("", problems()); }

TEST_F(Queries, SettingsAreAnsweredAsShipped) {
  expectAnswers({{"version", "1.20.0"},
                 {"config is_changeable", "yes"},
                 {"tracking available", "yes"},
                 {"status active", "idle"},
                 {"wandgrip output_6dw", "no"},
                 {"wandgrip number_of_devices", "2"},
                 {"wandgrip multiuser_available", "yes"},
                 {"wandgrip multiuser", "no"},
                 {"wandgrip multiuser_with_head_available", "yes"},
                 {"wandgrip multiuser_with_head", "no"}});
}

TEST_F(Queries, BodyTypesAreCountedNamedAndDescribed) {
  expectAnswers({{"body number_of_types", "2"},
                 {"body type t01", "standard"},
                 {"body type t02", "wandgrip"},
                 {"body number_of_bodies standard", "7"},
                 {"body number_of_bodies wandgrip", "2"},
                 {"body type_desc standard", "\"Standard body\""},
                 {"body type_desc wandgrip", "\"Wandgrip\""}});
}

TEST_F(Queries, DescriptionsComeInDoubleQuotes) {
  expectAnswers({{"body desc standard b01", "\"Cup\""},
                 {"body desc standard b02", "\"Table\""},
                 {"body desc standard b03", "\"Quadrotor\""},
                 {"body desc standard b04", "\"Quadrotor, five degrees\""},
                 {"body desc standard b05", "\"Quadrotor, cylinder markers\""},
                 {"body desc standard b06", "\"Phone\""},
                 {"body desc standard b07", "\"Cup, active markers\""},
                 {"body desc wandgrip b01", "\"Phone grip\""},
                 {"body desc wandgrip b02", "\"Quadrotor grip\""}});
}

TEST_F(Queries, TargetTypesComeInApostrophes) {
  expectAnswers({{"body target_type standard b01", "'tt_std'"},
                 {"body target_type standard b02", "'tt_std'"},
                 {"body target_type standard b03", "'tt_std'"},
                 {"body target_type standard b04", "'tt_5dof'"},
                 {"body target_type standard b05", "'tt_std_cyl'"},
                 {"body target_type standard b06", "'tt_std'"},
                 {"body target_type standard b07", "'tt_std'"},
                 {"body target_type wandgrip b01", "'tt_std'"},
                 {"body target_type wandgrip b02", "'tt_std'"}});
}

TEST_F(Queries, OnlyThePhoneIsNotCalibrated) {
  expectAnswers({{"body calibrated standard b01", "yes"},
                 {"body calibrated standard b02", "yes"},
                 {"body calibrated standard b03", "yes"},
                 {"body calibrated standard b04", "yes"},
                 {"body calibrated standard b05", "yes"},
                 {"body calibrated standard b06", "no"},
                 {"body calibrated standard b07", "yes"},
                 {"body calibrated wandgrip b01", "yes"},
                 {"body calibrated wandgrip b02", "yes"}});
}

TEST_F(Queries, MarkersAreThoseOfTheBodyFiles) {
  expectAnswers({{"body number_of_marker standard b01", "5"},
                 {"body marker standard b01 m01", "-16.4095 43.2385 -7.37501"},
                 {"body marker standard b01 m02", "41.2376 9.39587 -14.9949"},
                 {"body marker standard b01 m03", "-6.34369 -32.7491 -24.3912"},
                 {"body marker standard b01 m04", "27.2115 -35.511 31.2081"},
                 {"body marker standard b01 m05", "-45.6959 15.6258 15.5529"},
                 {"body number_of_marker standard b02", "4"},
                 {"body marker standard b02 m04", "-800.592 -368.159 -3.99135"},
                 {"body number_of_marker standard b03", "4"},
                 {"body marker standard b03 m01", "17.7184 13.9654 55.7585"},
                 {"body number_of_marker standard b04", "4"},
                 {"body marker standard b04 m01", "-8.96228 -0.716753 71.6129"},
                 {"body number_of_marker standard b05", "4"},
                 {"body marker standard b05 m01", "55.8163 -1.96302 94.5539"},
                 {"body number_of_marker standard b06", "4"},
                 {"body marker standard b06 m01", "-39.974 -68.1383 -0.101279"},
                 {"body number_of_marker wandgrip b01", "4"},
                 {"body marker wandgrip b01 m04", "28.5325 -70.9624 1.2953"},
                 {"body number_of_marker wandgrip b02", "4"},
                 {"body marker wandgrip b02 m03", "-30.6277 51.4879 52.0456"}});
}

TEST_F(Queries, EmissionsAreFourZerosUnlessTheMarkersAreActive) {
  expectAnswers({{"body marker_emission standard b01 m01", "0 0 0 0"},
                 {"body marker_emission standard b02 m04", "0 0 0 0"},
                 {"body marker_emission standard b03 m02", "0 0 0 0"},
                 {"body marker_emission standard b07 m01", "-0.350391 0.92327 -0.157478 60"},
                 {"body marker_emission standard b07 m05", "-0.900655 0.30798 0.306544 60"}});
}

TEST_F(Queries, BodyAndMarkerNumbersMayHaveAnyNumberOfZerosInFront) {
  EXPECT_EQ("korvex2 set body marker standard b1 m002 41.2376 9.39587 -14.9949",
            ask("korvex2 get body marker standard b1 m002"));
}

TEST_F(Queries, OutputsAreOffButForStandardBodies) {
  expectAnswers(
      {{"output active chmon 6d", "yes"}, {"output active chmon 6dw", "no"}, {"output active chmon 6dw2", "no"}});
}

TEST_F(Queries, BlanksAroundFieldsAndALineEndDoNotMatter) {
  const std::string expected = "korvex2 set config is_changeable yes";
  EXPECT_EQ(expected, ask("  korvex2   get\tconfig is_changeable  "));
  EXPECT_EQ(expected, ask("korvex2 get config is_changeable\n"));
  EXPECT_EQ(expected, ask("korvex2 get config is_changeable\r\n"));
}

TEST_F(Queries, AnEmptyTypeHasNoBodies) {
  korvex2_test::writeBytes(path("catalogue.json"),
                           R"({"types": [{"name": "hand", "description": "A hand"}], "bodies": []})");
  open();
  EXPECT_EQ("", problems());
  expectAnswers({{"body number_of_types", "1"},
                 {"body type t01", "hand"},
                 {"body type_desc hand", "\"A hand\""},
                 {"body number_of_bodies hand", "0"},
                 {"wandgrip number_of_devices", "0"}});
  EXPECT_EQ(5, errorOf("korvex2 get body number_of_bodies standard"));
}

}  // namespace
