// Many clients: what they share, what is each one's own, who is let in, and who has to wait for whom.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "runningserver.h"

namespace {

using korvex2_test::holdsInTime;
using korvex2_test::TcpClient;

class ServerClients : public korvex2_test::RunningServer {
 protected:
  const std::string version = "korvex2 set version 1.20.0";
  const std::string tooMany = "korvex2 err 8 \"too many clients\"\n";
};

TEST_F(ServerClients, ShareDatabaseSettingsAndMeasurement) {
  TcpClient one = connect();
  TcpClient two = connect();
  EXPECT_EQ(one.ask("korvex2 set body desc standard b01 Mug"), "korvex2 ok");
  EXPECT_EQ(two.ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Mug\"");
  EXPECT_EQ(two.ask("korvex2 set wandgrip multiuser yes"), "korvex2 ok");
  EXPECT_EQ(one.ask("korvex2 get wandgrip multiuser"), "korvex2 set wandgrip multiuser yes");
  EXPECT_EQ(one.ask("korvex2 tracking start"), "korvex2 ok");
  EXPECT_EQ(two.ask("korvex2 get status active"), "korvex2 set status active mea");
  one.close();
  TcpClient three = connect();
  EXPECT_EQ(three.ask("korvex2 get status active"), "korvex2 set status active mea") << "whoever started it may go";
  EXPECT_EQ(two.ask("korvex2 tracking stop"), "korvex2 ok");
  EXPECT_EQ(three.ask("korvex2 get status active"), "korvex2 set status active idle");
}

TEST_F(ServerClients, HaveOutputChannelsOfTheirOwnThatEndWithTheConnection) {
  TcpClient one = connect();
  TcpClient two = connect();
  EXPECT_EQ(one.ask("korvex2 set output active chmon 6dw2 yes"), "korvex2 ok");
  EXPECT_EQ(one.ask("korvex2 set output net chmon udp 9"), "korvex2 ok");
  EXPECT_EQ(two.ask("korvex2 get output active chmon 6dw2"), "korvex2 set output active chmon 6dw2 no");
  EXPECT_EQ(two.ask("korvex2 get output net chmon"), "korvex2 set output net chmon none");
  one.close();
  TcpClient again = connect();
  EXPECT_EQ(again.ask("korvex2 get output active chmon 6dw2"), "korvex2 set output active chmon 6dw2 no");
  EXPECT_EQ(again.ask("korvex2 get output net chmon"), "korvex2 set output net chmon none");
}

TEST_F(ServerClients, HaveExpectationsOfTheirOwnThatEndWithTheConnection) {
  const std::string expect = "korvex2 body expect standard b01 0123456789abcdef";
  const std::string turn = "korvex2 body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 1";
  TcpClient one = connect();
  TcpClient two = connect();
  EXPECT_EQ(one.ask(expect), "korvex2 ok");
  EXPECT_EQ(two.ask(turn), "korvex2 ok");
  EXPECT_EQ(one.ask(turn).substr(0, 15), "korvex2 err 11 ");
  EXPECT_EQ(one.ask("korvex2 get body expect standard b01"), "korvex2 set body expect standard b01 0123456789abcdef");
  EXPECT_EQ(two.ask("korvex2 get body expect standard b01"), "korvex2 set body expect standard b01 none");
  one.close();
  TcpClient again = connect();
  EXPECT_EQ(again.ask(turn), "korvex2 ok");
}

TEST_F(ServerClients, SixtyFourAreServedAndOneMoreIsTurnedAway) {
  std::vector<std::unique_ptr<TcpClient>> clients;
  for (int i = 0; i < 64; ++i) {
    clients.push_back(std::make_unique<TcpClient>(port()));
    ASSERT_EQ(clients.back()->ask("korvex2 get version"), version) << i;
  }
  for (int i = 0; i < 3; ++i) {
    TcpClient more = connect();
    EXPECT_EQ(more.rest(), tooMany);
  }
  TcpClient asking = connect();
  ASSERT_TRUE(asking.send("korvex2 set body desc standard b01 Intruder\n"));
  EXPECT_EQ(asking.rest(), tooMany) << "what it sends is not carried out";
  for (const auto& client : clients) {
    ASSERT_EQ(client->ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Cup\"");
  }
  clients[17]->close();
  EXPECT_TRUE(holdsInTime([this] { return connect().ask("korvex2 get version") == version; })) << "there is room again";
}

TEST_F(ServerClients, TurnedAwayOnesDoNotPileUp) {
  limits.mostClients = 1;
  limits.mostFarewells = 3;
  limits.farewell = std::chrono::milliseconds(60'000);
  start();
  TcpClient first = connect();
  ASSERT_EQ(first.ask("korvex2 get version"), version);
  std::vector<std::unique_ptr<TcpClient>> crowd;
  int told = 0;
  for (int i = 0; i < 40; ++i) {
    crowd.push_back(std::make_unique<TcpClient>(port()));
    const std::string rest = crowd.back()->rest();
    told += rest == tooMany ? 1 : 0;
    EXPECT_EQ(rest, i < 3 ? tooMany : "") << "those beyond are closed without a word";
  }
  EXPECT_EQ(told, 3);
  EXPECT_EQ(first.ask("korvex2 get version"), version);
  crowd.clear();  // their places are free again
  EXPECT_TRUE(holdsInTime([this] { return connect().rest() == tooMany; }));
}

TEST_F(ServerClients, TurnedAwayOnesThatStayAreClosedAfterTheirMoment) {
  limits.mostClients = 1;
  limits.mostFarewells = 1;
  limits.farewell = std::chrono::milliseconds(50);
  start();
  TcpClient first = connect();
  ASSERT_EQ(first.ask("korvex2 get version"), version);
  TcpClient stays = connect();
  EXPECT_EQ(stays.rest(), tooMany);
  EXPECT_TRUE(holdsInTime([this] { return connect().rest() == tooMany; })) << "there is one place, and it gets free";
}

TEST_F(ServerClients, ABusyOneDoesNotKeepTheOthersWaiting) {
  TcpClient busy = connect();
  std::string flood;
  for (int i = 0; i < 2000; ++i) {
    flood += "korvex2 get body file standard b03\n";
  }
  flood += "korvex2 set body desc standard b01 Last\n";
  ASSERT_TRUE(busy.send(flood));
  TcpClient other = connect();
  EXPECT_EQ(other.ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Cup\"");
  for (int i = 0; i < 2000; ++i) {
    ASSERT_EQ(busy.line().substr(0, 34), "korvex2 set body file standard b03") << i;
  }
  EXPECT_EQ(busy.line(), "korvex2 ok");
}

TEST_F(ServerClients, EachHasItsTurnAfterABoundedNumberOfLines) {
  limits.mostLinesATurn = 4;
  limits.mostWaitingBytes = 1 << 22;
  start();
  std::vector<std::unique_ptr<TcpClient>> clients;
  for (int i = 0; i < 3; ++i) {
    clients.push_back(std::make_unique<TcpClient>(port()));
    ASSERT_EQ(clients.back()->ask("korvex2 get version"), version);
  }
  std::string many;
  for (int i = 0; i < 400; ++i) {
    many += "korvex2 set body desc standard b01 Many" + std::to_string(i) + '\n';
  }
  ASSERT_TRUE(clients[0]->send(many));
  ASSERT_TRUE(clients[1]->send("korvex2 set body desc standard b01 One\nkorvex2 get body desc standard b01\n"));
  EXPECT_EQ(clients[1]->line(), "korvex2 ok");
  EXPECT_EQ(clients[1]->line(), "korvex2 set body desc standard b01 \"One\"");
  // If the first client had been served to its end before, its last change would not follow the other's.
  for (int i = 0; i < 400; ++i) {
    ASSERT_EQ(clients[0]->line(), "korvex2 ok");
  }
  EXPECT_EQ(clients[2]->ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Many399\"");
}

TEST_F(ServerClients, AnIdleOneStays) {
  limits.stuckAfter = std::chrono::milliseconds(30);
  limits.farewell = std::chrono::milliseconds(30);
  start();
  TcpClient idle = connect();
  ASSERT_EQ(idle.ask("korvex2 get version"), version);
  ASSERT_TRUE(idle.send("korvex2 get ver"));
  EXPECT_TRUE(idle.isSilent(std::chrono::milliseconds(150)));
  ASSERT_TRUE(idle.send("sion\n"));
  EXPECT_EQ(idle.line(), version);
}

TEST_F(ServerClients, ComeAndGoByTheHundredAndLeaveNothingBehind) {
  const auto descriptors = [] { return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size(); };
  TcpClient one = connect();
  ASSERT_EQ(one.ask("korvex2 get version"), version);
  const auto before = descriptors();
  for (int i = 0; i < 300; ++i) {
    TcpClient client = connect();
    ASSERT_TRUE(client.isConnected());
    if (i % 3 != 0) {
      ASSERT_EQ(client.ask("korvex2 set output net chmon udp 9"), "korvex2 ok");
    }
    if (i % 2 == 0) {
      client.reset();
    }
  }
  EXPECT_TRUE(holdsInTime([&] { return descriptors() == before; }));
  EXPECT_EQ(one.ask("korvex2 get version"), version);
}

TEST_F(ServerClients, AreClosedWhenTheServerStops) {
  TcpClient client = connect();
  ASSERT_EQ(client.ask("korvex2 set body desc standard b01 Kept"), "korvex2 ok");
  reopen();
  EXPECT_EQ(client.rest(), "");
  EXPECT_EQ(ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Kept\"");
}

TEST_F(ServerClients, StoppingTwiceOrBeforeTheBeginningIsNoMistake) {
  server->stop();
  server->stop();
  stop();
  korvex2::BackendServer never(*database, korvex2::LiveLines(), 60);
  never.stop();
  ASSERT_EQ(never.listen({"127.0.0.1", 0}), "");
  never.run();  // returns at once
}

}  // namespace
