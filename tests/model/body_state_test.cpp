// A body's state: defaults, loading from positions, emissions, lines, and what it hands out.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include "abcBody.h"
#include "bodies.h"
#include "modalwatch.h"

namespace {

using Signals = std::vector<std::string>;

static_assert(!std::is_copy_constructible_v<abcBody> && !std::is_copy_assignable_v<abcBody>);

/// A box that nobody expects fails a case instead of holding it.
class Body : public testing::Test {
 protected:
  ModalWatch watch;
};

constexpr char oneMarker[] = "Error : Number of markers = 1 (is it a body file ?).\nBody not loaded.";

TEST_F(Body, StartsEmptyWithTheGivenDefaults) {
  const abcBody body(nullptr);
  EXPECT_FALSE(body.isLoaded());
  EXPECT_FALSE(body.isModified());
  EXPECT_TRUE(body.getFileName().isEmpty());
  EXPECT_EQ(body.getNumMarker(), 0u);
  EXPECT_TRUE(body.getMarkers().empty());
  EXPECT_TRUE(body.getLines().empty());
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(0, 0, 0));
  EXPECT_TRUE(body.give_my_transformation() == bsMatrix::getIdentityMatrix());
  EXPECT_TRUE(body.getImmediateFrame().toMatrix() == bsMatrix::getIdentityMatrix());
  EXPECT_FALSE(body.canUndo());
  EXPECT_FALSE(body.canRedo());
  EXPECT_EQ(body.getUndoLimit(), 0u);
  EXPECT_FALSE(body.areMarkersSmall());
  EXPECT_FALSE(body.areMarkersColored());
  EXPECT_TRUE(body.areMarkerEmissionsShown());
  EXPECT_FALSE(body.areLongAxesShown());
  EXPECT_EQ(body.getLongAxesFactor(), 10.0);
  EXPECT_FALSE(body.isXYGridShown());
  EXPECT_FALSE(body.isYZGridShown());
  EXPECT_FALSE(body.isXZGridShown());
  EXPECT_EQ(body.getGridExtent(), 500.0);
  EXPECT_EQ(body.getGridStep(), 25.0);
  EXPECT_EQ(body.getXYGridColor(), QColor(255, 255, 0));
  EXPECT_EQ(body.getYZGridColor(), QColor(0, 255, 255));
  EXPECT_EQ(body.getXZGridColor(), QColor(255, 0, 255));
}

TEST_F(Body, KeepsEachDisplayOptionApart) {
  abcBody body;
  body.showSmallMarkers(true);
  body.showMarkerEmissions(false);
  body.setLongAxesFactor(2.5);
  body.showYZGrid(true);
  body.setGridExtent(100.0);
  body.setGridStep(5.0);
  body.setXYGridColor(QColor(1, 2, 3));
  body.setYZGridColor(QColor(4, 5, 6));
  body.setXZGridColor(QColor(7, 8, 9));
  EXPECT_TRUE(body.areMarkersSmall());
  EXPECT_FALSE(body.areMarkersColored());
  EXPECT_FALSE(body.areMarkerEmissionsShown());
  EXPECT_FALSE(body.areLongAxesShown());
  EXPECT_EQ(body.getLongAxesFactor(), 2.5);
  EXPECT_FALSE(body.isXYGridShown());
  EXPECT_TRUE(body.isYZGridShown());
  EXPECT_FALSE(body.isXZGridShown());
  EXPECT_EQ(body.getGridExtent(), 100.0);
  EXPECT_EQ(body.getGridStep(), 5.0);
  EXPECT_EQ(body.getXYGridColor(), QColor(1, 2, 3));
  EXPECT_EQ(body.getYZGridColor(), QColor(4, 5, 6));
  EXPECT_EQ(body.getXZGridColor(), QColor(7, 8, 9));
  body.showXYGrid(true);
  body.showXZGrid(true);
  body.showLongAxes(true);
  body.showColoredMarkers(true);
  EXPECT_TRUE(body.isXYGridShown());
  EXPECT_TRUE(body.isXZGridShown());
  EXPECT_TRUE(body.areLongAxesShown());
  EXPECT_TRUE(body.areMarkersColored());
}

