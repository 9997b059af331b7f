// Operations that redefine the body's coordinate system, against geometry of the tests' own.
#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "canvastest.h"

using namespace canvastest;

namespace {

using Log = std::vector<std::string>;
const Log oneStep = {"bodyModified true", "canUndo true", "canRedo false", "storeBodyRequest"};
const Log unchangedStep = {"storeBodyRequest"};

class CanvasOperations : public testing::Test {
 protected:
  void start(const std::vector<Point>& positions) {
    body = positions;
    load(canvas, body);
    log.take();
    canvas.takeRedraws();
  }
  /// Commits a coordinate system of this pose in loaded coordinates.
  void commit(const Rotation& turn, const Point& origin) {
    canvas.setBodyOrientation(matrixOf(turn));
    canvas.setBodyPosition(vectorOf(origin));
    canvas.saveCurrentBody();
    expectPose(canvas.getBodyTransformation(), turn, origin);
    log.take();
    canvas.takeRedraws();
  }
  void select(std::size_t first, std::size_t second) {
    canvas.checkSelection(nullptr);
    canvas.checkSelection(marker(canvas, first));
    canvas.checkSelection(marker(canvas, second));
    log.take();
  }
  void expectBody(const Rotation& turn, const Point& origin) {
    expectPose(canvas.getBodyTransformation(), turn, origin);
    expectPose(canvas.give_body_transformation(), transposed(turn), transposed(turn) * (origin * -1.0));
    std::vector<Point> seen;
    for (const Point& point : body) {
      seen.push_back(transposed(turn) * (point - origin));
    }
    expectSamePoints(canvas.give_data(), seen);
    expectSamePoints(canvas.give_immediate_data(), seen);
  }
  unsigned int undoSteps() const { return canvas.getBody().getUndoCount(); }

  CountingCanvas canvas;
  SignalLog log{canvas};
  std::vector<Point> body;
};

const std::vector<std::pair<abcAxis, abcAxis>> allPairs = {{ABC_AXIS_X, ABC_AXIS_Y}, {ABC_AXIS_X, ABC_AXIS_Z},
                                                           {ABC_AXIS_Y, ABC_AXIS_X}, {ABC_AXIS_Y, ABC_AXIS_Z},
                                                           {ABC_AXIS_Z, ABC_AXIS_X}, {ABC_AXIS_Z, ABC_AXIS_Y}};

const Rotation tilted = turnX(20) * turnY(-35) * turnZ(50);

}  // namespace

// --- Origin ---

TEST_F(CanvasOperations, TheOriginMovesToTheFirstSelectedMarkerInOneStep) {
  start(tetrahedron());
  select(1, 2);
  canvas.setOriginToMarker();
  EXPECT_EQ(log.take(), oneStep);
  EXPECT_EQ(undoSteps(), 1u);
  expectBody(noTurn, body[1]);
}

TEST_F(CanvasOperations, TheOriginMovesToAMarkerInATurnedSystemToo) {
  start(tetrahedron());
  commit(tilted, {5, -6, 7});
  canvas.checkSelection(marker(canvas, 3));
  log.take();
  canvas.setOriginToMarker();
  EXPECT_EQ(log.take(), oneStep);
  expectBody(tilted, body[3]);
}

TEST_F(CanvasOperations, WithoutASelectedMarkerTheOriginStays) {
  start(tetrahedron());
  canvas.setOriginToMarker();
  select(0, 1);
  canvas.introduceLine();
  canvas.checkSelection(line(canvas, 0));
  log.take();
  canvas.setOriginToMarker();
  EXPECT_EQ(log.take(), Log{});
  expectBody(noTurn, {0, 0, 0});
}

TEST_F(CanvasOperations, SettingTheOriginTwiceIsOneStep) {
  start(tetrahedron());
  canvas.checkSelection(marker(canvas, 1));
  canvas.setOriginToMarker();
  log.take();
  canvas.setOriginToMarker();
  EXPECT_EQ(log.take(), unchangedStep);
  EXPECT_EQ(undoSteps(), 1u);
}

TEST_F(CanvasOperations, TheOriginMovesToTheCentreOfGravityAndTheAxesStay) {
  start(tetrahedron());
  commit(tilted, {5, -6, 7});
  canvas.set_origin_to_cog();
  EXPECT_EQ(log.take(), oneStep);
  EXPECT_EQ(undoSteps(), 2u);
  expectBody(tilted, mean(body));
}

