// Commands and queries on one body: exact texts, numbers and failure messages.
#include <cmath>
#include <limits>

#include "abcmarkerdata.h"
#include "backendchannel.h"
#include "bsMatrix.h"
#include "bsVector.h"
#include "linkfixture.h"

using korvex2::BackendChannel;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* transformFailed = "Error: Unable to set body transformation";
constexpr const char* deleteFailed = "Error: Unable to delete marker of body";

const double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Rotation by rows, and a translation.
bsMatrix rigid(std::initializer_list<double> rows, const bsVector& translation) {
  bsMatrix m;
  m.setIdentity();
  int i = 0;
  for (const double value : rows) {
    m.data(i / 3, i % 3) = value;
    ++i;
  }
  m.setColumn(3, translation, 1.0);
  return m;
}

}  // namespace

class BackendCommandsTest : public LinkTest {
 protected:
  /// Answers every command with this text.
  void answerAll(const std::string& text) {
    io.respond = [text](const std::string&, const std::string&) { return FakeChannel::Answer{0, text}; };
  }
};

// --- body transform -------------------------------------------------------------------------------------------------

TEST_F(BackendCommandsTest, TransformIsSentPositionFirstThenRotationColumnByColumn) {
  answerAll("korvex2 ok");
  // Turns x to y, y to z and z to x: its columns are the y, z and x axis.
  const bsMatrix transform = rigid({0, 0, 1, 1, 0, 0, 0, 1, 0}, bsVector(1.5, -2.25, 1234.5678));
  EXPECT_EQ(channel.sendBodyTransform("standard", 3, transform), BackendChannel::CommandResult::Done);
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 body transform standard b03 1.500 -2.250 1234.568 "
                                  "0.00000000 1.00000000 0.00000000 0.00000000 0.00000000 1.00000000 "
                                  "1.00000000 0.00000000 0.00000000"));
}

TEST_F(BackendCommandsTest, TransformOfATurnAboutZHasItsSineBelowItsCosine) {
  answerAll("korvex2 ok");
  channel.sendBodyTransform("wandgrip", 12, rigid({0.6, -0.8, 0, 0.8, 0.6, 0, 0, 0, 1}, bsVector(0.0004, 0, 0.0006)));
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 body transform wandgrip b12 0.000 0.000 0.001 "
                                  "0.60000000 0.80000000 0.00000000 -0.80000000 0.60000000 0.00000000 "
                                  "0.00000000 0.00000000 1.00000000"));
}

TEST_F(BackendCommandsTest, TransformRotationIsRebuiltFromTheQuaternion) {
  answerAll("korvex2 ok");
  // Twice the turn above. Its trace is 0, so w = 1/2 and x = y = z = (2 - 0) / 2 = 1. The matrix of that quaternion has
  // 1 - 2 - 2 = -3 on its diagonal, 2 (1 + 1/2) = 3 and 2 (1 - 1/2) = 1 beside it: not the matrix that went in.
  channel.sendBodyTransform("standard", 1, rigid({0, 0, 2, 2, 0, 0, 0, 2, 0}, bsVector()));
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 body transform standard b01 0.000 0.000 0.000 "
                                  "-3.00000000 3.00000000 1.00000000 1.00000000 -3.00000000 3.00000000 "
                                  "3.00000000 1.00000000 -3.00000000"));
}

TEST_F(BackendCommandsTest, TransformIsRefusedOnAnyAnswerButOk) {
  for (const char* answer : {"korvex2 err", "", "korvex2 ok ", "Korvex2 ok", "korvex2 OK", "ok"}) {
    answerAll(answer);
    io.takeLog();
    EXPECT_EQ(channel.sendBodyTransform("standard", 1, bsMatrix::getIdentityMatrix()),
              BackendChannel::CommandResult::Refused)
        << '"' << answer << '"';
    EXPECT_EQ(io.log.size(), 2u);
    EXPECT_THAT(io.reports(), ElementsAre(transformFailed));
  }
}

