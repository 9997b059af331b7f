// A connection that broke is made anew: when, with what, and what is told of it.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>

#include <chrono>
#include <string>

#include "linerecorder.h"
#include "lineserver.h"
#include "livedistributor.h"
#include "networkconnection.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

const QByteArray versionLine = "korvex2 get version";

class Reconnection : public testing::Test {
 protected:
  static NetworkOptions quick() {
    NetworkOptions options;
    options.commandTimeout = 300ms;
    options.connectTimeout = 1000ms;
    options.heartbeat = 60000ms;
    options.retryDelays = {0ms, 20ms};
    options.stableAfter = 0ms;
    options.lostAfter = 60000ms;
    return options;
  }
  void connect(const NetworkOptions& options = quick()) {
    connection =
        std::make_unique<NetworkConnection>(BackendAddress{QStringLiteral("127.0.0.1"), server.port()}, options);
    clock.start();
    connection->setLinkListener([this] {
      const LinkStatus now = connection->linkStatus();
      if (seen.empty() || seen.back() != now.state) {
        seen.push_back(now.state);
        times.push_back(clock.elapsed());
      }
    });
  }
  LinkState state() const { return connection->linkStatus().state; }
  bool becomes(LinkState wanted, int within = 4000) const {
    return QTest::qWaitFor([this, wanted] { return state() == wanted; }, within);
  }
  /// Ends the connection and waits for the next one. The time in between may be too short to be seen.
  bool cutAndReturn() {
    const int before = server.connections();
    server.cut();
    return QTest::qWaitFor([&] { return server.connections() > before && state() == LinkState::connected; }, 4000);
  }
  std::string ask(const QByteArray& line) {
    QByteArray answer;
    return connection->exchange(line, answer) ? answer.toStdString() : "(none)";
  }

  LineServer server;
  std::unique_ptr<NetworkConnection> connection;
  std::vector<LinkState> seen;
  std::vector<qint64> times;
  QElapsedTimer clock;
};

}  // namespace

TEST(NetworkOptions, AreThoseOfTheManual) {
  const NetworkOptions options;
  EXPECT_EQ(options.commandTimeout, 2000ms);
  EXPECT_EQ(options.heartbeat, 1000ms);
  EXPECT_EQ(options.retryDelays,
            (std::vector<std::chrono::milliseconds>{0ms, 250ms, 500ms, 1000ms, 2000ms, 4000ms, 5000ms}));
  EXPECT_EQ(options.lostAfter, 30000ms);
  EXPECT_EQ(options.lostDelay, 10000ms);
}

TEST(NetworkOptions, AConnectionHasAsMuchTimeAsACommand) {
  EXPECT_EQ(NetworkOptions::answeredWithin(5000ms).commandTimeout, 5000ms);
  EXPECT_EQ(NetworkOptions::answeredWithin(5000ms).connectTimeout, 5000ms);
  EXPECT_EQ(NetworkOptions::answeredWithin(100ms).commandTimeout, 100ms);
  EXPECT_EQ(NetworkOptions::answeredWithin(100ms).connectTimeout, 2000ms);
}

TEST_F(Reconnection, HappensByItselfAfterTheBackendClosedTheConnection) {
  connect();
  server.cut();
  ASSERT_TRUE(QTest::qWaitFor([this] { return server.connections() == 2 && state() == LinkState::connected; }, 4000));
  EXPECT_EQ(seen, (std::vector<LinkState>{LinkState::reconnecting, LinkState::connected}));
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
}

TEST_F(Reconnection, ABackendThatIsNotThereYetIsFoundWhenItComes) {
  server.stopListening();
  connect();
  EXPECT_EQ(state(), LinkState::reconnecting);
  EXPECT_EQ(connection->linkStatus().reason.toStdString(), "no backend listens there");
  EXPECT_EQ(connection->version().major, 0);
  ASSERT_EQ(connection->problems().size(), 1);
  EXPECT_EQ(connection->problems().constFirst(),
            "The backend at " + connection->linkStatus().place +
                " could not be reached: no backend listens there. It is tried again and again.");
  server.listenAgain();
  ASSERT_TRUE(becomes(LinkState::connected));
  EXPECT_EQ(connection->version().minor, 20);
  EXPECT_TRUE(connection->problems().isEmpty());
}

