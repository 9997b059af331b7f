// Pending changes of the coordinate system, their commit, and undo and redo.
#include <gtest/gtest.h>

#include "canvastest.h"

using namespace canvastest;

namespace {

using Log = std::vector<std::string>;

class CanvasHistory : public testing::Test {
 protected:
  void SetUp() override {
    load(canvas, body);
    log.take();
    canvas.takeRedraws();
  }
  void expectCommitted(const Rotation& turn, const Point& origin) {
    expectPose(canvas.getBodyTransformation(), turn, origin);
  }
  void expectPending(const Rotation& turn, const Point& translation) {
    expectPose(canvas.getBody().getImmediateFrame().toMatrix(), turn, translation);
    // Seen from the pending system: inverse(M) * inverse(T) * p.
    const Rotation committed = rotationOf(canvas.getBodyTransformation());
    const bsVector origin = canvas.getBodyTransformation().getColumn(3);
    std::vector<Point> seen;
    for (const Point& point : body) {
      seen.push_back(transposed(turn) * (transposed(committed) * (point - pointOf(origin)) - translation));
    }
    expectSamePoints(canvas.give_immediate_data(), seen);
  }
  void step(double x) {
    canvas.translateBody(x, 0, 0);
    emit canvas.storeBodyRequest();
  }

  CountingCanvas canvas;
  SignalLog log{canvas};
  std::vector<Point> body = tetrahedron();
};

const Rotation tilted = turnX(20) * turnY(-35) * turnZ(50);

}  // namespace

TEST_F(CanvasHistory, ATypedTranslationIsPending) {
  canvas.translateBody(1, 2, 3);
  EXPECT_EQ(log.take(), Log{"body_change true"});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectCommitted(noTurn, {0, 0, 0});
  expectPending(noTurn, {1, 2, 3});
  expectSamePoints(canvas.give_data(), body);
  canvas.translateBody(10, 0, 0);
  expectPending(noTurn, {10, 0, 0});
  EXPECT_FALSE(canvas.isBodyModified());
}

TEST_F(CanvasHistory, ATypedRotationIsPendingAndReplacesTheOneBefore) {
  canvas.rotateBody(90, 0, 0);
  EXPECT_EQ(log.take(), Log{"body_change true"});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectPending(turnX(90), {0, 0, 0});
  canvas.rotateBody(0, 90, 0);
  expectPending(turnY(90), {0, 0, 0});
  canvas.rotateBody(10, 20, 30);
  expectPending(turnX(10) * turnY(20) * turnZ(30), {0, 0, 0});
  expectCommitted(noTurn, {0, 0, 0});
}

TEST_F(CanvasHistory, ARotationByMatrixIsPendingAndOnlyRedraws) {
  canvas.rotateBody(matrixOf(tilted));
  expectPending(tilted, {0, 0, 0});
  EXPECT_EQ(log.take(), Log{});
  EXPECT_EQ(canvas.takeRedraws(), 1);
}

