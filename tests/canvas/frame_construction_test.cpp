// Frames constructed from marker positions: axis through two markers, frame of three, choice of markers 1, 2, 3.
#include "frameconstruction.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "canvastest.h"

using namespace canvastest;
using korvex2::compute_marker_1_2_3;
using korvex2::compute_orientation;
using korvex2::computeFrame;

namespace {

const std::vector<std::pair<abcAxis, abcAxis>> allPairs = {{ABC_AXIS_X, ABC_AXIS_Y}, {ABC_AXIS_X, ABC_AXIS_Z},
                                                           {ABC_AXIS_Y, ABC_AXIS_X}, {ABC_AXIS_Y, ABC_AXIS_Z},
                                                           {ABC_AXIS_Z, ABC_AXIS_X}, {ABC_AXIS_Z, ABC_AXIS_Y}};

struct Chosen {
  int m1 = -7;
  int m2 = -8;
  int m3 = -9;
  bool found = false;
};

Chosen choose(const std::vector<Point>& points) {
  std::vector<bsVector> positions;
  for (const Point& point : points) {
    positions.push_back(vectorOf(point));
  }
  Chosen chosen;
  chosen.found = compute_marker_1_2_3(positions, chosen.m1, chosen.m2, chosen.m3);
  return chosen;
}

void expectChosen(const std::vector<Point>& points, int m1, int m2, int m3) {
  const Chosen chosen = choose(points);
  EXPECT_TRUE(chosen.found);
  EXPECT_EQ(chosen.m1, m1);
  EXPECT_EQ(chosen.m2, m2);
  EXPECT_EQ(chosen.m3, m3);
}

void expectLeftAlone(const std::vector<Point>& points) {
  const Chosen chosen = choose(points);
  EXPECT_FALSE(chosen.found);
  EXPECT_EQ(chosen.m1, -7);
  EXPECT_EQ(chosen.m2, -8);
  EXPECT_EQ(chosen.m3, -9);
}

double determinant(const Rotation& r) { return dot(column(r, 0), cross(column(r, 1), column(r, 2))); }

}  // namespace

TEST(AxisFrame, PutsTheSetAxisOnTheDirectionAndKeepsTheOtherInItsPlane) {
  std::mt19937 random(20);
  for (const auto& [a, b] : allPairs) {
    for (int round = 0; round < 50; ++round) {
      const Point direction = randomPoint(random, 200);
      const Point kept = randomPoint(random, 3);
      bsVector set = vectorOf(direction);
      bsVector keep = vectorOf(kept);
      bsVector third(4, 5, 6);
      const bsMatrix frame = computeFrame(set, keep, third, a, b);
      // Gram-Schmidt: the kept axis less its part along the set one.
      const Point x = unit(direction);
      const Point y = unit(kept - x * dot(kept, x));
      const bool cyclic = (a + 1) % 3 == b;
      const Point z = cyclic ? cross(x, y) : cross(y, x);
      expectNear(column(rotationOf(frame), a), x);
      expectNear(column(rotationOf(frame), b), y);
      expectNear(column(rotationOf(frame), 3 - a - b), z);
      EXPECT_NEAR(determinant(rotationOf(frame)), 1.0, rounding);
      expectPose(frame, rotationOf(frame), {0, 0, 0});
    }
  }
}

TEST(AxisFrame, OverwritesTheThreeVectorsWithTheAxes) {
  for (const auto& [a, b] : allPairs) {
    bsVector set(10, 2, -3);
    bsVector keep(0, 1, 5);
    bsVector third(99, 99, 99);
    const Rotation frame = rotationOf(computeFrame(set, keep, third, a, b));
    expectNear(pointOf(set), column(frame, a));
    expectNear(pointOf(keep), column(frame, b));
    expectNear(pointOf(third), column(frame, 3 - a - b));
  }
}

