// Output channels of clients: names, kinds, ports, limits, and that no client sees another one's.
#include <gtest/gtest.h>

#include "clientstate.h"
#include "databasecopy.h"

namespace {

using korvex2::ClientState;

class OutputChannels : public korvex2_test::DatabaseCopy {
 protected:
  std::string tell(ClientState& client, const std::string& line) {
    return interpreter->answer(QByteArray::fromStdString("korvex2 " + line), client).toStdString();
  }
  std::string active(ClientState& client, const std::string& channelAndKind) {
    const std::string head = "korvex2 set output active " + channelAndKind + ' ';
    const std::string answer = tell(client, "get output active " + channelAndKind);
    return answer.rfind(head, 0) == 0 ? answer.substr(head.size()) : answer;
  }

  const std::string ok = "korvex2 ok";
  ClientState client{true};
};

TEST_F(OutputChannels, ANewChannelHasTheStandardBodiesOnly) {
  for (const std::string channel : {"chmon", "chx", "ch0"}) {
    EXPECT_EQ(active(client, channel + " 6d"), "yes");
    EXPECT_EQ(active(client, channel + " 6dw"), "no");
    EXPECT_EQ(active(client, channel + " 6dw2"), "no");
    EXPECT_EQ(tell(client, "get output net " + channel), "korvex2 set output net " + channel + " none");
  }
  EXPECT_EQ(client.channels().size(), 1U) << "asking makes no channel";
}

TEST_F(OutputChannels, KindsAreSwitchedChannelByChannel) {
  EXPECT_EQ(tell(client, "set output active chmon 6dw2 yes"), ok);
  EXPECT_EQ(tell(client, "set output active chb 6d no"), ok);
  EXPECT_EQ(tell(client, "set output active chb 6dw yes"), ok);
  EXPECT_EQ(tell(client, "get output active chmon 6dw2"), "korvex2 set output active chmon 6dw2 yes");
  EXPECT_EQ(active(client, "chmon 6d"), "yes");
  EXPECT_EQ(active(client, "chmon 6dw"), "no");
  EXPECT_EQ(active(client, "chb 6d"), "no");
  EXPECT_EQ(active(client, "chb 6dw"), "yes");
  EXPECT_EQ(active(client, "chb 6dw2"), "no");
  EXPECT_EQ(tell(client, "set output active chmon 6dw2 no"), ok);
  EXPECT_EQ(active(client, "chmon 6dw2"), "no");
}

TEST_F(OutputChannels, PortsAreSetAskedForAndEnded) {
  for (const std::string port : {"1", "27410", "65535"}) {
    EXPECT_EQ(tell(client, "set output net chmon udp " + port), ok);
    EXPECT_EQ(tell(client, "get output net chmon"), "korvex2 set output net chmon udp " + port);
  }
  EXPECT_EQ(client.udpPort("chmon"), 65535);
  EXPECT_EQ(tell(client, "set output net chmon none"), ok);
  EXPECT_EQ(tell(client, "get output net chmon"), "korvex2 set output net chmon none");
  EXPECT_EQ(tell(client, "set output net chmon none"), ok) << "twice is no mistake";
}

TEST_F(OutputChannels, TheMonitorKeepsItsKindsWhenItsOutputEndsAndOthersAreForgotten) {
  for (const std::string channel : {"chmon", "chx"}) {
    EXPECT_EQ(tell(client, "set output net " + channel + " udp 5000"), ok);
    EXPECT_EQ(tell(client, "set output active " + channel + " 6dw2 yes"), ok);
    EXPECT_EQ(tell(client, "set output net " + channel + " none"), ok);
  }
  EXPECT_EQ(active(client, "chmon 6dw2"), "yes");
  EXPECT_EQ(active(client, "chx 6dw2"), "no");
  EXPECT_EQ(client.channels().size(), 1U);
}

TEST_F(OutputChannels, NamesAreChAndOneToTwelveLowerCaseLettersOrDigits) {
  for (const char* good : {"cha", "ch1", "chmon", "ch123456789012", "chabcdefghijkl"}) {
    EXPECT_TRUE(ClientState::isChannelName(good)) << good;
    EXPECT_EQ(tell(client, std::string("set output net ") + good + " none"), ok) << good;
  }
  for (const char* bad : {"ch", "ch1234567890123", "mon", "chMon", "CHmon", "ch_a", "ch-", "cH1", "xchmon", "c"}) {
    EXPECT_FALSE(ClientState::isChannelName(bad)) << bad;
    const std::string error =
        std::string("korvex2 err 4 \"an output channel such as chmon is expected, not ") + bad + '"';
    EXPECT_EQ(tell(client, std::string("set output net ") + bad + " none"), error);
    EXPECT_EQ(tell(client, std::string("get output net ") + bad), error);
    EXPECT_EQ(tell(client, std::string("set output active ") + bad + " 6d yes"), error);
    EXPECT_EQ(tell(client, std::string("get output active ") + bad + " 6d"), error);
  }
  EXPECT_FALSE(ClientState::isChannelName(""));
  EXPECT_FALSE(ClientState::isChannelName("chm\xc3\xbc"));
}

TEST_F(OutputChannels, PortsThatAreNoneAreRefused) {
  for (const std::string port : {"0", "65536", "-1", "5000.0", "0x100", "99999999999", "port", "5000,0"}) {
    const std::string answer = tell(client, "set output net chmon udp " + port);
    EXPECT_EQ(answer.rfind("korvex2 err 4 \"a port from 1 to 65535 is expected", 0), 0U) << answer;
  }
  EXPECT_EQ(tell(client, "set output net chmon udp"), "korvex2 err 3 \"there are too few fields\"");
  EXPECT_EQ(tell(client, "set output net chmon"), "korvex2 err 3 \"there are too few fields\"");
  EXPECT_EQ(tell(client, "set output net chmon udp 5000 127.0.0.1"), "korvex2 err 3 \"there are too many fields\"");
  EXPECT_EQ(tell(client, "set output net chmon none 5000"), "korvex2 err 3 \"there are too many fields\"");
  EXPECT_EQ(tell(client, "set output net chmon tcp 5000"), "korvex2 err 2 \"there is no such setting\"");
  EXPECT_EQ(tell(client, "set output net chmon \"udp\" 5000"), "korvex2 err 2 \"there is no such setting\"");
  EXPECT_EQ(client.udpPort("chmon"), 0);
}

TEST_F(OutputChannels, AClientHasAtMostEight) {
  for (int i = 1; i <= 7; ++i) {
    const std::string channel = "ch" + std::to_string(i);
    EXPECT_EQ(tell(client,
                   i % 2 == 0 ? "set output net " + channel + " udp 5000" : "set output active " + channel + " 6d no"),
              ok);
  }
  const std::string error = "korvex2 err 8 \"a client has at most 8 output channels\"";
  EXPECT_EQ(tell(client, "set output net ch8 udp 5000"), error);
  EXPECT_EQ(tell(client, "set output active ch8 6dw yes"), error);
  EXPECT_EQ(tell(client, "set output net ch8 none"), ok) << "nothing to end";
  EXPECT_EQ(tell(client, "set output net ch2 udp 5001"), ok) << "one that is there";
  EXPECT_EQ(tell(client, "set output net ch2 none"), ok);
  EXPECT_EQ(tell(client, "set output net ch8 udp 5000"), ok) << "there is room again";
}

TEST_F(OutputChannels, AreEachClientsOwn) {
  ClientState other(true);
  EXPECT_EQ(tell(client, "set output net chmon udp 5000"), ok);
  EXPECT_EQ(tell(client, "set output active chmon 6dw2 yes"), ok);
  EXPECT_EQ(tell(other, "get output net chmon"), "korvex2 set output net chmon none");
  EXPECT_EQ(active(other, "chmon 6dw2"), "no");
  EXPECT_EQ(active(other, "chmon 6d"), "yes");
  EXPECT_FALSE(interpreter->isOutputActive("6dw2")) << "the client in this program has its own, too";
}

TEST_F(OutputChannels, WithoutANetworkKindsCanBeSwitchedButNothingSent) {
  const std::string error = "korvex2 err 8 \"there is no network between client and backend\"";
  EXPECT_EQ(ask("korvex2 set output net chmon udp 5000"), error);
  EXPECT_EQ(ask("korvex2 set output net chmon none"), error);
  EXPECT_EQ(ask("korvex2 get output net chmon"), "korvex2 set output net chmon none");
  EXPECT_EQ(ask("korvex2 set output active chx 6dw yes"), ok);
  EXPECT_EQ(ask("korvex2 get output active chx 6dw"), "korvex2 set output active chx 6dw yes");
}

TEST_F(OutputChannels, ChangesAreCountedAndQueriesAreNot) {
  const auto version = client.channelsVersion();
  tell(client, "get output net chmon");
  tell(client, "get output active chx 6d");
  tell(client, "get version");
  tell(client, "set output net chmon udp 0");
  EXPECT_EQ(client.channelsVersion(), version);
  tell(client, "set output net chmon udp 5");
  const auto later = client.channelsVersion();
  EXPECT_NE(later, version);
  tell(client, "set output active chmon 6d no");
  EXPECT_NE(client.channelsVersion(), later);
}

}  // namespace
