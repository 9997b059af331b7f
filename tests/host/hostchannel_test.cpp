// The host's channel: what is sent, what is accepted, and messages between modules.
#include "hostchannel.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>

#include "commalocale.h"
#include "messagereceiver.h"
#include "requester.h"
#include "scriptedconnection.h"

using namespace korvex2;

namespace {

constexpr char untouched = '#';

/// A caller's buffer with a guard behind its 200 characters.
struct AnswerBuffer {
  AnswerBuffer() { std::fill(std::begin(characters), std::end(characters), untouched); }
  bool guardIntact() const {
    return std::all_of(characters + 200, std::end(characters), [](char c) { return c == untouched; });
  }
  std::string text() const { return std::string(characters); }
  char characters[264];
};

struct Receiver : MessageReceiver {
  int transmit_message(int kind, const char* sender, const char* text) override {
    taken.push_back(std::to_string(kind) + "|" + sender + "|" + text);
    if (act) {
      act();
    }
    return result;
  }
  std::vector<std::string> taken;
  std::function<void()> act;
  int result = 0;
};

struct SilentRequester : Requester {
  int set_ascii_data(const char*, const char*) override { return ++lines, 0; }
  void set_mea_started() override {}
  void set_mea_stopped() override {}
  int lines = 0;
};

class Channel : public testing::Test {
 protected:
  ScriptedConnection backend;
  HostChannel channel{&backend};
  AnswerBuffer buffer;
};

}  // namespace

TEST_F(Channel, QueriesCarryThePrefixAndGiveTheValue) {
  backend.answers["korvex2 get body calibrated standard b03"] = "korvex2 set body calibrated standard b03 yes";
  EXPECT_EQ(channel.get_string(buffer.characters, "body calibrated %s b%2.2d", "standard", 3), 0);
  EXPECT_EQ(buffer.text(), "yes");
  EXPECT_EQ(backend.sent, (std::vector<QByteArray>{"korvex2 get body calibrated standard b03"}));
}

TEST_F(Channel, AStringKeepsItsQuotesAndBlanks) {
  backend.answers["korvex2 get body desc standard b01"] = "korvex2 set body desc standard b01 \"Head of bed\" \r\n";
  EXPECT_EQ(channel.get_string(buffer.characters, "body desc %s b%2.2d", "standard", 1), 0);
  EXPECT_EQ(buffer.text(), "\"Head of bed\" ");
}

TEST_F(Channel, AStringMayHaveLettersOfAnyLanguage) {
  backend.answers["korvex2 get body desc standard b01"] = "korvex2 set body desc standard b01 \"K\xc3\xb6rper\"";
  EXPECT_EQ(channel.get_string(buffer.characters, "body desc %s b%2.2d", "standard", 1), 0);
  EXPECT_EQ(buffer.text(), "\"K\xc3\xb6rper\"");
}

TEST_F(Channel, AnEmptyValueIsAnEmptyString) {
  backend.answers["korvex2 get a"] = "korvex2 set a";
  EXPECT_EQ(channel.get_string(buffer.characters, "a"), 0);
  EXPECT_EQ(buffer.text(), "");
}

TEST_F(Channel, AnIntegerIsGivenOnlyForAWholeNumber) {
  int value = 77;
  backend.answers["korvex2 get n"] = "korvex2 set n 12";
  EXPECT_EQ(channel.get_int(&value, "%s", "n"), 0);
  EXPECT_EQ(value, 12);
  for (const char* wrong : {"korvex2 set n 12a", "korvex2 set n", "korvex2 set n 1.5", "korvex2 set n 99999999999"}) {
    value = 77;
    backend.answers["korvex2 get n"] = wrong;
    EXPECT_EQ(channel.get_int(&value, "n"), HostChannel::wrongAnswer) << wrong;
    EXPECT_EQ(value, 77) << wrong;
  }
}

