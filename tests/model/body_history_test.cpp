// A body's redefined coordinate system: pending change, commit, undo, redo, and the data it leads to.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "abcBody.h"
#include "bodies.h"
#include "modalwatch.h"

namespace {

using Signals = std::vector<std::string>;

class BodyHistory : public testing::Test {
 protected:
  BodyHistory() { body.load(&positions); }
  /// Commits a move of the origin by (x, 0, 0) in the present body coordinates.
  void commitMove(double x) {
    setPending(body, bsVector(x, 0, 0));
    ASSERT_TRUE(body.store());
  }
  /// Origin of the body coordinate system, loaded coordinates.
  bsVector origin() const { return body.give_my_transformation().getColumn(3); }

  ModalWatch watch;
  const std::vector<bsVector> positions{{0, 0, 0}, {100, 0, 0}, {0, 10, 0}, {0, 0, 7}};
  abcBody body;
};

TEST_F(BodyHistory, FreshlyLoadedDataAreTheLoadedPositions) {
  EXPECT_TRUE(samePositions(body.give_old_data(), positions));
  EXPECT_TRUE(samePositions(body.give_new_data(), positions));
  EXPECT_TRUE(samePositions(body.give_immediate_new_data(), positions));
}

TEST_F(BodyHistory, PendingChangeShowsInTheImmediateDataAlone) {
  // New origin at (10, 0, 0), new x along loaded y, new y along loaded -x: p' = (y, -(x - 10), z).
  setPending(body, bsVector(10, 0, 0), 90.0);
  EXPECT_TRUE(samePositions(body.give_immediate_new_data(), {{0, 10, 0}, {0, -90, 0}, {10, 10, 0}, {0, 10, 7}}));
  EXPECT_TRUE(samePositions(body.give_new_data(), positions));
  EXPECT_TRUE(samePositions(body.give_old_data(), positions));
  EXPECT_FALSE(body.isModified());
  EXPECT_TRUE(body.give_my_transformation() == bsMatrix::getIdentityMatrix());
}

TEST_F(BodyHistory, CommitMakesThePendingChangeTheTransformation) {
  setPending(body, bsVector(10, 0, 0), 90.0);
  SignalLog emitted(body);
  EXPECT_TRUE(body.store());
  EXPECT_EQ(emitted.take(), Signals{"modified 1"});
  EXPECT_TRUE(body.isModified());
  EXPECT_TRUE(samePositions(body.give_new_data(), {{0, 10, 0}, {0, -90, 0}, {10, 10, 0}, {0, 10, 7}}));
  EXPECT_TRUE(samePositions(body.give_immediate_new_data(), body.give_new_data()));
  EXPECT_TRUE(samePositions(body.give_old_data(), positions));
  EXPECT_TRUE(body.getImmediateFrame().toMatrix() == bsMatrix::getIdentityMatrix());
  EXPECT_EQ(body.getUndoCount(), 1u);
  EXPECT_EQ(body.getRedoCount(), 0u);
  bsMatrix expected;
  expected.rotationZ(90.0);
  expected.setColumn(3, bsVector(10, 0, 0), 1.0);
  EXPECT_TRUE(body.give_my_transformation() == expected);
  EXPECT_TRUE(body.getTransformation() == expected);
}

TEST_F(BodyHistory, CommitsComposeEachInTheCoordinatesOfTheOneBefore) {
  setPending(body, bsVector(10, 0, 0), 90.0);
  body.store();
  setPending(body, bsVector(5, 0, 0));
  body.store();
  // 5 along the new x, which is the loaded y.
  EXPECT_EQ(origin(), bsVector(10, 5, 0));
  setPending(body, bsVector(0, 0, 0), 90.0, bsVector(1, 0, 0));
  body.store();
  // The turn about the new x (loaded y) brings the new y (loaded -x) to loaded z.
  EXPECT_EQ(body.give_my_transformation().getColumn(0), bsVector(0, 1, 0));
  EXPECT_EQ(body.give_my_transformation().getColumn(1), bsVector(0, 0, 1));
  EXPECT_EQ(body.give_my_transformation().getColumn(2), bsVector(1, 0, 0));
}

TEST_F(BodyHistory, PendingChangeOnTopOfACommitIsTakenOffFirst) {
  setPending(body, bsVector(10, 0, 0), 90.0);
  body.store();
  setPending(body, bsVector(0, 3, 0), 0.0);
  std::vector<bsVector> expected = body.give_new_data();
  for (bsVector& p : expected) {
    p -= bsVector(0, 3, 0);
  }
  EXPECT_TRUE(samePositions(body.give_immediate_new_data(), expected));
  EXPECT_EQ(expected[0], bsVector(0, 7, 0));
}

TEST_F(BodyHistory, CommitWithoutAChangeDoesNothing) {
  commitMove(1);
  body.undo();
  SignalLog emitted(body);
  EXPECT_FALSE(body.store());
  EXPECT_EQ(body.getUndoCount(), 0u);
  EXPECT_EQ(body.getRedoCount(), 1u);
  EXPECT_EQ(emitted.take(), Signals{});
}

TEST_F(BodyHistory, CommitTakesAChangeBelowTheMatricesToleranceForNone) {
  setPending(body, bsVector(5e-8, 0, 0));
  EXPECT_FALSE(body.store());
  setPending(body, bsVector(2e-7, 0, 0));
  EXPECT_TRUE(body.store());
}

TEST_F(BodyHistory, CommitTakesAnOrientationAndItsNegativeForTheSame) {
  body.setImmediateOrientation(bsQuaternion(0, 0, 0, -1));
  EXPECT_FALSE(body.store());
}

TEST_F(BodyHistory, UndoAndRedoWalkThroughTheTransformations) {
  commitMove(1);
  commitMove(2);
  commitMove(4);
  EXPECT_EQ(origin(), bsVector(7, 0, 0));
  SignalLog emitted(body);
  body.undo();
  EXPECT_EQ(origin(), bsVector(3, 0, 0));
  EXPECT_EQ(body.getUndoCount(), 2u);
  EXPECT_EQ(body.getRedoCount(), 1u);
  body.undo();
  EXPECT_EQ(origin(), bsVector(1, 0, 0));
  body.undo();
  EXPECT_EQ(origin(), bsVector(0, 0, 0));
  EXPECT_FALSE(body.canUndo());
  EXPECT_EQ(body.getRedoCount(), 3u);
  EXPECT_EQ(emitted.take(), (Signals{"modified 1", "modified 1", "modified 1"}));
  body.redo();
  EXPECT_EQ(origin(), bsVector(1, 0, 0));
  body.redo();
  EXPECT_EQ(origin(), bsVector(3, 0, 0));
  body.redo();
  EXPECT_EQ(origin(), bsVector(7, 0, 0));
  EXPECT_FALSE(body.canRedo());
  EXPECT_EQ(body.getUndoCount(), 3u);
  EXPECT_EQ(emitted.take(), (Signals{"modified 1", "modified 1", "modified 1"}));
}

TEST_F(BodyHistory, UndoBringsTheTransformationBackExactly) {
  setPending(body, bsVector(1.1, 2.2, 3.3), 33.0, bsVector(1, 2, 3));
  body.store();
  const bsMatrix before = body.give_my_transformation();
  setPending(body, bsVector(-4.4, 5.5, 6.6), 77.0, bsVector(3, -2, 1));
  body.store();
  body.undo();
  const bsMatrix after = body.give_my_transformation();
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      EXPECT_EQ(after.data(i, j), before.data(i, j));
    }
  }
}

