// Live lines over a network: which datagrams and lines are taken, and who is told of measurements when.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>
#include <QUdpSocket>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

#include "commalocale.h"
#include "linerecorder.h"
#include "lineserver.h"
#include "livedatagram.h"
#include "livedistributor.h"
#include "livereceiver.h"
#include "networkconnection.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

using Calls = std::vector<std::string>;

LiveDatagram parse(const QByteArray& bytes) { return parseLiveDatagram(bytes.constData(), bytes.size()); }

class NetworkLive : public testing::Test {
 protected:
  void SetUp() override {
    server.react([this](const QByteArray& line) {
      static const QByteArray head = "korvex2 set output net chmon udp ";
      if (line.startsWith(head)) {
        port = static_cast<quint16>(line.mid(head.size()).toUShort());
      }
      return server.usual(line);
    });
    NetworkOptions options;
    options.commandTimeout = 1000ms;
    options.heartbeat = 30ms;
    options.retryDelays = {0ms, 20ms};
    options.stableAfter = 0ms;
    connection =
        std::make_unique<NetworkConnection>(BackendAddress{QStringLiteral("127.0.0.1"), server.port()}, options);
    ASSERT_EQ(connection->linkStatus().state, LinkState::connected);
    connection->startLiveLines(distributor);
    ASSERT_NE(port.load(), 0);
    for (const char* tag : {"fr", "6d"}) {
      distributor.add(tag, &recorder);
    }
    ASSERT_TRUE(sender.bind(QHostAddress(QHostAddress::LocalHost)));
  }
  void TearDown() override {
    connection->stopLiveLines();
    for (const char* tag : {"fr", "6d"}) {
      distributor.remove(tag, &recorder);
    }
  }
  void send(const QByteArray& datagram) {
    ASSERT_EQ(sender.writeDatagram(datagram, QHostAddress(QHostAddress::LocalHost), port), datagram.size());
  }
  void setMeasuring(bool measuring) {
    server.setAnswer("korvex2 get status active",
                     measuring ? "korvex2 set status active mea" : "korvex2 set status active idle");
  }
  std::string ask(const QByteArray& line) {
    QByteArray answer;
    return connection->exchange(line, answer) ? answer.toStdString() : "(none)";
  }
  /// Runs the event loop until that many calls have come.
  Calls callsOf(std::size_t count) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return recorder.calls().size() >= count; }, 3000));
    return recorder.calls();
  }

  LineServer server;
  std::atomic<quint16> port{0};
  LiveDistributor distributor;
  LineRecorder recorder;
  std::unique_ptr<NetworkConnection> connection;
  QUdpSocket sender;
};

}  // namespace

TEST(LiveDatagram, HasTheFramesNumberAndItsLines) {
  const LiveDatagram datagram = parse("fr 17\nts 0.283\n6d 1 [0 1.000] [1 2 3] [1 0 0 0 1 0 0 0 1]\n");
  EXPECT_EQ(datagram.frame, 17u);
  EXPECT_EQ(datagram.lines,
            (std::vector<QByteArray>{"fr 17", "ts 0.283", "6d 1 [0 1.000] [1 2 3] [1 0 0 0 1 0 0 0 1]"}));
  EXPECT_EQ(datagram.dropped, 0);
}

TEST(LiveDatagram, ALineWithoutItsEndIsDropped) {
  const LiveDatagram datagram = parse("fr 17\n6d 1 [0 1.000] [1 2");
  EXPECT_EQ(datagram.lines, std::vector<QByteArray>{"fr 17"});
  EXPECT_EQ(datagram.dropped, 1);
}

TEST(LiveDatagram, ALineOfMoreThan9999CharactersIsDropped) {
  const QByteArray fits = "6d " + QByteArray(9996, '1');
  const LiveDatagram datagram = parse("fr 1\n" + fits + '\n' + fits + "1\nts 1\n");
  EXPECT_EQ(datagram.lines, (std::vector<QByteArray>{"fr 1", fits, "ts 1"}));
  EXPECT_EQ(datagram.dropped, 1);
}

