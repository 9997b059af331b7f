// Several clients that change the same body: one change at a time, each whole, and everybody reads the result.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "runningserver.h"

namespace {

using korvex2_test::TcpClient;

std::string shift(double x, double y, double z) {
  return "korvex2 body transform standard b01 " + std::to_string(x) + ' ' + std::to_string(y) + ' ' +
         std::to_string(z) + " 1 0 0 0 1 0 0 0 1";
}

class ServerChanges : public korvex2_test::RunningServer {
 protected:
  void SetUp() override {
    RunningServer::SetUp();
    TcpClient client = connect();
    for (const char* marker : {"m01 0 0 0", "m02 1 0 0", "m03 0 1 0", "m04 0 0 1", "m05 1 1 1"}) {
      ASSERT_EQ(client.ask(std::string("korvex2 set body marker standard b01 ") + marker), "korvex2 ok");
    }
  }
  static std::string markerOf(TcpClient& client, const std::string& marker = "m01") {
    const std::string head = "korvex2 set body marker standard b01 " + marker + ' ';
    const std::string answer = client.ask("korvex2 get body marker standard b01 " + marker);
    return answer.rfind(head, 0) == 0 ? answer.substr(head.size()) : answer;
  }
};

TEST_F(ServerChanges, TwoThatTakeTurnsReadEachOthersResult) {
  TcpClient one = connect();
  TcpClient two = connect();
  for (int i = 1; i <= 20; ++i) {
    TcpClient& writer = i % 2 == 0 ? one : two;
    TcpClient& reader = i % 2 == 0 ? two : one;
    ASSERT_EQ(writer.ask(shift(1, 10, -5)), "korvex2 ok");
    const std::string expected = std::to_string(i) + ' ' + std::to_string(10 * i) + ' ' + std::to_string(-5 * i);
    ASSERT_EQ(markerOf(reader), expected);
    ASSERT_EQ(markerOf(writer), expected);
  }
}

TEST_F(ServerChanges, ManyAtOnceAllCount) {
  constexpr int clients = 6;
  constexpr int changes = 15;
  std::atomic<int> acknowledged{0};
  std::atomic<int> torn{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < clients; ++i) {
    threads.emplace_back([&, i] {
      TcpClient client = connect();
      for (int j = 0; j < changes; ++j) {
        acknowledged += client.ask(shift(1, i, 0)) == "korvex2 ok" ? 1 : 0;
        // One read is one moment: a marker's three numbers are from the same change. Between two reads of the same
        // segment nobody else's turn begins half way: m02 is m01 and (1, 0, 0).
        client.send("korvex2 get body marker standard b01 m01\nkorvex2 get body marker standard b01 m02\n");
        const std::string first = client.line().substr(41);
        const std::string second = client.line().substr(41);
        const int x1 = std::stoi(first);
        const int x2 = std::stoi(second);
        torn += x2 < x1 + 1 ? 1 : 0;  // another change may have come between, but never backwards
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(acknowledged, clients * changes);
  EXPECT_EQ(torn, 0);
  const std::string expected =
      std::to_string(clients * changes) + ' ' + std::to_string(changes * (0 + 1 + 2 + 3 + 4 + 5)) + " 0";
  TcpClient client = connect();
  EXPECT_EQ(markerOf(client), expected);
  reopen();
  EXPECT_EQ(problems(), "");
  EXPECT_EQ(ask("korvex2 get body marker standard b01 m01"), "korvex2 set body marker standard b01 m01 " + expected);
}

TEST_F(ServerChanges, WhatWasAcknowledgedIsOnDiskBeforeTheAnswer) {
  TcpClient client = connect();
  for (int i = 1; i <= 5; ++i) {
    ASSERT_EQ(client.ask(shift(1, 0, 0)), "korvex2 ok");
    // Another reader of the files, as after a crash at this moment.
    const auto reader = korvex2::openDatabase(folder());
    const korvex2::Body* const body = reader->find({"standard", 1});
    ASSERT_NE(body, nullptr);
    ASSERT_EQ(body->problem, "");
    EXPECT_EQ(body->markers[0].position[0], i);
    EXPECT_EQ(body->markers[1].position[0], i + 1);
  }
}

TEST_F(ServerChanges, OnlyOneOfTwoThatReadTheSameMarkersMayChangeThem) {
  TcpClient one = connect();
  TcpClient two = connect();
  const std::string head = "korvex2 set body state standard b01 ";
  const std::string state = one.ask("korvex2 get body state standard b01").substr(head.size());
  EXPECT_EQ(two.ask("korvex2 get body state standard b01"), head + state);
  EXPECT_EQ(one.ask("korvex2 body expect standard b01 " + state), "korvex2 ok");
  EXPECT_EQ(two.ask("korvex2 body expect standard b01 " + state), "korvex2 ok");
  EXPECT_EQ(one.ask(shift(1, 2, 3)), "korvex2 ok");
  EXPECT_EQ(two.ask(shift(1, 2, 3)), "korvex2 err 11 \"the markers of the body are not those that were expected\"");
  EXPECT_EQ(markerOf(two), "1 2 3");
  const std::string now = two.ask("korvex2 get body state standard b01").substr(head.size());
  EXPECT_EQ(one.ask("korvex2 get body expect standard b01"), "korvex2 set body expect standard b01 " + now);
  EXPECT_EQ(two.ask("korvex2 get body expect standard b01"), "korvex2 set body expect standard b01 " + state);
  EXPECT_EQ(two.ask("korvex2 set body marker standard b01 m01 1 2 3").substr(0, 15), "korvex2 err 11 ");
  EXPECT_EQ(two.ask("korvex2 body expect standard b01 " + now), "korvex2 ok");
  EXPECT_EQ(two.ask(shift(1, 2, 3)), "korvex2 ok");
  EXPECT_EQ(markerOf(one), "2 4 6");
}

TEST_F(ServerChanges, AChangeWhoseSenderIsGoneIsWholeOrNotThere) {
  for (int i = 0; i < 20; ++i) {
    TcpClient client = connect();
    client.send(shift(1, 0, 0) + '\n');
    if (i % 2 == 0) {
      client.reset();
    } else {
      client.finish();
      EXPECT_EQ(client.rest(), "korvex2 ok\n");
    }
  }
  TcpClient client = connect();
  const int x = std::stoi(markerOf(client));
  EXPECT_GE(x, 10) << "all that were acknowledged";
  EXPECT_LE(x, 20);
  EXPECT_EQ(markerOf(client, "m02"), std::to_string(x + 1) + " 0 0");
  EXPECT_EQ(markerOf(client, "m05"), std::to_string(x + 1) + " 1 1");
}

}  // namespace