TEST_F(Channel, RealsAreGivenOnlyAllTogether) {
  double values[4] = {7, 7, 7, 7};
  backend.answers["korvex2 get m"] = "korvex2 set m 1.5 -2 3e2";
  EXPECT_EQ(channel.get_reals(values, 3, "m"), 0);
  EXPECT_EQ(values[0], 1.5);
  EXPECT_EQ(values[1], -2.0);
  EXPECT_EQ(values[2], 300.0);
  EXPECT_EQ(values[3], 7.0);
  for (const char* wrong : {"korvex2 set m 1 2", "korvex2 set m 1 2 3 4", "korvex2 set m 1 2 nan", "korvex2 set m"}) {
    std::fill(std::begin(values), std::end(values), 7.0);
    backend.answers["korvex2 get m"] = wrong;
    EXPECT_EQ(channel.get_reals(values, 3, "m"), HostChannel::wrongAnswer) << wrong;
    EXPECT_TRUE(std::all_of(std::begin(values), std::end(values), [](double v) { return v == 7.0; })) << wrong;
  }
}

TEST_F(Channel, SettingsCarryThePrefixAndExpectOk) {
  backend.answers["korvex2 set wandgrip multiuser no"] = "korvex2 ok";
  EXPECT_EQ(channel.set_value("wandgrip multiuser %s", "no"), 0);
  backend.answers["korvex2 set wandgrip multiuser no"] = "korvex2 ok then";
  EXPECT_EQ(channel.set_value("wandgrip multiuser no"), HostChannel::wrongAnswer);
  backend.answers["korvex2 set wandgrip multiuser no"] = "korvex2 err 8 \"not available\"";
  EXPECT_EQ(channel.set_value("wandgrip multiuser no"), HostChannel::refused);
  EXPECT_EQ(channel.set_value("something else"), HostChannel::notAnswered);
}

TEST_F(Channel, ARawCommandGoesAsItIsAndGivesTheRawAnswer) {
  backend.answers["korvex2 get wandgrip output_6dw"] = "korvex2 set wandgrip output_6dw yes";
  EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 get wandgrip output_6dw"), 0);
  EXPECT_EQ(buffer.text(), "korvex2 set wandgrip output_6dw yes");
  EXPECT_EQ(backend.sent, (std::vector<QByteArray>{"korvex2 get wandgrip output_6dw"}));
}

TEST_F(Channel, ARefusedRawCommandFailsAndStillGivesItsAnswer) {
  backend.answers["korvex2 nonsense"] = "korvex2 err 2 \"unknown\"";
  EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 nonsense"), HostChannel::refused);
  EXPECT_EQ(buffer.text(), "korvex2 err 2 \"unknown\"");
}

TEST_F(Channel, AnUnansweredCommandFailsAndLeavesAnEmptyText) {
  EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 x"), HostChannel::notAnswered);
  EXPECT_EQ(buffer.text(), "");
  EXPECT_EQ(channel.get_string(buffer.characters, "x"), HostChannel::notAnswered);
  EXPECT_EQ(buffer.text(), "");
}

TEST_F(Channel, AnAnswerThatIsNoneOfTheProtocolIsRefused) {
  for (const QByteArray& wrong :
       {QByteArray("HTTP/1.1 400"), QByteArray(""), QByteArray("korvex2"), QByteArray("korvex2 ok\nkorvex2 ok"),
        QByteArray("korvex2 ok\0more", 15), QByteArray("korvex2 \x1b[2J"), QByteArray("korvex2 \xff")}) {
    backend.answers["korvex2 x"] = wrong;
    EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 x"), HostChannel::wrongAnswer)
        << wrong.toPercentEncoding().toStdString();
    EXPECT_EQ(buffer.text(), "");
  }
}

TEST_F(Channel, AnAnswerToAnotherQueryIsRefused) {
  backend.answers["korvex2 get a"] = "korvex2 set b yes";
  EXPECT_EQ(channel.get_string(buffer.characters, "a"), HostChannel::wrongAnswer);
  EXPECT_EQ(buffer.text(), "");
}

