// Live lines over a network that loses, doubles, reorders and damages datagrams, and adds its own.
#include <QLabel>
#include <QList>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <vector>

#include "operatedhost.h"
#include "requester.h"

namespace {

using namespace korvex2_test;

/// Keeps every line of its tag, as a module's subscriber gets it.
class LineKeeper : public Requester {
 public:
  int set_ascii_data(const char* /*tag*/, const char* line) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.push_back(line);
    return 0;
  }
  void set_mea_started() override { ++started; }
  void set_mea_stopped() override { ++stopped; }
  std::vector<std::string> lines() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }
  std::atomic<int> started{0};
  std::atomic<int> stopped{0};

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

class Datagrams : public NetworkTest {
 protected:
  void SetUp() override {
    backend.options = QStringList{"--rate", "250"};
    NetworkTest::SetUp();
  }

  /// Keeps what the backend sends.
  void note(const QByteArray& datagram) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const QByteArray& line : datagram.split('\n')) {
      if (line.startsWith("6d ")) {
        sent_.push_back(line.toStdString());
      }
    }
  }
  /// What comes through in a datagram's place.
  std::vector<QByteArray> passedInTheirPlace(const QByteArray& datagram, int number) {
    switch (number % 11) {
      case 1:
        return {};
      case 2:
        return {datagram, datagram};
      case 3:
        held_ = datagram;
        return {};
      case 4:
        return {datagram, held_};  // one has overtaken the other
      case 5:
        return {datagram.left(datagram.size() / 2)};
      case 6:
        return {datagram.chopped(1)};
      case 7:
        return {QByteArray(60000, 'x')};
      case 8:
        return {datagram + "6d 1 " + QByteArray(60000, '[') + "\n"};
      case 9:
        return {"fr 1\n6d 1 [0 1.0][1 2 3][1 0 0 0 1 0 0 0 1]\n",
                "6d 1 [0 1.0][1 2 3][1 0 0 0 1 0 0 0 1]\n",
                "",
                "\n",
                QByteArray("fr 9999999999999999999999\n\0\xff\n", 30),
                datagram};
      default:
        return {datagram};
    }
  }
  std::vector<std::string> sent() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return sent_;
  }
  /// The first of the lines that is none of those sent, or was sent before its predecessor, or once only.
  static std::string firstOutOfOrder(const std::vector<std::string>& received, const std::vector<std::string>& sent) {
    auto next = sent.begin();
    for (const std::string& line : received) {
      next = std::find(next, sent.end(), line);
      if (next == sent.end()) {
        return line;
      }
      ++next;
    }
    return "";
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> sent_;
  QByteArray held_;
};

TEST_F(Datagrams, LostDoubledReorderedCutAndHugeOnesLeaveThePoseRight) {
  connectHost();
  relay->onDatagram([this](const QByteArray& datagram, int) {
    note(datagram);
    return std::vector<QByteArray>{datagram};
  });
  host->run([this] {
    host->choose(tableRow);
    host->click("online_checkbox");
    ASSERT_TRUE(becomes([this] { return host->canvas().isTrackedBodySeen(); }));
    const bsVector truth = host->canvas().getTrackedPosition();  // the table is at rest

    LineKeeper keeper;
    relay->onDatagram([this](const QByteArray& datagram, int number) {
      note(datagram);
      return passedInTheirPlace(datagram, number);
    });
    host->frontend.channel().register_requester("6d", &keeper);
    const int before = relay->datagramsIn();
    int looks = 0;
    EXPECT_TRUE(becomes([&] {
      ++looks;
      EXPECT_TRUE(host->canvas().isTrackedBodySeen());
      const bsVector off = host->canvas().getTrackedPosition() - truth;
      EXPECT_LT(std::abs(off.x) + std::abs(off.y) + std::abs(off.z), 1e-3);
      return relay->datagramsIn() > before + 150;
    }));
    host->frontend.channel().unregister_requester("6d", &keeper);
    EXPECT_GT(looks, 5);
    EXPECT_GT(keeper.lines().size(), 40U);
    EXPECT_LT(keeper.lines().size(), 150U);
    EXPECT_EQ(firstOutOfOrder(keeper.lines(), sent()), "");
    EXPECT_EQ(keeper.stopped, 0);
    EXPECT_TRUE(host->isConnected());
  });
  const korvex2::LiveStatus status = host->frontend.connection().liveStatus();
  EXPECT_GT(status.droppedDatagrams, 30U);
  EXPECT_GT(status.droppedLines, 30U);
  // The status bar looks once a second.
  EXPECT_TRUE(becomes([&] {
    return host->frontend.window()
        .findChild<QLabel*>("liveStatus")
        ->toolTip()
        .contains(
            QStringLiteral("Of no use so far: %1 frames that came twice, too late or from elsewhere, %2 damaged lines")
                .arg(status.droppedDatagrams)
                .arg(status.droppedLines));
  }));
  EXPECT_EQ(host->reports.join('\n').toStdString(), "");
}

TEST_F(Datagrams, WhenNoneComeTheLastPoseStandsAndTheDialogWorksOn) {
  connectHost();
  const std::vector<Position> before = storedMarkers(2);
  host->run([&] {
    host->choose(tableRow);
    host->click("online_checkbox");
    ASSERT_TRUE(becomes([this] { return host->canvas().isTrackedBodySeen(); }));
    relay->onDatagram([](const QByteArray&, int) { return std::vector<QByteArray>(); });
    host->move("14");
    host->click("apply_button");
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    expectNear(host->shown(), movedAlong(before, 0, 14));
    relay->onDatagram(nullptr);
    EXPECT_TRUE(becomes([this] { return host->canvas().isTrackedBodySeen(); }));
  });
  expectNear(storedMarkers(2), movedAlong(before, 0, 14));
}

// Over a reconnection the frame numbers of a backend that was started anew begin anew, and are taken.
TEST_F(Datagrams, ABackendStartedAnewIsFollowedFromItsFirstFrame) {
  connectHost();
  host->run([&] {
    host->choose(tableRow);
    host->click("online_checkbox");
    ASSERT_TRUE(becomes([this] { return relay->datagramsOut() > 30 && host->canvas().isTrackedBodySeen(); }));
    restartBackend();
    LineKeeper keeper;
    host->frontend.channel().register_requester("6d", &keeper);
    host->move("14");
    host->click("apply_button");  // which starts the measurement
    EXPECT_TRUE(becomes([&keeper] { return keeper.lines().size() > 3; }));
    EXPECT_TRUE(becomes([this] { return host->canvas().isTrackedBodySeen(); }));
    host->frontend.channel().unregister_requester("6d", &keeper);
    EXPECT_EQ(keeper.started, 1);
  });
}

}  // namespace
