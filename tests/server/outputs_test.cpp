// Live lines as datagrams: their form, who gets which, and where to.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "livelinereader.h"
#include "runningserver.h"
#include "udpreceiver.h"

namespace {

using korvex2_test::frameOf;
using korvex2_test::holdsInTime;
using korvex2_test::kindsIn;
using korvex2_test::LineReader;
using korvex2_test::LineRecord;
using korvex2_test::linesOf;
using korvex2_test::TcpClient;
using korvex2_test::UdpReceiver;
using namespace std::chrono_literals;

class ServerOutputs : public korvex2_test::RunningServer {
 protected:
  void SetUp() override {
    rate = 1000;
    RunningServer::SetUp();
  }
  static void tell(TcpClient& client, const std::string& line) {
    EXPECT_EQ(client.ask("korvex2 " + line), "korvex2 ok") << line;
  }
  static void follow(TcpClient& client, const UdpReceiver& receiver, const std::string& channel = "chmon") {
    tell(client, "set output net " + channel + " udp " + receiver.port());
  }
  /// Whether a datagram with exactly these kinds comes soon; others may come before.
  static bool comes(UdpReceiver& receiver, const std::string& kinds) {
    return holdsInTime([&] { return kindsIn(receiver.datagram(1000ms)) == kinds; });
  }
  /// The record of the table, b02, which stands still, in the next frame in which it is in sight.
  static LineRecord table(UdpReceiver& receiver) {
    for (int i = 0; i < 100; ++i) {
      const auto lines = linesOf(receiver.datagram());
      const auto line = LineReader::read(QByteArray::fromStdString(lines.size() < 3 ? "" : lines[2]));
      if (line && line->find(1) != nullptr && line->at(1).quality > 0.0) {
        return line->at(1);
      }
    }
    ADD_FAILURE() << "the table is not in sight";
    return LineRecord();
  }
  /// A frame that was on its way may still come; after that nothing.
  static bool isSilentSoon(UdpReceiver& receiver) {
    return holdsInTime([&] { return receiver.datagram(30ms) == "(none)"; });
  }
};

TEST_F(ServerOutputs, ADatagramIsOneFrameWithEveryLineEnded) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  tell(client, "set output active chmon 6dw2 yes");
  tell(client, "tracking start");
  long last = -1;
  for (int i = 0; i < 20; ++i) {
    const std::string datagram = receiver.datagram();
    ASSERT_EQ(kindsIn(datagram), "fr ts 6d 6dw2") << datagram;
    EXPECT_EQ(datagram.back(), '\n');
    EXPECT_LE(datagram.size(), 65507U);
    const auto lines = linesOf(datagram);
    EXPECT_EQ(lines[0], "fr " + std::to_string(frameOf(datagram)));
    EXPECT_NEAR(std::stod(lines[1].substr(3)), static_cast<double>(frameOf(datagram)) / 1000.0, 1e-9);
    EXPECT_EQ(lines[2].substr(0, 5), "6d 7 ");
    EXPECT_EQ(lines[3].substr(0, 9), "6dw2 2 2 ");
    EXPECT_GT(frameOf(datagram), last) << "numbers grow";
    last = frameOf(datagram);
  }
  EXPECT_EQ(receiver.sender(), "127.0.0.1");
}

TEST_F(ServerOutputs, NothingIsSentWhileNothingIsMeasured) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  EXPECT_EQ(receiver.datagram(50ms), "(none)");
  tell(client, "tracking start");
  EXPECT_NE(receiver.datagram(), "(none)");
  tell(client, "tracking stop");
  EXPECT_TRUE(isSilentSoon(receiver));
  EXPECT_EQ(receiver.datagram(50ms), "(none)");
}

TEST_F(ServerOutputs, NothingIsSentToWhoNamedNoPort) {
  TcpClient client = connect();
  tell(client, "tracking start");
  tell(client, "set output active chmon 6dw2 yes");
  UdpReceiver receiver;
  EXPECT_EQ(receiver.datagram(30ms), "(none)");
  follow(client, receiver);
  EXPECT_TRUE(comes(receiver, "fr ts 6d 6dw2"));
}

