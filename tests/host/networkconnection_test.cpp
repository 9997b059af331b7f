// Commands over a network: answers late, in pieces, merged, endless and unasked for.
#include "networkconnection.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "commalocale.h"
#include "hostchannel.h"
#include "lineserver.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

class Network : public testing::Test {
 protected:
  /// Times that a test can wait for.
  static NetworkOptions quick() {
    NetworkOptions options;
    options.commandTimeout = 150ms;
    options.connectTimeout = 1000ms;
    options.heartbeat = 60000ms;
    options.retryDelays = {0ms, 10ms};
    options.stableAfter = 0ms;
    return options;
  }
  BackendAddress address() const { return {QStringLiteral("127.0.0.1"), server.port()}; }
  void makeConnection(const NetworkOptions& options = quick()) {
    connection = std::make_unique<NetworkConnection>(address(), options);
    ASSERT_TRUE(isConnected()) << connection->linkStatus().reason.toStdString();
  }
  bool isConnected() const { return connection->linkStatus().state == LinkState::connected; }
  std::string reason() const { return connection->linkStatus().reason.toStdString(); }
  /// The answer to a line, "(none)" when there is none.
  std::string ask(const QByteArray& line) {
    QByteArray answer;
    return connection->exchange(line, answer) ? answer.toStdString() : "(none)";
  }

  LineServer server;
  std::unique_ptr<NetworkConnection> connection;
};

}  // namespace

TEST_F(Network, KnowsTheVersionAsSoonAsItIsMade) {
  makeConnection();
  const BackendVersionNumber version = connection->version();
  EXPECT_EQ(version.major, 1);
  EXPECT_EQ(version.minor, 20);
  EXPECT_EQ(version.revision, 3);
  EXPECT_EQ(server.lines(), std::vector<QByteArray>{"korvex2 get version"});
  EXPECT_TRUE(connection->sharesBackend());
  EXPECT_TRUE(connection->problems().isEmpty());
  EXPECT_EQ(connection->description(), "Backend at " + address().text());
  EXPECT_EQ(connection->linkStatus().place, address().text());
}

TEST_F(Network, AVersionMayLackItsRevisionOrSayThatItIsNotKnown) {
  for (const char* text : {"0.17", "0.17.-1"}) {
    server.setAnswer("korvex2 get version", QByteArray("korvex2 set version ") + text);
    makeConnection();
    EXPECT_EQ(connection->version().major, 0);
    EXPECT_EQ(connection->version().minor, 17);
    EXPECT_EQ(connection->version().revision, -1);
  }
}

TEST_F(Network, ALineGoesThereAndItsAnswerComesBack) {
  makeConnection();
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  server.setAnswer("korvex2 get b", "korvex2 set b \"x  y\"");
  EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
  EXPECT_EQ(ask("korvex2 get b"), "korvex2 set b \"x  y\"");
  EXPECT_EQ(ask("korvex2 get c"), "korvex2 err 2 \"there is no such query\"");
}

TEST_F(Network, AnAnswerMayComeInSingleBytesAndWithACarriageReturn) {
  makeConnection();
  server.setAnswer("korvex2 get a", "korvex2 set a 0123456789\r");
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.bytewise = true;
    return reaction;
  });
  for (int i = 0; i < 50; ++i) {
    ASSERT_EQ(ask("korvex2 get a"), "korvex2 set a 0123456789");
  }
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(Network, AnAnswerInPiecesHasOneDeadlineForAllOfThem) {
  makeConnection();
  server.react([&](const QByteArray&) { return Reaction{"korvex2 set a "}; });
  QElapsedTimer timer;
  timer.start();
  std::thread pieces([this] {  // would keep it alive for long if each had a deadline of its own
    for (int i = 0; i < 30; ++i) {
      QThread::msleep(50);
      server.send("x");
    }
  });
  EXPECT_EQ(ask("korvex2 get a"), "(none)");
  EXPECT_GE(timer.elapsed(), 140);
  EXPECT_LT(timer.elapsed(), 1000);
  pieces.join();
  EXPECT_EQ(reason(), "the backend did not answer within 0.15 s");
}

