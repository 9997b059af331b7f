// The canvas's selection: what a click makes of it, which commands it allows, and the lines between markers.
#include <gtest/gtest.h>

#include "canvastest.h"

using namespace canvastest;

namespace {

using Log = std::vector<std::string>;
using Ids = std::vector<int>;

Log afterSelection(bool origin, bool axis, bool introduce, bool remove) {
  const auto text = [](const char* name, bool value) { return std::string(name) + (value ? " true" : " false"); };
  return {text("canSetOriginToMarker", origin), text("canSetAxisToMarkers", axis), text("canIntroduceLine", introduce),
          text("canDeleteLine", remove), "canDeleteMarker"};
}

const Log nothingPossible = afterSelection(false, false, false, false);

class CanvasSelection : public testing::Test {
 protected:
  void SetUp() override {
    load(canvas, tetrahedron());
    log.take();
    canvas.takeRedraws();
  }
  void click(std::size_t index) { canvas.checkSelection(marker(canvas, index)); }
  void clickLine(std::size_t index) { canvas.checkSelection(line(canvas, index)); }
  void clickNothing() { canvas.checkSelection(nullptr); }
  /// A line between two markers, with nothing selected afterwards and nothing logged.
  void drawLine(std::size_t a, std::size_t b) {
    clickNothing();
    click(a);
    click(b);
    canvas.introduceLine();
    clickNothing();
    log.take();
    canvas.takeRedraws();
  }

  CountingCanvas canvas;
  SignalLog log{canvas};
};

}  // namespace

TEST_F(CanvasSelection, ClickingTwoMarkersSelectsThemInOrder) {
  click(0);
  EXPECT_EQ(selectedIds(canvas), Ids{0});
  EXPECT_EQ(log.take(), afterSelection(true, false, false, false));
  click(2);
  EXPECT_EQ(selectedIds(canvas), (Ids{0, 2}));
  EXPECT_EQ(log.take(), afterSelection(true, true, true, false));
}

TEST_F(CanvasSelection, ClickingEitherOfTwoSelectedMarkersSwapsThem) {
  click(0);
  click(1);
  click(0);
  EXPECT_EQ(selectedIds(canvas), (Ids{1, 0}));
  click(0);
  EXPECT_EQ(selectedIds(canvas), (Ids{0, 1}));
  click(1);
  EXPECT_EQ(selectedIds(canvas), (Ids{1, 0}));
}

TEST_F(CanvasSelection, ClickingTheOnlySelectedMarkerKeepsIt) {
  click(3);
  click(3);
  EXPECT_EQ(selectedIds(canvas), Ids{3});
}

TEST_F(CanvasSelection, AThirdMarkerReplacesTwo) {
  click(0);
  click(1);
  click(2);
  EXPECT_EQ(selectedIds(canvas), Ids{2});
}

TEST_F(CanvasSelection, ClickingEmptySpaceClearsIt) {
  click(0);
  click(1);
  log.take();
  clickNothing();
  EXPECT_TRUE(canvas.getSelection().empty());
  EXPECT_EQ(log.take(), nothingPossible);
  clickNothing();
  EXPECT_EQ(log.take(), nothingPossible);
}

TEST_F(CanvasSelection, ALineReplacesWhateverWasSelected) {
  drawLine(0, 1);
  click(2);
  log.take();
  clickLine(0);
  EXPECT_EQ(canvas.getSelection(), std::vector<abcObject*>{line(canvas, 0)});
  EXPECT_EQ(log.take(), afterSelection(false, false, false, true));
  click(2);
  EXPECT_EQ(selectedIds(canvas), Ids{2});
  click(3);
  clickLine(0);
  EXPECT_EQ(canvas.getSelection(), std::vector<abcObject*>{line(canvas, 0)});
  clickLine(0);
  EXPECT_EQ(canvas.getSelection(), std::vector<abcObject*>{line(canvas, 0)});
}

TEST_F(CanvasSelection, AnotherLineReplacesALine) {
  drawLine(0, 1);
  drawLine(1, 2);
  clickLine(0);
  clickLine(1);
  EXPECT_EQ(canvas.getSelection(), std::vector<abcObject*>{line(canvas, 1)});
}

TEST_F(CanvasSelection, TellsWhichMarkerIsSelected) {
  EXPECT_EQ(canvas.getSelectedMarker(), -1);
  click(0);
  EXPECT_EQ(canvas.getSelectedMarker(), 0);
  clickNothing();
  click(3);
  EXPECT_EQ(canvas.getSelectedMarker(), 3);
  click(1);
  EXPECT_EQ(canvas.getSelectedMarker(), -2);
  clickNothing();
  EXPECT_EQ(canvas.getSelectedMarker(), -1);
}

TEST_F(CanvasSelection, ASelectedLineIsNoMarker) {
  drawLine(2, 3);
  clickLine(0);
  EXPECT_EQ(canvas.getSelectedMarker(), -1);
}