TEST_F(ServerOutputs, KindsAreSwitchedClientByClient) {
  TcpClient one = connect();
  TcpClient two = connect();
  UdpReceiver first;
  UdpReceiver second;
  follow(one, first);
  follow(two, second);
  tell(one, "tracking start");
  EXPECT_TRUE(comes(first, "fr ts 6d"));
  EXPECT_TRUE(comes(second, "fr ts 6d"));
  tell(one, "set output active chmon 6dw2 yes");
  EXPECT_TRUE(comes(first, "fr ts 6d 6dw2"));
  second.drain();
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(kindsIn(second.datagram()), "fr ts 6d") << "not for who did not ask";
  }
  tell(two, "set output active chmon 6d no");
  EXPECT_TRUE(comes(second, "fr ts"));
  first.drain();
  ASSERT_EQ(kindsIn(first.datagram()), "fr ts 6d 6dw2");
  tell(two, "set output active chmon 6dw yes");
  second.drain();
  EXPECT_EQ(kindsIn(second.datagram()), "fr ts") << "devices report in the new format";
  tell(two, "set wandgrip output_6dw yes");
  EXPECT_TRUE(comes(second, "fr ts 6dw"));
  EXPECT_TRUE(comes(first, "fr ts 6d"));
}

TEST_F(ServerOutputs, OneFrameIsTheSameForEverybody) {
  TcpClient one = connect();
  TcpClient two = connect();
  UdpReceiver first;
  UdpReceiver second;
  follow(one, first);
  follow(two, second);
  tell(one, "tracking start");
  ASSERT_TRUE(comes(first, "fr ts 6d"));
  std::string a = first.datagram();
  std::string b = second.datagram();
  // Both get every frame from some frame on; the later one's number is found at the other's, too.
  for (int i = 0; i < 1000 && frameOf(a) != frameOf(b); ++i) {
    (frameOf(a) < frameOf(b) ? a : b) = (frameOf(a) < frameOf(b) ? first : second).datagram();
  }
  EXPECT_EQ(a, b);
}

TEST_F(ServerOutputs, AChannelEndsWhenItsClientSaysSo) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  tell(client, "tracking start");
  EXPECT_TRUE(comes(receiver, "fr ts 6d"));
  tell(client, "set output net chmon none");
  EXPECT_TRUE(isSilentSoon(receiver));
  follow(client, receiver);
  EXPECT_TRUE(comes(receiver, "fr ts 6d"));
}

TEST_F(ServerOutputs, AChannelEndsWithItsConnection) {
  TcpClient stays = connect();
  tell(stays, "tracking start");
  for (const bool hard : {false, true}) {
    TcpClient client = connect();
    UdpReceiver receiver;
    follow(client, receiver);
    EXPECT_TRUE(comes(receiver, "fr ts 6d"));
    if (hard) {
      client.reset();
    } else {
      client.close();
    }
    EXPECT_TRUE(isSilentSoon(receiver));
  }
  EXPECT_EQ(stays.ask("korvex2 get status active"), "korvex2 set status active mea");
}

TEST_F(ServerOutputs, AChannelMovesToAnotherPort) {
  TcpClient client = connect();
  UdpReceiver before;
  UdpReceiver after;
  follow(client, before);
  tell(client, "tracking start");
  EXPECT_TRUE(comes(before, "fr ts 6d"));
  follow(client, after);
  EXPECT_TRUE(comes(after, "fr ts 6d"));
  EXPECT_TRUE(isSilentSoon(before));
}