TEST_F(Body, LoadsMarkersInOrderAndEmitsOnlyLoaded) {
  abcBody body;
  SignalLog emitted(body);
  std::vector<bsVector> positions{{1, 2, 3}, {4, 5, 6}, {7, 8, 12}};
  EXPECT_TRUE(body.load(&positions));
  EXPECT_EQ(emitted.take(), Signals{"loaded 1"});
  EXPECT_TRUE(body.isLoaded());
  EXPECT_FALSE(body.isModified());
  EXPECT_TRUE(body.getFileName().isEmpty());
  ASSERT_EQ(body.getNumMarker(), 3u);
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(body.getMarkers()[i]->getId(), i);
    EXPECT_EQ(body.getMarkers()[i]->getPosition(), positions[i]);
  }
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(4, 5, 7));
}

TEST_F(Body, ColoursMarkersFromAPaletteOfSeven) {
  abcBody body;
  const std::vector<bsVector> positions = row(9);
  ASSERT_TRUE(body.load(&positions));
  const QColor expected[] = {QColor(255, 0, 0),     QColor(0, 255, 0),   QColor(0, 0, 255),
                             QColor(255, 255, 0),   QColor(255, 0, 255), QColor(0, 255, 255),
                             QColor(255, 255, 255), QColor(255, 0, 0),   QColor(0, 255, 0)};
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_EQ(body.getMarkers()[i]->getColor(), expected[i]) << "marker " << i;
  }
}

TEST_F(Body, ForgetsTheBodyBeforeWhenLoadedAgain) {
  abcBody body;
  const std::vector<bsVector> first = row(3);
  const std::vector<bsVector> second{{0, 0, 5}, {0, 0, 7}};
  ASSERT_TRUE(body.load(&first));
  body.addLine(new abcLine(body.getMarkers()[0], body.getMarkers()[1]));
  body.setFileName("old.body");
  setPending(body, bsVector(1, 2, 3));
  ASSERT_TRUE(body.store());
  body.undo();
  setPending(body, bsVector(4, 5, 6), 30.0);
  SignalLog emitted(body);
  ASSERT_TRUE(body.load(&second));
  EXPECT_EQ(emitted.take(), (Signals{"loaded 0", "modified 0", "loaded 1"}));
  EXPECT_TRUE(samePositions(body.give_old_data(), second));
  EXPECT_TRUE(samePositions(body.give_new_data(), second));
  EXPECT_TRUE(samePositions(body.give_immediate_new_data(), second));
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(0, 0, 6));
  EXPECT_TRUE(body.getLines().empty());
  EXPECT_TRUE(body.getFileName().isEmpty());
  EXPECT_FALSE(body.isModified());
  EXPECT_FALSE(body.canUndo());
  EXPECT_FALSE(body.canRedo());
}

TEST_F(Body, LoadsWithoutAChangeThatWasMadeWhileNothingWasLoaded) {
  abcBody body;
  setPending(body, bsVector(1, 2, 3));
  body.store();
  setPending(body, bsVector(4, 5, 6));
  const std::vector<bsVector> positions = row(2);
  ASSERT_TRUE(body.load(&positions));
  EXPECT_TRUE(samePositions(body.give_immediate_new_data(), positions));
  EXPECT_FALSE(body.canUndo());
}

TEST_F(Body, LoadsOnlyTheNewMarkersAfterTheOldOnesWereMarkedUnloaded) {
  abcBody body;
  const std::vector<bsVector> first = row(3);
  const std::vector<bsVector> second{{0, 0, 5}, {0, 0, 7}};
  ASSERT_TRUE(body.load(&first));
  body.setLoaded(false);
  ASSERT_TRUE(body.load(&second));
  EXPECT_TRUE(samePositions(body.give_old_data(), second));
  EXPECT_EQ(body.give_data_with_emissions()[0].id, 0u);
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(0, 0, 6));
}

TEST_F(Body, OfExactlyOneMarkerIsRefusedWithABox) {
  abcBody body;
  SignalLog emitted(body);
  const std::vector<bsVector> positions = row(1);
  watch.expectBox("Error loading body", oneMarker, QMessageBox::Ok);
  EXPECT_FALSE(body.load(&positions));
  ASSERT_EQ(watch.boxes().size(), 1u);
  EXPECT_EQ(watch.boxes()[0].icon, QMessageBox::Warning);
  EXPECT_EQ(watch.boxes()[0].buttons, QMessageBox::Ok);
  EXPECT_FALSE(body.isLoaded());
  EXPECT_EQ(body.getNumMarker(), 0u);
  EXPECT_EQ(emitted.take(), Signals{});
}

