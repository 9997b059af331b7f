// Live lines from the embedded backend to a module's tracking stream, commands on one thread and lines on another.
#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <atomic>
#include <cmath>
#include <sstream>

#include "databasefolder.h"
#include "embeddedconnection.h"
#include "linerecorder.h"
#include "livedistributor.h"
#include "trackingstream.h"

using namespace korvex2;

namespace {

/// A module's listener: hands lines to a tracking stream, as the dialog does.
class StreamListener : public LineRecorder {
 public:
  int set_ascii_data(const char* tag, const char* line) override {
    ++lines;
    malformed += stream.parse(tag, line) == 0 ? 0 : 1;
    return LineRecorder::set_ascii_data(tag, line);
  }
  TrackingStream stream;
  std::atomic<int> lines{0};
  std::atomic<int> malformed{0};
};

class EmbeddedLive : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(prepareDatabaseFolder(folder(), SOURCE_DATA_FOLDER).toStdString(), "");
    LiveOptions options;
    options.rate = 1000;
    options.trajectory = SOURCE_DATA_FOLDER "/trajectories/handheld_xyz.tum";
    connection = std::make_unique<EmbeddedConnection>(folder(), QStringList(), options);
    ASSERT_EQ(connection->problems(), QStringList());
    for (const char* tag : {"6d", "6dw", "6dw2"}) {
      distributor.add(tag, &listener);
    }
    connection->startLiveLines(distributor);
  }
  void TearDown() override {
    connection->stopLiveLines();
    EXPECT_EQ(listener.malformed, 0);
    EXPECT_EQ(listener.wrongTags(), 0);
  }
  QString folder() const { return temporary.filePath("database"); }
  void command(const QByteArray& line) {
    QByteArray answer;
    ASSERT_TRUE(connection->exchange("korvex2 " + line, answer));
    ASSERT_EQ(answer, "korvex2 ok") << line.toStdString();
  }
  bool seen(int index) const { return listener.stream.state().body.seenAs(index); }

  /// Each change is flushed to its disk; memory spares the waiting.
  static QString temporaryTemplate() {
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/korvex2-XXXXXX");
  }
  QTemporaryDir temporary{temporaryTemplate()};
  LiveDistributor distributor;
  StreamListener listener;
  std::unique_ptr<EmbeddedConnection> connection;
};

}  // namespace

TEST_F(EmbeddedLive, TheChosenBodyIsSeenWhileItIsMeasured) {
  listener.stream.setChosenBody("standard", 1);
  EXPECT_TRUE(connection->liveStatus().offered);
  EXPECT_FALSE(connection->liveStatus().measuring);
  EXPECT_FALSE(seen(1));
  command("tracking start");
  EXPECT_TRUE(connection->liveStatus().measuring);
  ASSERT_TRUE(holdsInTime([&] { return seen(1); })) << "the table";
  // The table stands: 0.735 m above the floor, tilted a little.
  const TrackedPose table = listener.stream.state().body;
  EXPECT_NEAR(table.position.z, 735.0, 1e-3);
  EXPECT_GT(table.rotation.data(2, 2), 0.99);
  EXPECT_LT(table.rotation.data(2, 2), 0.9999);

  listener.stream.setChosenBody("standard", 0);
  ASSERT_TRUE(holdsInTime([&] { return seen(0); })) << "the cup";
  const bsVector before = listener.stream.state().body.position;
  EXPECT_TRUE(holdsInTime([&] { return (listener.stream.state().body.position - before).getLength() > 1.0; }));

  command("tracking stop");
  ASSERT_TRUE(holdsInTime([&] { return listener.calls().back() == "stopped"; }));
  const int lines = listener.lines;
  EXPECT_EQ(listener.calls().front(), "started");
  command("set wandgrip output_6dw yes");
  connection->stopLiveLines();
  EXPECT_EQ(listener.lines, lines) << "nothing comes when nothing is measured";
  EXPECT_EQ(connection->liveStatus().lines, static_cast<std::uint64_t>(lines));
}

TEST_F(EmbeddedLive, DevicesAreSeenInEitherFormat) {
  listener.stream.setChosenBody("wandgrip", 1);
  command("set output active chmon 6dw2 yes");
  command("tracking start");
  const auto device = [&] { return listener.stream.state().device; };
  ASSERT_TRUE(holdsInTime([&] { return device().seenAs(1); }));
  listener.stream.resetQualities();
  command("set output active chmon 6dw yes");
  command("set wandgrip output_6dw yes");
  listener.stream.resetQualities();
  ASSERT_TRUE(holdsInTime([&] { return device().seenAs(1); }));
  EXPECT_TRUE(holdsInTime([&] { return listener.calls().back().substr(0, 4) == "6dw "; }));
}

TEST_F(EmbeddedLive, WithHeadTheSameBodyIsFound) {
  command("set wandgrip multiuser yes");
  command("set wandgrip multiuser_with_head yes");
  listener.stream.setWithHead(true);
  listener.stream.setChosenBody("standard", 1);
  command("tracking start");
  ASSERT_TRUE(holdsInTime([&] { return listener.stream.state().tracked == TrackingStream::Tracked::Yes; }));
  EXPECT_NEAR(listener.stream.state().body.position.z, 735.0, 1e-3) << "the table and no other";
}