TEST_F(ServerOutputs, SeveralChannelsOfOneClientGoTheirOwnWays) {
  TcpClient client = connect();
  UdpReceiver monitor;
  UdpReceiver devices;
  follow(client, monitor);
  follow(client, devices, "chdev");
  tell(client, "set output active chdev 6d no");
  tell(client, "set output active chdev 6dw2 yes");
  tell(client, "tracking start");
  EXPECT_TRUE(comes(monitor, "fr ts 6d"));
  EXPECT_TRUE(comes(devices, "fr ts 6dw2"));
  tell(client, "set output net chdev none");
  EXPECT_TRUE(isSilentSoon(devices));
  EXPECT_TRUE(comes(monitor, "fr ts 6d"));
}

TEST_F(ServerOutputs, DatagramsGoToTheSendersOwnAddressOnly) {
  // Somebody at another address of this machine listens at the same port.
  UdpReceiver own(1);
  TcpClient client = connect();
  korvex2::FileDescriptor other(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(own.port())));
  address.sin_addr.s_addr = htonl(0x7f000002U);
  ASSERT_EQ(::bind(other.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  follow(client, own);
  tell(client, "tracking start");
  EXPECT_TRUE(comes(own, "fr ts 6d"));
  pollfd ready{other.get(), POLLIN, 0};
  EXPECT_EQ(::poll(&ready, 1, 50), 0);
  // There is no way to say another address.
  for (const char* line : {"set output net chmon udp 127.0.0.2 5000", "set output net chmon udp 127.0.0.2:5000",
                           "set output net chmon 127.0.0.2 5000"}) {
    EXPECT_EQ(client.ask(std::string("korvex2 ") + line).substr(0, 12), "korvex2 err ") << line;
  }
}

TEST_F(ServerOutputs, GoOverIpv6Too) {
  start("::1");
  TcpClient client(port(), TcpClient::Family::V6);
  UdpReceiver receiver(0);
  ASSERT_TRUE(receiver.isBound());
  follow(client, receiver);
  tell(client, "tracking start");
  EXPECT_TRUE(comes(receiver, "fr ts 6d"));
  EXPECT_EQ(receiver.sender(), "::1");
}

TEST_F(ServerOutputs, APortWhereNobodyListensDoesNotDisturb) {
  TcpClient client = connect();
  UdpReceiver receiver;
  std::string dead;
  {
    const UdpReceiver gone;
    dead = gone.port();
  }
  tell(client, "set output net chdead udp " + dead);
  follow(client, receiver);
  tell(client, "tracking start");
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(kindsIn(receiver.datagram()), "fr ts 6d");
  }
}

TEST_F(ServerOutputs, WhoNeverReadsItsDatagramsHoldsNobodyUp) {
  TcpClient lazy = connect();
  UdpReceiver unread;
  follow(lazy, unread);
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  tell(client, "tracking start");
  // Several times what the other's buffer holds. How fast they come is the machine's business.
  for (int i = 0; i < 500; ++i) {
    ASSERT_GE(frameOf(receiver.datagram()), 0) << i;
  }
}

TEST_F(ServerOutputs, TheLinesFollowAChangeAtOnce) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  tell(client, "tracking start");
  ASSERT_TRUE(comes(receiver, "fr ts 6d"));
  tell(client, "set body calibrated standard b02 no");
  receiver.drain();
  receiver.datagram();  // one that was being made
  const auto lines = linesOf(receiver.datagram());
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_NE(lines[2].find("[1 -1] [0.0000 0.0000 0.0000]"), std::string::npos) << lines[2];
}

TEST_F(ServerOutputs, WhatIsSentAfterAnAnswerShowsTheChange) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  tell(client, "tracking start");
  const LineRecord before = table(receiver);
  ASSERT_NE(before.rotation[8], 0.0);
  for (int i = 1; i <= 200; ++i) {
    // The origin moves by 100 mm along the body's z and back: the pose by 100 times the rotation's third column.
    const int there = i % 2;
    tell(client,
         std::string("body transform standard b02 0 0 ") + (there == 1 ? "-100" : "100") + " 1 0 0 0 1 0 0 0 1");
    receiver.drain();  // what was sent before the answer has come before it here
    const LineRecord after = table(receiver);
    for (std::size_t row = 0; row < 3; ++row) {
      ASSERT_NEAR(after.position[row], before.position[row] + there * 100.0 * before.rotation[6 + row], 1e-3) << i;
    }
  }
}