TEST_F(Network, ALateAnswerIsNeverTakenForThatOfTheNextCommand) {
  makeConnection();
  bool first = true;
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    if (line == "korvex2 get slow") {
      reaction = Reaction::answer("korvex2 set slow 1");
      reaction.delay = first ? 250 : 0;
      first = false;
    }
    return reaction;
  });
  server.setAnswer("korvex2 get quick", "korvex2 set quick 2");
  EXPECT_EQ(ask("korvex2 get slow"), "(none)");
  EXPECT_FALSE(isConnected());
  EXPECT_EQ(ask("korvex2 get quick"), "(none)") << "while it is not connected";
  ASSERT_TRUE(QTest::qWaitFor([this] { return isConnected(); }, 3000));
  QTest::qWait(200);  // the late answer goes to a connection that is no more
  EXPECT_EQ(ask("korvex2 get quick"), "korvex2 set quick 2");
  EXPECT_EQ(ask("korvex2 get slow"), "korvex2 set slow 1");
  EXPECT_EQ(server.connections(), 2);
}

TEST_F(Network, WhileNotConnectedACommandFailsAtOnceAndIsNotSentLater) {
  makeConnection();
  server.stopListening();
  EXPECT_EQ(ask("korvex2 get a"), "(none)");
  QElapsedTimer timer;
  timer.start();
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(ask("korvex2 body transform standard b01"), "(none)");
  }
  EXPECT_LT(timer.elapsed(), 150) << "less than one time-out";
  server.takeLines();
  server.listenAgain();
  ASSERT_TRUE(QTest::qWaitFor([this] { return isConnected(); }, 3000));
  QTest::qWait(20);
  EXPECT_EQ(server.lines(), std::vector<QByteArray>{"korvex2 get version"});
}

TEST_F(Network, AnUnaskedLineBeforeACommandEndsTheConnection) {
  makeConnection();
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
  EXPECT_TRUE(QTest::qWaitFor([this] { return server.heartbeats() == 1; }, 3000));
  server.send("korvex2 ok\n");
  QTest::qSleep(30);  // the program is busy and does not see it come
  EXPECT_EQ(ask("korvex2 get a"), "(none)");
  EXPECT_EQ(reason(), "the backend sent more than was asked for");
  ASSERT_TRUE(QTest::qWaitFor([this] { return isConnected(); }, 3000));
  EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
}

TEST_F(Network, AnUnaskedLineEndsTheConnectionWhileNothingElseHappens) {
  makeConnection();
  QTest::qWait(30);
  for (const char* bytes : {"korvex2 ok\n", "k"}) {
    const int before = server.connections();
    server.send(bytes);
    EXPECT_TRUE(QTest::qWaitFor([&] { return server.connections() == before + 1 && isConnected(); }, 3000)) << bytes;
    QTest::qWait(30);
  }
}

TEST_F(Network, ALineBehindTheAnswerLeavesTheAnswerGoodAndEndsTheConnection) {
  makeConnection();
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    if (line == "korvex2 get a") {
      reaction.bytes = "korvex2 set a 7\nkorvex2 ok\n";
    }
    return reaction;
  });
  EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
  EXPECT_FALSE(isConnected());
  EXPECT_EQ(reason(), "the backend sent more than was asked for");
}

TEST_F(Network, AnAnswerToAnotherQueryEndsTheConnection) {
  for (const char* other : {"korvex2 set b 7", "korvex2 set ab 7", "korvex2 set", "korvex2 ok", "", "korvex2 get a",
                            "korvex2 errand", "korvex2 set b a"}) {
    server.setAnswer("korvex2 get a", other);
    makeConnection();
    EXPECT_EQ(ask("korvex2 get a"), "(none)") << other;
    EXPECT_EQ(reason(), "the backend answered another question") << other;
  }
}