TEST(AxisFrame, OfTheReversedPairTakesKeepCrossSet) {
  bsVector set(0, 10, 0);
  bsVector keep(1, 1, 0);
  bsVector third;
  const Rotation frame = rotationOf(computeFrame(set, keep, third, ABC_AXIS_Y, ABC_AXIS_X));
  expectNear(column(frame, 2), {0, 0, 1});
  expectNear(column(frame, 0), {1, 0, 0});
  expectNear(column(frame, 1), {0, 1, 0});
}

TEST(AxisFrameDeathTest, OfEqualAxesAborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  bsVector set(1, 0, 0);
  bsVector keep(0, 1, 0);
  bsVector third;
  for (const abcAxis axis : {ABC_AXIS_X, ABC_AXIS_Y, ABC_AXIS_Z}) {
    EXPECT_DEATH(computeFrame(set, keep, third, axis, axis), "axisToSet != axisToPreserve");
  }
}

TEST(ThreeMarkerFrame, RunsFromTheFirstPointToTheSecondWithZOffThePlane) {
  const Rotation frame =
      rotationOf(compute_orientation(bsVector(10, 20, 30), bsVector(110, 20, 30), bsVector(15, 25, 30)));
  expectNear(frame, noTurn);
  const Rotation flipped =
      rotationOf(compute_orientation(bsVector(10, 20, 30), bsVector(110, 20, 30), bsVector(15, 15, 30)));
  expectNear(flipped, turnX(180));
}

TEST(ThreeMarkerFrame, IsRightHandedForAnyThreePoints) {
  std::mt19937 random(21);
  for (int round = 0; round < 200; ++round) {
    const Point p1 = randomPoint(random, 100);
    const Point p2 = randomPoint(random, 100);
    const Point p3 = randomPoint(random, 100);
    const bsMatrix m = compute_orientation(vectorOf(p1), vectorOf(p2), vectorOf(p3));
    const Point x = unit(p2 - p1);
    const Point side = p3 - p1;
    const Point y = unit(side - x * dot(side, x));
    expectPose(m, fromColumns(x, y, cross(x, y)), {0, 0, 0});
    EXPECT_NEAR(determinant(rotationOf(m)), 1.0, rounding);
  }
}

TEST(MarkerChoice, TakesTheLongestDistanceAndTheShortestNextToIt) {
  // Longest 0-3, shortest at its ends 2-3, so marker 3 carries both.
  expectChosen({{0, 0, 0}, {10, 30, 0}, {90, 20, 0}, {100, 0, 0}}, 3, 0, 2);
}

TEST(MarkerChoice, CoversAllFourWaysOfSharingAMarker) {
  // The longest pair is (A, B), the shortest next to it (D, C), both in ascending order.
  expectChosen({{0, 0, 0}, {100, 0, 0}, {0, 10, 0}}, 2, 1, 0);  // (1,2), (0,2): B = C
  expectChosen({{0, 0, 0}, {0, 90, 0}, {0, 10, 1}}, 0, 1, 2);   // (0,1), (0,2): A = D
  expectChosen({{0, 10, 0}, {0, 0, 0}, {0, 90, 0}}, 1, 2, 0);   // (1,2), (0,1): A = C
  expectChosen({{0, 90, 0}, {0, 0, 0}, {0, 10, 1}}, 1, 0, 2);   // (0,1), (1,2): B = D
}

TEST(MarkerChoice, OfEquallyLongPairsTakesTheFirst) {
  // A 3-4-5 rectangle: both diagonals are 50 exactly; (0,2) comes before (1,3).
  expectChosen({{0, 0, 0}, {30, 0, 0}, {30, 40, 0}, {0, 40, 0}}, 0, 2, 1);
}

TEST(MarkerChoice, OfEquallyShortPairsTakesTheFirst) {
  // Both ends of the longest pair (0,1) have a marker at distance 13 (5-12-13): (0,2) comes before (1,3).
  expectChosen({{0, 0, 0}, {100, 0, 0}, {5, 12, 0}, {95, 12, 0}}, 0, 1, 2);
}