TEST_F(CanvasOperations, TheCentreOfGravityOfNoBodyIsNoOrigin) {
  canvas.set_origin_to_cog();
  canvas.set_due_to_room_cog();
  EXPECT_EQ(log.take(), Log{});
  EXPECT_EQ(undoSteps(), 0u);
}

TEST_F(CanvasOperations, PositionsThatAreNoNumbersNeverReachTheCoordinateSystem) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  start({{0, 0, 0}, {nan, 1, 2}, {3, 4, 5}});
  canvas.set_origin_to_cog();
  canvas.set_due_to_room_cog();
  EXPECT_EQ(log.take(), Log{});
  canvas.checkSelection(marker(canvas, 1));
  canvas.setOriginToMarker();
  select(0, 1);
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  canvas.set_due_to_body();
  canvas.set_due_to_room_marker();
  canvas.setBodyPosition(bsVector(nan, 0, 0));
  canvas.setBodyOrientation(bsMatrix(nan));
  canvas.rotateBody(bsMatrix(nan));
  canvas.saveCurrentBody();
  expectPose(canvas.getBodyTransformation(), noTurn, {0, 0, 0});
}

// --- Axis through two markers ---

TEST_F(CanvasOperations, AnAxisRunsFromTheFirstSelectedMarkerToTheSecondForEveryPairOfAxes) {
  for (const auto& [toSet, toKeep] : allPairs) {
    SCOPED_TRACE("set " + std::to_string(toSet) + ", keep " + std::to_string(toKeep));
    start(tetrahedron());
    const Point origin = {5, -6, 7};
    commit(tilted, origin);
    select(2, 1);
    canvas.setAxisToMarkers(toSet, toKeep);
    EXPECT_EQ(log.take(), oneStep);
    EXPECT_EQ(undoSteps(), 2u);
    const Rotation found = rotationOf(canvas.getBodyTransformation());
    const Point along = unit(body[1] - body[2]);
    const Point kept = column(tilted, toKeep);
    expectNear(column(found, toSet), along);
    expectNear(column(found, toKeep), unit(kept - along * dot(kept, along)));
    expectNear(cross(column(found, 0), column(found, 1)), column(found, 2));
    expectBody(found, origin);
  }
}

TEST_F(CanvasOperations, AnAxisStaysRigidForRandomBodies) {
  std::mt19937 random(43);
  for (int round = 0; round < 60; ++round) {
    start({randomPoint(random, 100), randomPoint(random, 100), randomPoint(random, 100)});
    const Rotation committed = randomRotation(random);
    commit(committed, randomPoint(random, 50));
    const auto& [toSet, toKeep] = allPairs[static_cast<std::size_t>(round) % allPairs.size()];
    select(0, 1);
    canvas.setAxisToMarkers(toSet, toKeep);
    const Rotation found = rotationOf(canvas.getBodyTransformation());
    expectNear(transposed(found) * found, noTurn);
    expectNear(cross(column(found, 0), column(found, 1)), column(found, 2));
    expectNear(column(found, toSet), unit(body[1] - body[0]));
    EXPECT_NEAR(dot(column(found, 3 - toSet - toKeep), column(committed, toKeep)), 0.0, rounding);
    EXPECT_GT(dot(column(found, toKeep), column(committed, toKeep)), 0.0);
  }
}

TEST_F(CanvasOperations, SwappingTheSelectedMarkersTurnsTheAxisRound) {
  start(tetrahedron());
  select(0, 1);
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  const Point there = column(rotationOf(canvas.getBodyTransformation()), 0);
  canvas.checkSelection(marker(canvas, 0));
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  expectNear(column(rotationOf(canvas.getBodyTransformation()), 0), there * -1.0);
  expectNear(there, unit(body[1] - body[0]));
}

TEST_F(CanvasOperations, AnAxisCanTurnTheSystemByHalfATurn) {
  start({{0, 0, 0}, {-50, 0, 0}, {0, 30, 0}});
  select(0, 1);
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  expectBody(turnY(180), {0, 0, 0});
}

TEST_F(CanvasOperations, AnAxisNeedsTwoSelectedMarkers) {
  start(tetrahedron());
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  canvas.checkSelection(marker(canvas, 0));
  log.take();
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  EXPECT_EQ(log.take(), Log{});
  EXPECT_EQ(undoSteps(), 0u);
}