TEST_F(Channel, AnAnswerOf199CharactersFitsAndALongerOneFails) {
  const QByteArray fits(199, 'v');
  backend.answers["korvex2 get a"] = "korvex2 set a " + fits;
  EXPECT_EQ(channel.get_string(buffer.characters, "a"), 0);
  EXPECT_EQ(buffer.text(), fits.toStdString());
  EXPECT_TRUE(buffer.guardIntact());

  backend.answers["korvex2 get a"] = "korvex2 set a " + fits + "v";
  EXPECT_EQ(channel.get_string(buffer.characters, "a"), HostChannel::answerTooLong);
  EXPECT_EQ(buffer.text(), "");
  EXPECT_TRUE(buffer.guardIntact());
}

TEST_F(Channel, ARawAnswerIsBoundedLikewise) {
  backend.answers["korvex2 a"] = "korvex2 " + QByteArray(191, 'v');
  EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 a"), 0);
  EXPECT_EQ(buffer.text().size(), 199u);
  backend.answers["korvex2 a"] = "korvex2 " + QByteArray(192, 'v');
  EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 a"), HostChannel::answerTooLong);
  EXPECT_EQ(buffer.text(), "");
  backend.answers["korvex2 a"] = "korvex2 err " + QByteArray(100000, 'v');
  EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 a"), HostChannel::answerTooLong);
  EXPECT_TRUE(buffer.guardIntact());
}

TEST_F(Channel, ATextThatCannotBeSentIsNotSent) {
  const std::string tooLong(1100, 'x');
  int value = 0;
  double real = 0;
  EXPECT_EQ(channel.send_raw_command(buffer.characters, "korvex2 %s", "a\nkorvex2 b"), HostChannel::wrongText);
  EXPECT_EQ(channel.get_string(buffer.characters, "%s", tooLong.c_str()), HostChannel::wrongText);
  EXPECT_EQ(channel.get_int(&value, "a %s", "\r"), HostChannel::wrongText);
  EXPECT_EQ(channel.get_reals(&real, 1, "a %s", "\x01"), HostChannel::wrongText);
  EXPECT_EQ(channel.set_value("%s", ""), HostChannel::wrongText);
  // The text alone would fit, with its prefix it does not.
  EXPECT_EQ(channel.set_value("%s", std::string(1020, 'x').c_str()), HostChannel::wrongText);
  EXPECT_TRUE(backend.sent.empty());
}

TEST_F(Channel, NullPointersAreRefusedEverywhere) {
  char* const noText = nullptr;
  const char* const noName = nullptr;
  const char* const noFormat = nullptr;
  double real = 0;
  Receiver receiver;
  SilentRequester requester;
  EXPECT_NE(channel.send_raw_command(noText, "korvex2 x"), 0);
  EXPECT_NE(channel.send_raw_command(buffer.characters, noFormat), 0);
  EXPECT_NE(channel.get_string(noText, "x"), 0);
  EXPECT_NE(channel.get_string(buffer.characters, noFormat), 0);
  EXPECT_NE(channel.get_int(nullptr, "x"), 0);
  EXPECT_NE(channel.get_reals(nullptr, 3, "x"), 0);
  EXPECT_NE(channel.get_reals(&real, 0, "x"), 0);
  EXPECT_NE(channel.get_reals(&real, -1, "x"), 0);
  EXPECT_NE(channel.set_value(noFormat), 0);
  EXPECT_NE(channel.register_requester(noName, &requester), 0);
  EXPECT_NE(channel.register_requester("", &requester), 0);
  EXPECT_NE(channel.register_requester("6d", nullptr), 0);
  EXPECT_NE(channel.unregister_requester(noName, &requester), 0);
  EXPECT_NE(channel.unregister_requester("6d", nullptr), 0);
  EXPECT_NE(channel.send_message(noName, "a", 1, "b"), 0);
  EXPECT_NE(channel.send_message("standard", nullptr, 1, "b"), 0);
  EXPECT_NE(channel.send_message("standard", "a", 1, nullptr), 0);
  EXPECT_NE(channel.register_message_receiver(noName, &receiver), 0);
  EXPECT_NE(channel.register_message_receiver("", &receiver), 0);
  EXPECT_NE(channel.register_message_receiver("a", nullptr), 0);
  EXPECT_NE(channel.unregister_message_receiver(noName, &receiver), 0);
  EXPECT_NE(channel.unregister_message_receiver("a", nullptr), 0);
  EXPECT_TRUE(backend.sent.empty());
}