TEST_F(BodyHistory, UndoAndRedoOfAnEmptyListChangeNothing) {
  SignalLog emitted(body);
  body.undo();
  body.redo();
  EXPECT_FALSE(body.isModified());
  EXPECT_EQ(emitted.take(), Signals{});
  EXPECT_FALSE(body.canUndo());
  EXPECT_FALSE(body.canRedo());
  EXPECT_TRUE(body.give_my_transformation() == bsMatrix::getIdentityMatrix());
}

TEST_F(BodyHistory, CommitAfterAnUndoEmptiesTheRedoList) {
  commitMove(1);
  commitMove(2);
  body.undo();
  commitMove(8);
  EXPECT_FALSE(body.canRedo());
  EXPECT_EQ(body.getUndoCount(), 2u);
  EXPECT_EQ(origin(), bsVector(9, 0, 0));
  body.undo();
  EXPECT_EQ(origin(), bsVector(1, 0, 0));
}

TEST_F(BodyHistory, UndoAndRedoLeaveThePendingChange) {
  commitMove(1);
  setPending(body, bsVector(0, 5, 0), 30.0);
  body.undo();
  EXPECT_EQ(body.getImmediateFrame().position, bsVector(0, 5, 0));
  body.redo();
  EXPECT_EQ(body.getImmediateFrame().position, bsVector(0, 5, 0));
  EXPECT_FALSE(body.getImmediateFrame().toMatrix() == bsMatrix::getIdentityMatrix());
}