TEST_F(CanvasOperations, AnAxisNeedsMarkersThatGiveADirectionOffTheKeptAxis) {
  start({{0, 0, 0}, {0, 40, 0}, {0, 40, 0}, {30, 0, 0}});
  select(1, 2);
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  select(0, 1);
  canvas.setAxisToMarkers(ABC_AXIS_X, ABC_AXIS_Y);
  select(1, 0);
  canvas.setAxisToMarkers(ABC_AXIS_Z, ABC_AXIS_Y);
  EXPECT_EQ(log.take(), Log{});
  expectBody(noTurn, {0, 0, 0});
  canvas.setAxisToMarkers(ABC_AXIS_Y, ABC_AXIS_X);
  EXPECT_EQ(log.take(), oneStep);
  expectBody(turnX(180) * turnY(0), {0, 0, 0});
}

TEST(CanvasOperationsDeathTest, AnAxisSetAndKeptAtOnceAborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        GLCanvas canvas;
        canvas.setAxisToMarkers(ABC_AXIS_Y, ABC_AXIS_Y);
      },
      "axisToSet != axisToPreserve");
  EXPECT_DEATH(
      {
        GLCanvas canvas;
        bsVector v(1, 2, 3);
        bsVector w(3, 2, 1);
        bsVector u;
        canvas.computeFrame(v, w, u, ABC_AXIS_Z, ABC_AXIS_Z);
      },
      "axisToSet != axisToPreserve");
}

// --- Room ---

TEST_F(CanvasOperations, AxesBecomeParallelToTheRoomOnline) {
  start(tetrahedron());
  commit(turnZ(40), {5, -6, 7});
  canvas.setOnline(true);
  canvas.setTrackedBodyOrientation(matrixOf(tilted));
  log.take();
  canvas.setParallelAxes();
  EXPECT_EQ(log.take(), oneStep);
  expectBody(transposed(tilted), {5, -6, 7});
}

TEST_F(CanvasOperations, OnlyTheRotationOfATrackedPoseCounts) {
  start(tetrahedron());
  canvas.setOnline(true);
  canvas.setTrackedBodyOrientation(poseOf(tilted, {100, 200, 300}));
  canvas.setParallelAxes();
  expectBody(transposed(tilted), {0, 0, 0});
}

TEST_F(CanvasOperations, AxesStayWhereParallelAxesAreNotPossible) {
  start(tetrahedron());
  canvas.setTrackedBodyOrientation(matrixOf(tilted));
  EXPECT_FALSE(canvas.checkSetParallelAxes());
  canvas.setParallelAxes();
  canvas.setOnline(true);
  EXPECT_TRUE(canvas.checkSetParallelAxes());
  canvas.setModificationMode(ABC_MODIFY_SUSPENDED);
  EXPECT_FALSE(canvas.checkSetParallelAxes());
  log.take();
  canvas.setParallelAxes();
  canvas.setModificationMode(ABC_MODIFY_BODY);
  canvas.unloadBody();
  EXPECT_FALSE(canvas.checkSetParallelAxes());
  canvas.setParallelAxes();
  for (const std::string& entry : log.take()) {
    EXPECT_NE(entry, "storeBodyRequest");
  }
  expectPose(canvas.getBodyTransformation(), noTurn, {0, 0, 0});
}

TEST_F(CanvasOperations, DueToRoomTakesTheRoomsAxesAndTheCentreOfGravity) {
  start(tetrahedron());
  commit(turnZ(40), {5, -6, 7});
  canvas.setTrackedBodyOrientation(matrixOf(tilted));
  canvas.set_due_to_room_cog();
  EXPECT_EQ(log.take(), oneStep);
  EXPECT_EQ(undoSteps(), 2u);
  expectBody(transposed(tilted), mean(body));
}

TEST_F(CanvasOperations, DueToRoomTakesTheRoomsAxesAndMarkerOne) {
  start({{0, 0, 0}, {20, 40, 10}, {90, 20, -30}, {100, 0, 0}});
  commit(turnZ(40), {5, -6, 7});
  canvas.setTrackedBodyOrientation(matrixOf(tilted));
  canvas.set_due_to_room_marker();
  EXPECT_EQ(log.take(), oneStep);
  EXPECT_EQ(undoSteps(), 2u);
  expectBody(transposed(tilted), body[3]);
}