TEST_F(Network, AnAnswerIsKnownByItsWordsOrIsARefusal) {
  makeConnection();
  for (const auto& [query, answer] : std::vector<std::pair<QByteArray, QByteArray>>{
           {"korvex2 get body  desc\tx", "korvex2 set body desc x \"y\""},
           {"korvex2 get a", "korvex2 set a"},
           {"korvex2 get a ", "korvex2 set a"},
           {"korvex2 get a  ", "korvex2 set a 1"},
           {"korvex2 get  a", "korvex2 set a 1"},
           {"korvex2 get a b", "korvex2 err 5"},
           {"korvex2 get ", "korvex2 err 2 \"there is no such query\""},
           {"korvex2 set a 7", "korvex2 set b 7"},  // no query: its sender sees what is wrong with it
           {"korvex2  get a", "korvex2 ok"}}) {
    server.setAnswer(query, answer);
    EXPECT_EQ(ask(query), answer.toStdString()) << query.toStdString();
  }
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(Network, AnUnaskedLineInABurstIsNeverTakenForTheAnswerToACommand) {
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  server.setAnswer("korvex2 body transform", "korvex2 err 7 \"the configuration is locked\"");
  for (int round = 0; round < 10; ++round) {
    makeConnection();
    EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
    server.send("korvex2 ok\n");
    EXPECT_EQ(ask("korvex2 get a"), "(none)");
    makeConnection();
    EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
    server.send("korvex2 ok\n");
    EXPECT_EQ(ask("korvex2 body transform"), "(none)");
    EXPECT_EQ(reason(), "the backend sent more than was asked for");
  }
}

TEST_F(Network, LinesThatBelongTogetherAreSentTogetherAndAnsweredInOrder) {
  makeConnection();
  server.takeLines();
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  server.setAnswer("korvex2 body turn", "korvex2 ok");
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.delay = line == "korvex2 get status active" ? 0 : 60;
    return reaction;
  });
  QElapsedTimer timer;
  timer.start();
  const QByteArrayList lines{"korvex2 get a", "korvex2 get b", "korvex2 body turn"};
  EXPECT_EQ(connection->exchangeTogether(lines),
            (QByteArrayList{"korvex2 set a 7", "korvex2 err 2 \"there is no such query\"", "korvex2 ok"}));
  EXPECT_LT(timer.elapsed(), 140) << "one after the other they would take 180 ms";
  EXPECT_EQ(server.lines(), std::vector<QByteArray>(lines.begin(), lines.end()));
  EXPECT_EQ(connection->exchangeTogether({}), QByteArrayList());
  EXPECT_EQ(connection->exchangeTogether({"korvex2 get a", "korvex2 get\na"}), QByteArrayList());
  EXPECT_EQ(server.lines().size(), 3u);
}

TEST_F(Network, AnswersToSeveralLinesMaySplitAnywhere) {
  makeConnection();
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  server.setAnswer("korvex2 get b", "korvex2 set b 8");
  const QByteArrayList answers{"korvex2 set a 7", "korvex2 set b 8", "korvex2 set a 7"};
  const QByteArray whole = answers.join('\n') + '\n';
  for (int split = 0; split < whole.size(); ++split) {
    std::atomic<int> taken{0};
    server.react([&](const QByteArray& line) {
      if (line == "korvex2 get status active") {
        return server.usual(line);
      }
      return ++taken == 3 ? Reaction{whole.left(split)} : Reaction::silence();
    });
    std::thread rest([&] {
      while (taken < 3) {
        QThread::usleep(100);
      }
      QThread::usleep(300);
      server.send(whole.mid(split));
    });
    const bool same = connection->exchangeTogether({"korvex2 get a", "korvex2 get b", "korvex2 get a"}) == answers;
    rest.join();
    ASSERT_TRUE(same) << split;
  }
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(Network, SeveralLinesHaveOneDeadlineAndTheAnswersThatCameCount) {
  makeConnection();
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.delay = line == "korvex2 get a" ? 100 : line == "korvex2 get b" ? 600 : 0;
    return reaction;
  });
  server.setAnswer("korvex2 get a", "korvex2 set a 1");
  server.setAnswer("korvex2 get b", "korvex2 set b 1");
  QElapsedTimer timer;
  timer.start();
  EXPECT_EQ(connection->exchangeTogether({"korvex2 get a", "korvex2 get b"}), QByteArrayList{"korvex2 set a 1"});
  EXPECT_GE(timer.elapsed(), 140);
  EXPECT_LT(timer.elapsed(), 240) << "with a deadline of its own the second answer would be waited for until 250 ms";
  EXPECT_FALSE(isConnected());
  EXPECT_EQ(reason(), "the backend did not answer within 0.15 s");
  EXPECT_EQ(connection->exchangeTogether({"korvex2 get a"}), QByteArrayList()) << "at once, while not connected";
}

TEST_F(Network, AConnectionThatEndsBetweenAnswersLeavesThoseThatCame) {
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.close = line == "korvex2 body turn";
    return reaction;
  });
  server.setAnswer("korvex2 body turn", "korvex2 ok");
  makeConnection();
  EXPECT_EQ(connection->exchangeTogether({"korvex2 body expect", "korvex2 body turn", "korvex2 get a"}),
            (QByteArrayList{"korvex2 err 2 \"there is no such query\"", "korvex2 ok"}));
  EXPECT_FALSE(isConnected());
}

