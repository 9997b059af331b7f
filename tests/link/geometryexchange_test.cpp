// A body's markers read from the backend and written back.
#include "geometryexchange.h"

#include <cmath>
#include <limits>

#include "linkfixture.h"

using korvex2::haveEmissions;
using korvex2::readGeometry;
using korvex2::writeGeometry;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const double notANumber = std::numeric_limits<double>::quiet_NaN();
const double infinity = std::numeric_limits<double>::infinity();

constexpr const char* infoFailed = "Error: Unable to check body marker info";
constexpr const char* emissionInfoFailed = "Error: Unable to check body marker emission info";

}  // namespace

class GeometryReadingTest : public LinkTest {
 protected:
  void SetUp() override {
    io.answers = {{"body number_of_marker standard b03", "2"},
                  {"body marker standard b03 m01", "1.5 -2.5 3.25"},
                  {"body marker_emission standard b03 m01", "0 0 1 45"},
                  {"body marker standard b03 m02", "10 20 30"},
                  {"body marker_emission standard b03 m02", "0.5 0.25 0 60"}};
  }
  bool read() { return readGeometry(channel, "standard", 3, positions, emissions); }
  void expectOldLists() const {
    ASSERT_EQ(positions.size(), 1u);
    EXPECT_EQ(positions[0].y, 8.0);
    ASSERT_EQ(emissions.size(), 2u);
    EXPECT_EQ(emissions[1].angle, 4.0);
  }

  std::vector<bsVector> positions{bsVector(7, 8, 9)};
  std::vector<Emission> emissions{Emission{}, Emission{1, 2, 3, 4}};
};

TEST_F(GeometryReadingTest, ReadsPositionThenEmissionMarkerByMarker) {
  EXPECT_TRUE(read());
  EXPECT_THAT(io.log,
              ElementsAre("get_int body number_of_marker standard b03", "get_reals body marker standard b03 m01",
                          "get_reals body marker_emission standard b03 m01", "get_reals body marker standard b03 m02",
                          "get_reals body marker_emission standard b03 m02"));
  ASSERT_EQ(positions.size(), 2u);
  EXPECT_EQ(positions[0].x, 1.5);
  EXPECT_EQ(positions[0].y, -2.5);
  EXPECT_EQ(positions[0].z, 3.25);
  EXPECT_EQ(positions[1].z, 30.0);
  ASSERT_EQ(emissions.size(), 2u);
  EXPECT_EQ(emissions[0].z, 1.0);
  EXPECT_EQ(emissions[0].angle, 45.0);
  EXPECT_EQ(emissions[1].x, 0.5);
  EXPECT_EQ(emissions[1].y, 0.25);
  EXPECT_EQ(emissions[1].angle, 60.0);
}

TEST_F(GeometryReadingTest, AFailedCountLeavesTheListsAlone) {
  io.failing = {"get_int body number_of_marker standard b03"};
  EXPECT_FALSE(read());
  expectOldLists();
  EXPECT_THAT(io.log, ElementsAre("get_int body number_of_marker standard b03", reported(infoFailed)));
}

TEST_F(GeometryReadingTest, NoMarkersGiveFalseAndLeaveTheListsAloneWithoutAReport) {
  io.answers["body number_of_marker standard b03"] = "0";
  EXPECT_FALSE(read());
  expectOldLists();
  EXPECT_THAT(io.log, ElementsAre("get_int body number_of_marker standard b03"));
}

TEST_F(GeometryReadingTest, ANegativeCountGivesTrueAndEmptyLists) {
  for (const char* count : {"-1", "-2147483648"}) {
    positions = {bsVector()};
    emissions = {Emission{}};
    io.answers["body number_of_marker standard b03"] = count;
    EXPECT_TRUE(read());
    EXPECT_THAT(positions, IsEmpty());
    EXPECT_THAT(emissions, IsEmpty());
  }
  EXPECT_THAT(io.reports(), IsEmpty());
}

TEST_F(GeometryReadingTest, AnAbsurdCountCountsAsFailed) {
  for (const char* count : {"1001", "2000000000"}) {
    io.answers["body number_of_marker standard b03"] = count;
    io.takeLog();
    EXPECT_FALSE(read());
    expectOldLists();
    EXPECT_THAT(io.log, ElementsAre("get_int body number_of_marker standard b03", reported(infoFailed)));
  }
}

