// Changes of several commands, and deletions and discards, when the connection breaks between or inside them.
#include <QDoubleSpinBox>

#include <atomic>
#include <chrono>
#include <vector>

#include "operatedhost.h"

namespace {

using namespace korvex2_test;

constexpr const char* deleteFailed = "Error: Unable to delete marker of body";
constexpr int activeNumber = activeRow + 1;

class Partial : public NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    connectHost();
    before = storedMarkers();
  }
  void cutOnceAt(const char* command, const Fate& cut) {
    relay->onLine([this, command, cut](const PassingLine& line) {
      if (!line.isCommand(command)) {
        return Fate::pass();
      }
      relay->onLine(nullptr);
      return cut;
    });
  }
  void loseOnceTheAnswerTo(const char* command) {
    relay->onLine([this, command](const PassingLine& line) {
      if (!line.isAnswerTo(command)) {
        return Fate::pass();
      }
      relay->onLine(nullptr);
      return Fate::cutBefore();
    });
  }
  void deleteMarker(std::size_t marker) {
    host->select(marker);
    watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
    host->click("pushButton_deleteMarker");
  }
  static std::vector<Position> without(std::vector<Position> points, std::ptrdiff_t index) {
    points.erase(points.begin() + index);
    return points;
  }

  std::vector<Position> before;
};

// The count, then position and emission of five markers: eleven commands, cut at each of them. What was acknowledged is
// there, the rest is as it was, and there is no third thing.
TEST_F(Partial, MarkersWrittenBeforeTheCutAreThereAndTheOthersAsTheyWere) {
  const std::vector<Position> positions = storedMarkers(activeNumber);
  std::vector<double> angles;
  for (const auto& emission : backend.stored("standard", activeNumber).emissions) {
    angles.push_back(emission[3]);
  }
  for (int place = 0; place <= 11; ++place) {
    SCOPED_TRACE(place);
    const double angle = 20.0 + place;
    std::atomic<int> seen{0};
    host->run([&] {
      host->choose(activeRow);
      host->find<QDoubleSpinBox>("doubleSpinBox_alpha")->setValue(angle);
      relay->onLine([&seen, place](const PassingLine& line) {
        return line.isCommand("korvex2 set body ") && seen++ == place ? Fate::cutBefore() : Fate::pass();
      });
      host->click("apply_button");
      relay->onLine(nullptr);
      EXPECT_EQ(seen, place < 11 ? place + 1 : 11);
      EXPECT_TRUE(host->dialog->isVisible());
    });
    EXPECT_EQ(hostReported("Error: Unable to set body "), place < 11);
    EXPECT_EQ(hostReported("Error: Unable to set body target_type"), place == 0);
    ASSERT_TRUE(comesBack());
    host->takeReports();
    for (std::size_t marker = 0; marker < 5; ++marker) {
      if (static_cast<int>(marker) * 2 + 2 < place) {  // behind the count and all before it
        angles[marker] = angle;
      }
    }
    const StoredBody stored = backend.stored("standard", activeNumber);
    expectNear(stored.markers, positions);
    ASSERT_EQ(stored.emissions.size(), angles.size());
    for (std::size_t marker = 0; marker < angles.size(); ++marker) {
      EXPECT_EQ(stored.emissions[marker][3], angles[marker]) << "marker " << marker + 1;
    }
  }
  expectSoundDatabase();
}

TEST_F(Partial, ADeletionThatDidNotArriveLeavesAllMarkers) {
  for (const Fate& cut : {Fate::cutBefore(), Fate::cutInside(), Fate::cutBeforeEnd()}) {
    host->run([&] {
      host->choose(cupRow);
      cutOnceAt("korvex2 body delete_marker ", cut);
      deleteMarker(2);
      EXPECT_TRUE(host->takeReports().contains(deleteFailed));
      expectNear(host->shown(), before);
      ASSERT_TRUE(comesBack());
    });
    host->takeReports();
    expectNear(storedMarkers(), before);
  }
  expectSoundDatabase();
}

TEST_F(Partial, ADeletionWhoseAnswerWasLostIsNotRepeatedOnANeighbour) {
  host->run([&] {
    host->choose(cupRow);
    loseOnceTheAnswerTo("korvex2 body delete_marker ");
    deleteMarker(2);
    EXPECT_TRUE(host->takeReports().contains(deleteFailed));
    expectNear(storedMarkers(), without(before, 2));
    ASSERT_TRUE(comesBack());
    EXPECT_EQ(host->canvas().getBodyNumMarker(), 5U) << "the host knows of no deletion";
    deleteMarker(2);
    EXPECT_TRUE(host->reports.contains(changedReport("standard b01")));
    EXPECT_TRUE(host->takeReports().contains(deleteFailed));
    expectNear(storedMarkers(), without(before, 2));
    host->choose(tableRow);
    host->choose(cupRow);
    expectNear(host->shown(), without(before, 2));
  });
  expectSoundDatabase();
}

