// The canvas's camera by its operations, online and offline, and its display switches.
#include <gtest/gtest.h>

#include <QColor>

#include <limits>

#include "canvastest.h"

using namespace canvastest;

namespace {

using Log = std::vector<std::string>;

void expectView(const GLCanvas& canvas, const Rotation& turn, const Point& position) {
  expectPose(canvas.get_view().toMatrix(), turn, position);
}

bsFrame frameOf(const Rotation& turn, const Point& position) { return bsFrame(poseOf(turn, position), nullptr); }

}  // namespace

TEST(CanvasView, StartsThreeHundredMillimetresBeforeTheBody) {
  GLCanvas canvas;
  expectView(canvas, noTurn, {0, 0, -300});
  expectNear(pointOf(canvas.getViewPosition()), {0, 0, -300});
}

TEST(CanvasView, StartsIdleOfflineAndEditing) {
  GLCanvas canvas;
  EXPECT_EQ(canvas.getModificationMode(), ABC_MODIFY_BODY);
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_IDLE);
  EXPECT_FALSE(canvas.isOnline());
  EXPECT_FALSE(canvas.isUseTrackedBody());
  EXPECT_FALSE(canvas.isTrackedBodySeen());
  EXPECT_TRUE(canvas.getSelection().empty());
  EXPECT_FALSE(canvas.isBodyLoaded());
  expectPose(canvas.getRoomOrientation(), noTurn, {0, 0, 0});
  expectNear(pointOf(canvas.getTrackedPosition()), {0, 0, 0});
}

TEST(CanvasView, AcceptsTabAndClickFocus) {
  GLCanvas canvas;
  EXPECT_EQ(static_cast<int>(canvas.focusPolicy()), 11);
}

TEST(CanvasView, TranslatesFromTheSavedView) {
  CountingCanvas canvas;
  SignalLog log(canvas);
  canvas.translateView(1, 2, 3);
  expectView(canvas, noTurn, {1, 2, -297});
  canvas.translateView(5, 0, 0);
  expectView(canvas, noTurn, {5, 0, -300});
  canvas.saveCurrentView();
  canvas.translateView(5, 0, 0);
  expectView(canvas, noTurn, {10, 0, -300});
  EXPECT_EQ(canvas.takeRedraws(), 3);
  EXPECT_EQ(log.take(), Log{});
}

TEST(CanvasView, RotatesTheSavedViewByXTimesYTimesZ) {
  CountingCanvas canvas;
  canvas.rotateView(10, 20, 30);
  expectView(canvas, turnX(10) * turnY(20) * turnZ(30), {0, 0, -300});
  canvas.rotateView(0, 90, 0);
  expectView(canvas, turnY(90), {0, 0, -300});
  canvas.saveCurrentView();
  canvas.rotateView(90, 0, 0);
  expectView(canvas, turnX(90) * turnY(90), {0, 0, -300});
  EXPECT_EQ(canvas.takeRedraws(), 3);
}

TEST(CanvasView, TransformingMultipliesOnTheRightAndSaves) {
  GLCanvas canvas;
  canvas.rotateView(0, 90, 0);
  canvas.transformView(poseOf(turnX(90), {1, 2, 3}));
  const Point moved = turnY(90) * Point{1, 2, 3} + Point{0, 0, -300};
  expectView(canvas, turnY(90) * turnX(90), moved);
  canvas.translateView(0, 0, 1);
  expectView(canvas, turnY(90) * turnX(90), moved + Point{0, 0, 1});
}

TEST(CanvasView, SettingPositionOrOrientationLeavesTheOtherAndSaves) {
  CountingCanvas canvas;
  canvas.setViewPosition(bsVector(7, 8, -90));
  expectView(canvas, noTurn, {7, 8, -90});
  canvas.setViewOrientation(matrixOf(turnZ(30)));
  expectView(canvas, turnZ(30), {7, 8, -90});
  EXPECT_EQ(canvas.takeRedraws(), 2);
  canvas.translateView(1, 0, 0);
  canvas.rotateView(0, 0, 60);
  expectView(canvas, turnZ(90), {8, 8, -90});
}