TEST_F(BodyHistory, IsUnlimitedByDefault) {
  for (int i = 0; i < 500; ++i) {
    commitMove(1);
  }
  EXPECT_EQ(body.getUndoCount(), 500u);
}

TEST_F(BodyHistory, WithALimitForgetsTheOldestStep) {
  body.setUndoLimit(2);
  commitMove(1);
  commitMove(2);
  commitMove(4);
  EXPECT_EQ(body.getUndoCount(), 2u);
  body.undo();
  body.undo();
  EXPECT_EQ(origin(), bsVector(1, 0, 0));
  EXPECT_FALSE(body.canUndo());
}

TEST_F(BodyHistory, WithALimitSetLaterForgetsTheStepsAboveIt) {
  commitMove(1);
  commitMove(2);
  commitMove(4);
  body.setUndoLimit(1);
  EXPECT_EQ(body.getUndoCount(), 1u);
  body.undo();
  EXPECT_EQ(origin(), bsVector(3, 0, 0));
}

TEST_F(BodyHistory, EmissionDirectionsAreTheSameBeforeAndAfterATurn) {
  body.setMarkerEmission(0.6, 0.0, 0.8, 30.0);
  setPending(body, bsVector(10, 0, 0), 90.0, bsVector(0, 1, 0));
  body.store();
  const QList<AbcMarkerData> records = body.give_data_with_emissions();
  for (int i = 0; i < records.size(); ++i) {
    EXPECT_EQ(records[i].emission_x, 0.6);
    EXPECT_EQ(records[i].emission_y, 0.0);
    EXPECT_EQ(records[i].emission_z, 0.8);
    EXPECT_EQ(records[i].opening_angle, 30.0);
    EXPECT_EQ(records[i].position, body.give_new_data()[static_cast<std::size_t>(i)]);
  }
  EXPECT_NE(records[1].position, positions[1]);
}

TEST_F(BodyHistory, MarkersStayWhereTheyWereLoaded) {
  setPending(body, bsVector(10, 20, 30), 45.0, bsVector(1, 1, 0));
  body.store();
  body.undo();
  body.redo();
  EXPECT_TRUE(samePositions(body.give_old_data(), positions));
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(25, 2.5, 1.75));
}

TEST_F(BodyHistory, IgnoresAPendingChangeThatIsNotFinite) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  setPending(body, bsVector(1, 2, 3));
  body.setImmediatePosition(bsVector(nan, 0, 0));
  body.setImmediatePosition(bsVector(0, infinity, 0));
  body.setImmediateOrientation(bsQuaternion(0, 0, nan, 1));
  EXPECT_EQ(body.getImmediateFrame().position, bsVector(1, 2, 3));
  ASSERT_TRUE(body.store());
  EXPECT_EQ(origin(), bsVector(1, 2, 3));
}

}  // namespace