TEST_F(Body, OfExactlyOneMarkerStillUnloadsTheBodyBefore) {
  abcBody body;
  const std::vector<bsVector> three = row(3);
  const std::vector<bsVector> one = row(1);
  ASSERT_TRUE(body.load(&three));
  SignalLog emitted(body);
  watch.expectBox("Error loading body", oneMarker, QMessageBox::Ok);
  EXPECT_FALSE(body.load(&one));
  EXPECT_FALSE(body.isLoaded());
  EXPECT_EQ(body.getNumMarker(), 0u);
  EXPECT_EQ(emitted.take(), (Signals{"loaded 0", "modified 0"}));
}

TEST_F(Body, OfNoMarkersLoadsWithItsCentreAtTheOrigin) {
  abcBody body;
  const std::vector<bsVector> none;
  EXPECT_TRUE(body.load(&none));
  EXPECT_TRUE(body.isLoaded());
  EXPECT_EQ(body.getNumMarker(), 0u);
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(0, 0, 0));
  EXPECT_TRUE(body.give_new_data().empty());
  EXPECT_TRUE(body.give_data_with_emissions().isEmpty());
}

TEST_F(Body, RefusesANullPointerWithoutTouchingTheBodyBefore) {
  abcBody body;
  const std::vector<bsVector> positions = row(3);
  ASSERT_TRUE(body.load(&positions));
  EXPECT_FALSE(body.load(static_cast<std::vector<bsVector>*>(nullptr)));
  body.loadEmissions(nullptr);
  EXPECT_TRUE(body.isLoaded());
  EXPECT_EQ(body.getNumMarker(), 3u);
}

TEST_F(Body, InitialisesWithTheSignalsFirstWhileItsMarkersStillExist) {
  abcBody body;
  const std::vector<bsVector> positions = row(3);
  ASSERT_TRUE(body.load(&positions));
  body.addLine(new abcLine(body.getMarkers()[0], body.getMarkers()[1]));
  std::vector<unsigned int> markersSeen;
  QObject::connect(&body, &abcBody::bodyLoaded, &body, [&](bool) { markersSeen.push_back(body.getNumMarker()); });
  SignalLog emitted(body);
  body.initialize();
  EXPECT_EQ(emitted.take(), (Signals{"loaded 0", "modified 0"}));
  EXPECT_EQ(markersSeen, std::vector<unsigned int>{3u});
  EXPECT_EQ(body.getNumMarker(), 0u);
  EXPECT_TRUE(body.getLines().empty());
}

TEST_F(Body, EmptiesItsFileNameWhenMarkedUnloadedAndNotWhenMarkedLoaded) {
  abcBody body;
  SignalLog emitted(body);
  body.setFileName("some.body");
  body.setLoaded(true);
  EXPECT_EQ(body.getFileName(), "some.body");
  EXPECT_TRUE(body.isLoaded());
  body.setLoaded(false);
  EXPECT_TRUE(body.getFileName().isEmpty());
  EXPECT_FALSE(body.isLoaded());
  EXPECT_EQ(emitted.take(), (Signals{"loaded 1", "loaded 0"}));
}

TEST_F(Body, EmitsModifiedOnEveryCallChangedOrNot) {
  abcBody body;
  SignalLog emitted(body);
  body.setModified(false);
  body.setModified(true);
  body.setModified(true);
  EXPECT_EQ(emitted.take(), (Signals{"modified 0", "modified 1", "modified 1"}));
  EXPECT_TRUE(body.isModified());
}

// --- emissions ---

TEST_F(Body, GivesEmissionsToMarkersByIndexAndLeavesTheRest) {
  abcBody body;
  const std::vector<bsVector> positions = row(3);
  ASSERT_TRUE(body.load(&positions));
  body.setMarkerEmission(9, 9, 9, 9);
  const std::vector<Emission> two{{1, 2, 3, 30}, {4, 5, 6, 60}};
  body.loadEmissions(&two);
  const QList<AbcMarkerData> records = body.give_data_with_emissions();
  EXPECT_EQ(records[0].emission_x, 1.0);
  EXPECT_EQ(records[1].emission_y, 5.0);
  EXPECT_EQ(records[1].opening_angle, 60.0);
  EXPECT_EQ(records[2].emission_z, 9.0);
  EXPECT_EQ(records[2].opening_angle, 9.0);
}

TEST_F(Body, IgnoresEmissionsBeyondItsMarkers) {
  abcBody body;
  const std::vector<bsVector> positions = row(2);
  ASSERT_TRUE(body.load(&positions));
  const std::vector<Emission> three{{1, 0, 0, 1}, {2, 0, 0, 2}, {3, 0, 0, 3}};
  body.loadEmissions(&three);
  EXPECT_EQ(body.give_data_with_emissions()[1].emission_x, 2.0);
}