TEST_F(EmbeddedLive, AnApplyInFullFlightLeavesTheBodyWhereItIs) {
  listener.stream.setChosenBody("standard", 1);
  command("tracking start");
  ASSERT_TRUE(holdsInTime([&] { return seen(1); }));
  const auto place = [&] {
    QByteArray answer;
    EXPECT_TRUE(connection->exchange("korvex2 get body marker standard b02 m01", answer));
    std::istringstream text(answer.mid(static_cast<int>(qstrlen("korvex2 set body marker standard b02 m01 "))).data());
    bsVector marker;
    text >> marker.x >> marker.y >> marker.z;
    const TrackedPose pose = listener.stream.state().body;
    return pose.rotation * marker + pose.position;
  };
  const bsVector before = place();
  for (int i = 0; i < 10; ++i) {
    command("tracking stop");
    command(
        "body transform standard b02 100.000 -20.000 3.000 0.00000000 1.00000000 0.00000000 0.00000000 0.00000000 "
        "1.00000000 1.00000000 0.00000000 0.00000000");
    const bsVector positionBefore = listener.stream.state().body.position;
    command("tracking start");
    // A line of the old frame may still be on its way.
    ASSERT_TRUE(
        holdsInTime([&] { return (listener.stream.state().body.position - positionBefore).getLength() > 10.0; }));
    const bsVector now = place();
    // The stream keeps single precision: 1e-4 mm at coordinates of some thousand millimetres, a few times.
    ASSERT_LT((now - before).getLength(), 5e-3) << i;
  }
}

TEST_F(EmbeddedLive, CommandsAndLinesDoNotDisturbEachOther) {
  command("set output active chmon 6dw2 yes");
  listener.stream.setChosenBody("standard", 0);
  for (int i = 0; i < 60; ++i) {
    command(i % 3 == 2 ? "tracking stop" : "tracking start");
    command("body transform standard b01 1 2 3 0 1 0 -1 0 0 0 0 1");
    command(i % 2 == 0 ? "set wandgrip output_6dw yes" : "set wandgrip output_6dw no");
    command(i % 2 == 0 ? "set body calibrated standard b06 yes" : "set body calibrated standard b06 no");
    if (i % 10 == 5) {
      distributor.remove("6d", &listener);
      const int lines = listener.lines;
      distributor.remove("6dw2", &listener);
      distributor.remove("6dw", &listener);
      const int left = listener.lines;
      EXPECT_GE(left, lines);
      command("tracking start");
      EXPECT_EQ(listener.lines, left);
      for (const char* tag : {"6d", "6dw", "6dw2"}) {
        distributor.add(tag, &listener);
      }
    }
  }
  command("tracking start");
  listener.stream.resetQualities();
  EXPECT_TRUE(holdsInTime([&] { return seen(0); }));
}

TEST_F(EmbeddedLive, TheConnectionMayGoWithoutBeingStopped) {
  command("tracking start");
  ASSERT_TRUE(holdsInTime([&] { return listener.lines > 0; }));
  connection.reset();
  const int lines = listener.lines;
  distributor.deliver("6d", "6d 0");
  EXPECT_EQ(listener.lines, lines + 1);
  connection = std::make_unique<EmbeddedConnection>(folder(), QStringList());
}

TEST(EmbeddedTrajectory, ThatCannotBeReadIsToldAndTheBodyMovesAllTheSame) {
  const QTemporaryDir temporary;
  ASSERT_EQ(prepareDatabaseFolder(temporary.filePath("database"), SOURCE_DATA_FOLDER).toStdString(), "");
  QFile file(temporary.filePath("bad.tum"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("# times\n0 0 0 0 0 0 0 1\n1 0 0 0 0 0 0\n");
  file.close();
  for (const QString& path : {file.fileName(), temporary.filePath("missing.tum")}) {
    LiveOptions options;
    options.rate = 1000;
    options.trajectory = path;
    EmbeddedConnection connection(temporary.filePath("database"), {"before"}, options);
    ASSERT_EQ(connection.problems().size(), 2) << connection.problems().join('\n').toStdString();
    EXPECT_EQ(connection.problems().at(0), "before");
    const char* const told =
        path == file.fileName() ? ", line 3: there are 7 numbers, eight are expected" : ", line 1: the file is missing";
    EXPECT_EQ(connection.problems().at(1), path + told);
    LiveDistributor distributor;
    StreamListener listener;
    listener.stream.setChosenBody("standard", 0);
    distributor.add("6d", &listener);
    connection.startLiveLines(distributor);
    QByteArray answer;
    connection.exchange("korvex2 tracking start", answer);
    EXPECT_TRUE(holdsInTime([&] { return listener.stream.state().body.seenAs(0); }));
    connection.stopLiveLines();
  }
}
