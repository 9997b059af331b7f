// Changes that build on what a module has read, where others can change it too: every rule of the guard.
#include "changeguard.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

#include <memory>
#include <string>
#include <utility>

#include "hostchannel.h"
#include "scriptedconnection.h"

using namespace korvex2;

namespace {

using Lines = std::vector<QByteArray>;

class SharedConnection : public ScriptedConnection {
 public:
  bool sharesBackend() const override { return shared; }
  bool shared = true;
};

const QByteArray reading = "korvex2 get body number_of_marker standard b01";
const QByteArray asking = "korvex2 get body state standard b01";
const QByteArray expecting = "korvex2 body expect standard b01 00000000000000aa";
const QByteArray transform = "korvex2 body transform standard b01 1.000 0.000 0.000";
const QByteArray removal = "korvex2 body delete_marker standard b01 m02";

class Guard : public testing::Test {
 protected:
  void SetUp() override {
    backend.answers[reading] = "korvex2 set body number_of_marker standard b01 5";
    setState("00000000000000aa");
    backend.answers[expecting] = "korvex2 ok";
    backend.answers[transform] = "korvex2 ok";
    backend.answers[removal] = "korvex2 ok";
  }
  void setState(const QByteArray& state) { backend.answers[asking] = "korvex2 set body state standard b01 " + state; }
  int read() {
    int markers = 0;
    return channel.get_int(&markers, "body number_of_marker %s b%2.2d", "standard", 1);
  }
  int change(const QByteArray& line = transform) {
    answer[0] = '\0';
    return channel.send_raw_command(answer, "%s", line.constData());
  }
  Lines sent() { return std::exchange(backend.sent, {}); }
  std::vector<std::string> reports() const {
    std::vector<std::string> texts;
    for (const QList<QVariant>& report : told) {
      texts.push_back(report.at(0).toString().toStdString() + ": " + report.at(2).toString().toStdString());
    }
    return texts;
  }

  SharedConnection backend;
  HostChannel channel{&backend};
  QSignalSpy told{&channel, &HostChannel::reported};
  QSignalSpy traffic{&channel, &HostChannel::exchanged};
  char answer[200] = "";
};

const char* const stale =
    "Front end: The markers of standard b01 were changed since they were read: by another program, or by a command "
    "whose answer was lost. Choose the body again to see them as they are.";

}  // namespace

TEST_F(Guard, AsksForTheStateBeforeABodyIsRead) {
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(sent(), (Lines{asking, reading}));
  EXPECT_EQ(traffic.size(), 1) << "the operator sees what modules exchange";
}

TEST_F(Guard, TellsTheBackendWhatIsExpectedBeforeATransformAndADeletion) {
  for (const QByteArray& line : {transform, removal}) {
    read();
    sent();
    EXPECT_EQ(change(line), 0);
    EXPECT_STREQ(answer, "korvex2 ok");
    EXPECT_EQ(sent(), (Lines{expecting, line}));
  }
  EXPECT_TRUE(reports().empty());
}

TEST_F(Guard, WhereNobodyElseChangesAnythingNothingIsAsked) {
  backend.shared = false;
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(sent(), (Lines{reading, transform}));
}

TEST_F(Guard, AChangeOfABodyThatWasNotReadGoesAsItIs) {
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(sent(), Lines{transform});
}

TEST_F(Guard, AChangeOfAnotherBodyGoesAsItIs) {
  read();
  sent();
  for (const QByteArray& other :
       {QByteArray("korvex2 body transform standard b02 1"), QByteArray("korvex2 body transform wandgrip b01 1")}) {
    backend.answers[other] = "korvex2 ok";
    EXPECT_EQ(change(other), 0);
    EXPECT_EQ(sent(), Lines{other});
  }
}

TEST_F(Guard, OtherQueriesAndCommandsGoAsTheyAre) {
  read();
  sent();
  for (const QByteArray& line :
       {QByteArray("korvex2 tracking stop"), QByteArray("korvex2 get body desc standard b01"),
        QByteArray("korvex2 get body marker standard b01 m01"), QByteArray("korvex2 body transformation standard b01"),
        QByteArray("korvex2 body transform"), QByteArray("korvex2 body transform standard"),
        QByteArray("korvex2 body transform standard x01"), QByteArray("korvex2 get body number_of_marker standard")}) {
    backend.answers[line] = "korvex2 ok";
    change(line);
    EXPECT_EQ(sent(), Lines{line}) << line.toStdString();
  }
}

TEST_F(Guard, AStaleChangeIsRefusedAndToldToTheOperator) {
  read();
  backend.answers[transform] = "korvex2 err 11 \"the markers have changed\"";
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_STREQ(answer, "korvex2 err 11 \"the markers have changed\"");
  EXPECT_EQ(reports(), std::vector<std::string>{stale});
  sent();
  EXPECT_EQ(change(), HostChannel::refused) << "again, until the body was read again";
  EXPECT_EQ(sent(), (Lines{expecting, transform}));
}

TEST_F(Guard, AfterReadingAgainTheChangeIsMadeOnWhatIsThereNow) {
  read();
  setState("00000000000000bb");
  backend.answers["korvex2 body expect standard b01 00000000000000bb"] = "korvex2 ok";
  read();
  sent();
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(sent(), (Lines{"korvex2 body expect standard b01 00000000000000bb", transform}));
}

TEST_F(Guard, ASuccessfulChangeEndsWhatIsKnown) {
  read();
  change();
  sent();
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(sent(), Lines{transform});
}