TEST(LiveDatagram, ALineThatIsNotPlainTextIsDropped) {
  for (const QByteArray& wrong : {QByteArray("6d \x01"), QByteArray("6d 1\r"), QByteArray("6d \xc3\xa4"),
                                  QByteArray("6d 1\0", 5), QByteArray("6d\t1"), QByteArray("")}) {
    const LiveDatagram datagram = parse("fr 1\n" + wrong + "\nts 1\n");
    EXPECT_EQ(datagram.lines, (std::vector<QByteArray>{"fr 1", "ts 1"})) << wrong.toPercentEncoding().toStdString();
    EXPECT_EQ(datagram.dropped, 1);
  }
}

TEST(LiveDatagram, WithoutAGoodNumberInItsFirstLineIsNoFrame) {
  for (const QByteArray& wrong :
       {QByteArray(""), QByteArray("\n"), QByteArray("ts 1\nfr 1\n"), QByteArray("fr\n"), QByteArray("fr \n"),
        QByteArray("fr -1\n"), QByteArray("fr 1x\n"), QByteArray("fr 1 \n"), QByteArray("fr  1\n"),
        QByteArray("fr 0x10\n"), QByteArray("fr 1.0\n"), QByteArray("fr 18446744073709551616\n"), QByteArray("fr 1"),
        QByteArray("FR 1\n"), QByteArray("fr 1\0\n", 6)}) {
    EXPECT_FALSE(parse(wrong).frame) << wrong.toPercentEncoding().toStdString();
  }
  EXPECT_EQ(parse("fr 18446744073709551615\n").frame, 18446744073709551615u);
}

TEST_F(NetworkLive, LinesReachTheirSubscribers) {
  setMeasuring(true);
  EXPECT_EQ(callsOf(1), Calls{"started"});
  send("fr 1\nts 0.1\n6d 0\n");
  send("fr 2\n6d 0\n6dw 0\n");
  EXPECT_EQ(callsOf(5), (Calls{"started", "fr 1", "6d 0", "fr 2", "6d 0"}));
  EXPECT_EQ(recorder.wrongTags(), 0);
  const LiveStatus status = connection->liveStatus();
  EXPECT_TRUE(status.offered);
  EXPECT_TRUE(status.measuring);
  EXPECT_EQ(status.lines, 4u) << "those that somebody got";
  EXPECT_EQ(status.droppedDatagrams, 0u);
  EXPECT_EQ(status.droppedLines, 0u);
}

TEST_F(NetworkLive, LostFramesLeaveTheRestAlone) {
  setMeasuring(true);
  callsOf(1);
  send("fr 1\n");
  send("fr 900\n");
  EXPECT_EQ(callsOf(3), (Calls{"started", "fr 1", "fr 900"}));
  EXPECT_EQ(connection->liveStatus().droppedDatagrams, 0u);
}

TEST_F(NetworkLive, WhatCameTwiceOrWasOvertakenIsDroppedAndCounted) {
  setMeasuring(true);
  callsOf(1);
  for (const char* frame : {"fr 5\n", "fr 5\n", "fr 7\n", "fr 6\n", "fr 8\n", "fr 1\n", "fr 9\n"}) {
    send(frame);
  }
  EXPECT_EQ(callsOf(5), (Calls{"started", "fr 5", "fr 7", "fr 8", "fr 9"}));
  EXPECT_EQ(connection->liveStatus().droppedDatagrams, 3u);
}

TEST_F(NetworkLive, DamagedLinesAreDroppedAndCounted) {
  setMeasuring(true);
  callsOf(1);
  send("fr 1\n6d \x02\n6d 0\n6d 1 [0 1");
  send("fr 2\n6d " + QByteArray(10000, '1') + '\n');
  send("fr 3\n");
  EXPECT_EQ(callsOf(5), (Calls{"started", "fr 1", "6d 0", "fr 2", "fr 3"}));
  EXPECT_EQ(connection->liveStatus().droppedLines, 3u);
  EXPECT_EQ(connection->liveStatus().droppedDatagrams, 0u);
}

TEST_F(NetworkLive, WhatIsNoFrameIsDroppedAndCounted) {
  setMeasuring(true);
  callsOf(1);
  for (const QByteArray& wrong :
       {QByteArray(""), QByteArray("6d 0\n"), QByteArray(65507, 'x'), QByteArray(100, '\n')}) {
    send(wrong);
  }
  send("fr 1\n");
  EXPECT_EQ(callsOf(2), (Calls{"started", "fr 1"}));
  EXPECT_EQ(connection->liveStatus().droppedDatagrams, 4u);
}

