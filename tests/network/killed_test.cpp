// The backend program is killed before, during and after an apply.
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

#include "operatedhost.h"
#include "plainclient.h"

namespace {

using namespace korvex2_test;
using namespace std::chrono_literals;
class BackendKilled : public NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    connectHost();
    before = storedMarkers();
  }
  std::vector<Position> before;
};

TEST_F(BackendKilled, BeforeAnApplyTheChangeStaysAndIsAppliedOnceItIsBack) {
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    backend.kill();
    host->click("apply_button");
    EXPECT_TRUE(becomes([this] { return hostReported(lossReport); }));
    EXPECT_TRUE(host->takeReports().contains(transformFailed));
    EXPECT_TRUE(host->status().startsWith("Reconnecting to 127.0.0.1:")) << qPrintable(host->status());
    EXPECT_TRUE(host->dialog->isVisible());
    EXPECT_TRUE(host->canvas().isBodyModified());
    expectNear(storedMarkers(), before);

    ASSERT_TRUE(backend.startAgain());
    ASSERT_TRUE(comesBack());
    host->takeReports();
    EXPECT_FALSE(host->enabled("apply_button"));
    host->enter("body_pos_xyzWidget", 1, "3");
    host->click("apply_button");
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    EXPECT_FALSE(host->canvas().isBodyModified());
    host->click("ok_button");
  });
  expectNear(storedMarkers(), movedAlong(movedAlong(before, 0, 14), 1, 3));
  expectSoundDatabase();
}

/// Moments from just before the command is passed on to well after its answer; the steps are finest where the program
/// writes its files.
TEST_F(BackendKilled, DuringAnApplyLeavesTheBodyBeforeOrAfterItNeverBetween) {
  int applied = 0;
  int notApplied = 0;
  for (int moment = 0; moment < 12; ++moment) {
    SCOPED_TRACE(moment);
    const std::vector<Position> old = storedMarkers();
    const auto delay = std::chrono::microseconds(moment * moment * 12);
    std::atomic<bool> acknowledged{false};
    relay->onLine([&](const PassingLine& line) {
      if (line.isCommand("korvex2 body transform ")) {
        if (moment == 0) {
          backend.killNow();
        }
        return Fate::pass().andThen([&, delay] {
          const auto end = std::chrono::steady_clock::now() + delay;
          while (std::chrono::steady_clock::now() < end) {
          }
          backend.killNow();
        });
      }
      if (line.isAnswerTo("korvex2 body transform ") && line.text == "korvex2 ok") {
        acknowledged = true;
      }
      return Fate::pass();
    });
    host->run([this] {
      host->choose(cupRow);
      host->move("14");
      host->click("apply_button");
      EXPECT_TRUE(becomes([this] { return hostReported(lossReport); }));
      EXPECT_TRUE(host->dialog->isVisible());
    });
    relay->passEverything();
    backend.kill();  // and is waited for
    const bool reportedFailure = host->takeReports().contains(transformFailed);
    const std::vector<Position> now = storedMarkers();
    const bool isNew = areNear(now, movedAlong(old, 0, 14));
    EXPECT_TRUE(isNew || areNear(now, old)) << "something between";
    EXPECT_TRUE(isNew || !acknowledged) << "acknowledged and lost";
    EXPECT_TRUE(isNew || reportedFailure) << "not applied and not told";
    expectSoundDatabase();
    ++(isNew ? applied : notApplied);

    ASSERT_TRUE(backend.startAgain());
    ASSERT_TRUE(comesBack());
    host->takeReports();
    host->run([this] {  // what the operator sees next is what the files say
      host->choose(cupRow);
      expectNear(host->shown(), storedMarkers());
    });
  }
  EXPECT_GT(notApplied, 0);
  std::printf("[ MOMENTS  ] %d applied, %d not\n", applied, notApplied);
}

TEST_F(BackendKilled, AfterAnApplyWhatWasAcknowledgedIsThere) {
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    host->click("apply_button");
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    backend.kill();
    expectNear(storedMarkers(), movedAlong(before, 0, 14));
    expectNear(host->shown(), movedAlong(before, 0, 14));
    restartBackend();
    host->choose(tableRow);
    host->choose(cupRow);
    expectNear(host->shown(), movedAlong(before, 0, 14));
  });
  expectSoundDatabase();
}

TEST_F(BackendKilled, WhileTheDialogOpensItCanStillBeClosed) {
  relay->onLine([this](const PassingLine& line) {
    return line.isCommand("korvex2 get body type_desc") ? Fate::pass().andThen([this] { backend.killNow(); })
                                                        : Fate::pass();
  });
  host->run([this] {
    EXPECT_TRUE(host->dialog->isVisible());
    host->click("cancel_button");
    EXPECT_FALSE(host->dialog->isVisible());
  });
  EXPECT_TRUE(becomes([this] { return hostReported(lossReport); }));
  expectNear(storedMarkers(), before);
  relay->passEverything();
  ASSERT_TRUE(backend.startAgain());
  ASSERT_TRUE(comesBack());
  host->run([this] {
    host->choose(cupRow);
    expectNear(host->shown(), before);
  });
}

// A client that sends one change after the other without waiting: each moves the markers by one millimetre.
TEST(BackendProgram, KilledInAStreamOfChangesKeepsWhatItAcknowledgedAndNothingHalf) {
  constexpr int changes = 60;
  const QByteArray change = "korvex2 body transform standard b01 1 0 0 1 0 0 0 1 0 0 0 1\n";
  BackendProcess backend;
  std::vector<Position> before = backend.stored("standard", 1).markers;
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    ASSERT_TRUE(backend.start());
    PlainClient client(backend.port());
    client.send(change.repeated(changes));
    int acknowledged = 0;
    while (acknowledged < round * 5 && client.readLine() == "korvex2 ok") {
      ++acknowledged;
    }
    backend.killNow();
    while (client.readLine() == "korvex2 ok") {
      ++acknowledged;
    }
    backend.kill();
    const StoredBody stored = backend.stored("standard", 1);
    EXPECT_EQ(stored.problem.toStdString(), "");
    ASSERT_EQ(stored.markers.size(), before.size());
    const double done = stored.markers[0][0] - before[0][0];
    EXPECT_NEAR(done, std::round(done), 1e-6);
    EXPECT_GE(std::lround(done), acknowledged) << "an acknowledged change is lost";
    EXPECT_LE(std::lround(done), changes);
    expectNear(stored.markers, movedAlong(before, 0, -done));
    before = stored.markers;
  }
}

}  // namespace