TEST_F(Network, AnAnswerToAnotherQueryAmongSeveralKeepsThoseBeforeIt) {
  makeConnection();
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  server.setAnswer("korvex2 get b", "korvex2 set a 7");
  EXPECT_EQ(connection->exchangeTogether({"korvex2 get a", "korvex2 get b", "korvex2 get a"}),
            QByteArrayList{"korvex2 set a 7"});
  EXPECT_EQ(reason(), "the backend answered another question");
}

TEST_F(Network, AnAnswerWithoutAnEndIsGivenUpAt256KiB) {
  NetworkOptions options = quick();
  options.commandTimeout = 5000ms;
  makeConnection(options);
  server.react([&](const QByteArray& line) {
    return line == "korvex2 get a" ? Reaction{"korvex2 set a " + QByteArray(1024 * 1024, 'x')} : server.usual(line);
  });
  QElapsedTimer timer;
  timer.start();
  EXPECT_EQ(ask("korvex2 get a"), "(none)");
  EXPECT_LT(timer.elapsed(), 2000) << "it is not waited for";
  EXPECT_EQ(reason(), "the backend sent a line without an end");
}

TEST_F(Network, ALongAnswerIsWhole) {
  makeConnection();
  const QByteArray answer = "korvex2 set a " + QByteArray(200000, 'x');
  server.setAnswer("korvex2 get a", answer);
  EXPECT_EQ(ask("korvex2 get a"), answer.toStdString());
  EXPECT_EQ(ask("korvex2 get a"), answer.toStdString());
}

TEST_F(Network, AConnectionClosedInTheMiddleOfAnAnswerGivesNone) {
  makeConnection();
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    if (line == "korvex2 get a") {
      reaction.bytes = "korvex2 set a 12";
      reaction.close = true;
    }
    return reaction;
  });
  EXPECT_EQ(ask("korvex2 get a"), "(none)");
  EXPECT_EQ(reason(), "the backend closed the connection");
}

TEST_F(Network, ALineWithALineEndInsideIsNotSent) {
  makeConnection();
  EXPECT_EQ(ask("korvex2 get a\nkorvex2 get b"), "(none)");
  EXPECT_EQ(ask(QByteArray("korvex2 get a\0b", 15)), "(none)");
  EXPECT_TRUE(isConnected());
  EXPECT_EQ(server.lines(), std::vector<QByteArray>{"korvex2 get version"});
}

TEST_F(Network, AfterSomeSilenceTheBackendIsAskedWhetherItIsThere) {
  NetworkOptions options = quick();
  options.heartbeat = 40ms;
  makeConnection(options);
  EXPECT_TRUE(QTest::qWaitFor([this] { return server.heartbeats() >= 4; }, 3000));
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(Network, WithoutSilenceTheBackendIsNotAsked) {
  NetworkOptions options = quick();
  options.heartbeat = 300ms;
  makeConnection(options);
  EXPECT_TRUE(QTest::qWaitFor([this] { return server.heartbeats() == 1; }, 3000));
  for (int i = 0; i < 20; ++i) {
    ask("korvex2 get a");
    QTest::qWait(25);
  }
  EXPECT_EQ(server.heartbeats(), 1);
}

TEST_F(Network, APeerThatDoesNotAnswerTheHeartbeatIsLeft) {
  NetworkOptions options = quick();
  options.heartbeat = 40ms;
  makeConnection(options);
  server.react([&](const QByteArray& line) {
    return line == "korvex2 get status active" ? Reaction::silence() : server.usual(line);
  });
  EXPECT_TRUE(QTest::qWaitFor([this] { return server.connections() >= 2; }, 3000));
}

TEST_F(Network, AnAnswerThatBelongsToNoHeartbeatEndsTheConnection) {
  makeConnection();
  server.react([&](const QByteArray& line) {
    return line == "korvex2 get status active" ? Reaction::answer("korvex2 set body desc") : server.usual(line);
  });
  server.cut();
  EXPECT_TRUE(QTest::qWaitFor([this] { return server.connections() >= 4; }, 3000));
}

TEST_F(Network, AnExchangeReadsTheAnswerToTheHeartbeatFirst) {
  NetworkOptions options = quick();
  options.heartbeat = 30ms;
  options.commandTimeout = 1000ms;
  makeConnection(options);
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    if (line == "korvex2 get status active") {
      reaction.delay = 80;
    } else {
      reaction.delay = 90;  // behind it all the same: the answers go in order
    }
    return reaction;
  });
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  const int before = server.heartbeats();
  ASSERT_TRUE(QTest::qWaitFor([&] { return server.heartbeats() > before; }, 3000));
  EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
  EXPECT_TRUE(isConnected());
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(Network, TheHeartbeatAndTheCommandHaveOneDeadline) {
  NetworkOptions options = quick();
  options.heartbeat = 30ms;
  options.commandTimeout = 500ms;
  makeConnection(options);
  server.react([&](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.delay = line == "korvex2 get status active" ? 400 : 0;
    if (line == "korvex2 get a") {
      return Reaction::silence();
    }
    return reaction;
  });
  const int before = server.heartbeats();
  ASSERT_TRUE(QTest::qWaitFor([&] { return server.heartbeats() > before; }, 3000));
  QElapsedTimer timer;
  timer.start();
  EXPECT_EQ(ask("korvex2 get a"), "(none)");
  EXPECT_LT(timer.elapsed(), 800) << "half a second in all, not from the heartbeat's answer on";
}