TEST_F(BackendCommandsTest, TransformThatIsNotDeliveredFailsWithOneReport) {
  EXPECT_EQ(channel.sendBodyTransform("standard", 1, bsMatrix::getIdentityMatrix()),
            BackendChannel::CommandResult::Failed);
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 body transform standard b01 0.000 0.000 0.000 1.00000000 "
                                  "0.00000000 0.00000000 0.00000000 1.00000000 0.00000000 0.00000000 0.00000000 "
                                  "1.00000000",
                                  reported(transformFailed)));
}

TEST_F(BackendCommandsTest, TransformWithoutSaneNumbersIsNotSent) {
  answerAll("korvex2 ok");
  for (const double bad : {notANumber, infinity, -infinity, 1e300, -1e10}) {
    for (int row = 0; row < 3; ++row) {
      for (int column = 0; column < 4; ++column) {
        bsMatrix transform = rigid({1, 0, 0, 0, 1, 0, 0, 0, 1}, bsVector());
        transform.data(row, column) = bad;
        io.takeLog();
        EXPECT_EQ(channel.sendBodyTransform("standard", 1, transform), BackendChannel::CommandResult::Failed)
            << bad << " at " << row << ", " << column;
        EXPECT_THAT(io.log, ElementsAre(reported(transformFailed)));
      }
    }
  }
}

TEST_F(BackendCommandsTest, TransformWhoseRebuiltRotationHasNoSaneNumbersIsNotSent) {
  answerAll("korvex2 ok");
  // A million times a turn: x = y = z = 500000, and 1 - 2 y^2 - 2 z^2 is about -1e12.
  const bsMatrix transform = rigid({0, 0, 1e6, 1e6, 0, 0, 0, 1e6, 0}, bsVector());
  EXPECT_EQ(channel.sendBodyTransform("standard", 1, transform), BackendChannel::CommandResult::Failed);
  EXPECT_THAT(io.log, ElementsAre(reported(transformFailed)));
}

TEST_F(BackendCommandsTest, TransformFarAwayIsStillSent) {
  answerAll("korvex2 ok");
  EXPECT_EQ(channel.sendBodyTransform("standard", 1, rigid({1, 0, 0, 0, 1, 0, 0, 0, 1}, bsVector(-1e9, 0, 0))),
            BackendChannel::CommandResult::Done);
  EXPECT_THAT(io.reports(), IsEmpty());
}

// --- delete marker --------------------------------------------------------------------------------------------------

TEST_F(BackendCommandsTest, DeleteMarkerNamesBodyAndMarkerWithTwoDigits) {
  answerAll("korvex2 ok");
  EXPECT_TRUE(channel.deleteMarker("standard", 3, 1));
  EXPECT_TRUE(channel.deleteMarker("wandgrip", 11, 10));
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 body delete_marker standard b03 m01",
                                  "send_raw_command korvex2 body delete_marker wandgrip b11 m10"));
}

TEST_F(BackendCommandsTest, AFailedDeletionIsReportedTwice) {
  EXPECT_FALSE(channel.deleteMarker("standard", 1, 2));
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 body delete_marker standard b01 m02",
                                  reported(deleteFailed), reported(deleteFailed)));
}

TEST_F(BackendCommandsTest, ARefusedDeletionIsReportedOnce) {
  answerAll("korvex2 err");
  EXPECT_FALSE(channel.deleteMarker("standard", 1, 2));
  EXPECT_THAT(io.reports(), ElementsAre(deleteFailed));
}

// --- queries --------------------------------------------------------------------------------------------------------

TEST_F(BackendCommandsTest, OpeningCountsBodiesWithoutAReport) {
  io.answers["body number_of_bodies standard"] = "4";
  int count = 0;
  EXPECT_TRUE(channel.numberOfBodies("standard", count));
  EXPECT_EQ(count, 4);
  count = 0;
  EXPECT_FALSE(channel.numberOfBodies("wandgrip", count));
  EXPECT_EQ(count, 0);
  EXPECT_THAT(io.log, ElementsAre("get_int body number_of_bodies standard", "get_int body number_of_bodies wandgrip"));
}