TEST_F(Reconnection, TheFirstAttemptIsWaitedForNoLongerThanAConnectTimeOut) {
  server.react([](const QByteArray&) { return Reaction::silence(); });
  NetworkOptions options = quick();
  options.connectTimeout = 200ms;
  QElapsedTimer timer;
  timer.start();
  connect(options);
  EXPECT_GE(timer.elapsed(), 180);
  EXPECT_LT(timer.elapsed(), 900);
  EXPECT_EQ(state(), LinkState::reconnecting);
  EXPECT_EQ(connection->linkStatus().reason.toStdString(), "no connection came about within 0.2 s");
}

TEST_F(Reconnection, AHostThatNobodyKnowsIsToldAsSuch) {
  connection =
      std::make_unique<NetworkConnection>(BackendAddress{QStringLiteral("no-such-host.invalid"), 4000}, quick());
  EXPECT_NE(state(), LinkState::connected);
  const std::string reason = connection->linkStatus().reason.toStdString();
  EXPECT_TRUE(reason == "the host is not known" || reason == "no connection came about within 1 s") << reason;
}

TEST_F(Reconnection, AttemptsComeAtTheTimesGiven) {
  NetworkOptions options = quick();
  options.retryDelays = {0ms, 150ms, 300ms};
  connect(options);
  std::vector<qint64> attempts;
  QElapsedTimer timer;
  server.react([](const QByteArray& line) {
    Reaction reaction;
    reaction.close = line == versionLine;  // every attempt fails as soon as it is made
    return reaction;
  });
  const int before = server.connections();
  server.cut();
  timer.start();
  int known = before;
  ASSERT_TRUE(QTest::qWaitFor(
      [&] {
        if (server.connections() > known) {
          known = server.connections();
          attempts.push_back(timer.elapsed());
        }
        return attempts.size() == 4;
      },
      10000));
  // Not before their times; how long after depends on what else the machine does.
  EXPECT_LT(attempts[0], 140);
  EXPECT_GE(attempts[1] - attempts[0], 135);
  EXPECT_GE(attempts[2] - attempts[1], 270);
  EXPECT_GE(attempts[3] - attempts[2], 270) << "the last time goes on";
}

TEST_F(Reconnection, AConnectionThatDoesNotLastDoesNotBeginTheWaitingTimesAnew) {
  NetworkOptions options = quick();
  options.retryDelays = {0ms, 150ms};
  options.stableAfter = 10000ms;
  connect(options);
  for (int i = 0; i < 3; ++i) {
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(cutAndReturn());
    EXPECT_GE(timer.elapsed(), 120);
  }
}

TEST_F(Reconnection, LastsOnlyAfterAWhile) {
  NetworkOptions options = quick();
  options.stableAfter = 100ms;
  connect(options);
  ASSERT_EQ(state(), LinkState::connected);
  EXPECT_FALSE(connection->linkStatus().lasts);
  EXPECT_TRUE(QTest::qWaitFor([this] { return connection->linkStatus().lasts; }, 3000));
  EXPECT_GE(clock.elapsed(), 80);
  ASSERT_TRUE(cutAndReturn());
  EXPECT_FALSE(connection->linkStatus().lasts);
}

TEST_F(Reconnection, ABackendThatDropsEverybodyAtOnceIsLost) {
  NetworkOptions options = quick();
  options.stableAfter = 10000ms;
  options.lostAfter = 600ms;
  options.lostDelay = 60000ms;
  connect(options);
  server.react([this](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.close = line != versionLine;  // the first thing that it is asked when it is connected
    return reaction;
  });
  server.cut();
  ASSERT_TRUE(becomes(LinkState::lost));
  EXPECT_GE(server.connections(), 3);
  EXPECT_EQ(connection->linkStatus().reason.toStdString(), "the backend closed the connection");
  QTest::qWait(60);  // an attempt may have been under way
  const int connections = server.connections();
  QTest::qWait(60);
  EXPECT_EQ(server.connections(), connections) << "the next attempt is far away";
  server.react({});
  connection->tryAgain();
  EXPECT_TRUE(becomes(LinkState::connected));
}