TEST_F(CanvasHistory, TranslationAndRotationArePendingTogetherAndStoredAsOneStep) {
  canvas.translateBody(1, 2, 3);
  canvas.rotateBody(0, 0, 90);
  expectPending(turnZ(90), {1, 2, 3});
  log.take();
  canvas.takeRedraws();
  emit canvas.storeBodyRequest();
  // The commit comes before whatever else hears the request.
  EXPECT_EQ(log.take(), (Log{"bodyModified true", "canUndo true", "canRedo false", "storeBodyRequest"}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  EXPECT_EQ(canvas.getBody().getUndoCount(), 1u);
  expectCommitted(turnZ(90), {1, 2, 3});
  expectPending(noTurn, {0, 0, 0});
  expectPose(canvas.give_body_transformation(), turnZ(-90), turnZ(-90) * Point{-1, -2, -3});
  EXPECT_TRUE(canvas.isBodyModified());
}

TEST_F(CanvasHistory, ATranslationIsInCommittedBodyCoordinates) {
  canvas.rotateBody(0, 0, 90);
  emit canvas.storeBodyRequest();
  canvas.translateBody(10, 0, 0);
  emit canvas.storeBodyRequest();
  expectCommitted(turnZ(90), {0, 10, 0});
}

TEST_F(CanvasHistory, ARotationTurnsAboutTheBodysOwnAxes) {
  canvas.rotateBody(0, 0, 90);
  emit canvas.storeBodyRequest();
  canvas.rotateBody(90, 0, 0);
  emit canvas.storeBodyRequest();
  expectCommitted(turnZ(90) * turnX(90), {0, 0, 0});
}

TEST_F(CanvasHistory, TwoRotationsCanMakeAHalfTurn) {
  canvas.rotateBody(14, 0, 0);
  emit canvas.storeBodyRequest();
  canvas.rotateBody(166, 0, 0);
  emit canvas.storeBodyRequest();
  expectCommitted(turnX(180), {0, 0, 0});
  canvas.set_origin_to_cog();
  canvas.rotateBody(0, 180, 0);
  emit canvas.storeBodyRequest();
  expectCommitted(turnX(180) * turnY(180), mean(body));
}

TEST_F(CanvasHistory, SettingAPositionLeavesThePendingRotationAndTheOtherWayRound) {
  canvas.setBodyOrientation(matrixOf(tilted));
  canvas.setBodyPosition(bsVector(5, 6, 7));
  canvas.saveCurrentBody();
  canvas.rotateBody(0, 0, 30);
  log.take();
  canvas.takeRedraws();
  canvas.setBodyPosition(bsVector(40, 50, 60));
  expectPending(turnZ(30), transposed(tilted) * (Point{40, 50, 60} - Point{5, 6, 7}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  canvas.setBodyOrientation(matrixOf(turnX(15)));
  expectPending(transposed(tilted) * turnX(15), transposed(tilted) * (Point{40, 50, 60} - Point{5, 6, 7}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  EXPECT_EQ(log.take(), Log{});
  canvas.saveCurrentBody();
  expectCommitted(turnX(15), {40, 50, 60});
}

TEST_F(CanvasHistory, StoringNothingIsNoStepButRedraws) {
  emit canvas.storeBodyRequest();
  EXPECT_EQ(log.take(), Log{"storeBodyRequest"});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  canvas.saveCurrentBody();
  EXPECT_EQ(log.take(), Log{});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  EXPECT_EQ(canvas.getBody().getUndoCount(), 0u);
}

TEST_F(CanvasHistory, UndoAndRedoWalkThroughTheSteps) {
  step(10);
  step(5);
  log.take();
  canvas.takeRedraws();
  canvas.undo();
  EXPECT_EQ(log.take(), (Log{"bodyModified true", "canUndo true", "canRedo true", "body_change true"}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectCommitted(noTurn, {10, 0, 0});
  canvas.undo();
  EXPECT_EQ(log.take(), (Log{"bodyModified true", "canUndo false", "canRedo true", "body_change false"}));
  expectCommitted(noTurn, {0, 0, 0});
  canvas.takeRedraws();
  canvas.redo();
  EXPECT_EQ(log.take(), (Log{"bodyModified true", "canUndo true", "canRedo true", "body_change true"}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectCommitted(noTurn, {10, 0, 0});
  canvas.redo();
  EXPECT_EQ(log.take(), (Log{"bodyModified true", "canUndo true", "canRedo false", "body_change true"}));
  expectCommitted(noTurn, {15, 0, 0});
}

TEST_F(CanvasHistory, UndoAndRedoOfNothingStillTellTheState) {
  canvas.undo();
  EXPECT_EQ(log.take(), (Log{"canUndo false", "canRedo false", "body_change false"}));
  canvas.redo();
  EXPECT_EQ(log.take(), (Log{"canUndo false", "canRedo false", "body_change true"}));
  expectCommitted(noTurn, {0, 0, 0});
  EXPECT_FALSE(canvas.isBodyModified());
}

TEST_F(CanvasHistory, UndoAndRedoLeaveThePendingChange) {
  step(10);
  canvas.rotateBody(0, 0, 30);
  canvas.undo();
  expectPending(turnZ(30), {0, 0, 0});
  canvas.redo();
  expectPending(turnZ(30), {0, 0, 0});
}

TEST_F(CanvasHistory, AStepAfterUndoForgetsWhatWasUndone) {
  step(10);
  canvas.undo();
  log.take();
  step(3);
  EXPECT_EQ(log.take(),
            (Log{"body_change true", "bodyModified true", "canUndo true", "canRedo false", "storeBodyRequest"}));
}

TEST_F(CanvasHistory, OtherModificationModesDoNotTouchTheBody) {
  step(10);
  canvas.undo();
  canvas.setModificationMode(ABC_MODIFY_SUSPENDED);
  log.take();
  canvas.takeRedraws();
  canvas.redo();
  EXPECT_EQ(log.take(), Log{"body_change true"});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectCommitted(noTurn, {0, 0, 0});
  canvas.undo();
  EXPECT_EQ(log.take(), Log{"body_change false"});
  canvas.setModificationMode(ABC_MODIFY_BODY);
  canvas.redo();
  canvas.setModificationMode(ABC_MODIFY_LOCKED);
  log.take();
  canvas.takeRedraws();
  canvas.undo();
  EXPECT_EQ(log.take(), Log{"body_change true"});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectCommitted(noTurn, {10, 0, 0});
}

TEST_F(CanvasHistory, TheBodysOwnStepsTellOnlyWhatCanBeUndoneOrRedone) {
  step(10);
  log.take();
  canvas.undoBody();
  EXPECT_EQ(log.take(), (Log{"bodyModified true", "canUndo false", "canRedo true"}));
  expectCommitted(noTurn, {0, 0, 0});
  canvas.redoBody();
  EXPECT_EQ(log.take(), (Log{"bodyModified true", "canUndo true", "canRedo false"}));
  expectCommitted(noTurn, {10, 0, 0});
}

TEST_F(CanvasHistory, AHundredStepsCanBeUndone) {
  Point origin = {0, 0, 0};
  Rotation turn = noTurn;
  for (int i = 0; i < 100; ++i) {
    canvas.translateBody(i, 1, -2);
    canvas.rotateBody(7, i, 3);
    emit canvas.storeBodyRequest();
    const double x = i;
    origin = origin + turn * Point{x, 1, -2};
    turn = turn * (turnX(7) * turnY(x) * turnZ(3));
  }
  expectPose(canvas.getBodyTransformation(), turn, origin);
  for (int i = 0; i < 100; ++i) {
    canvas.undo();
  }
  expectCommitted(noTurn, {0, 0, 0});
}

TEST_F(CanvasHistory, EmissionDirectionsStayAsTheyAreWhilePositionsFollow) {
  canvas.setMarkerEmission(0, 0.6, 0.8, 33);
  canvas.rotateBody(0, 0, 90);
  emit canvas.storeBodyRequest();
  const QList<AbcMarkerData> records = canvas.give_data_with_emissions();
  ASSERT_EQ(records.size(), 4);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(records[i].id, static_cast<unsigned int>(i));
    expectNear(pointOf(records[i].position), turnZ(-90) * body[static_cast<std::size_t>(i)]);
    EXPECT_EQ(records[i].emission_x, 0.0);
    EXPECT_EQ(records[i].emission_y, 0.6);
    EXPECT_EQ(records[i].emission_z, 0.8);
    EXPECT_EQ(records[i].opening_angle, 33.0);
  }
}