TEST_F(BackendCommandsTest, EveryFailedQueryHasItsReport) {
  int count = 0;
  QByteArray text;
  bsVector position;
  Emission emission;
  channel.numberOfTypes(count);
  channel.typeName(7, text);
  channel.numberOfListedBodies("standard", count);
  channel.typeDescription("wandgrip", text);
  channel.targetType("standard", 5, text);
  channel.bodyDescription("standard", 5, text);
  channel.isBodyCalibrated("wandgrip", 2);
  channel.numberOfMarkers("standard", 5, count);
  channel.markerPosition("standard", 5, 6, position);
  channel.markerEmission("standard", 5, 6, emission);
  channel.setNumberOfMarkers("standard", 5, 8);
  channel.setMarkerPosition("standard", 5, 6, position);
  channel.setMarkerEmission("standard", 5, 6, emission);
  channel.numberOfDevices();
  EXPECT_THAT(io.log,
              testing::ElementsAreArray(Log{"get_int body number_of_types",
                                            reported("Error: Unable to get number of types for body"),
                                            "get_string body type t07",
                                            reported("Error: Unable to check body type"),
                                            "get_int body number_of_bodies standard",
                                            reported("Error: Unable to check number of bodies for body"),
                                            "get_string body type_desc wandgrip",
                                            reported("Error: Unable to check body type description"),
                                            "get_string body target_type standard b05",
                                            reported("Error: Unable to check body target_type"),
                                            "get_string body desc standard b05",
                                            reported("Error: Unable to check body description"),
                                            "get_string body calibrated wandgrip b02",
                                            reported("Error: Unable to check body cali info"),
                                            "get_int body number_of_marker standard b05",
                                            reported("Error: Unable to check body marker info"),
                                            "get_reals body marker standard b05 m06",
                                            reported("Error: Unable to check body marker info"),
                                            "get_reals body marker_emission standard b05 m06",
                                            reported("Error: Unable to check body marker emission info"),
                                            "set_value body number_of_marker standard b05 8",
                                            reported("Error: Unable to set body target_type"),
                                            "set_value body marker standard b05 m06 0.000 0.000 0.000",
                                            reported("Error: Unable to set body marker values"),
                                            "set_value body marker_emission standard b05 m06 0.000 0.000 0.000 0.000",
                                            reported("Error: Unable to set body marker emission"),
                                            "get_int wandgrip number_of_devices",
                                            reported("Error: Unable to get number of wandgrips")}));
}

TEST_F(BackendCommandsTest, ABodyIsCalibratedOnTheExactAnswerYes) {
  io.answers["body calibrated standard b01"] = "yes";
  EXPECT_TRUE(channel.isBodyCalibrated("standard", 1));
  for (const char* answer : {"no", "", "yes ", " yes", "Yes", "YES", "y"}) {
    io.answers["body calibrated standard b01"] = answer;
    EXPECT_FALSE(channel.isBodyCalibrated("standard", 1)) << '"' << answer << '"';
  }
  EXPECT_THAT(io.reports(), IsEmpty());
}

TEST_F(BackendCommandsTest, NumbersAboveNinetyNineAreWrittenOut) {
  answerAll("yes");
  channel.isBodyCalibrated("standard", 100);
  answerAll("korvex2 ok");
  channel.deleteMarker("standard", 123, 456);
  EXPECT_THAT(io.log, ElementsAre("get_string body calibrated standard b100",
                                  "send_raw_command korvex2 body delete_marker standard b123 m456"));
}

TEST_F(BackendCommandsTest, LongTypeTextsDoNoHarm) {
  const QByteArray type(500, 't');
  EXPECT_FALSE(channel.isBodyCalibrated(type, 1));
  EXPECT_EQ(io.log.front(), "get_string body calibrated " + type.toStdString() + " b01");
  EXPECT_THAT(io.reports(), ElementsAre("Error: Unable to check body cali info"));
}