TEST_F(NetworkLive, ADatagramOf60kBIsTakenLineByLine) {
  setMeasuring(true);
  callsOf(1);
  QByteArray datagram = "fr 1\n";
  Calls expected{"started", "fr 1"};
  for (int i = 0; i < 6; ++i) {
    const QByteArray line = "6d " + QByteArray(9990, static_cast<char>('0' + i));
    datagram += line + '\n';
    expected.push_back(line.toStdString());
  }
  ASSERT_GT(datagram.size(), 59000);
  send(datagram);
  EXPECT_EQ(callsOf(8), expected);
}

TEST_F(NetworkLive, FromElsewhereNothingIsTaken) {
  setMeasuring(true);
  callsOf(1);
  QUdpSocket foreign;
  ASSERT_TRUE(foreign.bind(QHostAddress(QStringLiteral("127.0.0.2"))));
  ASSERT_GT(foreign.writeDatagram("fr 1000\n", QHostAddress(QHostAddress::LocalHost), port), 0);
  ASSERT_TRUE(QTest::qWaitFor([&] { return connection->liveStatus().droppedDatagrams == 1; }, 3000));
  send("fr 1\n");
  EXPECT_EQ(callsOf(2), (Calls{"started", "fr 1"}));
}

TEST_F(NetworkLive, EndAndBeginningOfMeasurementsAreToldOnceEach) {
  distributor.add("ts", &recorder);  // a third subscription of the same subscriber
  EXPECT_EQ(ask("korvex2 tracking start"), "korvex2 ok");
  setMeasuring(true);
  EXPECT_EQ(callsOf(1), Calls{"started"});
  const int beats = server.heartbeats();
  ASSERT_TRUE(QTest::qWaitFor([&] { return server.heartbeats() > beats + 3; }, 3000));
  ask("korvex2 get status active");
  EXPECT_EQ(recorder.calls(), Calls{"started"});
  EXPECT_EQ(ask("korvex2 tracking stop"), "korvex2 ok");
  setMeasuring(false);
  EXPECT_EQ(callsOf(2), (Calls{"started", "stopped"}));
  EXPECT_EQ(ask("korvex2 tracking stop"), "korvex2 ok");
  const int later = server.heartbeats();
  ASSERT_TRUE(QTest::qWaitFor([&] { return server.heartbeats() > later + 2; }, 3000));
  EXPECT_EQ(recorder.calls(), (Calls{"started", "stopped"}));
  EXPECT_FALSE(connection->liveStatus().measuring);
  distributor.remove("ts", &recorder);
}

TEST_F(NetworkLive, AMeasurementThatAnotherProgramEndsIsToldByTheHeartbeat) {
  setMeasuring(true);
  EXPECT_EQ(callsOf(1), Calls{"started"});
  setMeasuring(false);
  EXPECT_EQ(callsOf(2), (Calls{"started", "stopped"}));
}

TEST_F(NetworkLive, AMeasurementEndedAndBegunAtOnceIsToldAsBoth) {
  setMeasuring(true);
  EXPECT_EQ(callsOf(1), Calls{"started"});
  ask("korvex2 tracking stop");
  ask("korvex2 tracking start");
  EXPECT_EQ(callsOf(3), (Calls{"started", "stopped", "started"}));
  send("fr 1\n");
  EXPECT_EQ(callsOf(4), (Calls{"started", "stopped", "started", "fr 1"}));
}

TEST_F(NetworkLive, AFrameThatComesBeforeTheNewsIsTheNews) {
  setMeasuring(true);
  send("fr 1\n");  // perhaps before the next heartbeat
  EXPECT_EQ(callsOf(2), (Calls{"started", "fr 1"}));
  const int beats = server.heartbeats();
  ASSERT_TRUE(QTest::qWaitFor([&] { return server.heartbeats() > beats + 2; }, 3000));
  EXPECT_EQ(recorder.calls(), (Calls{"started", "fr 1"}));
}

