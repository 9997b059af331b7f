// The connection is cut at single lines of an apply, and comes back while the dialog is open.
#include <QLabel>
#include <QTest>

#include <vector>

#include "operatedhost.h"

namespace {

using namespace korvex2_test;
using namespace std::chrono_literals;

class ConnectionCut : public NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    connectHost();
    before = storedMarkers();
  }
  /// Cuts once, at the first line that the rule is for.
  void cutOnceAt(const std::function<bool(const PassingLine&)>& where, const Fate& cut) {
    relay->onLine([this, where, cut](const PassingLine& line) {
      if (!where(line)) {
        return Fate::pass();
      }
      relay->onLine(nullptr);
      return cut;
    });
  }
  static bool isTransform(const PassingLine& line) { return line.isCommand("korvex2 body transform "); }
  static bool isAnswerToTransform(const PassingLine& line) { return line.isAnswerTo("korvex2 body transform "); }

  std::vector<Position> before;
};

TEST_F(ConnectionCut, BetweenTrackingStopAndTheTransformNothingIsAppliedAndTheChangeStays) {
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    cutOnceAt([](const PassingLine& line) { return line.isAnswerTo("korvex2 tracking stop"); }, Fate::cutAfter());
    host->click("apply_button");
    EXPECT_TRUE(becomes([this] { return hostReported(lossReport); }));
    EXPECT_TRUE(host->takeReports().contains(transformFailed));
    EXPECT_EQ(relay->commands("korvex2 body transform "), 0);
    EXPECT_TRUE(host->canvas().isBodyModified());
    expectNear(host->shown(), movedAlong(before, 0, 14));
    expectNear(storedMarkers(), before);

    ASSERT_TRUE(comesBack());
    host->enter("body_pos_xyzWidget", 1, "3");
    host->click("apply_button");
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    EXPECT_EQ(relay->commands("korvex2 body transform "), 1);
    EXPECT_EQ(backend.ask("korvex2 get status active"), "korvex2 set status active mea");
    host->click("ok_button");
  });
  expectNear(storedMarkers(), movedAlong(movedAlong(before, 0, 14), 1, 3));
  expectSoundDatabase();
}

// The command arrives without the byte that ends it, or cut off in its middle: it is none.
TEST_F(ConnectionCut, InsideTheTransformNothingIsApplied) {
  for (const Fate& cut : {Fate::cutInside(), Fate::cutBeforeEnd(), Fate::cutBefore()}) {
    host->run([this, cut] {
      host->choose(cupRow);
      host->move("14");
      cutOnceAt(isTransform, cut);
      host->click("apply_button");
      EXPECT_TRUE(host->reports.contains(transformFailed));
      EXPECT_TRUE(host->canvas().isBodyModified());
    });
    ASSERT_TRUE(comesBack());
    host->takeReports();
    EXPECT_NE(backend.ask("korvex2 get version"), "") << "it goes on serving others";
    expectNear(storedMarkers(), before);
  }
  expectSoundDatabase();
}

TEST_F(ConnectionCut, AfterTheTransformItIsNotAppliedASecondTime) {
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    cutOnceAt(isAnswerToTransform, Fate::cutBefore());
    host->click("apply_button");
    EXPECT_TRUE(host->takeReports().contains(transformFailed));
    expectNear(storedMarkers(), movedAlong(before, 0, 14));  // it was carried out, which nobody here can know

    ASSERT_TRUE(comesBack());
    host->enter("body_pos_xyzWidget", 1, "3");
    host->click("apply_button");
    EXPECT_TRUE(host->reports.contains(changedReport("standard b01")));
    EXPECT_TRUE(host->takeReports().contains(transformFailed));
    expectNear(storedMarkers(), movedAlong(before, 0, 14));
    host->click("ok_button");  // one more try is refused as well, and the dialog stays
    EXPECT_TRUE(host->dialog->isVisible());
    expectNear(storedMarkers(), movedAlong(before, 0, 14));

    watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::No);
    host->choose(tableRow);
    host->choose(cupRow);
    expectNear(host->shown(), movedAlong(before, 0, 14));
    host->takeReports();
    host->enter("body_pos_xyzWidget", 1, "3");
    host->click("apply_button");
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    host->click("ok_button");
  });
  expectNear(storedMarkers(), movedAlong(movedAlong(before, 0, 14), 1, 3));
  expectSoundDatabase();
}