TEST_F(Reconnection, WithoutSuccessForLongTheConnectionIsLostAndStillTried) {
  NetworkOptions options = quick();
  options.lostAfter = 200ms;
  options.lostDelay = 100ms;
  connect(options);
  server.stopListening();
  clock.restart();
  ASSERT_TRUE(becomes(LinkState::reconnecting));
  EXPECT_EQ(connection->linkStatus().reason.toStdString(), "the backend closed the connection");
  ASSERT_TRUE(becomes(LinkState::lost));
  EXPECT_GE(clock.elapsed(), 180);
  EXPECT_LT(clock.elapsed(), 1500);
  EXPECT_EQ(connection->linkStatus().reason.toStdString(), "no backend listens there");
  server.listenAgain();
  ASSERT_TRUE(becomes(LinkState::connected));
  EXPECT_EQ(seen, (std::vector<LinkState>{LinkState::reconnecting, LinkState::lost, LinkState::connected}));
}

TEST_F(Reconnection, TheOperatorCanTryAtOnce) {
  NetworkOptions options = quick();
  options.retryDelays = {60000ms};
  options.lostAfter = 100ms;
  options.lostDelay = 60000ms;
  connect(options);
  server.stopListening();
  ASSERT_TRUE(becomes(LinkState::lost));
  connection->tryAgain();
  EXPECT_EQ(state(), LinkState::reconnecting);
  ASSERT_TRUE(becomes(LinkState::lost)) << "nobody is there yet";
  server.listenAgain();
  connection->tryAgain();
  ASSERT_TRUE(becomes(LinkState::connected));
  const int connections = server.connections();
  connection->tryAgain();  // nothing to be done
  QTest::qWait(30);
  EXPECT_EQ(server.connections(), connections);
  EXPECT_EQ(state(), LinkState::connected);
}

TEST_F(Reconnection, AnotherVersionIsKnownBeforeTheConnectionCounts) {
  connect();
  BackendVersionNumber atConnection;
  connection->setLinkListener([&] {
    if (state() == LinkState::connected) {
      atConnection = connection->version();
    }
  });
  server.setAnswer(versionLine, "korvex2 set version 1.9.-1");
  ASSERT_TRUE(cutAndReturn());
  EXPECT_EQ(atConnection.minor, 9);
  EXPECT_EQ(atConnection.revision, -1);
}

TEST_F(Reconnection, WhatIsNoBackendIsNotConnectedTo) {
  struct Case {
    const char* answer;
    const char* reason;
  };
  for (const Case& wrong :
       {Case{"HTTP/1.1 400 Bad Request", "what listens there is no tracking backend"},
        Case{"", "what listens there is no tracking backend"},
        Case{"korvex2 set version", "what listens there is no tracking backend"},
        Case{"korvex2 set version 1.2.3.4", "what listens there is no tracking backend"},
        Case{"korvex2 set version 99999999999.1", "what listens there is no tracking backend"},
        Case{"korvex2 err 8 \"too many clients\"", "it refused the connection (korvex2 err 8 \"too many clients\")"}}) {
    server.setAnswer(versionLine, wrong.answer);
    connect();
    EXPECT_EQ(state(), LinkState::reconnecting) << wrong.answer;
    EXPECT_EQ(connection->linkStatus().reason.toStdString(), wrong.reason);
  }
}

