// The relay of the fault tests, on its own: what a plain server and a plain client see through it.
#include "faultproxy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <QList>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "loopbacksocket.h"
#include "plainclient.h"

namespace {

using namespace korvex2_test;
using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr auto limit = 5s;

template <class Condition>
bool comesTrue(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

/// Answers every line with "echo LINE", and "say WORDS" with "WORDS", ended as the line was, one connection after the
/// other, and keeps what it got.
class EchoServer {
 public:
  EchoServer() : listener_(LoopbackSocket::listening(0)), thread_([this] { serve(); }) {}
  ~EchoServer() {
    stopping_ = true;
    thread_.join();
  }
  quint16 port() const { return listener_.port(); }
  QByteArray received() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return received_;
  }
  int reads() const { return reads_; }
  int ended() const { return ended_; }

 private:
  void serve() {
    while (!stopping_) {
      LoopbackSocket client = listener_.accepted();
      if (!client.isOpen()) {
        std::this_thread::sleep_for(1ms);
        continue;
      }
      QByteArray pending;
      bool ended = false;
      while (!ended && !stopping_) {
        pollfd entry{client.descriptor(), POLLIN, 0};
        ::poll(&entry, 1, 20);
        const QByteArray bytes = client.read(ended);
        reads_ += bytes.isEmpty() ? 0 : 1;
        {
          const std::lock_guard<std::mutex> lock(mutex_);
          received_ += bytes;
        }
        for (const char byte : bytes) {
          pending += byte;
          if (byte == '\n' || byte == '\0') {
            client.write(pending.startsWith("say ") ? pending.mid(4) : "echo " + pending);
            pending.clear();
          }
        }
      }
      ++ended_;
    }
  }

  LoopbackSocket listener_;
  mutable std::mutex mutex_;
  QByteArray received_;
  std::atomic<int> reads_{0};
  std::atomic<int> ended_{0};
  std::atomic<bool> stopping_{false};
  std::thread thread_;
};

class Relay : public testing::Test {
 protected:
  /// Everything the client gets until its connection ends or nothing comes for a while.
  static QByteArray allOf(const LoopbackSocket& client, bool& ended, std::chrono::milliseconds quiet) {
    QByteArray all;
    pollfd entry{client.descriptor(), POLLIN, 0};
    while (!ended && ::poll(&entry, 1, static_cast<int>(quiet.count())) == 1) {
      all += client.read(ended);
    }
    return all;
  }

  EchoServer server;
  FaultProxy relay{server.port()};
  PlainClient client{relay.port()};
};

TEST_F(Relay, PassesLinesBothWaysInOrderAndNotesThem) {
  EXPECT_EQ(client.ask("one"), "echo one");
  client.send("two\nthree\n");
  EXPECT_EQ(client.readLine(), "echo two");
  EXPECT_EQ(client.readLine(), "echo three");
  EXPECT_TRUE(comesTrue([this] { return relay.passed().size() == 6; }));
  EXPECT_EQ(relay.commands("t"), 2);
  EXPECT_EQ(relay.passed().front(), "> one");
  EXPECT_EQ(relay.connections(), 1);
  EXPECT_EQ(relay.openConnections(), 1);
}

TEST_F(Relay, KeepsTheByteThatEndsALine) {
  client.send(QByteArray("zero\0", 5) + "line\n");
  EXPECT_EQ(client.readLine(), QByteArray("echo zero\0echo line", 19));
  EXPECT_EQ(server.received(), QByteArray("zero\0line\n", 10));
}

TEST_F(Relay, TellsTheRuleWhichCommandAnAnswerBelongsTo) {
  std::mutex mutex;
  std::vector<std::string> seen;
  relay.onLine([&](const PassingLine& line) {
    const std::lock_guard<std::mutex> lock(mutex);
    seen.push_back((line.toBackend ? "> " : "< ") + line.text.toStdString() + "|" + line.command.toStdString());
    return line.isCommand("lost") ? Fate::drop() : Fate::pass();
  });
  client.send("one\nlost\ntwo\n");
  EXPECT_EQ(client.readLine(), "echo one");
  EXPECT_EQ(client.readLine(), "echo two");
  relay.passEverything();
  EXPECT_THAT(seen, testing::UnorderedElementsAre("> one|", "> lost|", "> two|", "< echo one|one", "< echo two|two"));
  EXPECT_EQ(server.received(), "one\ntwo\n");
}

TEST_F(Relay, HoldsALineAndAllBehindItUntilItIsReleased) {
  relay.onLine([](const PassingLine& line) { return line.isAnswerTo("slow") ? Fate::hold() : Fate::pass(); });
  client.send("slow\nfast\n");
  EXPECT_TRUE(relay.waitForCommand("fast", limit));
  EXPECT_TRUE(relay.waitForHeld(limit));
  EXPECT_EQ(relay.passed().size(), 2U) << "no answer went on";
  relay.release();
  EXPECT_EQ(client.readLine(), "echo slow");
  EXPECT_EQ(client.readLine(), "echo fast");
}

TEST_F(Relay, DelaysALine) {
  relay.onLine([](const PassingLine& line) { return line.isCommand("late") ? Fate::late(60ms) : Fate::pass(); });
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(client.ask("late"), "echo late");
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 60ms);
}