// Delivered whole, and the host gone before the answer: done or not, but one of the two, and told.
TEST_F(ConnectionCut, RightBehindTheTransformItIsAppliedWholeOrNotAtAll) {
  for (int round = 0; round < 6; ++round) {
    const std::vector<Position> old = storedMarkers();
    host->run([this] {
      host->choose(cupRow);
      host->move("14");
      cutOnceAt(isTransform, Fate::cutAfter());
      host->click("apply_button");
      EXPECT_TRUE(host->takeReports().contains(transformFailed));
    });
    ASSERT_TRUE(comesBack());
    backend.ask("korvex2 get version");  // what had arrived before is done when this is answered
    const std::vector<Position> now = storedMarkers();
    EXPECT_TRUE(areNear(now, old) || areNear(now, movedAlong(old, 0, 14)));
    host->run([this, now] {
      host->choose(cupRow);
      expectNear(host->shown(), now);
    });
  }
  expectSoundDatabase();
}

TEST_F(ConnectionCut, WhileTheDialogIsOpenItComesBackAndLiveLinesWithIt) {
  host->run([this] {
    host->choose(tableRow);
    host->click("online_checkbox");
    ASSERT_TRUE(becomes([this] { return host->canvas().isTrackedBodySeen(); }));
    const int ports = relay->commands("korvex2 set output net chmon udp ");
    EXPECT_GE(ports, 1);
    relay->cut();
    EXPECT_TRUE(becomes([this] { return hostReported(lossReport); }));
    ASSERT_TRUE(comesBack());
    EXPECT_TRUE(host->dialog->isVisible());
    EXPECT_EQ(relay->commands("korvex2 set output net chmon udp "), ports + 1);
    EXPECT_GE(relay->commands("korvex2 set output active chmon 6dw2 yes"), 2) << "kinds are switched on again";
    const int lines = relay->datagramsOut();
    EXPECT_TRUE(becomes([this, lines] { return relay->datagramsOut() > lines + 3; }));
    host->choose(cupRow);
    host->move("14");
    host->click("apply_button");
    EXPECT_TRUE(becomes([this] { return host->canvas().isTrackedBodySeen(); }));
  });
  expectNear(storedMarkers(), movedAlong(before, 0, 14));
  EXPECT_EQ(host->reports.size(), 1) << "one report of the loss, and nothing else: "
                                     << host->reports.join('\n').toStdString();
}

TEST_F(ConnectionCut, ABackendThatStaysAwayIsCalledLostAndAClickFindsItAgain) {
  host.reset();
  korvex2::NetworkOptions times = OperatedHost::quickTimes();
  times.lostAfter = 100ms;
  times.lostDelay = 60s;  // only the click can bring it back in time
  connectHost(times);
  relay->setListening(false);
  relay->cut();
  EXPECT_TRUE(becomes([this] { return host->status().startsWith("Reconnecting to "); }));
  EXPECT_TRUE(
      becomes([this] { return host->status() == QString("Connection to 127.0.0.1:%1 lost").arg(relay->port()); }));
  EXPECT_TRUE(hostReported("The backend at 127.0.0.1:"));
  host->run([this] {  // the dialog opens empty and can be closed
    EXPECT_FALSE(host->canvas().isBodyLoaded());
    host->click("cancel_button");
  });
  const int reports = host->reports.size();
  relay->setListening(true);
  QTest::mouseClick(host->frontend.window().findChild<QLabel*>("connectionStatus"), Qt::LeftButton);
  ASSERT_TRUE(comesBack());
  EXPECT_EQ(host->reports.size(), reports);
  host->run([this] {
    host->choose(cupRow);
    expectNear(host->shown(), before);
  });
}

}  // namespace