TEST_F(Reconnection, WhatModulesSwitchedOnIsSetAgainAfterTheOutputPort) {
  LiveDistributor distributor;
  connect();
  connection->startLiveLines(distributor);
  std::vector<QByteArray> lines = server.takeLines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], versionLine);
  EXPECT_TRUE(lines[1].startsWith("korvex2 set output net chmon udp ")) << lines[1].toStdString();
  const QByteArray firstPort = lines[1];
  EXPECT_EQ(ask("korvex2 set output active chmon 6dw2 yes"), "korvex2 ok");
  EXPECT_EQ(ask("korvex2 set output active chmon 6d no"), "korvex2 ok");
  EXPECT_EQ(ask("korvex2 set output active chmon 6dw yes"), "korvex2 ok");
  EXPECT_EQ(ask("korvex2 set output active chmon 6dw no"), "korvex2 ok");
  server.react([this](const QByteArray& line) {
    return line.endsWith("6dx yes") ? Reaction::answer("korvex2 err 4 \"no such kind\"") : server.usual(line);
  });
  EXPECT_EQ(ask("korvex2 set output active chmon 6dx yes"), "korvex2 err 4 \"no such kind\"");
  EXPECT_EQ(ask("korvex2 set output active chother 6d no"), "korvex2 ok");
  server.takeLines();
  ASSERT_TRUE(cutAndReturn());
  lines = server.takeLines();
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], versionLine);
  EXPECT_TRUE(lines[1].startsWith("korvex2 set output net chmon udp "));
  EXPECT_NE(lines[1], firstPort) << "a port of its own for each connection";
  EXPECT_EQ(
      (std::vector<QByteArray>{lines[2], lines[3], lines[4]}),
      (std::vector<QByteArray>{"korvex2 set output active chmon 6dw2 yes", "korvex2 set output active chmon 6d no",
                               "korvex2 set output active chmon 6dw no"}));
}

TEST_F(Reconnection, WhatAModuleWantedMeanwhileIsSetWhenThereIsABackendAgain) {
  connect();
  server.stopListening();
  ASSERT_TRUE(becomes(LinkState::reconnecting));
  EXPECT_EQ(ask("korvex2 set output active chmon 6dw2 yes"), "(none)");
  server.takeLines();
  server.listenAgain();
  ASSERT_TRUE(becomes(LinkState::connected));
  EXPECT_EQ(server.takeLines(), (std::vector<QByteArray>{versionLine, "korvex2 set output active chmon 6dw2 yes"}));
}

TEST_F(Reconnection, AKindThatABackendRefusesIsTriedAgainAtEachConnection) {
  connect();
  EXPECT_EQ(ask("korvex2 set output active chmon 6dw2 yes"), "korvex2 ok");
  server.react([this](const QByteArray& line) {
    return line.startsWith("korvex2 set output active") ? Reaction::answer("korvex2 err 4 \"no such kind\"")
                                                        : server.usual(line);
  });
  for (int i = 0; i < 2; ++i) {
    server.takeLines();
    ASSERT_TRUE(cutAndReturn());
    EXPECT_EQ(server.takeLines(), (std::vector<QByteArray>{versionLine, "korvex2 set output active chmon 6dw2 yes"}));
  }
}

TEST_F(Reconnection, ABackendWithoutOutputOverTheNetworkServesForTheRest) {
  server.react([this](const QByteArray& line) {
    return line.startsWith("korvex2 set output net") ? Reaction::answer("korvex2 err 8 \"no network\"")
                                                     : server.usual(line);
  });
  LiveDistributor distributor;
  connect();
  connection->startLiveLines(distributor);
  EXPECT_EQ(state(), LinkState::connected);
  EXPECT_FALSE(connection->liveStatus().offered);
  ASSERT_TRUE(cutAndReturn());
  EXPECT_FALSE(connection->liveStatus().offered);
}

TEST_F(Reconnection, ABackendThatDoesNotAnswerTheFirstQuestionsIsLeftAndTriedAgain) {
  NetworkOptions options = quick();
  options.connectTimeout = 100ms;
  connect(options);
  server.react([](const QByteArray&) { return Reaction::silence(); });
  server.cut();
  ASSERT_TRUE(QTest::qWaitFor([this] { return server.connections() >= 3; }, 4000));
  EXPECT_EQ(state(), LinkState::reconnecting);
  server.react({});
  EXPECT_TRUE(becomes(LinkState::connected));
}

TEST_F(Reconnection, EndsWithTheConnection) {
  connect();
  server.stopListening();
  ASSERT_TRUE(becomes(LinkState::reconnecting));
  connection.reset();
  server.listenAgain();
  const int connections = server.connections();
  QTest::qWait(200);  // ten times as long as until the next attempt
  EXPECT_EQ(server.connections(), connections);
}
