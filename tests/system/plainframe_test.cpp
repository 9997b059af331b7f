// The demonstration's own arithmetic, against numbers worked out by hand: it is what the backend is compared with.
#include "demo/plainframe.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using korvex2::PlainFrame;
using korvex2::Point;

void expectNear(const Point& a, const Point& b) {
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(a[i], b[i], 1e-9) << "component " << i;
  }
}

TEST(PlainFrame, BeginsAsTheFilesOwn) { expectNear(PlainFrame().coordinatesOf({{1, 2, 3}}), {{1, 2, 3}}); }

TEST(PlainFrame, AMoveOfTheFrameLowersTheCoordinates) {
  PlainFrame frame;
  frame.move(1, 2, 3);
  expectNear(frame.coordinatesOf({{10, 10, 10}}), {{9, 8, 7}});
}

TEST(PlainFrame, AQuarterTurnAboutZMakesTheOldYTheNewX) {
  PlainFrame frame;
  frame.turn(0, 0, 90);
  expectNear(frame.coordinatesOf({{0, 5, 0}}), {{5, 0, 0}});
  expectNear(frame.coordinatesOf({{5, 0, 0}}), {{0, -5, 0}});
}

TEST(PlainFrame, AQuarterTurnAboutXMakesTheOldZTheNewY) {
  PlainFrame frame;
  frame.turn(90, 0, 0);
  expectNear(frame.coordinatesOf({{0, 0, 5}}), {{0, 5, 0}});
}

TEST(PlainFrame, AQuarterTurnAboutYMakesTheOldXTheNewZ) {
  PlainFrame frame;
  frame.turn(0, 90, 0);
  expectNear(frame.coordinatesOf({{5, 0, 0}}), {{0, 0, 5}});
}

TEST(PlainFrame, AMoveAfterATurnIsAlongTheTurnedAxes) {
  PlainFrame frame;
  frame.turn(0, 0, 90);
  frame.move(3, 0, 0);
  expectNear(frame.coordinatesOf({{0, 3, 0}}), {{0, 0, 0}});
}

TEST(PlainFrame, LaysAnAxisAndKeepsTheOtherAsNearAsItCan) {
  PlainFrame frame;
  frame.layAxis(0, 1, {{0, 0, 0}}, {{3, 4, 0}});
  expectNear(frame.coordinatesOf({{3, 4, 0}}), {{5, 0, 0}});
  expectNear(frame.coordinatesOf({{0, 0, 1}}), {{0, 0, 1}});
  PlainFrame reversed;
  reversed.layAxis(1, 0, {{0, 0, 0}}, {{0, 0, 2}});
  expectNear(reversed.coordinatesOf({{0, 0, 2}}), {{0, 2, 0}});
  expectNear(reversed.coordinatesOf({{1, 0, 0}}), {{1, 0, 0}});
  expectNear(reversed.coordinatesOf({{0, 1, 0}}), {{0, 0, -1}});
}

TEST(PlainFrame, FollowsTheBodyFromTheNearEndOfItsLongestDistance) {
  PlainFrame frame;
  frame.followBody({{{0, 0, 0}}, {{100, 0, 0}}, {{0, 10, 0}}});  // longest: 2 to 3; nearest to an end of it: 1 at 3
  expectNear(frame.coordinatesOf({{0, 10, 0}}), {{0, 0, 0}});
  expectNear(frame.coordinatesOf({{100, 0, 0}}), {{std::sqrt(10100.0), 0, 0}});
  EXPECT_GT(frame.coordinatesOf({{0, 0, 0}})[1], 0.0);
}

TEST(PlainFrame, ProjectsTheCentreIntoTheMiddleAndUpUpwards) {
  const QPointF middle = korvex2::projected({{1, 2, 3}}, {{1, 2, 3}}, 300, {400, 200});
  EXPECT_NEAR(middle.x(), 200, 1e-9);
  EXPECT_NEAR(middle.y(), 100, 1e-9);
  const double edge = 300 * std::tan(22.5 * M_PI / 180);  // half the height of what is seen at 300 mm
  const QPointF top = korvex2::projected({{0, edge, 0}}, {{0, 0, 0}}, 300, {400, 200});
  EXPECT_NEAR(top.y(), 0, 1e-9);
}

}  // namespace