TEST_F(GeometryReadingTest, AThousandMarkersAreRead) {
  io.respond = [](const std::string&, const std::string& text) {
    return FakeChannel::Answer{0, text.find("number_of") != std::string::npos ? "1000" : "1 2 3 4"};
  };
  EXPECT_TRUE(read());
  EXPECT_EQ(positions.size(), 1000u);
  EXPECT_EQ(emissions.size(), 1000u);
  EXPECT_EQ(io.log.back(), "get_reals body marker_emission standard b03 m1000");
}

TEST_F(GeometryReadingTest, AFailedPositionKeepsTheMarkersBeforeIt) {
  io.failing = {"get_reals body marker standard b03 m02"};
  EXPECT_FALSE(read());
  EXPECT_EQ(positions.size(), 1u);
  EXPECT_EQ(positions[0].x, 1.5);
  EXPECT_EQ(emissions.size(), 1u);
  EXPECT_EQ(io.log.back(), reported(infoFailed));
  EXPECT_EQ(io.log.size(), 5u);
}

TEST_F(GeometryReadingTest, AFailedEmissionKeepsItsMarkersPosition) {
  io.failing = {"get_reals body marker_emission standard b03 m02"};
  EXPECT_FALSE(read());
  EXPECT_EQ(positions.size(), 2u);
  EXPECT_EQ(emissions.size(), 1u);
  EXPECT_THAT(io.reports(), ElementsAre(emissionInfoFailed));
  io.failing = {"get_reals body marker_emission standard b03 m01"};
  io.takeLog();
  EXPECT_FALSE(read());
  EXPECT_EQ(positions.size(), 1u);
  EXPECT_THAT(emissions, IsEmpty());
  EXPECT_THAT(io.log,
              ElementsAre("get_int body number_of_marker standard b03", "get_reals body marker standard b03 m01",
                          "get_reals body marker_emission standard b03 m01", reported(emissionInfoFailed)));
}

TEST_F(GeometryReadingTest, CalibrationIsAskedWithBodyTypeAndNumber) {
  io.answers["body calibrated wandgrip b10"] = "yes";
  EXPECT_TRUE(korvex2::isBodyCalibrated(channel, "wandgrip", 10));
  EXPECT_FALSE(korvex2::isBodyCalibrated(channel, "wandgrip", 11));
  EXPECT_THAT(io.log, ElementsAre("get_string body calibrated wandgrip b10", "get_string body calibrated wandgrip b11",
                                  reported("Error: Unable to check body cali info")));
}

// --- emissions ------------------------------------------------------------------------------------------------------

TEST(Emissions, AreHadAsSoonAsOneValueIsNotZero) {
  EXPECT_FALSE(haveEmissions({}));
  EXPECT_FALSE(haveEmissions({Emission{}, Emission{}}));
  EXPECT_FALSE(haveEmissions({Emission{-0.0, 0.0, -0.0, 0.0}}));
  EXPECT_TRUE(haveEmissions({Emission{}, Emission{1, 0, 0, 0}}));
  EXPECT_TRUE(haveEmissions({Emission{}, Emission{0, -1, 0, 0}}));
  EXPECT_TRUE(haveEmissions({Emission{}, Emission{0, 0, 1e-300, 0}}));
  EXPECT_TRUE(haveEmissions({Emission{0, 0, 0, 5e-324}, Emission{}})) << "an angle alone counts";
  EXPECT_TRUE(haveEmissions({Emission{notANumber, 0, 0, 0}}));
  EXPECT_TRUE(haveEmissions({Emission{0, 0, 0, notANumber}}));
}

// --- writing --------------------------------------------------------------------------------------------------------

class GeometryWritingTest : public LinkTest {
 protected:
  void SetUp() override {
    io.respond = [](const std::string&, const std::string&) { return FakeChannel::Answer{}; };
  }
  void write() { writeGeometry(channel, "standard", 2, positions, emissions); }

  std::vector<bsVector> positions{bsVector(1.0004, -2.0006, 3), bsVector(40, 50, 60)};
  std::vector<Emission> emissions{Emission{0, 0, 1, 45}, Emission{}};
  const Log withEmissions = {"set_value body number_of_marker standard b02 2",
                             "set_value body marker standard b02 m01 1.000 -2.001 3.000",
                             "set_value body marker_emission standard b02 m01 0.000 0.000 1.000 45.000",
                             "set_value body marker standard b02 m02 40.000 50.000 60.000",
                             "set_value body marker_emission standard b02 m02 0.000 0.000 0.000 0.000"};
  const Log withoutEmissions = {"set_value body number_of_marker standard b02 2",
                                "set_value body marker standard b02 m01 1.000 -2.001 3.000",
                                "set_value body marker standard b02 m02 40.000 50.000 60.000"};
};

