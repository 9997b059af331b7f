// Loading, unloading and saving the canvas's body.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "canvastest.h"
#include "modalwatch.h"

using namespace canvastest;

namespace {

using Log = std::vector<std::string>;

Log withSelectionAndHistoryGone(Log begin) {
  const Log gone = {"canSetOriginToMarker false",
                    "canSetAxisToMarkers false",
                    "canIntroduceLine false",
                    "canDeleteLine false",
                    "canDeleteMarker",
                    "canUndo false",
                    "canRedo false"};
  begin.insert(begin.end(), gone.begin(), gone.end());
  return begin;
}

}  // namespace

TEST(CanvasBody, IsLoadedFromPositionsAndEmissions) {
  CountingCanvas canvas;
  SignalLog log(canvas);
  std::vector<bsVector> positions = {bsVector(1, 2, 3), bsVector(4, 5, 6), bsVector(7, 8, 10)};
  std::vector<Emission> emissions = {{0.0, 0.0, 1.0, 30.0}, {1.0, 0.0, 0.0, 40.0}};
  EXPECT_TRUE(canvas.loadBody(&positions, &emissions));
  EXPECT_EQ(log.take(), withSelectionAndHistoryGone({}));
  EXPECT_EQ(canvas.takeRedraws(), 1);
  EXPECT_TRUE(canvas.isBodyLoaded());
  EXPECT_FALSE(canvas.isBodyModified());
  EXPECT_EQ(canvas.getBodyNumMarker(), 3u);
  EXPECT_EQ(canvas.getBodyFileName(), QString());
  expectSamePoints(canvas.give_data(), {{1, 2, 3}, {4, 5, 6}, {7, 8, 10}});
  const QList<AbcMarkerData> records = canvas.give_data_with_emissions();
  ASSERT_EQ(records.size(), 3);
  EXPECT_EQ(records[0].emission_z, 1.0);
  EXPECT_EQ(records[0].opening_angle, 30.0);
  EXPECT_EQ(records[1].emission_x, 1.0);
  EXPECT_EQ(records[1].opening_angle, 40.0);
  EXPECT_EQ(records[2].opening_angle, 0.0);
}

TEST(CanvasBody, NeedsPositionsButNoEmissions) {
  GLCanvas canvas;
  std::vector<bsVector> positions = {bsVector(1, 2, 3), bsVector(4, 5, 6)};
  EXPECT_TRUE(canvas.loadBody(&positions, nullptr));
  EXPECT_EQ(canvas.getBodyNumMarker(), 2u);
  EXPECT_FALSE(canvas.loadBody(nullptr, nullptr));
}

TEST(CanvasBody, OfOneMarkerIsRefusedAndTheSelectionGoesWithTheBodyBefore) {
  CountingCanvas canvas;
  load(canvas, tetrahedron());
  show(canvas);
  canvas.checkSelection(marker(canvas, 0));
  SignalLog log(canvas);
  ModalWatch watch;
  watch.expectBox("Error loading body", "Error : Number of markers = 1 (is it a body file ?).\nBody not loaded.",
                  QMessageBox::Ok);
  EXPECT_FALSE(load(canvas, {{1, 2, 3}}));
  EXPECT_FALSE(canvas.isBodyLoaded());
  EXPECT_TRUE(canvas.getSelection().empty());
  EXPECT_EQ(log.take(), withSelectionAndHistoryGone({"bodyModified false"}));
}

TEST(CanvasBody, StartsFromTheCoordinatesItIsLoadedInWhateverWasDoneBefore) {
  GLCanvas canvas;
  load(canvas, tetrahedron());
  canvas.rotateBody(0, 0, 90);
  emit canvas.storeBodyRequest();
  canvas.translateBody(1, 2, 3);
  load(canvas, tetrahedron());
  expectPose(canvas.getBodyTransformation(), noTurn, {0, 0, 0});
  expectSamePoints(canvas.give_immediate_data(), tetrahedron());
  EXPECT_EQ(canvas.getBody().getUndoCount(), 0u);
  EXPECT_FALSE(canvas.isBodyModified());
}

TEST(CanvasBody, ForgetsAtTheNextLoadWhatWasTypedWhileThereWasNone) {
  GLCanvas canvas;
  canvas.translateBody(1, 2, 3);
  load(canvas, tetrahedron());
  expectSamePoints(canvas.give_immediate_data(), tetrahedron());
  canvas.unloadBody();
  canvas.translateBody(1, 2, 3);
  emit canvas.storeBodyRequest();
  load(canvas, tetrahedron());
  expectPose(canvas.getBodyTransformation(), noTurn, {0, 0, 0});
  EXPECT_FALSE(canvas.isBodyModified());
  EXPECT_FALSE(canvas.getBody().canUndo());
}

