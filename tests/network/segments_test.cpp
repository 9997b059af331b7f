// Lines that arrive in pieces, several at once, or without anybody having asked.
#include <QTest>

#include <atomic>
#include <vector>

#include "operatedhost.h"

namespace {

using namespace korvex2_test;
using namespace std::chrono_literals;

class Segments : public NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    before = storedMarkers();
  }
  /// Opens, chooses the cup, moves it, applies, confirms.
  void session() {
    host->run([this] {
      host->choose(cupRow);
      expectNear(host->shown(), before);
      host->move("14");
      host->click("apply_button");
      expectNear(host->shown(), movedAlong(before, 0, 14));
      host->click("ok_button");
      EXPECT_FALSE(host->dialog->isVisible());
    });
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    expectNear(storedMarkers(), movedAlong(before, 0, 14));
    EXPECT_EQ(relay->connections(), 1) << "no fault for the host";
    expectSoundDatabase();
  }

  std::vector<Position> before;
};

TEST_F(Segments, AnswersInSingleBytesMakeNoDifference) {
  relay->onLine([](const PassingLine& line) { return line.toBackend ? Fate::pass() : Fate::inPieces(1); });
  connectHost();
  session();
}

TEST_F(Segments, CommandsInSingleBytesMakeNoDifference) {
  relay->onLine([](const PassingLine& line) { return line.toBackend ? Fate::inPieces(1) : Fate::pass(); });
  connectHost();
  session();
}

// The host asks one thing after the other, but for its look at the backend in a silence: that answer arrives together
// with the one to the command after it.
TEST_F(Segments, AnAnswerThatArrivesTogetherWithTheNextIsNotTakenForIt) {
  korvex2::NetworkOptions times = OperatedHost::quickTimes();
  times.heartbeat = 20ms;
  connectHost(times);
  std::atomic<int> joined{0};
  host->run([&] {
    for (const int row : {cupRow, tableRow, cupRow}) {
      const int joinedBefore = joined;
      relay->onLine([this, &joined](const PassingLine& line) {
        if (!line.isAnswerTo("korvex2 get status active")) {
          return Fate::pass();
        }
        relay->onLine(nullptr);
        return Fate::joinNext().andThen([&joined] { ++joined; });
      });
      EXPECT_TRUE(becomes([&] { return joined > joinedBefore; }));
      host->choose(row);
    }
    expectNear(host->shown(), before);
    host->move("14");
    host->click("apply_button");
    host->click("ok_button");
  });
  EXPECT_EQ(joined, 3);
  EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
  EXPECT_EQ(relay->connections(), 1);
  expectNear(storedMarkers(), movedAlong(before, 0, 14));
}

TEST_F(Segments, AnAnswerThatNobodyAskedForCostsTheConnectionAndNothingElse) {
  connectHost();
  host->run([this] {
    host->choose(cupRow);
    relay->sendToHosts("korvex2 ok\n");
    EXPECT_TRUE(becomes([this] { return hostReported(lossReport); }));
    EXPECT_TRUE(host->takeReports().join(' ').contains("sent more than was asked for"));
    ASSERT_TRUE(comesBack());
    host->move("14");
    relay->sendToHosts("korvex2 ok\n");  // lies there when the command goes out: not its answer
    QTest::qSleep(20);
    host->click("apply_button");
    EXPECT_TRUE(host->takeReports().contains(transformFailed));
    expectNear(storedMarkers(), before);
    ASSERT_TRUE(comesBack());
    host->enter("body_pos_xyzWidget", 1, "3");
    host->click("apply_button");
    EXPECT_EQ(host->takeReports().filter("Error").size(), 0);
  });
  expectNear(storedMarkers(), movedAlong(movedAlong(before, 0, 14), 1, 3));
  expectSoundDatabase();
}

TEST_F(Segments, AnAnswerThatBreaksOffIsNone) {
  connectHost();
  host->run([this] {
    host->choose(tableRow);
    const std::vector<Position> table = host->shown();
    for (const Fate& cut : {Fate::cutInside(), Fate::cutBeforeEnd()}) {
      relay->onLine([this, cut](const PassingLine& line) {
        if (!line.isAnswerTo("korvex2 get body marker standard b01 m03")) {
          return Fate::pass();
        }
        relay->onLine(nullptr);
        return cut;
      });
      host->choose(cupRow);
      EXPECT_TRUE(host->takeReports().contains("Error: Unable to check body marker info"));
      expectNear(host->shown(), table);
      ASSERT_TRUE(comesBack());
    }
    host->choose(cupRow);
    expectNear(host->shown(), before);
  });
}

}  // namespace