TEST_F(Body, GivesTheSameEmissionToEveryMarkerAndToNoneWithoutMarkers) {
  abcBody body;
  body.setMarkerEmission(1, 2, 3, 45);
  const std::vector<bsVector> positions = row(4);
  ASSERT_TRUE(body.load(&positions));
  EXPECT_EQ(body.give_data_with_emissions()[0].opening_angle, 0.0);
  body.setMarkerEmission(1, 2, 3, 45);
  for (const AbcMarkerData& record : body.give_data_with_emissions()) {
    EXPECT_EQ(record.emission_x, 1.0);
    EXPECT_EQ(record.emission_y, 2.0);
    EXPECT_EQ(record.emission_z, 3.0);
    EXPECT_EQ(record.opening_angle, 45.0);
  }
}

TEST_F(Body, HandsOutRecordsInMarkerOrder) {
  abcBody body;
  const std::vector<bsVector> positions{{1, 2, 3}, {4, 5, 6}};
  ASSERT_TRUE(body.load(&positions));
  const QList<AbcMarkerData> records = body.give_data_with_emissions();
  ASSERT_EQ(records.size(), 2);
  EXPECT_EQ(records[1].id, 1u);
  EXPECT_EQ(records[1].position, bsVector(4, 5, 6));
  EXPECT_EQ(records[1].radius, 10.0);
  EXPECT_EQ(records[1].small_radius, 3.0);
}

// --- lines ---

/// A line that tells when it is destroyed.
class CountedLine : public abcLine {
 public:
  CountedLine(abcMarker* first, abcMarker* second, int& alive) : abcLine(first, second), alive_(alive) { ++alive_; }
  ~CountedLine() override { --alive_; }

 private:
  int& alive_;
};

class BodyLines : public Body {
 protected:
  BodyLines() {
    const std::vector<bsVector> positions = row(4);
    body->load(&positions);
    markers = body->getMarkers();
  }
  abcLine* join(std::size_t first, std::size_t second) {
    auto* line = new CountedLine(markers[first], markers[second], alive);
    body->addLine(line);
    return line;
  }

  int alive = 0;
  std::unique_ptr<abcBody> body = std::make_unique<abcBody>();
  std::vector<abcMarker*> markers;
};

TEST_F(BodyLines, ExistInEitherDirection) {
  join(0, 1);
  join(2, 1);
  EXPECT_TRUE(body->lineExists(markers[0], markers[1]));
  EXPECT_TRUE(body->lineExists(markers[1], markers[0]));
  EXPECT_TRUE(body->lineExists(markers[1], markers[2]));
  EXPECT_FALSE(body->lineExists(markers[0], markers[2]));
  EXPECT_FALSE(body->lineExists(markers[0], markers[0]));
  EXPECT_FALSE(body->lineExists(nullptr, markers[0]));
}

TEST_F(BodyLines, MoveDownWhenOneIsRemovedWhichStaysAlive) {
  abcLine* first = join(0, 1);
  abcLine* second = join(1, 2);
  abcLine* third = join(2, 3);
  body->removeLine(second);
  EXPECT_EQ(body->getLines(), (std::vector<abcLine*>{first, third}));
  EXPECT_FALSE(body->lineExists(markers[1], markers[2]));
  EXPECT_EQ(alive, 3);
  EXPECT_EQ(second->getFirst(), markers[1]);
}

TEST_F(BodyLines, AreDeletedWithTheBodyRemovedOnesToo) {
  abcLine* line = join(0, 1);
  join(1, 2);
  body->removeLine(line);
  body.reset();
  EXPECT_EQ(alive, 0);
}

TEST_F(BodyLines, AreDeletedWhenTheBodyIsInitialisedRemovedOnesToo) {
  abcLine* line = join(0, 1);
  join(1, 2);
  body->removeLine(line);
  body->initialize();
  EXPECT_EQ(alive, 0);
}

TEST_F(BodyLines, AreOwnedOnceHoweverOftenTheyAreAddedAndRemoved) {
  abcLine* line = join(0, 1);
  body->addLine(line);
  body->addLine(nullptr);
  EXPECT_EQ(body->getLines().size(), 1u);
  body->removeLine(line);
  body->removeLine(line);
  body->removeLine(nullptr);
  EXPECT_TRUE(body->getLines().empty());
  body->addLine(line);
  EXPECT_EQ(body->getLines().size(), 1u);
  body.reset();
  EXPECT_EQ(alive, 0);
}

}  // namespace