TEST_F(Channel, WithoutAConnectionEveryCommandFails) {
  HostChannel alone(nullptr);
  EXPECT_EQ(alone.set_value("x yes"), HostChannel::notAnswered);
  EXPECT_EQ(alone.send_raw_command(buffer.characters, "korvex2 x"), HostChannel::notAnswered);
}

TEST_F(Channel, ACommandOnAForeignThreadIsRefused) {
  backend.answers["korvex2 set x yes"] = "korvex2 ok";
  int result = 0;
  std::thread([&] { result = channel.set_value("x yes"); }).join();
  EXPECT_EQ(result, HostChannel::wrongArgument);
  EXPECT_TRUE(backend.sent.empty());
}

TEST_F(Channel, NumbersAreSentAndReadWithADecimalPointUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready()) << "a locale with a comma could not be made";
  backend.answers["korvex2 set body marker standard b01 m01 1.500 -0.250 0.125"] = "korvex2 ok";
  EXPECT_EQ(channel.set_value("body marker %s b%2.2d m%2.2d %.3f %.3f %.3f", "standard", 1, 1, 1.5, -0.25, 0.125), 0);
  backend.answers["korvex2 get body marker standard b01 m01"] = "korvex2 set body marker standard b01 m01 1.5 -0.25 2";
  double values[3] = {};
  EXPECT_EQ(channel.get_reals(values, 3, "body marker %s b%2.2d m%2.2d", "standard", 1, 1), 0);
  EXPECT_EQ(values[0], 1.5);
  EXPECT_EQ(values[1], -0.25);
}

TEST_F(Channel, EveryExchangeIsTold) {
  QSignalSpy told(&channel, &HostChannel::exchanged);
  backend.answers["korvex2 set a yes"] = "korvex2 ok";
  channel.set_value("a yes");
  channel.set_value("b yes");
  ASSERT_EQ(told.size(), 2);
  EXPECT_EQ(told[0], (QList<QVariant>{QByteArray("korvex2 set a yes"), QByteArray("korvex2 ok"), true}));
  EXPECT_EQ(told[1], (QList<QVariant>{QByteArray("korvex2 set b yes"), QByteArray(), false}));
}

TEST_F(Channel, AMessageToStandardIsAReport) {
  QSignalSpy reported(&channel, &HostChannel::reported);
  EXPECT_EQ(channel.send_message("standard", "Korvex2", 1, "Error: Unable to check body type"), 0);
  ASSERT_EQ(reported.size(), 1);
  EXPECT_EQ(reported[0], (QList<QVariant>{QString("Korvex2"), 1, QString("Error: Unable to check body type")}));
}

TEST_F(Channel, AnEndlessReportIsCut) {
  QSignalSpy reported(&channel, &HostChannel::reported);
  channel.send_message("standard", "Korvex2", 1, std::string(100000, 'x').c_str());
  ASSERT_EQ(reported.size(), 1);
  EXPECT_LT(reported[0][2].toString().size(), 2100);
}

TEST_F(Channel, AMessageReachesTheModuleRegisteredUnderItsName) {
  Receiver receiver;
  receiver.result = 5;
  EXPECT_EQ(channel.register_message_receiver("BodyAdjustmentModule", &receiver), 0);
  EXPECT_EQ(channel.send_message("BodyAdjustmentModule", "Other", 3, "OpenBodyAdjustmentDialog standard|1"), 5);
  EXPECT_EQ(receiver.taken, (std::vector<std::string>{"3|Other|OpenBodyAdjustmentDialog standard|1"}));
  EXPECT_EQ(channel.unregister_message_receiver("BodyAdjustmentModule", &receiver), 0);
  EXPECT_EQ(channel.send_message("BodyAdjustmentModule", "Other", 3, "again"), HostChannel::unknownReceiver);
  EXPECT_EQ(receiver.taken.size(), 1u);
}