TEST_F(Relay, SplitsALineIntoSingleBytesAndMergesLinesIntoOneSegment) {
  relay.onLine([](const PassingLine& line) { return line.isCommand("bytes") ? Fate::inPieces(1) : Fate::pass(); });
  EXPECT_EQ(client.ask("bytes of a line that is long enough"), "echo bytes of a line that is long enough");
  EXPECT_GT(server.reads(), 5);

  const LoopbackSocket other = LoopbackSocket::connectedTo(relay.port());
  client = PlainClient(relay.port());  // the server takes one after the other
  relay.onLine([](const PassingLine& line) { return line.isAnswerTo("first") ? Fate::joinNext() : Fate::pass(); });
  other.write("first\nsecond\n");
  bool ended = false;
  pollfd entry{other.descriptor(), POLLIN, 0};
  ASSERT_EQ(::poll(&entry, 1, 5000), 1);
  EXPECT_EQ(other.read(ended), "echo first\necho second\n");
  EXPECT_FALSE(ended);
}

TEST_F(Relay, CutsBeforeAndBehindACommand) {
  relay.onLine([](const PassingLine& line) { return line.isCommand("here") ? Fate::cutBefore() : Fate::pass(); });
  EXPECT_EQ(client.ask("one"), "echo one");
  EXPECT_EQ(client.ask("here"), "");
  EXPECT_FALSE(client.isConnected());
  EXPECT_TRUE(comesTrue([this] { return server.ended() == 1; }));
  EXPECT_EQ(server.received(), "one\n");

  relay.onLine([](const PassingLine& line) { return line.isCommand("there") ? Fate::cutAfter() : Fate::pass(); });
  PlainClient second(relay.port());
  EXPECT_EQ(second.ask("there"), "");
  EXPECT_TRUE(comesTrue([this] { return server.ended() == 2; }));
  EXPECT_EQ(server.received(), "one\nthere\n");
  EXPECT_TRUE(comesTrue([this] { return relay.openConnections() == 0; }));
}

TEST_F(Relay, CutsInsideALineAndBeforeItsEnd) {
  relay.onLine([](const PassingLine& line) { return line.isCommand("abcdefg") ? Fate::cutInside() : Fate::pass(); });
  EXPECT_EQ(client.ask("abcdefg"), "");
  EXPECT_TRUE(comesTrue([this] { return server.ended() == 1; }));
  EXPECT_EQ(server.received(), "abcd");

  relay.onLine([](const PassingLine& line) { return line.isCommand("ijk") ? Fate::cutBeforeEnd() : Fate::pass(); });
  PlainClient second(relay.port());
  EXPECT_EQ(second.ask("ijk"), "");
  EXPECT_TRUE(comesTrue([this] { return server.ended() == 2; }));
  EXPECT_EQ(server.received(), "abcdijk");

  relay.onLine([](const PassingLine& line) { return line.isAnswerTo("xyz") ? Fate::cutInside() : Fate::pass(); });
  const LoopbackSocket third = LoopbackSocket::connectedTo(relay.port());
  third.write("xyz\n");
  bool ended = false;
  EXPECT_EQ(allOf(third, ended, limit), "echo");
  EXPECT_TRUE(ended);
}

TEST_F(Relay, DeliversACommandThatItHeldThoughTheHostIsGone) {
  relay.onLine([](const PassingLine& line) { return line.isCommand("held") ? Fate::hold() : Fate::pass(); });
  client.send("held\n");
  EXPECT_TRUE(relay.waitForHeld(limit));
  client = PlainClient(0);
  EXPECT_TRUE(comesTrue([this] { return relay.openConnections() == 0; }));
  EXPECT_EQ(server.ended(), 0);
  relay.release();
  EXPECT_TRUE(comesTrue([this] { return server.ended() == 1; }));
  EXPECT_EQ(server.received(), "held\n");
}

