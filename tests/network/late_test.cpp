// Answers and commands that come later than the host waits.
#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <vector>

#include "operatedhost.h"

namespace {

using namespace korvex2_test;
using namespace std::chrono_literals;

class Late : public NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    connectHost(OperatedHost::hastyTimes());
    before = storedMarkers();
  }
  /// Keeps back the first line that the rule is for.
  void holdOnce(const std::function<bool(const PassingLine&)>& where) {
    relay->onLine([this, where](const PassingLine& line) {
      if (!where(line)) {
        return Fate::pass();
      }
      relay->onLine(nullptr);
      ++held;
      return Fate::hold();
    });
  }
  /// Everything that is kept back goes on, and a moment passes in which it could do harm.
  void releaseAll() {
    ASSERT_EQ(held, 1);
    relay->release();
    QTest::qWait(20);
  }

  std::vector<Position> before;
  std::atomic<int> held{0};
};

TEST_F(Late, AnAnswerToAnApplyIsTakenForNothingElseAndTheApplyIsNotRepeated) {
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    holdOnce([](const PassingLine& line) { return line.isAnswerTo("korvex2 body transform "); });
    host->click("apply_button");
    EXPECT_TRUE(host->reports.contains(transformFailed));
    EXPECT_TRUE(hostReported(lossReport));
    EXPECT_TRUE(host->takeReports().join(' ').contains("the backend did not answer within 0.4 s"));
    releaseAll();
    ASSERT_TRUE(comesBack());
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    expectNear(storedMarkers(), movedAlong(before, 0, 14));

    host->enter("body_pos_xyzWidget", 1, "3");
    host->click("apply_button");
    EXPECT_TRUE(host->takeReports().contains(changedReport("standard b01")));
    expectNear(storedMarkers(), movedAlong(before, 0, 14));
    watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::No);
    host->choose(tableRow);
    host->choose(cupRow);
    expectNear(host->shown(), movedAlong(before, 0, 14));
  });
  expectSoundDatabase();
}

// What the first apply has made could not be read any more. The second one, whose answer is lost, must not become a
// third when the operator tries again.
TEST_F(Late, AnApplyAfterWhichTheBodyCouldNotBeReadIsFollowedByNoneUntilItIs) {
  const auto cutAt = [this](const std::function<bool(const PassingLine&)>& where, const Fate& cut) {
    relay->onLine([this, where, cut](const PassingLine& line) {
      if (!where(line)) {
        return Fate::pass();
      }
      relay->onLine(nullptr);
      return cut;
    });
  };
  const auto isTransformed = [](const PassingLine& line) { return line.isAnswerTo("korvex2 body transform "); };
  const std::vector<std::function<bool(const PassingLine&)>> places = {
      isTransformed, [](const PassingLine& line) { return line.isAnswerTo("korvex2 get body state standard b01"); },
      [](const PassingLine& line) { return line.isAnswerTo("korvex2 get body number_of_marker standard b01"); },
      [](const PassingLine& line) { return line.isAnswerTo("korvex2 get body marker standard b01 m02"); }};
  std::vector<Position> now = before;
  for (const auto& place : places) {
    host->run([&] {
      host->choose(cupRow);
      host->move("14");
      cutAt(place, Fate::cutAfter());
      host->click("apply_button");
      now = movedAlong(now, 0, 14);
      ASSERT_TRUE(comesBack());
      EXPECT_FALSE(host->takeReports().contains(transformFailed)) << "it was answered";
      expectNear(storedMarkers(), now);

      host->move("5");
      cutAt(isTransformed, Fate::cutBefore());
      host->click("apply_button");
      ASSERT_TRUE(comesBack());
      relay->onLine(nullptr);
      const std::vector<Position> afterSecond = storedMarkers();
      EXPECT_TRUE(areNear(afterSecond, now) || areNear(afterSecond, movedAlong(now, 0, 5)));
      host->enter("body_pos_xyzWidget", 1, "3");
      host->click("apply_button");
      EXPECT_TRUE(host->takeReports().contains(changedReport("standard b01")));
      EXPECT_EQ(storedMarkers(), afterSecond) << "nothing twice";
      now = afterSecond;
    });
  }
  expectSoundDatabase();
}