TEST_F(NetworkLive, FramesOnTheirWayWhenAMeasurementEndsAreOutOfDate) {
  setMeasuring(true);
  EXPECT_EQ(callsOf(1), Calls{"started"});
  setMeasuring(false);
  ask("korvex2 tracking stop");
  EXPECT_EQ(callsOf(2), (Calls{"started", "stopped"}));
  send("fr 1\n");
  QTest::qWait(60);
  EXPECT_EQ(recorder.calls(), (Calls{"started", "stopped"}));
}

TEST_F(NetworkLive, ARefusedCommandTellsNothing) {
  server.react([this](const QByteArray& line) {
    return line.startsWith("korvex2 tracking") ? Reaction::answer("korvex2 err 8 \"no tracking\"") : server.usual(line);
  });
  ask("korvex2 tracking start");
  QTest::qWait(60);
  EXPECT_EQ(recorder.calls(), Calls{});
}

TEST_F(NetworkLive, WithTheConnectionTheMeasurementEndsAndFrameNumbersBeginAnew) {
  setMeasuring(true);
  callsOf(1);
  send("fr 500\n");
  EXPECT_EQ(callsOf(2), (Calls{"started", "fr 500"}));
  const quint16 before = port;
  setMeasuring(false);
  server.cut();
  ASSERT_TRUE(QTest::qWaitFor([&] { return port != before; }, 3000));
  EXPECT_EQ(callsOf(3), (Calls{"started", "fr 500", "stopped"}));
  setMeasuring(true);
  EXPECT_EQ(callsOf(4), (Calls{"started", "fr 500", "stopped", "started"}));
  send("fr 2\n");
  EXPECT_EQ(callsOf(5), (Calls{"started", "fr 500", "stopped", "started", "fr 2"}));
}

TEST_F(NetworkLive, AfterItsEndNobodyIsCalled) {
  setMeasuring(true);
  callsOf(1);
  connection->stopLiveLines();
  EXPECT_EQ(recorder.calls(), (Calls{"started", "stopped"})) << "there is nobody else to tell of the end";
  send("fr 1\n");
  connection->stopLiveLines();
  QTest::qWait(30);
  EXPECT_EQ(recorder.calls(), (Calls{"started", "stopped"}));
  EXPECT_TRUE(QTest::qWaitFor([this] { return server.lines().back() == "korvex2 set output net chmon none"; }, 3000));
  EXPECT_EQ(connection->linkStatus().state, LinkState::connected);
}

TEST_F(NetworkLive, ItsEndTellsNothingWhereNothingIsMeasured) {
  connection->stopLiveLines();
  EXPECT_EQ(recorder.calls(), Calls{});
}

TEST(LiveReceiver, WithoutADescriptorToWakeItNothingIsDelivered) {
  rlimit usual{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
  const int next = ::dup(0);
  ASSERT_GE(next, 0);
  ::close(next);
  rlimit none = usual;
  none.rlim_cur = static_cast<rlim_t>(next);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  LiveReceiver receiver;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
  LiveDistributor distributor;
  EXPECT_FALSE(receiver.start(distributor));
  EXPECT_FALSE(receiver.isRunning());
  receiver.setMeasuring(true);
  receiver.stop();
}

TEST_F(NetworkLive, ItsEndIsPromptWhileDatagramsPourIn) {
  setMeasuring(true);
  callsOf(1);
  std::atomic<bool> stop{false};
  std::thread flood([&] {
    QUdpSocket socket;
    for (int i = 1; i < 2000000 && !stop; ++i) {
      socket.writeDatagram("fr " + QByteArray::number(i) + "\n6d 0\n", QHostAddress(QHostAddress::LocalHost), port);
    }
  });
  ASSERT_TRUE(QTest::qWaitFor([&] { return recorder.calls().size() > 100; }, 3000));
  QElapsedTimer timer;
  timer.start();
  connection->stopLiveLines();
  EXPECT_LT(timer.elapsed(), 200);
  stop = true;
  flood.join();
}

TEST_F(NetworkLive, NumbersAreReadTheSameUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready()) << "a locale with a comma could not be made";
  setMeasuring(true);
  callsOf(1);
  send("fr 1000\n6d 1 [0 1.000] [1.5 2.5 3.5]\n");
  send("fr 999\n");
  send("fr 1001\n");
  EXPECT_EQ(callsOf(4), (Calls{"started", "fr 1000", "6d 1 [0 1.000] [1.5 2.5 3.5]", "fr 1001"}));
}