TEST(MarkerChoice, IgnoresShortDistancesAwayFromTheLongestPair) {
  // 2 and 3 are 1 mm apart, but neither is an end of the longest pair.
  expectChosen({{0, 0, 0}, {100, 0, 0}, {40, 20, 0}, {41, 20, 0}}, 0, 1, 2);
}

TEST(MarkerChoice, LeavesTheOutputsOfAnEquilateralBodyAlone) {
  expectLeftAlone({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  expectLeftAlone({{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}});
}

TEST(MarkerChoice, LeavesTheOutputsOfTooFewOrTooManyMarkersAlone) {
  expectLeftAlone({});
  expectLeftAlone({{1, 2, 3}});
  expectLeftAlone({{1, 2, 3}, {4, 5, 6}});
  std::mt19937 random(22);
  std::vector<Point> points;
  for (int i = 0; i < 31; ++i) {
    points.push_back(randomPoint(random, 100));
  }
  expectLeftAlone(points);
  points.resize(1000, {1, 2, 3});
  expectLeftAlone(points);
}

TEST(MarkerChoice, LeavesTheOutputsOfPositionsThatAreNoNumbersAlone) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  expectLeftAlone({{nan, 0, 0}, {nan, 1, 0}, {nan, 0, 1}});
}

TEST(MarkerChoice, FindsForBodiesOfUpToThirtyMarkersWhatExhaustionFinds) {
  std::mt19937 random(23);
  for (int round = 0; round < 300; ++round) {
    const std::size_t count = 3 + static_cast<std::size_t>(round) % 28;
    std::vector<Point> points;
    for (std::size_t i = 0; i < count; ++i) {
      points.push_back(randomPoint(random, 100));
    }
    const Chosen chosen = choose(points);
    ASSERT_TRUE(chosen.found);
    const auto at = [&points](int i) { return points.at(static_cast<std::size_t>(i)); };
    ASSERT_NE(chosen.m3, chosen.m1);
    ASSERT_NE(chosen.m3, chosen.m2);
    const double longest = norm(at(chosen.m2) - at(chosen.m1));
    const double shortest = norm(at(chosen.m3) - at(chosen.m1));
    EXPECT_LT(shortest, longest);
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = i + 1; j < count; ++j) {
        EXPECT_LE(norm(points[j] - points[i]), longest);
      }
      for (const int end : {chosen.m1, chosen.m2}) {
        if (static_cast<int>(i) != chosen.m1 && static_cast<int>(i) != chosen.m2) {
          EXPECT_GE(norm(points[i] - at(end)), shortest);
        }
      }
    }
  }
}

TEST(SpanPlane, WantsTwoDirectionsThatDiffer) {
  EXPECT_TRUE(korvex2::spanPlane(bsVector(1, 0, 0), bsVector(0, 1, 0)));
  EXPECT_TRUE(korvex2::spanPlane(bsVector(500, 0, 0), bsVector(500, 0.001, 0)));
  EXPECT_FALSE(korvex2::spanPlane(bsVector(1, 2, 3), bsVector(2, 4, 6)));
  EXPECT_FALSE(korvex2::spanPlane(bsVector(1, 2, 3), bsVector(-1, -2, -3)));
  EXPECT_FALSE(korvex2::spanPlane(bsVector(0, 0, 0), bsVector(0, 1, 0)));
  EXPECT_FALSE(korvex2::spanPlane(bsVector(1, 0, 0), bsVector(0, 0, 0)));
  EXPECT_FALSE(korvex2::spanPlane(bsVector(500, 0, 0), bsVector(500, 1e-4, 0)));
  EXPECT_FALSE(korvex2::spanPlane(bsVector(1, 0, 0), bsVector(std::numeric_limits<double>::quiet_NaN(), 1, 0)));
}