// --- Three markers ---

TEST_F(CanvasOperations, DueToBodyTakesTheFrameOfMarkersOneTwoThree) {
  start({{0, 0, 0}, {20, 40, 10}, {90, 20, -30}, {100, 0, 0}});
  commit(tilted, {5, -6, 7});
  // Longest 0-3; of the distances at its ends 2-3 is the shortest: markers 3, 0, 2.
  const Point x = unit(body[0] - body[3]);
  const Point side = body[2] - body[3];
  const Point y = unit(side - x * dot(side, x));
  canvas.set_due_to_body();
  EXPECT_EQ(log.take(), oneStep);
  EXPECT_EQ(undoSteps(), 2u);
  expectBody(fromColumns(x, y, cross(x, y)), body[3]);
}

TEST_F(CanvasOperations, DueToBodyOfARightAngleBeginsAtTheEndOfTheHypotenuse) {
  // The hypotenuse 1-2 is the longest distance, 0-2 the shortest next to it.
  start({{0, 0, 0}, {100, 0, 0}, {0, 10, 0}});
  canvas.set_due_to_body();
  const Point x = unit(Point{100, -10, 0});
  expectBody(fromColumns(x, cross(Point{0, 0, -1}, x), {0, 0, -1}), {0, 10, 0});
  int m1 = -1;
  int m2 = -1;
  int m3 = -1;
  EXPECT_TRUE(canvas.compute_marker_1_2_3(m1, m2, m3));
  EXPECT_EQ(m1, 2);
  EXPECT_EQ(m2, 1);
  EXPECT_EQ(m3, 0);
}

TEST_F(CanvasOperations, AnEquilateralBodyTakesItsFirstThreeMarkers) {
  start({{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}});
  const Point x = unit(body[1] - body[0]);
  const Point side = body[2] - body[0];
  const Point y = unit(side - x * dot(side, x));
  canvas.set_due_to_body();
  EXPECT_EQ(log.take(), oneStep);
  expectBody(fromColumns(x, y, cross(x, y)), body[0]);
}

TEST_F(CanvasOperations, MarkersOnOneLineDefineNoFrame) {
  start({{0, 0, 0}, {10, 10, 10}, {40, 40, 40}});
  canvas.set_due_to_body();
  EXPECT_EQ(log.take(), Log{});
  EXPECT_EQ(undoSteps(), 0u);
  expectBody(noTurn, {0, 0, 0});
  start({{1, 2, 3}, {1, 2, 3}, {1, 2, 3}});
  canvas.set_due_to_body();
  EXPECT_EQ(log.take(), Log{});
}

TEST_F(CanvasOperations, BodiesWithTooFewOrTooManyMarkersHaveNoFrameOfTheirOwn) {
  std::mt19937 random(44);
  std::vector<Point> many;
  for (int i = 0; i < 31; ++i) {
    many.push_back(randomPoint(random, 100));
  }
  for (const std::vector<Point>& points : {std::vector<Point>{}, {{0, 0, 0}, {50, 0, 0}}, many}) {
    start(points);
    canvas.set_due_to_body();
    canvas.set_due_to_room_marker();
    EXPECT_EQ(log.take(), Log{});
    EXPECT_EQ(undoSteps(), 0u);
    int m1 = 5;
    int m2 = 6;
    int m3 = 7;
    EXPECT_FALSE(canvas.compute_marker_1_2_3(m1, m2, m3));
    EXPECT_EQ(m1, 5);
    EXPECT_EQ(m2, 6);
    EXPECT_EQ(m3, 7);
  }
  many.resize(30);
  start(many);
  canvas.set_due_to_body();
  EXPECT_EQ(log.take(), oneStep);
}

TEST_F(CanvasOperations, TheFrameOperationsAreTheCanvassToo) {
  bsVector set(0, 3, 0);
  bsVector keep(0, 0, 2);
  bsVector third;
  expectPose(canvas.computeFrame(set, keep, third, ABC_AXIS_X, ABC_AXIS_Y),
             fromColumns({0, 1, 0}, {0, 0, 1}, {1, 0, 0}), {0, 0, 0});
  expectPose(canvas.compute_orientation(bsVector(0, 0, 0), bsVector(0, 9, 0), bsVector(0, 0, 4)),
             fromColumns({0, 1, 0}, {0, 0, 1}, {1, 0, 0}), {0, 0, 0});
}