TEST_F(GeometryWritingTest, WritesCountThenPositionAndEmissionMarkerByMarker) {
  write();
  EXPECT_THAT(io.log, ElementsAreArray(withEmissions));
}

TEST_F(GeometryWritingTest, WritesNoEmissionsWhenAllAreZero) {
  emissions = {Emission{}, Emission{}};
  write();
  EXPECT_THAT(io.log, ElementsAreArray(withoutEmissions));
}

TEST_F(GeometryWritingTest, WritesEmissionsFromOneTwelveOn) {
  for (const auto& old : {backendVersion(1, 11, 9), backendVersion(1, 12, -2), backendVersion(0, 99, 0)}) {
    versions = old;
    io.takeLog();
    write();
    EXPECT_THAT(io.log, ElementsAreArray(withoutEmissions));
  }
  for (const auto& recent : {backendVersion(1, 12, -1), backendVersion(1, 12, 0), backendVersion(1, 13, 0)}) {
    versions = recent;
    io.takeLog();
    write();
    EXPECT_THAT(io.log, ElementsAreArray(withEmissions));
  }
}

TEST_F(GeometryWritingTest, AFailedCountEndsItWithItsKeptReport) {
  io.failing = {withEmissions[0]};
  write();
  EXPECT_THAT(io.log, ElementsAre(withEmissions[0], reported("Error: Unable to set body target_type")));
}

TEST_F(GeometryWritingTest, AFailedMarkerIsReportedAndTheRestFollows) {
  io.failing = {withEmissions[1], withEmissions[2]};
  write();
  EXPECT_THAT(io.log,
              ElementsAre(withEmissions[0], withEmissions[1], reported("Error: Unable to set body marker values"),
                          withEmissions[2], reported("Error: Unable to set body marker emission"), withEmissions[3],
                          withEmissions[4]));
}

TEST_F(GeometryWritingTest, MarkersWithoutAnEmissionOfTheirOwnAreWrittenWithoutOne) {
  emissions.resize(1);
  write();
  EXPECT_THAT(io.log, ElementsAreArray(withEmissions.begin(), withEmissions.end() - 1));
}

TEST_F(GeometryWritingTest, EmissionsBeyondTheMarkersAreNotWritten) {
  emissions.resize(5);
  write();
  EXPECT_THAT(io.log, ElementsAreArray(withEmissions));
}

TEST_F(GeometryWritingTest, NoMarkersWriteTheCountOnly) {
  positions.clear();
  write();
  EXPECT_THAT(io.log, ElementsAre("set_value body number_of_marker standard b02 0"));
}

TEST_F(GeometryWritingTest, ANaNEmissionIsWrittenLikeAnyOther) {
  emissions = {Emission{}, Emission{notANumber, 0, 0, 0}};
  write();
  ASSERT_EQ(io.log.size(), 5u);
  EXPECT_EQ(io.log[2], "set_value body marker_emission standard b02 m01 0.000 0.000 0.000 0.000");
  EXPECT_THAT(io.log[4], testing::MatchesRegex("set_value body marker_emission standard b02 m02 -?nan 0.000.*"));
}

TEST_F(GeometryWritingTest, PositionsWithoutSaneNumbersAreReportedInsteadOfSent) {
  for (const double bad : {notANumber, infinity, -infinity, 1e300}) {
    positions[0] = bsVector(0, 0, bad);
    io.takeLog();
    write();
    EXPECT_THAT(io.log, ElementsAre(withEmissions[0], reported("Error: Unable to set body marker values"),
                                    withEmissions[2], withEmissions[3], withEmissions[4]));
  }
}

TEST_F(GeometryWritingTest, EndlessEmissionsAreReportedInsteadOfSent) {
  for (const double bad : {infinity, -infinity, 1e300}) {
    emissions[1] = Emission{0, bad, 0, 0};
    io.takeLog();
    write();
    EXPECT_THAT(io.log, ElementsAre(withEmissions[0], withEmissions[1], withEmissions[2], withEmissions[3],
                                    reported("Error: Unable to set body marker emission")));
  }
}