TEST_F(Partial, ADeletionWhileTheBackendIsKilledIsDoneOrNotDone) {
  for (int moment = 0; moment < 6; ++moment) {
    SCOPED_TRACE(moment);
    const auto delay = std::chrono::microseconds(moment * moment * 40);
    host->run([&] {
      host->choose(activeRow);
      const std::vector<Position> old = storedMarkers(activeNumber);
      ASSERT_EQ(old.size(), 5U);
      relay->onLine([&, delay](const PassingLine& line) {
        return line.isCommand("korvex2 body delete_marker ") ? Fate::pass().andThen([&, delay] {
          const auto end = std::chrono::steady_clock::now() + delay;
          while (std::chrono::steady_clock::now() < end) {
          }
          backend.killNow();
        })
                                                             : Fate::pass();
      });
      deleteMarker(1);
      EXPECT_TRUE(becomes([this] { return !host->isConnected(); }));
      relay->onLine(nullptr);
      backend.kill();
      const std::vector<Position> now = storedMarkers(activeNumber);
      EXPECT_TRUE(areNear(now, old) || areNear(now, without(old, 1)));
    });
    expectSoundDatabase();
    ASSERT_TRUE(backend.startAgain());
    ASSERT_TRUE(comesBack());
    host->takeReports();
    EXPECT_EQ(backend.ask("korvex2 set body number_of_marker standard b07 5"), "korvex2 ok");  // for the next round
  }
}

// Taking a deletion back writes the count and every marker.
TEST_F(Partial, AnUndoneDeletionThatBreaksOffIsToldAndCanBeMadeGood) {
  host->run([&] {
    host->choose(cupRow);
    deleteMarker(0);
    expectNear(storedMarkers(), without(before, 0));
    cutOnceAt("korvex2 set body marker standard b01 m03", Fate::cutBefore());
    host->click("undo_button");
    EXPECT_TRUE(host->takeReports().contains("Error: Unable to set body marker values"));
    std::vector<Position> partly = without(before, 0);  // the count and two markers were acknowledged
    partly.push_back({0, 0, 0});
    partly[0] = before[0];
    partly[1] = before[1];
    expectNear(storedMarkers(), partly);
    ASSERT_TRUE(comesBack());
    host->choose(tableRow);
    host->choose(cupRow);
    expectNear(host->shown(), partly);
  });
  expectSoundDatabase();
}

TEST_F(Partial, ADiscardOverALostConnectionIsToldAndTheDialogCloses) {
  host->run([&] {
    host->choose(cupRow);
    host->move("14");
    host->click("apply_button");
    backend.kill();
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    host->click("cancel_button");
    EXPECT_FALSE(host->dialog->isVisible());
  });
  EXPECT_TRUE(host->takeReports().contains(transformFailed));
  expectNear(storedMarkers(), movedAlong(before, 0, 14));
  ASSERT_TRUE(backend.startAgain());
  ASSERT_TRUE(becomes([this] { return host->isConnected(); }));
  host->run([&] {
    host->choose(cupRow);
    expectNear(host->shown(), movedAlong(before, 0, 14));
    host->move("-14");
    host->click("apply_button");
  });
  expectNear(storedMarkers(), before);
  expectSoundDatabase();
}

TEST_F(Partial, ADiscardThatBreaksOffBetweenTwoBodiesHasDoneTheFirstAndTellsOfTheSecond) {
  const std::vector<Position> table = storedMarkers(2);
  host->run([&] {
    for (const int row : {cupRow, tableRow}) {
      host->choose(row);
      host->move("14");
      host->click("apply_button");
    }
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    cutOnceAt("korvex2 body transform standard b02", Fate::cutBefore());
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    host->click("cancel_button");
    EXPECT_FALSE(host->dialog->isVisible());
  });
  EXPECT_EQ(host->reports.filter(transformFailed).size(), 1);
  expectNear(storedMarkers(1), before);
  expectNear(storedMarkers(2), movedAlong(table, 0, 14));
  expectSoundDatabase();
}

}  // namespace
