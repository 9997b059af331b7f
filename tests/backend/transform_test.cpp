// The body transform: new coordinates, turned emissions, what is refused, and what is kept for the pose.
#include <gtest/gtest.h>

#include <QtMath>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <vector>

#include "databasecopy.h"
#include "rigidtransform.h"

namespace {

using korvex2::BodyKey;
using korvex2::RigidTransform;
using korvex2::Vector3;

// Rotation by three angles in degrees, Rx * Ry * Rz written out, rows first. Independent of the code under test.
std::array<std::array<double, 3>, 3> rotationRows(double ax, double ay, double az) {
  const double cx = std::cos(qDegreesToRadians(ax));
  const double sx = std::sin(qDegreesToRadians(ax));
  const double cy = std::cos(qDegreesToRadians(ay));
  const double sy = std::sin(qDegreesToRadians(ay));
  const double cz = std::cos(qDegreesToRadians(az));
  const double sz = std::sin(qDegreesToRadians(az));
  return {{{{cy * cz, -cy * sz, sy}},
           {{cx * sz + sx * sy * cz, cx * cz - sx * sy * sz, -sx * cy}},
           {{sx * sz - cx * sy * cz, sx * cz + cx * sy * sz, cx * cy}}}};
}

// The command as clients write it: three decimals for the position, eight for the rotation, column by column.
std::string command(const std::string& body, const Vector3& t, const std::array<std::array<double, 3>, 3>& r) {
  char text[400];
  std::snprintf(text, sizeof(text),
                "korvex2 body transform %s %.3f %.3f %.3f %.8f %.8f %.8f %.8f %.8f %.8f %.8f %.8f %.8f", body.c_str(),
                t[0], t[1], t[2], r[0][0], r[1][0], r[2][0], r[0][1], r[1][1], r[2][1], r[0][2], r[1][2], r[2][2]);
  return text;
}

double distance(const Vector3& a, const Vector3& b) {
  return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) + (a[2] - b[2]) * (a[2] - b[2]));
}

class Transform : public korvex2_test::DatabaseCopy {
 protected:
  const korvex2::Body& body(const char* type, int number) { return *database->find({type, number}); }
  std::string get(const std::string& query) { return ask("korvex2 get " + query); }
};

TEST_F(Transform, QuarterTurnAboutZAndShiftGiveNewCoordinates) {
  // R takes x to y and y to -x; column by column 0 1 0, -1 0 0, 0 0 1. So (x, y, z) -> (10 - y, 20 + x, 30 + z).
  EXPECT_EQ("korvex2 ok", ask("korvex2 body transform standard b02 10.000 20.000 30.000 0.00000000 1.00000000 "
                              "0.00000000 -1.00000000 0.00000000 0.00000000 0.00000000 0.00000000 1.00000000"));
  const Vector3 expected[] = {{{10 - 368.889, 20 + 801.422, 30 + 2.14242}},
                              {{10 + 413.341, 20 + 777.315, 30 + 4.1272}},
                              {{10 - 412.611, 20 - 778.146, 30 - 2.27826}},
                              {{10 + 368.159, 20 - 800.592, 30 - 3.99135}}};
  const korvex2::Body& table = body("standard", 2);
  ASSERT_EQ(4U, table.markers.size());
  for (std::size_t i = 0; i < 4; ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      EXPECT_NEAR(expected[i][axis], table.markers[i].position[axis], 1e-12) << i << ' ' << axis;
    }
  }
}

TEST_F(Transform, NineElementsAreReadColumnByColumn) {
  const auto r = rotationRows(20, -35, 50);
  const Vector3 t = {{-12.345, 0.5, 987.654}};
  const std::vector<korvex2::BodyMarker> before = body("standard", 1).markers;
  ASSERT_EQ("korvex2 ok", ask(command("standard b01", t, r)));
  for (std::size_t i = 0; i < before.size(); ++i) {
    const Vector3& p = before[i].position;
    for (std::size_t row = 0; row < 3; ++row) {
      const double expected = r[row][0] * p[0] + r[row][1] * p[1] + r[row][2] * p[2] + t[row];
      // Eight decimals were sent: off by at most 3 * 5e-9 * 60 mm.
      EXPECT_NEAR(expected, body("standard", 1).markers[i].position[row], 1e-6);
    }
  }
}