TEST_F(Network, WhileTheProgramIsBusyAnAnswerToTheHeartbeatThatCameCounts) {
  NetworkOptions options = quick();
  options.heartbeat = 40ms;
  makeConnection(options);
  const int before = server.heartbeats();
  ASSERT_TRUE(QTest::qWaitFor([&] { return server.heartbeats() > before; }, 3000));
  QTest::qSleep(300);  // longer than the time-out
  QTest::qWait(50);
  EXPECT_EQ(server.connections(), 1);
}

TEST_F(Network, OverIPv6AsWell) {
  LineServer other(QHostAddress(QHostAddress::LocalHostIPv6));
  if (other.port() == 0) {
    GTEST_SKIP() << "this machine has no IPv6";
  }
  other.setAnswer("korvex2 get a", "korvex2 set a 7");
  connection = std::make_unique<NetworkConnection>(BackendAddress{QStringLiteral("::1"), other.port()}, quick());
  EXPECT_EQ(ask("korvex2 get a"), "korvex2 set a 7");
  EXPECT_EQ(connection->linkStatus().place, QStringLiteral("[::1]:%1").arg(other.port()));
}

TEST_F(Network, ByNameAsWell) {
  connection = std::make_unique<NetworkConnection>(BackendAddress{QStringLiteral("localhost"), server.port()}, quick());
  EXPECT_TRUE(isConnected()) << reason();
}

TEST_F(Network, ThroughTheChannelNumbersKeepTheirPointUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready()) << "a locale with a comma could not be made";
  makeConnection();
  server.setAnswer("korvex2 get body marker standard b01 m01", "korvex2 set body marker standard b01 m01 1.5 -2.25 0");
  HostChannel channel(connection.get());
  double position[3] = {};
  EXPECT_EQ(channel.get_reals(position, 3, "body marker %s b%2.2d m%2.2d", "standard", 1, 1), 0);
  EXPECT_EQ(position[0], 1.5);
  EXPECT_EQ(position[1], -2.25);
  channel.set_value("x %.3f", 1.5);
  EXPECT_EQ(server.lines().back(), "korvex2 set x 1.500");
  server.react([](const QByteArray&) { return Reaction::silence(); });
  EXPECT_EQ(ask("korvex2 get a"), "(none)");
  EXPECT_EQ(reason(), "the backend did not answer within 0.15 s");
}

TEST_F(Network, ItsEndIsPromptWhateverItIsDoing) {
  makeConnection();
  QElapsedTimer timer;
  timer.start();
  connection.reset();
  server.stopListening();
  connection = std::make_unique<NetworkConnection>(address(), quick());  // between two attempts
  connection.reset();
  NetworkOptions options = quick();
  options.waitAtFirst = false;
  server.listenAgain();
  connection = std::make_unique<NetworkConnection>(address(), options);  // in the midst of an attempt
  connection.reset();
  server.react([](const QByteArray&) { return Reaction::silence(); });
  connection = std::make_unique<NetworkConnection>(address(), options);
  ASSERT_TRUE(QTest::qWaitFor([this] { return !server.lines().empty(); }, 3000));  // during its first questions
  connection.reset();
  EXPECT_LT(timer.elapsed(), 1000);
  QTest::qWait(20);
}