TEST_F(Guard, AChangeWithoutAnAnswerKeepsWhatIsKnown) {
  read();
  backend.answers.erase(transform);
  EXPECT_EQ(change(), HostChannel::notAnswered);
  sent();
  backend.answers[transform] = "korvex2 err 11 \"the markers have changed\"";
  EXPECT_EQ(change(), HostChannel::refused) << "it had been carried out, and is not a second time";
  EXPECT_EQ(sent(), (Lines{expecting, transform}));
  EXPECT_EQ(reports(), std::vector<std::string>{stale});
}

TEST_F(Guard, ARefusedChangeKeepsWhatIsKnown) {
  read();
  backend.answers[transform] = "korvex2 err 4 \"no rotation\"";
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_TRUE(reports().empty()) << "the module tells it";
  sent();
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_EQ(sent(), (Lines{expecting, transform}));
}

TEST_F(Guard, AnErrorWithANumberThatOnlyBeginsLikeThisOneIsAnother) {
  read();
  backend.answers[transform] = "korvex2 err 110 \"something else\"";
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_TRUE(reports().empty());
  backend.answers[transform] = "korvex2 err 11";
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_EQ(reports(), std::vector<std::string>{stale});
}

TEST_F(Guard, WithoutAnAnswerToTheExpectationTheChangeIsNotSent) {
  read();
  sent();
  backend.answers.erase(expecting);
  EXPECT_EQ(change(), HostChannel::notAnswered);
  EXPECT_EQ(sent(), Lines{expecting});
  EXPECT_EQ(traffic.size(), 2);
}

TEST_F(Guard, ARefusedExpectationIsTheChangesRefusal) {
  read();
  sent();
  backend.answers[expecting] = "korvex2 err 5 \"there is no body b01\"";
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_STREQ(answer, "korvex2 err 5 \"there is no body b01\"");
  EXPECT_EQ(sent(), Lines{expecting});
}

TEST_F(Guard, WithoutAnAnswerToTheQuestionForTheStateTheBodyIsNotRead) {
  backend.answers.erase(asking);
  EXPECT_EQ(read(), HostChannel::notAnswered);
  EXPECT_EQ(sent(), Lines{asking});
}

TEST_F(Guard, AQuestionWithoutAnAnswerLeavesWhatIsKnown) {
  read();
  backend.answers.erase(asking);
  read();
  sent();
  change();
  EXPECT_EQ(sent(), (Lines{expecting, transform})) << "the module still shows what it had read";
}

TEST_F(Guard, ABackendThatKnowsNoStatesIsServedWithoutTheGuard) {
  backend.answers[asking] = "korvex2 err 2 \"there is no such query\"";
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(sent(), (Lines{asking, reading, transform}));
}

TEST_F(Guard, ABackendThatKnowsNoExpectationsIsServedWithoutTheGuard) {
  read();
  backend.answers[expecting] = "korvex2 err 2 \"there is no such command\"";
  EXPECT_EQ(change(), 0);
}

TEST_F(Guard, AStateThatIsNotToldAnyMoreIsForgotten) {
  read();
  backend.answers[asking] = "korvex2 err 5 \"there is no body b01\"";
  read();
  sent();
  change();
  EXPECT_EQ(sent(), Lines{transform});
}

TEST_F(Guard, OnesOwnMarkersEndWhatIsKnown) {
  for (const QByteArray& setting :
       {QByteArray("body number_of_marker standard b01 5"),
        QByteArray("body marker standard b01 m01 1.000 2.000 3.000"),
        QByteArray("body marker_emission standard b01 m01 1 0 0 10"), QByteArray("body file standard b01 AAAA")}) {
    read();
    backend.answers["korvex2 set " + setting] = "korvex2 ok";
    EXPECT_EQ(channel.set_value("%s", setting.constData()), 0);
    sent();
    change();
    EXPECT_EQ(sent(), Lines{transform}) << setting.toStdString();
  }
}

TEST_F(Guard, OnesOwnMarkersOfAnotherBodyDoNot) {
  read();
  backend.answers["korvex2 set body marker standard b02 m01 1 2 3"] = "korvex2 ok";
  channel.set_value("body marker standard b02 m01 1 2 3");
  backend.answers["korvex2 set body desc standard b01 \"Cup\""] = "korvex2 ok";
  channel.set_value("body desc standard b01 \"Cup\"");
  sent();
  change();
  EXPECT_EQ(sent(), (Lines{expecting, transform}));
}

TEST_F(Guard, RefusedOrUnansweredMarkersKeepWhatIsKnown) {
  read();
  backend.answers["korvex2 set body marker standard b01 m01 1 2 3"] = "korvex2 err 7 \"locked\"";
  channel.set_value("body marker standard b01 m01 1 2 3");
  channel.set_value("body marker standard b01 m01 4 5 6");
  sent();
  change();
  EXPECT_EQ(sent(), (Lines{expecting, transform}));
}

TEST_F(Guard, ABodyIsTheSameHoweverItsNumberIsWritten) {
  read();
  sent();
  backend.answers["korvex2 body transform standard b1 1"] = "korvex2 ok";
  change("korvex2 body transform standard b1 1");
  EXPECT_EQ(sent(), (Lines{expecting, "korvex2 body transform standard b1 1"}));
}

TEST_F(Guard, AnotherBackendBeginsWithNothingKnown) {
  read();
  SharedConnection other;
  other.answers = backend.answers;
  channel.setConnection(&other);
  change();
  EXPECT_EQ(other.sent, Lines{transform});
}

TEST_F(Guard, TheStateIsAskedForThroughARawCommandAsWell) {
  change(reading);
  EXPECT_EQ(sent(), (Lines{asking, reading}));
}
