// Command lines and their answers over TCP: ends, order, pieces, and many at once.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "commalocale.h"
#include "runningserver.h"

namespace {

using korvex2_test::TcpClient;

class ServerLines : public korvex2_test::RunningServer {
 protected:
  const std::string version = "korvex2 set version 1.20.0";
};

TEST_F(ServerLines, ListensOnThisMachineAndAnswers) {
  EXPECT_EQ(server->address().host, "127.0.0.1");
  TcpClient client = connect();
  ASSERT_TRUE(client.isConnected());
  EXPECT_EQ(client.ask("korvex2 get version"), version);
  EXPECT_EQ(client.ask("korvex2 set body desc standard b01 \"Big mug\""), "korvex2 ok");
  EXPECT_EQ(client.ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Big mug\"");
}

TEST_F(ServerLines, AnAnswerEndsAsItsCommandEnded) {
  TcpClient client = connect();
  using namespace std::string_literals;
  ASSERT_TRUE(client.send("korvex2 get version\n"));
  EXPECT_EQ(client.line('\n'), version);
  ASSERT_TRUE(client.send("korvex2 get version\0"s));
  EXPECT_EQ(client.line('\0'), version);
  ASSERT_TRUE(client.send("korvex2 get version\r\n"));
  EXPECT_EQ(client.line('\n'), version);
  ASSERT_TRUE(client.send("korvex2 get version\r\0"s));
  EXPECT_EQ(client.line('\0'), version);
  EXPECT_TRUE(client.isSilent());
}

TEST_F(ServerLines, EmptyLinesAreNotAnswered) {
  using namespace std::string_literals;
  TcpClient client = connect();
  ASSERT_TRUE(client.send("\n\r\n\0\r\0\n\n"s));
  EXPECT_TRUE(client.isSilent());
  ASSERT_TRUE(client.send("\n\n" + std::string(5000, '\n') + "korvex2 get version\n"));
  EXPECT_EQ(client.line(), version);
  EXPECT_TRUE(client.isSilent());
  EXPECT_EQ(client.ask(" "), "korvex2 err 2 \"a command begins with korvex2\"") << "a blank is not nothing";
}

TEST_F(ServerLines, ALineMayComeByteByByte) {
  TcpClient client = connect();
  for (const char byte : std::string("korvex2 get version\r\nkorvex2 get tracking available\n")) {
    ASSERT_TRUE(client.send(std::string(1, byte)));
  }
  EXPECT_EQ(client.line(), version);
  EXPECT_EQ(client.line(), "korvex2 set tracking available yes");
}

TEST_F(ServerLines, ManyCommandsInOneSegmentAreAnsweredInTheirOrder) {
  TcpClient client = connect();
  std::string bytes;
  std::vector<std::string> expected;
  for (int i = 0; i < 300; ++i) {
    if (i % 3 == 0) {
      const std::string name = "body " + std::to_string(i);
      bytes += "korvex2 set body desc standard b01 \"" + name + "\"\nkorvex2 get body desc standard b01\n";
      expected.emplace_back("korvex2 ok");
      expected.push_back("korvex2 set body desc standard b01 \"" + name + '"');
    } else if (i % 3 == 1) {
      bytes += "korvex2 get body marker standard b01 m99\n";
      expected.emplace_back("korvex2 err 6 \"there is no marker m99\"");
    } else {
      bytes += std::string("korvex2 get version") + '\n';
      expected.push_back(version);
    }
  }
  ASSERT_TRUE(client.send(bytes));
  for (const std::string& answer : expected) {
    ASSERT_EQ(client.line(), answer);
  }
  EXPECT_TRUE(client.isSilent());
}

TEST_F(ServerLines, WhatWasAskedBeforeTheClientClosedItsSideIsAnswered) {
  TcpClient client = connect();
  std::string bytes;
  std::string expected;
  for (int i = 0; i < 200; ++i) {
    bytes += "korvex2 get version\n";
    expected += version + '\n';
  }
  ASSERT_TRUE(client.send(bytes));
  client.finish();
  EXPECT_EQ(client.rest(), expected) << "and then the connection is closed";
}

TEST_F(ServerLines, ALineWithoutItsEndIsForgottenWithItsClient) {
  TcpClient client = connect();
  ASSERT_TRUE(client.send("korvex2 set body desc standard b01 First\nkorvex2 set body desc standard b01 Half"));
  client.finish();
  EXPECT_EQ(client.rest(), "korvex2 ok\n");
  TcpClient other = connect();
  EXPECT_EQ(other.ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"First\"");
}

TEST_F(ServerLines, TheLongestLineIsAnswered) {
  TcpClient client = connect();
  std::string line = "korvex2 get version";
  line += std::string(131072 - line.size(), ' ');
  EXPECT_EQ(client.ask(line), version);
  EXPECT_EQ(client.ask(line + "\r"), version);
  EXPECT_EQ(client.ask("korvex2 get version"), version) << "and the connection stays";
}

TEST_F(ServerLines, BodyFilesTravelInALine) {
  TcpClient client = connect();
  const std::string head = "korvex2 set body file standard b02 ";
  const std::string answer = client.ask("korvex2 get body file standard b02");
  ASSERT_EQ(answer.substr(0, head.size()), head);
  ASSERT_GT(answer.size(), head.size());
  EXPECT_EQ(client.ask("korvex2 set body file standard b01 " + answer.substr(head.size())), "korvex2 ok");
  std::string expected = answer;
  expected.replace(head.size() - 2, 1, "1");
  EXPECT_EQ(client.ask("korvex2 get body file standard b01"), expected);
}

TEST_F(ServerLines, ARoundTripTakesNoTimerInAnyDirection) {
  TcpClient client = connect();
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 500; ++i) {
    ASSERT_EQ(client.ask("korvex2 get version"), version);
  }
  // Delayed acknowledgements would make it 40 ms each, 20 s; unhindered it is some 20 ms in all.
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(ServerLines, NumbersHaveADecimalPointInEveryLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready());
  TcpClient client = connect();
  EXPECT_EQ(client.ask("korvex2 set body marker standard b01 m01 1.5 -2.25 1e3"), "korvex2 ok");
  EXPECT_EQ(client.ask("korvex2 get body marker standard b01 m01"),
            "korvex2 set body marker standard b01 m01 1.5 -2.25 1000");
  EXPECT_EQ(client.ask("korvex2 set body marker standard b01 m01 1,5 2 3"),
            "korvex2 err 4 \"a number is expected, not 1,5\"");
}

TEST_F(ServerLines, ComeOverIpv6Too) {
  start("::1");
  TcpClient client(port(), TcpClient::Family::V6);
  ASSERT_TRUE(client.isConnected());
  EXPECT_EQ(client.ask("korvex2 get version"), version);
  EXPECT_EQ(server->address().text(), "[::1]:" + QByteArray::number(port()));
}

TEST_F(ServerLines, APortThatIsTakenIsTold) {
  korvex2::BackendServer second(*database, korvex2::LiveLines(), 60);
  const QString problem = second.listen({"127.0.0.1", port()});
  EXPECT_FALSE(problem.isEmpty());
  EXPECT_EQ(connect().ask("korvex2 get version"), version) << "the first one goes on";
  korvex2::BackendServer elsewhere(*database, korvex2::LiveLines(), 60);
  EXPECT_FALSE(elsewhere.listen({"192.0.2.1", 0}).isEmpty()) << "an address that no machine has";
}

}  // namespace