TEST_F(Relay, CallsTheTestBackWhenALineWasPassedOn) {
  std::atomic<int> calls{0};
  relay.onLine([&calls](const PassingLine& line) {
    return line.isCommand("now") ? Fate::pass().andThen([&calls] { ++calls; }) : Fate::pass();
  });
  client.ask("before");
  EXPECT_EQ(calls, 0);
  client.ask("now");
  EXPECT_EQ(calls, 1);
  relay.passEverything();
  client.ask("now");
  EXPECT_EQ(calls, 1);
}

TEST_F(Relay, CutsRefusesAndListensAgainOnTheSamePort) {
  EXPECT_EQ(client.ask("one"), "echo one");
  relay.setListening(false);
  EXPECT_FALSE(PlainClient(relay.port()).isConnected());
  EXPECT_EQ(client.ask("two"), "echo two") << "a connection that is there stays";
  relay.cut();
  EXPECT_EQ(client.ask("three"), "");
  relay.setListening(true);
  EXPECT_EQ(PlainClient(relay.port()).ask("four"), "echo four");
}

TEST_F(Relay, ClosesTheHostsSideWhenThereIsNoBackend) {
  quint16 nobody = 0;
  {
    const LoopbackSocket closedAtOnce = LoopbackSocket::listening(0);
    nobody = closedAtOnce.port();
  }
  EXPECT_EQ(client.ask("one"), "echo one");
  relay.setBackendPort(nobody);
  PlainClient second(relay.port());
  EXPECT_EQ(second.ask("one"), "");
  EXPECT_EQ(client.ask("two"), "echo two");
}

TEST_F(Relay, SpeaksToTheHostAsIfItWereTheBackend) {
  EXPECT_EQ(client.ask("one"), "echo one");
  relay.sendToHosts("nobody asked\n");
  EXPECT_EQ(client.readLine(), "nobody asked");
  EXPECT_EQ(server.received(), "one\n");
}

TEST_F(Relay, MakesDatagramsPassAndDoesToThemWhatTheTestSays) {
  const LoopbackSocket host = LoopbackSocket::datagrams();
  const QByteArray own = QByteArray::number(host.port());
  EXPECT_EQ(client.ask("korvex2 set output net chmon udp " + own).left(5), "echo ");
  const QList<QByteArray> words = server.received().trimmed().split(' ');
  ASSERT_EQ(words.size(), 7);
  EXPECT_NE(words[6], own) << "the backend is told a port of the relay";
  const quint16 port = words[6].toUShort();

  const LoopbackSocket backend = LoopbackSocket::datagrams();
  const auto next = [&host] {
    pollfd entry{host.descriptor(), POLLIN, 0};
    bool ended = false;
    return ::poll(&entry, 1, 5000) == 1 ? host.read(ended) : QByteArray();
  };
  backend.sendDatagram("fr 1\n", port);
  EXPECT_EQ(next(), "fr 1\n");
  relay.onDatagram([](const QByteArray& datagram, int number) -> std::vector<QByteArray> {
    switch (number) {
      case 1:
        return {};
      case 2:
        return {datagram, datagram};
      case 3:
        return {datagram.left(3)};
      default:
        return {QByteArray(60000, 'x')};
    }
  });
  for (const char* frame : {"fr 2\n", "fr 3\n", "fr 4\n", "fr 5\n"}) {
    backend.sendDatagram(frame, port);
  }
  EXPECT_EQ(next(), "fr 3\n");
  EXPECT_EQ(next(), "fr 3\n");
  EXPECT_EQ(next(), "fr ");
  EXPECT_EQ(next(), QByteArray(60000, 'x'));
  relay.sendDatagram("own");
  EXPECT_EQ(next(), "own");
  EXPECT_EQ(relay.datagramsIn(), 5);
  EXPECT_EQ(relay.datagramsOut(), 6);
}

TEST_F(Relay, GivesTheHostItsOwnPortBackInTheAnswer) {
  client.ask("korvex2 set output net ch1 udp 4711");
  const QByteArray relayed = server.received().trimmed().split(' ').last();
  EXPECT_NE(relayed, "4711");
  EXPECT_EQ(client.ask("say korvex2 set output net ch1 udp " + relayed), "korvex2 set output net ch1 udp 4711");
  EXPECT_EQ(client.ask("say korvex2 set output net ch2 udp " + relayed), "korvex2 set output net ch2 udp " + relayed);
  EXPECT_EQ(client.ask("korvex2 set output net ch1 none"), "echo korvex2 set output net ch1 none");
  EXPECT_TRUE(server.received().endsWith("korvex2 set output net ch1 none\n"));
}

}  // namespace