TEST_F(Channel, AMessageToNobodyIsReportedByTheHost) {
  QSignalSpy reported(&channel, &HostChannel::reported);
  EXPECT_EQ(channel.send_message("Nobody", "BodyAdjustmentModule", 1, "reopen"), HostChannel::unknownReceiver);
  ASSERT_EQ(reported.size(), 1);
  EXPECT_EQ(reported[0][0].toString(), "Front end");
  const QString text = reported[0][2].toString();
  EXPECT_TRUE(text.contains("Nobody") && text.contains("BodyAdjustmentModule") && text.contains("reopen"))
      << text.toStdString();
}

TEST_F(Channel, TheReportsNameCannotBeTaken) {
  Receiver receiver;
  EXPECT_NE(channel.register_message_receiver("standard", &receiver), 0);
  channel.send_message("standard", "a", 1, "b");
  EXPECT_TRUE(receiver.taken.empty());
}

TEST_F(Channel, ALaterReceiverReplacesAnEarlierOneWhichThenCannotRemoveIt) {
  Receiver first;
  Receiver second;
  channel.register_message_receiver("m", &first);
  EXPECT_EQ(channel.register_message_receiver("m", &second), 0);
  EXPECT_NE(channel.unregister_message_receiver("m", &first), 0);
  channel.send_message("m", "a", 1, "b");
  EXPECT_TRUE(first.taken.empty());
  EXPECT_EQ(second.taken.size(), 1u);
}

TEST_F(Channel, AReceiverMayUnregisterItselfAndAnswerWhileItIsCalled) {
  Receiver receiver;
  Receiver sender;
  channel.register_message_receiver("sender", &sender);
  channel.register_message_receiver("m", &receiver);
  receiver.act = [&] {
    channel.unregister_message_receiver("m", &receiver);
    channel.send_message("sender", "m", 1, "reopen");
  };
  EXPECT_EQ(channel.send_message("m", "sender", 1, "open"), 0);
  EXPECT_EQ(sender.taken, (std::vector<std::string>{"1|m|reopen"}));
  EXPECT_EQ(channel.send_message("m", "sender", 1, "open"), HostChannel::unknownReceiver);
}

TEST_F(Channel, SubscribersGetTheLinesOfTheirTagOnly) {
  SilentRequester requester;
  EXPECT_EQ(channel.register_requester("6d", &requester), 0);
  channel.distributor().deliver("6d", "6d 0");
  channel.distributor().deliver("6dw", "6dw 0");
  EXPECT_EQ(requester.lines, 1);
  EXPECT_EQ(channel.unregister_requester("6d", &requester), 0);
  channel.distributor().deliver("6d", "6d 0");
  EXPECT_EQ(requester.lines, 1);
  EXPECT_NE(channel.unregister_requester("6d", &requester), 0);
}

TEST_F(Channel, TheOperationsStandAtTheirSlotsForModulesCompiledElsewhere) {
  // Reads the table of virtual operations as a caller does that knows slot numbers and signatures only.
  backend.answers["korvex2 get a"] = "korvex2 set a 4";
  IOManager* manager = &channel;
  void** table = *reinterpret_cast<void***>(manager);
  int answer = 0;
  const auto getInt = reinterpret_cast<int (*)(void*, int*, const char*, ...)>(table[7]);
  EXPECT_EQ(getInt(manager, &answer, "%s", "a"), 0);
  EXPECT_EQ(answer, 4);
  Receiver receiver;
  const auto registerReceiver = reinterpret_cast<int (*)(void*, const char*, MessageReceiver*)>(table[18]);
  EXPECT_EQ(registerReceiver(manager, "m", &receiver), 0);
  EXPECT_EQ(channel.send_message("m", "a", 1, "b"), 0);
  EXPECT_EQ(receiver.taken.size(), 1u);
}
