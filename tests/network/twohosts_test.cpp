// Two hosts at one backend.
#include <QDoubleSpinBox>
#include <QFile>
#include <QTemporaryDir>

#include "bodyfilestore.h"
#include "operatedhost.h"
#include "plainclient.h"

namespace {

using namespace korvex2_test;

constexpr const char* deleteFailed = "Error: Unable to delete marker of body";

class TwoHosts : public NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    connectHost();
    other = std::make_unique<OperatedHost>(backend.port());
    ASSERT_TRUE(becomes([this] { return other->isConnected(); }));
    other->takeReports();
    before = storedMarkers();
  }
  void TearDown() override {
    other.reset();
    NetworkTest::TearDown();
  }
  /// Both dialogs open at a time; the second one lies over the first.
  void runBoth(const std::function<void()>& steps) {
    host->run([&] { other->run(steps); });
  }
  /// The operator's first try is refused and told; he reads the body again, applies, and has what he wanted.
  void beRefusedReadAgainAndApply(OperatedHost& stale, const std::vector<Position>& now) {
    stale.click("apply_button");
    EXPECT_TRUE(stale.reports.contains(changedReport("standard b01")));
    EXPECT_TRUE(stale.takeReports().contains(transformFailed));
    EXPECT_TRUE(stale.canvas().isBodyModified());
    expectNear(storedMarkers(), now);
    watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::No);
    stale.choose(tableRow);
    stale.choose(cupRow);
    expectNear(stale.shown(), now);
    stale.move("3");
    stale.click("apply_button");
    EXPECT_EQ(stale.takeReports().join('\n').toStdString(), "");
    expectNear(storedMarkers(), movedAlong(now, 0, 3));
  }

  std::unique_ptr<OperatedHost> other;
  std::vector<Position> before;
};

TEST_F(TwoHosts, TheSecondToApplyToABodyIsRefusedReadsAgainAndApplies) {
  for (const bool firstHostFirst : {true, false}) {
    SCOPED_TRACE(firstHostFirst);
    const std::vector<Position> old = storedMarkers();
    OperatedHost& quick = firstHostFirst ? *host : *other;
    OperatedHost& stale = firstHostFirst ? *other : *host;
    runBoth([&] {
      host->choose(cupRow);
      other->choose(cupRow);
      quick.move("14");
      stale.move("5");
      quick.click("apply_button");
      EXPECT_EQ(quick.takeReports().join('\n').toStdString(), "");
      expectNear(storedMarkers(), movedAlong(old, 0, 14));
      beRefusedReadAgainAndApply(stale, movedAlong(old, 0, 14));
    });
    expectNear(storedMarkers(), movedAlong(old, 0, 17));
  }
  expectSoundDatabase();
}

TEST_F(TwoHosts, OnDifferentBodiesDoNotDisturbEachOther) {
  const std::vector<Position> table = storedMarkers(2);
  runBoth([&] {
    host->choose(cupRow);
    other->choose(tableRow);
    host->move("14");
    other->move("5");
    host->click("apply_button");
    other->click("apply_button");
    host->move("1");
    other->move("1");
    other->click("apply_button");
    host->click("apply_button");
  });
  EXPECT_EQ((host->takeReports() + other->takeReports()).join('\n').toStdString(), "");
  expectNear(storedMarkers(1), movedAlong(before, 0, 15));
  expectNear(storedMarkers(2), movedAlong(table, 0, 6));
}

TEST_F(TwoHosts, AMarkerIsNotDeletedFromABodyThatTheOtherHasChanged) {
  runBoth([&] {
    host->choose(cupRow);
    other->choose(cupRow);
    other->move("14");
    other->click("apply_button");
    host->select(2);
    watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
    host->click("pushButton_deleteMarker");
    EXPECT_TRUE(host->reports.contains(changedReport("standard b01")));
    EXPECT_TRUE(host->takeReports().contains(deleteFailed));
    expectNear(storedMarkers(), movedAlong(before, 0, 14));
  });
  expectSoundDatabase();
}

TEST_F(TwoHosts, ADiscardDoesNotTouchABodyThatTheOtherHasChangedSince) {
  runBoth([&] {
    host->choose(cupRow);
    host->move("14");
    host->click("apply_button");
    other->choose(cupRow);
    other->move("5");
    other->click("apply_button");
    EXPECT_EQ((host->takeReports() + other->takeReports()).join('\n').toStdString(), "");
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    host->click("cancel_button");
    EXPECT_TRUE(host->reports.contains(changedReport("standard b01")));
    EXPECT_TRUE(host->takeReports().contains(transformFailed));
  });
  expectNear(storedMarkers(), movedAlong(before, 0, 19));
}