TEST_F(Late, ACallWithItsGuardTakesNoLongerThanOneTimeOut) {
  korvex2::HostChannel& channel = host->frontend.channel();
  relay->onLine(
      [](const PassingLine& line) { return line.isAnswerTo("korvex2 get body ") ? Fate::late(220ms) : Fate::pass(); });
  QElapsedTimer timer;
  timer.start();
  int markers = 0;
  EXPECT_EQ(channel.get_int(&markers, "body number_of_marker standard b01"), 0);
  EXPECT_EQ(markers, 5);
  EXPECT_LT(timer.elapsed(), 400) << "both questions were under way at the same time";
}

TEST_F(Late, AnAnswerToAQueryIsNotTheNextOnes) {
  host->run([this] {
    host->choose(tableRow);
    const std::vector<Position> table = host->shown();
    holdOnce([](const PassingLine& line) { return line.isAnswerTo("korvex2 get body marker standard b01 m02"); });
    host->choose(cupRow);
    EXPECT_TRUE(host->takeReports().contains("Error: Unable to check body marker info"));
    expectNear(host->shown(), table);
    releaseAll();
    ASSERT_TRUE(comesBack());
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    host->choose(cupRow);
    expectNear(host->shown(), before);
  });
  expectNear(storedMarkers(), before);
}

// The command itself was under way too long. The operator has applied in the meantime; what comes late must not be
// applied on top.
TEST_F(Late, ACommandThatArrivesAfterItsSuccessorDoesNothing) {
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    holdOnce([](const PassingLine& line) { return line.isCommand("korvex2 body transform "); });
    host->click("apply_button");
    EXPECT_TRUE(host->takeReports().contains(transformFailed));
    expectNear(storedMarkers(), before);
    ASSERT_TRUE(comesBack());
    host->enter("body_pos_xyzWidget", 1, "3");
    host->click("apply_button");
    EXPECT_FALSE(host->takeReports().contains(transformFailed));
    expectNear(storedMarkers(), movedAlong(movedAlong(before, 0, 14), 1, 3));
    releaseAll();
    backend.ask("korvex2 get version");
    expectNear(storedMarkers(), movedAlong(movedAlong(before, 0, 14), 1, 3));
    host->click("ok_button");
  });
  expectNear(storedMarkers(), movedAlong(movedAlong(before, 0, 14), 1, 3));
  expectSoundDatabase();
}

TEST_F(Late, ADelayBelowTheTimeOutIsNoFault) {
  relay->onLine([](const PassingLine& line) {
    return line.isAnswerTo("korvex2 body transform ") ? Fate::late(100ms) : Fate::pass();
  });
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    host->click("apply_button");
    expectNear(host->shown(), movedAlong(before, 0, 14));
  });
  EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
  EXPECT_EQ(relay->connections(), 1);
  expectNear(storedMarkers(), movedAlong(before, 0, 14));
}

TEST_F(Late, ABackendThatFallsSilentIsNoticedWithoutAnyCommand) {
  host.reset();
  korvex2::NetworkOptions times = OperatedHost::hastyTimes();
  times.heartbeat = 50ms;
  connectHost(times);
  relay->onLine([](const PassingLine& line) { return line.toBackend ? Fate::pass() : Fate::drop(); });
  EXPECT_TRUE(becomes([this] { return hostReported(lossReport); }));
  EXPECT_TRUE(host->status().startsWith("Reconnecting to ")) << qPrintable(host->status());
  relay->passEverything();
  ASSERT_TRUE(comesBack());
  host->run([this] {
    host->choose(cupRow);
    expectNear(host->shown(), before);
  });
}

}  // namespace