TEST(CanvasView, SettingTheWholeViewSetsCurrentAndSavedView) {
  CountingCanvas canvas;
  canvas.set_view(frameOf(turnX(45), {1, 2, -3}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectView(canvas, turnX(45), {1, 2, -3});
  canvas.translateView(1, 0, 0);
  canvas.rotateView(45, 0, 0);
  expectView(canvas, turnX(90), {2, 2, -3});
}

TEST(CanvasView, ATypedRotationIsBracketedByTheRotateMode) {
  CountingCanvas canvas;
  SignalLog log(canvas);
  canvas.rotateViewBegin();
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_ROTATE);
  canvas.rotateViewEnd();
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_IDLE);
  EXPECT_EQ(canvas.takeRedraws(), 2);
  EXPECT_EQ(log.take(), Log{});
}

TEST(CanvasView, StoresTheViewModeItIsGiven) {
  GLCanvas canvas;
  for (const abcViewMode mode : {ABC_VIEW_PAN, ABC_VIEW_DOLLY, ABC_VIEW_ROTATE, ABC_VIEW_IDLE}) {
    canvas.setViewMode(mode);
    EXPECT_EQ(canvas.getViewMode(), mode);
  }
}

TEST(CanvasView, DoesNotDriftWhenSavedThousandsOfTimes) {
  GLCanvas canvas;
  QObject::connect(&canvas, &GLCanvas::storeViewRequest, &canvas, &GLCanvas::saveCurrentView);
  for (int i = 0; i < 3600; ++i) {
    canvas.rotateView(1, 0, 0);
    emit canvas.storeViewRequest();
  }
  expectView(canvas, noTurn, {0, 0, -300});
}

TEST(CanvasView, CanBeTurnedThroughAHalfTurnStepByStep) {
  GLCanvas canvas;
  Rotation turned = noTurn;
  for (int i = 0; i < 36; ++i) {
    canvas.rotateView(0, 10, 0);
    canvas.saveCurrentView();
    turned = turnY(10) * turned;
    expectPose(canvas.get_view().toMatrix(), turned, {0, 0, -300}, 1e-7);
  }
}

// --- Online ---

TEST(CanvasOnline, SwitchingOnShowsTheOnlineViewAndSwitchingOffRestoresTheOfflineView) {
  GLCanvas canvas;
  const Rotation offlineTurn = turnX(10) * turnY(20);
  const Rotation onlineTurn = turnZ(33);
  canvas.set_view(frameOf(offlineTurn, {1, 2, -400}));
  const bsQuaternion before = canvas.get_view().orientation;
  canvas.setOnline(true);
  EXPECT_TRUE(canvas.isOnline());
  expectView(canvas, noTurn, {0, 0, -300});
  canvas.set_view(frameOf(onlineTurn, {5, 6, -700}));
  canvas.setOnline(false);
  EXPECT_FALSE(canvas.isOnline());
  expectView(canvas, offlineTurn, {1, 2, -400});
  const bsQuaternion after = canvas.get_view().orientation;
  EXPECT_EQ(before.x, after.x);
  EXPECT_EQ(before.y, after.y);
  EXPECT_EQ(before.z, after.z);
  EXPECT_EQ(before.w, after.w);
  canvas.setOnline(true);
  expectView(canvas, onlineTurn, {5, 6, -700});
}

TEST(CanvasOnline, EachSwitchSavesTheViewItShows) {
  GLCanvas canvas;
  canvas.set_view(frameOf(noTurn, {0, 0, -500}));
  canvas.setOnline(true);
  canvas.translateView(1, 0, 0);
  expectView(canvas, noTurn, {1, 0, -300});
  canvas.setOnline(false);
  canvas.translateView(2, 0, 0);
  expectView(canvas, noTurn, {2, 0, -500});
}