TEST_F(ServerOutputs, NothingIsSentAfterTheAnswerThatEndsIt) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  for (int i = 0; i < 20; ++i) {
    tell(client, "tracking start");
    ASSERT_NE(receiver.datagram(), "(none)");
    tell(client, "tracking stop");
    receiver.drain();
    ASSERT_EQ(receiver.datagram(3ms), "(none)");
  }
  tell(client, "tracking start");
  for (int i = 0; i < 20; ++i) {
    ASSERT_NE(receiver.datagram(), "(none)");
    tell(client, "set output net chmon none");
    receiver.drain();
    ASSERT_EQ(receiver.datagram(3ms), "(none)");
    follow(client, receiver);
  }
}

TEST_F(ServerOutputs, ABodyFileThatComesBackLeavesThePoseAndOtherMarkersStartItAnew) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  tell(client, "tracking start");
  const LineRecord measured = table(receiver);
  tell(client, "body transform standard b02 10 20 30 0 1 0 -1 0 0 0 0 1");
  receiver.drain();
  const LineRecord before = table(receiver);
  ASSERT_NE(before.position, measured.position);
  const std::string head = "korvex2 set body file standard b02 ";
  const std::string answer = client.ask("korvex2 get body file standard b02");
  ASSERT_EQ(answer.substr(0, head.size()), head);
  EXPECT_EQ(client.ask(answer), "korvex2 ok");
  receiver.drain();
  LineRecord after = table(receiver);
  EXPECT_EQ(after.position, before.position);
  EXPECT_EQ(after.rotation, before.rotation);

  QByteArray bytes = QByteArray::fromBase64(QByteArray::fromStdString(answer.substr(head.size())));
  bytes.replace(bytes.indexOf('\n') + 1, 1, "7");
  tell(client, "set body file standard b02 " + bytes.toBase64().toStdString());
  receiver.drain();
  after = table(receiver);
  EXPECT_EQ(after.position, measured.position);
  EXPECT_EQ(after.rotation, measured.rotation);
}

TEST_F(ServerOutputs, SettingDeletingAndCountingMarkersLeavesThePoseAndSoDoesARestart) {
  TcpClient client = connect();
  UdpReceiver receiver;
  follow(client, receiver);
  tell(client, "tracking start");
  tell(client, "body transform standard b02 10 20 30 0 1 0 -1 0 0 0 0 1");
  receiver.drain();
  const LineRecord before = table(receiver);
  for (const char* change :
       {"set body marker standard b02 m01 1 2 3", "body delete_marker standard b02 m02",
        "set body number_of_marker standard b02 6", "set body marker_emission standard b02 m01 0 0 2 400"}) {
    tell(client, change);
    receiver.drain();
    const LineRecord after = table(receiver);
    EXPECT_EQ(after.position, before.position) << change;
    EXPECT_EQ(after.rotation, before.rotation) << change;
  }
  reopen();
  start();
  TcpClient again = connect();
  EXPECT_EQ(again.ask("korvex2 get status active"), "korvex2 set status active idle");
  follow(again, receiver);
  tell(again, "tracking start");
  const LineRecord after = table(receiver);
  EXPECT_EQ(after.position, before.position);
  EXPECT_EQ(after.rotation, before.rotation);
}

TEST_F(ServerOutputs, TheMeasurementGoesOnWithTheClientsThatStay) {
  TcpClient one = connect();
  TcpClient two = connect();
  UdpReceiver receiver;
  follow(two, receiver);
  tell(one, "tracking start");
  ASSERT_TRUE(comes(receiver, "fr ts 6d"));
  one.close();
  receiver.drain();
  EXPECT_EQ(kindsIn(receiver.datagram()), "fr ts 6d");
  tell(two, "set tracking available no");
  EXPECT_TRUE(isSilentSoon(receiver));
}

}  // namespace