TEST_F(Transform, EmissionsTurnWithTheBodyAndKeepTheirAngle) {
  // Quarter turn about x: (x, y, z) -> (x, -z, y); the shift is nothing to a direction.
  EXPECT_EQ("korvex2 ok", ask("korvex2 body transform standard b07 100 200 300 1 0 0 0 0 1 0 -1 0"));
  EXPECT_EQ("korvex2 set body marker_emission standard b07 m01 -0.350391 0.157478 0.92327 60",
            get("body marker_emission standard b07 m01"));
  EXPECT_EQ("korvex2 set body marker_emission standard b07 m05 -0.900655 -0.306544 0.30798 60",
            get("body marker_emission standard b07 m05"));
  EXPECT_EQ("korvex2 set body marker_emission standard b01 m01 0 0 0 0", get("body marker_emission standard b01 m01"));
}

TEST_F(Transform, OtherBodiesOfTheSameFileStayAsTheyAre) {
  ask("korvex2 body transform standard b07 100 200 300 1 0 0 0 1 0 0 0 1");
  EXPECT_EQ("korvex2 set body marker standard b01 m02 41.2376 9.39587 -14.9949", get("body marker standard b01 m02"));
  open();
  EXPECT_EQ("korvex2 set body marker standard b01 m02 41.2376 9.39587 -14.9949", get("body marker standard b01 m02"));
  EXPECT_NEAR(141.2376, body("standard", 7).markers[1].position[0], 1e-12);
}

TEST_F(Transform, IdentityIsAcknowledgedAndWritesNothing) {
  const auto before = korvex2_test::allFiles(folder());
  EXPECT_EQ("korvex2 ok", ask("korvex2 body transform standard b01 0 0 0 1 0 0 0 1 0 0 0 1"));
  EXPECT_EQ(before, korvex2_test::allFiles(folder()));
}

TEST_F(Transform, MarkersStayWhereTheyAreInTheRoom) {
  // A pose of the measured body; afterwards the body is reported as pose * inverse(transform).
  RigidTransform pose;
  pose.position = {{1500, -200, 900}};
  const auto r = rotationRows(10, 20, 30);
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      pose.rotation[3 * column + row] = r[row][column];
    }
  }
  std::vector<Vector3> room;
  for (const korvex2::BodyMarker& marker : body("standard", 2).markers) {
    room.push_back(pose.apply(marker.position));
  }
  std::mt19937 random(7);
  std::uniform_real_distribution<double> angle(-180, 180);
  std::uniform_real_distribution<double> shift(-500, 500);
  for (int n = 0; n < 20; ++n) {
    ASSERT_EQ("korvex2 ok", ask(command("standard b02", {{shift(random), shift(random), shift(random)}},
                                        rotationRows(angle(random), angle(random), angle(random)))));
    if (n == 10) {
      open();
    }
    const RigidTransform reported = RigidTransform::compose(pose, body("standard", 2).transform.inverse());
    for (std::size_t i = 0; i < room.size(); ++i) {
      EXPECT_LT(distance(room[i], reported.apply(body("standard", 2).markers[i].position)), 1e-9) << n;
    }
  }
}