TEST(CanvasOnline, TellsWhetherAxesCanBeMadeParallelAndThenTheState) {
  CountingCanvas canvas;
  SignalLog log(canvas);
  canvas.setOnline(true);
  EXPECT_EQ(log.take(), (Log{"canSetParallelAxes false", "is_online true"}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  canvas.setOnline(false);
  EXPECT_EQ(log.take(), (Log{"canSetParallelAxes false", "is_online false"}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  load(canvas, tetrahedron());
  log.take();
  canvas.setOnline(true);
  EXPECT_EQ(log.take(), (Log{"canSetParallelAxes true", "is_online true"}));
  canvas.setOnline(false);
  EXPECT_EQ(log.take(), (Log{"canSetParallelAxes false", "is_online false"}));
}

TEST(CanvasOnline, SwitchingOffForgetsTheTrackedPose) {
  GLCanvas canvas;
  canvas.setOnline(true);
  canvas.setTrackedBodyOrientation(matrixOf(turnX(70)));
  canvas.setTrackedBodyPosition(bsVector(1, 2, 3));
  expectPose(canvas.getRoomOrientation(), turnX(70), {0, 0, 0});
  expectNear(pointOf(canvas.getTrackedPosition()), {1, 2, 3});
  canvas.setOnline(false);
  expectPose(canvas.getRoomOrientation(), noTurn, {0, 0, 0});
  expectNear(pointOf(canvas.getTrackedPosition()), {0, 0, 0});
}

TEST(CanvasOnline, RepeatingTheStateLeavesTheCameraWhereTheOperatorPutIt) {
  GLCanvas canvas;
  SignalLog log(canvas);
  canvas.set_view(frameOf(turnX(10), {1, 2, -400}));
  canvas.setOnline(false);
  EXPECT_EQ(log.take(), (Log{"canSetParallelAxes false", "is_online false"}));
  expectView(canvas, turnX(10), {1, 2, -400});
  canvas.setOnline(true);
  canvas.set_view(frameOf(turnX(20), {3, 4, -500}));
  canvas.setTrackedBodyPosition(bsVector(1, 2, 3));
  canvas.setOnline(true);
  expectView(canvas, turnX(20), {3, 4, -500});
  expectNear(pointOf(canvas.getTrackedPosition()), {1, 2, 3});
  canvas.setOnline(false);
  expectView(canvas, turnX(10), {1, 2, -400});
}

TEST(CanvasOnline, KeepsTheTrackedPoseItIsGivenWhateverTheState) {
  GLCanvas canvas;
  canvas.setTrackedBodyOrientation(matrixOf(turnY(15)));
  expectPose(canvas.getRoomOrientation(), turnY(15), {0, 0, 0});
  canvas.setTrackedBodyOrientation(canvas.getRoomOrientation());
  expectPose(canvas.getRoomOrientation(), turnY(15), {0, 0, 0});
  canvas.setUseTrackedBody(true);
  canvas.setTrackedBodySeen(true);
  EXPECT_TRUE(canvas.isUseTrackedBody());
  EXPECT_TRUE(canvas.isTrackedBodySeen());
  canvas.setUseTrackedBody(false);
  canvas.setTrackedBodySeen(false);
  EXPECT_FALSE(canvas.isUseTrackedBody());
  EXPECT_FALSE(canvas.isTrackedBodySeen());
}

TEST(CanvasOnline, IgnoresATrackedPoseThatIsNoNumber) {
  GLCanvas canvas;
  canvas.setTrackedBodyOrientation(matrixOf(turnY(15)));
  canvas.setTrackedBodyPosition(bsVector(1, 2, 3));
  bsMatrix broken = matrixOf(noTurn);
  broken.data(1, 1) = std::numeric_limits<double>::quiet_NaN();
  canvas.setTrackedBodyOrientation(broken);
  canvas.setTrackedBodyPosition(bsVector(0, std::numeric_limits<double>::infinity(), 0));
  expectPose(canvas.getRoomOrientation(), turnY(15), {0, 0, 0});
  expectNear(pointOf(canvas.getTrackedPosition()), {1, 2, 3});
}

// --- Modification mode ---

TEST(CanvasMode, EnteringTheEditingModeResetsTheOnlinePositionButNotItsOrientation) {
  GLCanvas canvas;
  canvas.setOnline(true);
  canvas.set_view(frameOf(turnX(30), {9, 9, -900}));
  canvas.setOnline(false);
  canvas.setModificationMode(ABC_MODIFY_BODY);
  canvas.setOnline(true);
  expectView(canvas, turnX(30), {0, 0, -300});
}

TEST(CanvasMode, EveryModeMakesTheOfflineViewTheOnlineView) {
  GLCanvas canvas;
  canvas.set_view(frameOf(noTurn, {0, 0, -500}));
  canvas.setOnline(true);
  canvas.set_view(frameOf(turnX(30), {9, 9, -900}));
  canvas.setOnline(false);
  canvas.setOnline(true);  // online view and current view are the same now
  canvas.setModificationMode(ABC_MODIFY_SUSPENDED);
  EXPECT_EQ(canvas.getModificationMode(), ABC_MODIFY_SUSPENDED);
  expectView(canvas, turnX(30), {9, 9, -900});
  canvas.setOnline(false);
  expectView(canvas, turnX(30), {9, 9, -900});
}

// --- Display switches ---

TEST(CanvasDisplay, EverySwitchIsStoredAndRedrawsOnce) {
  CountingCanvas canvas;
  SignalLog log(canvas);
  const abcBody& body = canvas.getBody();
  canvas.showSmallMarkers(true);
  EXPECT_TRUE(body.areMarkersSmall());
  canvas.showColoredMarkers(true);
  EXPECT_TRUE(body.areMarkersColored());
  canvas.showMarkerEmissions(false);
  EXPECT_FALSE(body.areMarkerEmissionsShown());
  canvas.showLongAxes(true);
  EXPECT_TRUE(body.areLongAxesShown());
  canvas.setLongAxesFactor(4.5);
  EXPECT_EQ(canvas.getLongAxesFactor(), 4.5);
  EXPECT_EQ(body.getLongAxesFactor(), 4.5);
  canvas.showXYGrid(true);
  EXPECT_TRUE(body.isXYGridShown());
  canvas.showYZGrid(true);
  EXPECT_TRUE(body.isYZGridShown());
  canvas.showXZGrid(true);
  EXPECT_TRUE(body.isXZGridShown());
  QColor first(1, 2, 3);
  QColor second(4, 5, 6);
  QColor third(7, 8, 9);
  canvas.setXYGridColor(first);
  EXPECT_EQ(body.getXYGridColor(), first);
  canvas.setYZGridColor(second);
  EXPECT_EQ(body.getYZGridColor(), second);
  canvas.setXZGridColor(third);
  EXPECT_EQ(body.getXZGridColor(), third);
  canvas.showCOG(true);
  canvas.show_room_ori(true);
  EXPECT_EQ(canvas.takeRedraws(), 13);
  EXPECT_EQ(log.take(), Log{});
}

TEST(CanvasDisplay, SwitchesCanBeTakenBack) {
  GLCanvas canvas;
  const abcBody& body = canvas.getBody();
  canvas.showSmallMarkers(true);
  canvas.showSmallMarkers(false);
  EXPECT_FALSE(body.areMarkersSmall());
  canvas.showColoredMarkers(true);
  canvas.showColoredMarkers(false);
  EXPECT_FALSE(body.areMarkersColored());
  canvas.showMarkerEmissions(false);
  canvas.showMarkerEmissions(true);
  EXPECT_TRUE(body.areMarkerEmissionsShown());
  canvas.showLongAxes(true);
  canvas.showLongAxes(false);
  EXPECT_FALSE(body.areLongAxesShown());
  canvas.showXYGrid(true);
  canvas.showXYGrid(false);
  EXPECT_FALSE(body.isXYGridShown());
  canvas.showYZGrid(true);
  canvas.showYZGrid(false);
  EXPECT_FALSE(body.isYZGridShown());
  canvas.showXZGrid(true);
  canvas.showXZGrid(false);
  EXPECT_FALSE(body.isXZGridShown());
}

TEST(CanvasDisplay, TheAxesStartWithFactorTen) {
  GLCanvas canvas;
  EXPECT_EQ(canvas.getLongAxesFactor(), 10.0);
}