TEST_F(CanvasSelection, TheChecksFollowTheSelection) {
  EXPECT_FALSE(canvas.checkSetOriginToMarker());
  EXPECT_FALSE(canvas.checkSetAxisToMarkers());
  EXPECT_FALSE(canvas.checkIntroduceLine());
  EXPECT_FALSE(canvas.checkDeleteLine());
  click(1);
  EXPECT_TRUE(canvas.checkSetOriginToMarker());
  EXPECT_FALSE(canvas.checkSetAxisToMarkers());
  EXPECT_FALSE(canvas.checkIntroduceLine());
  click(0);
  EXPECT_TRUE(canvas.checkSetOriginToMarker());
  EXPECT_TRUE(canvas.checkSetAxisToMarkers());
  EXPECT_TRUE(canvas.checkIntroduceLine());
  EXPECT_FALSE(canvas.checkDeleteLine());
}

// --- Lines ---

TEST_F(CanvasSelection, ALineIsIntroducedBetweenTheSelectedMarkersInOrder) {
  click(2);
  click(0);
  log.take();
  canvas.takeRedraws();
  canvas.introduceLine();
  EXPECT_EQ(log.take(), Log{"canIntroduceLine false"});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  ASSERT_EQ(canvas.getBody().getLines().size(), 1u);
  EXPECT_EQ(canvas.getBody().getLines()[0]->getFirst(), marker(canvas, 2));
  EXPECT_EQ(canvas.getBody().getLines()[0]->getSecond(), marker(canvas, 0));
  EXPECT_EQ(selectedIds(canvas), (Ids{2, 0}));
  EXPECT_FALSE(canvas.isBodyModified());
}

TEST_F(CanvasSelection, MarkersAreJoinedOnceInEitherDirection) {
  drawLine(0, 1);
  click(0);
  click(1);
  EXPECT_EQ(log.take()[7], "canIntroduceLine false");
  EXPECT_FALSE(canvas.checkIntroduceLine());
  click(0);
  EXPECT_EQ(selectedIds(canvas), (Ids{1, 0}));
  EXPECT_FALSE(canvas.checkIntroduceLine());
  log.take();
  canvas.introduceLine();
  EXPECT_EQ(canvas.getBody().getLines().size(), 1u);
  EXPECT_EQ(log.take(), Log{});
  click(2);
  click(1);
  EXPECT_TRUE(canvas.checkIntroduceLine());
}

TEST_F(CanvasSelection, IntroducingNeedsTwoMarkers) {
  canvas.introduceLine();
  click(0);
  canvas.introduceLine();
  EXPECT_TRUE(canvas.getBody().getLines().empty());
}

TEST_F(CanvasSelection, DeletingTheSelectedLineMovesLaterLinesDownAndClearsTheSelection) {
  drawLine(0, 1);
  drawLine(1, 2);
  drawLine(2, 3);
  abcObject* const last = line(canvas, 2);
  clickLine(1);
  EXPECT_TRUE(canvas.checkDeleteLine());
  log.take();
  canvas.takeRedraws();
  canvas.deleteLine();
  EXPECT_EQ(log.take(), Log{"canDeleteLine false"});
  EXPECT_EQ(canvas.takeRedraws(), 1);
  ASSERT_EQ(canvas.getBody().getLines().size(), 2u);
  EXPECT_EQ(line(canvas, 1), last);
  EXPECT_TRUE(canvas.getSelection().empty());
}

TEST_F(CanvasSelection, ADeletedLineIsOnlyDropped) {
  drawLine(0, 1);
  auto* dropped = static_cast<abcLine*>(line(canvas, 0));
  clickLine(0);
  canvas.deleteLine();
  EXPECT_EQ(dropped->getFirst(), marker(canvas, 0));
  EXPECT_EQ(dropped->getSecond(), marker(canvas, 1));
  click(0);
  click(1);
  EXPECT_TRUE(canvas.checkIntroduceLine());
}

TEST_F(CanvasSelection, DeletingNeedsASelectedLine) {
  drawLine(0, 1);
  canvas.deleteLine();
  click(0);
  log.take();
  canvas.deleteLine();
  EXPECT_EQ(canvas.getBody().getLines().size(), 1u);
  EXPECT_EQ(selectedIds(canvas), Ids{0});
  EXPECT_EQ(log.take(), Log{});
}

// --- Another body ---

TEST_F(CanvasSelection, AnotherBodyStartsWithoutSelection) {
  click(0);
  click(1);
  log.take();
  load(canvas, tetrahedron());
  EXPECT_TRUE(canvas.getSelection().empty());
  const Log expected = {"bodyModified false",
                        "canSetOriginToMarker false",
                        "canSetAxisToMarkers false",
                        "canIntroduceLine false",
                        "canDeleteLine false",
                        "canDeleteMarker",
                        "canUndo false",
                        "canRedo false"};
  EXPECT_EQ(log.take(), expected);
}

TEST_F(CanvasSelection, UnloadingTheBodyClearsTheSelection) {
  click(0);
  log.take();
  canvas.unloadBody();
  EXPECT_TRUE(canvas.getSelection().empty());
  EXPECT_FALSE(canvas.isBodyLoaded());
  const Log expected = {"bodyModified false",
                        "canSetOriginToMarker false",
                        "canSetAxisToMarkers false",
                        "canIntroduceLine false",
                        "canDeleteLine false",
                        "canDeleteMarker",
                        "canUndo false",
                        "canRedo false"};
  EXPECT_EQ(log.take(), expected);
}