TEST_F(Transform, ThereAndBackManyTimesLeavesTheBodyAsItWas) {
  const std::vector<korvex2::BodyMarker> before = body("standard", 2).markers;
  // A turn by 0.6/0.8 has an exact inverse in eight decimals; so what is left is the drift of the backend alone.
  for (int n = 0; n < 200; ++n) {
    ASSERT_EQ("korvex2 ok", ask("korvex2 body transform standard b02 1.5 -2.25 3 0.6 0.8 0 -0.8 0.6 0 0 0 1"));
    // inverse: R^T and -R^T t = -(0.6*1.5 - 0.8*2.25, -0.8*1.5 - 0.6*2.25, 3) = (0.9, 2.55, -3)
    ASSERT_EQ("korvex2 ok", ask("korvex2 body transform standard b02 0.9 2.55 -3 0.6 -0.8 0 0.8 0.6 0 0 0 1"));
    if (n % 50 == 0) {
      open();
    }
  }
  for (std::size_t i = 0; i < before.size(); ++i) {
    EXPECT_LT(distance(before[i].position, body("standard", 2).markers[i].position), 1e-9);
  }
}

TEST_F(Transform, WhatIsNoRotationIsRefusedAndChangesNothing) {
  const auto files = korvex2_test::allFiles(folder());
  const std::string before = dump();
  for (const char* rotation : {
           "2 0 0 0 2 0 0 0 2",              // stretches
           "-1 0 0 0 1 0 0 0 1",             // mirrors
           "1 0 0 0 1 0 0 0 -1",             // mirrors
           "0 0 0 0 0 0 0 0 0",              // flattens
           "1 0 0 1 0 0 0 0 1",              // two columns alike
           "1 0 0 0.001 1 0 0 0 1",          // shears
           "1.0001 0 0 0 1 0 0 0 1",         // stretches a little
           "1e200 0 0 0 1e200 0 0 0 1e200",  // overflows
           "1e308 1e308 1e308 1e308 1e308 1e308 1e308 1e308 1e308",
       }) {
    EXPECT_EQ(4, errorOf(std::string("korvex2 body transform standard b01 1 2 3 ") + rotation)) << rotation;
  }
  EXPECT_EQ("korvex2 err 4 \"the nine elements are no rotation\"",
            ask("korvex2 body transform standard b01 0 0 0 2 0 0 0 2 0 0 0 2"));
  EXPECT_EQ(before, dump());
  EXPECT_EQ(files, korvex2_test::allFiles(folder()));
}

TEST_F(Transform, RoundingOfTheSenderIsAccepted) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> angle(-180, 180);
  for (int n = 0; n < 100; ++n) {
    const auto rows = rotationRows(angle(random), angle(random), angle(random));
    EXPECT_EQ("korvex2 ok", ask(command("standard b03", {{0, 0, 0}}, rows)));
  }
  // Six decimals, as a person might type them.
  EXPECT_EQ("korvex2 ok",
            ask("korvex2 body transform standard b03 0 0 0 0.707107 0.707107 0 -0.707107 0.707107 0 0 0 1"));
}

TEST_F(Transform, ManySlightStretchesCannotReshapeTheBody) {
  const double length = distance(body("standard", 2).markers[0].position, body("standard", 2).markers[3].position);
  int refused = 0;
  for (int n = 0; n < 500; ++n) {
    refused += ask("korvex2 body transform standard b02 0 0 0 1.000004 0 0 0 1.000004 0 0 0 1.000004") != "korvex2 ok";
  }
  EXPECT_GT(refused, 0);
  const double now = distance(body("standard", 2).markers[0].position, body("standard", 2).markers[3].position);
  EXPECT_LT(now / length, 1.0006);
  open();
  EXPECT_EQ("", problems());
}

TEST_F(Transform, NumbersThatAreNoneAreRefused) {
  const std::string before = dump();
  for (const char* number : {"nan", "-nan", "inf", "-inf", "1e400", "-1e400", "1e-400", "0x10", "1,5", "1.5x", "--1",
                             "+-1", "1e", "", ".", "1e10"}) {
    const std::string field = *number == '\0' ? "\"\"" : number;
    EXPECT_EQ(4, errorOf("korvex2 body transform standard b01 " + field + " 2 3 1 0 0 0 1 0 0 0 1")) << number;
    EXPECT_EQ(4, errorOf("korvex2 body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 " + field)) << number;
  }
  EXPECT_EQ(before, dump());
  EXPECT_EQ("korvex2 ok", ask("korvex2 body transform standard b01 +1 -2e0 .5 1. 0 0 0 1 0 0 0 1"));
  EXPECT_NEAR(-16.4095 + 1, body("standard", 1).markers[0].position[0], 1e-12);
}