TEST_F(TwoHosts, AnEditOfEmissionsDoesNotWipeOutWhatTheOtherHasChanged) {
  std::vector<Position> moved;
  runBoth([&] {
    host->choose(activeRow);
    other->choose(activeRow);
    other->move("100");
    other->click("apply_button");
    EXPECT_EQ(other->takeReports().join('\n').toStdString(), "");
    moved = storedMarkers(7);
    const auto emissions = backend.stored("standard", 7).emissions;
    host->find<QDoubleSpinBox>("doubleSpinBox_alpha")->setValue(33);
    host->click("apply_button");
    EXPECT_EQ(host->takeReports().filter(changedReport("standard b07")).size(), 1) << "once, not for every marker";
    EXPECT_EQ(storedMarkers(7), moved);
    EXPECT_EQ(backend.stored("standard", 7).emissions, emissions);
  });
  EXPECT_EQ(storedMarkers(7), moved);
  expectSoundDatabase();
}

TEST_F(TwoHosts, ADeletionIsNotTakenBackOnceTheOtherHasChangedTheBody) {
  struct Case {
    const char* button;
    int row;
    int number;
    const char* body;
  };
  for (const Case& c :
       {Case{"undo_button", cupRow, 1, "standard b01"}, {"cancel_button", activeRow, 7, "standard b07"}}) {
    SCOPED_TRACE(c.button);
    std::vector<Position> moved;
    runBoth([&] {
      host->choose(c.row);
      host->select(2);
      watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
      host->click("pushButton_deleteMarker");
      other->choose(c.row);
      other->move("100");
      other->click("apply_button");
      EXPECT_EQ((host->takeReports() + other->takeReports()).join('\n').toStdString(), "");
      moved = storedMarkers(c.number);
      EXPECT_EQ(moved.size(), before.size() - 1);
      host->click(c.button);
      EXPECT_TRUE(host->takeReports().contains(changedReport(c.body)));
      EXPECT_EQ(storedMarkers(c.number), moved);
    });
    EXPECT_EQ(storedMarkers(c.number), moved);
  }
  expectSoundDatabase();
}

TEST_F(TwoHosts, ADeletionIsTakenBackWhenNobodyElseChangedTheBody) {
  host->run([&] {
    host->choose(cupRow);
    host->select(2);
    watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
    host->click("pushButton_deleteMarker");
    EXPECT_EQ(storedMarkers().size(), before.size() - 1);
    host->click("undo_button");
  });
  EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
  expectNear(storedMarkers(), before);
}

TEST_F(TwoHosts, ADiscardLeavesTheEmissionsOfABodyThatTheOtherHasChanged) {
  runBoth([&] {
    host->choose(activeRow);
    host->find<QDoubleSpinBox>("doubleSpinBox_alpha")->setValue(33);
    host->click("apply_button");
    other->choose(activeRow);
    other->enter("body_ori_xyzWidget", 2, "90");
    other->click("apply_button");
    EXPECT_EQ((host->takeReports() + other->takeReports()).join('\n').toStdString(), "");
    const StoredBody turned = backend.stored("standard", 7);
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    host->click("cancel_button");
    EXPECT_TRUE(host->takeReports().contains(changedReport("standard b07")));
    EXPECT_EQ(backend.stored("standard", 7).markers, turned.markers);
    EXPECT_EQ(backend.stored("standard", 7).emissions, turned.emissions);
  });
  expectSoundDatabase();
}

TEST_F(TwoHosts, AnImportIsNoReadingAndNeedsNone) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("three.body");
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("3\n0 0 0\n1 0 0\n0 1 0\n");
  file.close();
  runBoth([&] {
    host->choose(cupRow);
    host->move("14");
    host->click("apply_button");
    other->choose(cupRow);
    other->move("5");
    other->click("apply_button");
    host->frontend.connection().bodyFiles()->importBody({"standard", 1}, path);
    EXPECT_EQ(storedMarkers(), (std::vector<Position>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    host->move("1");
    host->click("apply_button");
    EXPECT_TRUE(host->takeReports().contains(changedReport("standard b01"))) << "the dialog has not read them";
  });
  EXPECT_EQ(storedMarkers(), (std::vector<Position>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
}

// Clients that do not say what they expect: each change is done whole, in the order of its arrival.
TEST_F(TwoHosts, WithoutAGuardBothChangesAreDoneOneAfterTheOther) {
  PlainClient one(backend.port());
  PlainClient two(backend.port());
  const QByteArray turn = "korvex2 body transform standard b01 0 0 0 0 1 0 -1 0 0 0 0 1";  // a quarter about z
  const QByteArray shift = "korvex2 body transform standard b01 10 0 0 1 0 0 0 1 0 0 0 1";
  std::vector<Position> expected = before;
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(one.ask(turn), "korvex2 ok");
    EXPECT_EQ(two.ask(shift), "korvex2 ok");
    for (Position& p : expected) {
      p = {-p[1] + 10, p[0], p[2]};
    }
  }
  expectNear(storedMarkers(), expected);
  one.send(shift + '\n' + shift + '\n');
  two.send(shift + '\n' + shift + '\n');
  for (PlainClient* client : {&one, &two, &one, &two}) {
    EXPECT_EQ(client->readLine(), "korvex2 ok");
  }
  expectNear(storedMarkers(), movedAlong(expected, 0, -40));
  expectSoundDatabase();
}

}  // namespace