TEST(CanvasBody, LeavesTheCameraWhenItComesOrGoes) {
  GLCanvas canvas;
  canvas.set_view(bsFrame(poseOf(turnX(30), {1, 2, -500}), nullptr));
  load(canvas, tetrahedron());
  expectPose(canvas.get_view().toMatrix(), turnX(30), {1, 2, -500});
  load(canvas, tetrahedron());
  canvas.unloadBody();
  canvas.translateView(1, 0, 0);
  expectPose(canvas.get_view().toMatrix(), turnX(30), {2, 2, -500});
}

TEST(CanvasBody, IsGoneAfterUnloading) {
  CountingCanvas canvas;
  load(canvas, tetrahedron());
  canvas.takeRedraws();
  canvas.unloadBody();
  EXPECT_EQ(canvas.takeRedraws(), 1);
  EXPECT_FALSE(canvas.isBodyLoaded());
  EXPECT_EQ(canvas.getBodyNumMarker(), 0u);
  EXPECT_TRUE(canvas.give_data().empty());
}

TEST(CanvasBody, TravelsThroughAFileWithItsLines) {
  QTemporaryDir folder;
  const QString path = folder.filePath("some.body");
  GLCanvas canvas;
  load(canvas, tetrahedron());
  canvas.checkSelection(marker(canvas, 1));
  canvas.checkSelection(marker(canvas, 3));
  canvas.introduceLine();
  canvas.rotateBody(0, 0, 90);
  emit canvas.storeBodyRequest();
  ASSERT_TRUE(canvas.saveBody(path));
  EXPECT_FALSE(canvas.isBodyModified());
  EXPECT_EQ(canvas.getBodyFileName(), path);

  GLCanvas other;
  load(other, tetrahedron());
  other.checkSelection(marker(other, 0));
  SignalLog log(other);
  ASSERT_TRUE(other.loadBody(path));
  EXPECT_EQ(log.take(), withSelectionAndHistoryGone({"bodyModified false"}));
  EXPECT_TRUE(other.isBodyLoaded());
  EXPECT_EQ(other.getBodyFileName(), path);
  EXPECT_TRUE(other.getSelection().empty());
  std::vector<Point> turned;
  for (const Point& point : tetrahedron()) {
    turned.push_back(turnZ(-90) * point);
  }
  ASSERT_EQ(other.getBodyNumMarker(), 4u);
  for (std::size_t i = 0; i < turned.size(); ++i) {
    expectNear(pointOf(other.give_data()[i]), turned[i], 1e-4);  // the file holds six digits
  }
  ASSERT_EQ(other.getBody().getLines().size(), 1u);
  EXPECT_TRUE(other.getBody().getLines()[0]->equal(other.getBody().getMarkers()[1], other.getBody().getMarkers()[3]));
}

TEST(CanvasBody, TellsWhenAFileCannotBeReadOrWritten) {
  QTemporaryDir folder;
  const QString nowhere = folder.filePath("no/such/folder.body");
  GLCanvas canvas;
  load(canvas, tetrahedron());
  show(canvas);
  ModalWatch watch;
  watch.expectBox("Error saving body", "Error while opening " + nowhere + " for writing.\nBody not saved.",
                  QMessageBox::Ok);
  EXPECT_FALSE(canvas.saveBody(nowhere));
  EXPECT_TRUE(canvas.isBodyLoaded());
  watch.expectBox("Error loading body", "Error while opening " + nowhere + " for reading.\nBody not loaded.",
                  QMessageBox::Ok);
  EXPECT_FALSE(canvas.loadBody(nowhere));
  EXPECT_FALSE(canvas.isBodyLoaded());
}

TEST(CanvasBody, GivesEveryMarkerTheSameEmission) {
  CountingCanvas canvas;
  canvas.setMarkerEmission(1, 0, 0, 10);
  load(canvas, tetrahedron());
  canvas.takeRedraws();
  canvas.setMarkerEmission(0.5, -0.5, 2, 77);
  EXPECT_EQ(canvas.takeRedraws(), 1);
  for (const AbcMarkerData& record : canvas.give_data_with_emissions()) {
    EXPECT_EQ(record.emission_x, 0.5);
    EXPECT_EQ(record.emission_y, -0.5);
    EXPECT_EQ(record.emission_z, 2.0);
    EXPECT_EQ(record.opening_angle, 77.0);
  }
}