TEST_F(Transform, MarkersCannotBeSentOutOfRange) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 body transform standard b01 9e8 0 0 1 0 0 0 1 0 0 0 1"));
  const std::string before = dump();
  EXPECT_EQ(4, errorOf("korvex2 body transform standard b01 9e8 0 0 1 0 0 0 1 0 0 0 1"));
  EXPECT_EQ(before, dump());
}

TEST_F(Transform, FieldsTooFewOrTooManyAreRefused) {
  EXPECT_EQ("korvex2 err 3 \"there are too few fields\"", ask("korvex2 body transform standard b01"));
  EXPECT_EQ(3, errorOf("korvex2 body transform standard b01 1 2 3 1 0 0 0 1 0 0 0"));
  EXPECT_EQ("korvex2 err 3 \"there are too many fields\"",
            ask("korvex2 body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 1 0"));
}

TEST_F(Transform, BodyThatIsNotCalibratedOrDoesNotExistIsRefused) {
  const std::string rest = " 1 2 3 1 0 0 0 1 0 0 0 1";
  EXPECT_EQ("korvex2 err 8 \"the body is not calibrated\"", ask("korvex2 body transform standard b06" + rest));
  EXPECT_EQ("korvex2 err 5 \"there is no body b08\"", ask("korvex2 body transform standard b08" + rest));
  EXPECT_EQ("korvex2 err 5 \"there is no body type foot\"", ask("korvex2 body transform foot b01" + rest));
  EXPECT_EQ(5, errorOf("korvex2 body transform standard b00" + rest));
  EXPECT_EQ(4, errorOf("korvex2 body transform standard 01" + rest));
  EXPECT_EQ(4, errorOf("korvex2 body transform standard b-1" + rest));
  EXPECT_EQ(4, errorOf("korvex2 body transform standard b99999999999" + rest));
}

TEST(RigidTransformArithmetic, InverseUndoesAndCompositionAppliesTheSecondLast) {
  RigidTransform quarterTurn;  // about z: x -> y
  quarterTurn.rotation = {{0, 1, 0, -1, 0, 0, 0, 0, 1}};
  RigidTransform shift;
  shift.position = {{5, 0, 0}};
  EXPECT_EQ((Vector3{{0, 6, 0}}), RigidTransform::compose(quarterTurn, shift).apply({{1, 0, 0}}));
  EXPECT_EQ((Vector3{{5, 1, 0}}), RigidTransform::compose(shift, quarterTurn).apply({{1, 0, 0}}));
  RigidTransform skew;  // no rotation at all: the inverse is the true one
  skew.rotation = {{2, 0, 1, 0, 3, 0, 0, 1, 4}};
  skew.position = {{7, 8, 9}};
  const Vector3 back = skew.inverse().apply(skew.apply({{1, -2, 3}}));
  EXPECT_NEAR(1, back[0], 1e-14);
  EXPECT_NEAR(-2, back[1], 1e-14);
  EXPECT_NEAR(3, back[2], 1e-14);
  EXPECT_DOUBLE_EQ(24, skew.determinant());
}

TEST(RigidTransformArithmetic, NothingThatIsNotFiniteIsARotation) {
  for (const double wrong : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    for (std::size_t element = 0; element < 9; ++element) {
      RigidTransform transform;
      transform.rotation[element] = wrong;
      EXPECT_FALSE(transform.isRotation(1e9));
    }
    RigidTransform transform;
    transform.position[1] = wrong;
    EXPECT_FALSE(transform.isRotation(1e9));
  }
}

}  // namespace
