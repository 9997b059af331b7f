// Changes of markers that a module has read, where others can change them too: every rule of the guard.
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

Lines operator+(Lines one, const Lines& other) {
  one.insert(one.end(), other.begin(), other.end());
  return one;
}

/// A backend as the guard sees it: one body, its state, and what this connection expects of it.
class SharedConnection : public ScriptedConnection {
 public:
  SharedConnection() {
    respond = [this](const QByteArray& line, QByteArray& answer) { return answerTo(line, answer); };
  }
  bool sharesBackend() const override { return shared; }
  QByteArrayList exchangeTogether(const QByteArrayList& lines) override {
    ++together;
    return ScriptedConnection::exchangeTogether(lines);
  }

  /// Somebody else changes the body.
  void changeByOthers() { state = "00000000000000cc"; }

  bool shared = true;
  int together = 0;
  QByteArray state = "00000000000000aa";
  QByteArray made = "00000000000000bb";  ///< by the next change
  QByteArray expected = "none";
  std::vector<QByteArray> carriedOut;  ///< changes that were made
  QByteArray silentFrom;               ///< a line that begins so is not answered, and what comes after it neither
  bool lost = false;                   ///< whether it was carried out all the same

 private:
  bool answerTo(const QByteArray& line, QByteArray& answer) {
    const bool isSilent = !silentFrom.isEmpty() && line.startsWith(silentFrom);
    if (isSilent && !lost) {
      return false;
    }
    answer = answers.count(line) > 0 ? answers[line] : usual(line);
    return !isSilent;
  }
  QByteArray usual(const QByteArray& line) {
    if (line.startsWith("korvex2 get body state ")) {
      return "korvex2 set" + line.mid(11) + ' ' + state;
    }
    if (line.startsWith("korvex2 get body expect ")) {
      return "korvex2 set" + line.mid(11) + ' ' + expected;
    }
    if (line.startsWith("korvex2 get ")) {
      return "korvex2 set" + line.mid(11) + " 5";
    }
    if (line.startsWith("korvex2 body expect ")) {
      expected = line.mid(line.lastIndexOf(' ') + 1);
      return "korvex2 ok";
    }
    if (expected != "none" && expected != state) {
      return "korvex2 err 11 \"the markers have changed\"";
    }
    carriedOut.push_back(line);
    state = made;
    expected = expected == "none" ? expected : state;
    return "korvex2 ok";
  }
};

const QByteArray reading = "korvex2 get body number_of_marker standard b01";
const QByteArray asking = "korvex2 get body state standard b01";
const QByteArray expecting = "korvex2 body expect standard b01 00000000000000aa";
const QByteArray learning = "korvex2 get body expect standard b01";
const QByteArray ending = "korvex2 body expect standard b01 none";
const QByteArray transform = "korvex2 body transform standard b01 1.000 0.000 0.000";
const QByteArray removal = "korvex2 body delete_marker standard b01 m02";
const QByteArray marker = "korvex2 get body marker standard b01 m02";

/// Every command that changes a body's markers.
const Lines changes = {transform,
                       removal,
                       "korvex2 set body number_of_marker standard b01 5",
                       "korvex2 set body marker standard b01 m01 1.000 2.000 3.000",
                       "korvex2 set body marker_emission standard b01 m01 1 0 0 10",
                       "korvex2 set body file standard b01 AAAA"};

Lines guarded(const QByteArray& line, const QByteArray& state = "00000000000000aa") {
  return {"korvex2 body expect standard b01 " + state, line, learning, ending};
}

class Guard : public testing::Test {
 protected:
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
  /// A change is refused and told, once; after a new reading it is made.
  void expectRefusalUntilRead() {
    const Lines before = backend.carriedOut;
    EXPECT_EQ(change(), HostChannel::refused);
    EXPECT_STREQ(answer, "korvex2 err 11 \"the markers have changed\"");
    EXPECT_EQ(reports(), std::vector<std::string>{stale});
    EXPECT_EQ(backend.carriedOut, before);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(change(), 0);
    EXPECT_EQ(backend.carriedOut.size(), before.size() + 1);
  }

  const char* const stale =
      "Front end: The markers of standard b01 were changed since they were read: by another program, or by a command "
      "whose answer was lost. Read them again before you change them: choose another body and then this one, or close "
      "the dialog and open it again.";
  SharedConnection backend;
  HostChannel channel{&backend};
  QSignalSpy told{&channel, &HostChannel::reported};
  QSignalSpy traffic{&channel, &HostChannel::exchanged};
  char answer[200] = "";
};

}  // namespace

TEST_F(Guard, AsksForTheStateTogetherWithTheNumberOfMarkersAndInFrontOfIt) {
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(sent(), (Lines{asking, reading}));
  EXPECT_EQ(backend.together, 1);
  EXPECT_EQ(traffic.size(), 1) << "the operator sees what modules exchange";
}

TEST_F(Guard, EveryChangeOfMarkersTravelsBetweenWhatIsExpectedAndWhatItMade) {
  for (const QByteArray& line : changes) {
    backend.state = "00000000000000aa";
    read();
    sent();
    backend.together = 0;
    EXPECT_EQ(change(line), 0);
    EXPECT_STREQ(answer, "korvex2 ok");
    EXPECT_EQ(sent(), guarded(line));
    EXPECT_EQ(backend.together, 1);
    EXPECT_EQ(backend.expected, "none") << "nothing is left behind";
  }
  EXPECT_TRUE(reports().empty());
  EXPECT_EQ(traffic.size(), 2 * static_cast<int>(changes.size()));
}

TEST_F(Guard, EveryStaleChangeIsRefusedAndToldOnceForAReading) {
  read();
  backend.changeByOthers();
  for (int round = 0; round < 2; ++round) {
    for (const QByteArray& line : changes) {
      EXPECT_EQ(change(line), HostChannel::refused) << line.toStdString();
    }
  }
  EXPECT_TRUE(backend.carriedOut.empty());
  EXPECT_EQ(reports(), std::vector<std::string>{stale});
  read();
  EXPECT_EQ(change(), 0);
  backend.changeByOthers();
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_EQ(reports(), (std::vector<std::string>{stale, stale})) << "of another reading";
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
        QByteArray("korvex2 body transform standard x01"), QByteArray("korvex2 get body number_of_marker standard"),
        QByteArray("korvex2 body  expect standard b01 00000000000000aa"), QByteArray("body transform standard b01 1"),
        QByteArray("korvex2 set transform standard b01 1"), QByteArray("korvex2 set body desc standard b01 x")}) {
    change(line);
    EXPECT_EQ(sent(), Lines{line}) << line.toStdString();
  }
}

TEST_F(Guard, AfterReadingAgainTheChangeIsMadeOnWhatIsThereNow) {
  read();
  backend.changeByOthers();
  expectRefusalUntilRead();
}

TEST_F(Guard, WhatAChangeHasMadeIsWhatTheNextOneExpects) {
  read();
  change();
  sent();
  backend.made = "00000000000000dd";
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(sent(), guarded(transform, "00000000000000bb"));
  backend.changeByOthers();
  expectRefusalUntilRead();
}

TEST_F(Guard, WhatOthersMadeOfItRightAfterwardsIsNotExpected) {
  read();
  backend.answers[learning] = "korvex2 set body expect standard b01 00000000000000bb";
  change();
  backend.changeByOthers();
  expectRefusalUntilRead();
}

TEST_F(Guard, ASuccessBehindWhichNothingIsAnsweredIsASuccessAfterWhichTheBodyMustBeRead) {
  for (const QByteArray& unanswered : {learning, QByteArray("korvex2 body expect standard b01 none")}) {
    told.clear();
    backend.state = "00000000000000aa";
    backend.made = "00000000000000bb";
    read();
    backend.silentFrom = unanswered;
    EXPECT_EQ(change(), 0);
    EXPECT_STREQ(answer, "korvex2 ok");
    backend.silentFrom.clear();
    backend.expected = "none";  // another connection
    if (unanswered == learning) {
      expectRefusalUntilRead();
    } else {
      EXPECT_EQ(change(), 0) << "what it made is known";
    }
  }
}

TEST_F(Guard, AnUnclearAnswerToWhatIsExpectedNowMakesReadingNecessary) {
  for (const char* unclear : {"korvex2 set body expect standard b01 none", "korvex2 set body expect standard b01",
                              "korvex2 set body expect standard b02 00000000000000bb", "korvex2 ok", "",
                              "korvex2 err 5 \"there is no body b01\""}) {
    told.clear();
    backend.state = "00000000000000aa";
    backend.answers[learning] = unclear;
    read();
    EXPECT_EQ(change(), 0) << unclear;
    expectRefusalUntilRead();
  }
}

TEST_F(Guard, AChangeWithoutAnAnswerIsNotDoneASecondTime) {
  for (const QByteArray& line : changes) {
    told.clear();
    backend.state = "00000000000000aa";
    read();
    backend.silentFrom = line;
    backend.lost = true;
    EXPECT_EQ(change(line), HostChannel::notAnswered);
    EXPECT_EQ(backend.state, backend.made);
    backend.silentFrom.clear();
    backend.expected = "none";
    expectRefusalUntilRead();
  }
}

TEST_F(Guard, AChangeThatDidNotArriveIsDoneAtTheSecondTry) {
  read();
  backend.silentFrom = transform;
  EXPECT_EQ(change(), HostChannel::notAnswered);
  backend.silentFrom.clear();
  backend.expected = "none";
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(backend.carriedOut, Lines{transform});
}

TEST_F(Guard, AChangeThatIsRefusedForAnotherReasonKeepsWhatIsKnown) {
  read();
  sent();
  backend.answers[transform] = "korvex2 err 4 \"no rotation\"";
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_STREQ(answer, "korvex2 err 4 \"no rotation\"");
  EXPECT_TRUE(reports().empty()) << "the module tells it";
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_EQ(sent(), guarded(transform) + guarded(transform));
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

TEST_F(Guard, WithoutAnAnswerToTheExpectationThereIsNoneToTheChange) {
  read();
  backend.silentFrom = expecting;
  EXPECT_EQ(change(), HostChannel::notAnswered);
  EXPECT_EQ(traffic.size(), 2);
  backend.silentFrom.clear();
  backend.changeByOthers();
  expectRefusalUntilRead();
}

TEST_F(Guard, WithoutAnAnswerToTheQuestionForTheStateTheBodyIsNotRead) {
  backend.silentFrom = asking;
  EXPECT_EQ(read(), HostChannel::notAnswered);
  EXPECT_EQ(sent(), Lines{asking});
}

TEST_F(Guard, AReadingThatBreaksOffDoesNotCount) {
  for (const QByteArray& where : {asking, reading, marker, QByteArray("korvex2 get body marker_emission")}) {
    told.clear();
    backend.state = "00000000000000aa";
    backend.silentFrom.clear();
    read();
    backend.changeByOthers();
    backend.silentFrom = where;
    read();
    char text[200];
    channel.get_string(text, "body marker standard b01 m02");
    channel.get_string(text, "body marker_emission standard b01 m02");
    backend.silentFrom.clear();
    expectRefusalUntilRead();  // the module still shows what it had read before
  }
}

TEST_F(Guard, AReadingInWhichAMarkerIsGoneDoesNotCount) {
  read();
  backend.changeByOthers();
  read();
  backend.answers[marker] = "korvex2 err 6 \"there is no marker m02\"";
  change(marker);
  expectRefusalUntilRead();
}

TEST_F(Guard, AFirstReadingThatBreaksOffLetsNothingUnguardedThrough) {
  backend.silentFrom = marker;
  read();
  change(marker);
  backend.silentFrom.clear();
  backend.changeByOthers();
  expectRefusalUntilRead();
}

TEST_F(Guard, ABackendThatKnowsNoStatesIsServedWithoutTheGuard) {
  backend.answers[asking] = "korvex2 err 2 \"there is no such query\"";
  EXPECT_EQ(read(), 0);
  EXPECT_EQ(change(), 0);
  EXPECT_EQ(sent(), (Lines{asking, reading, transform}));
}

TEST_F(Guard, ABackendThatKnowsNoExpectationsIsServedWithoutTheGuard) {
  for (const QByteArray& unknown : {expecting, learning}) {
    backend.state = "00000000000000aa";
    backend.answers = {{unknown, "korvex2 err 2 \"there is no such command\""}};
    read();
    EXPECT_EQ(change(), 0);
    EXPECT_STREQ(answer, "korvex2 ok");
    backend.expected = "none";
    backend.changeByOthers();
    sent();
    EXPECT_EQ(change(), 0);
    EXPECT_EQ(sent(), Lines{transform});
  }
  EXPECT_TRUE(reports().empty());
}

TEST_F(Guard, AStateThatIsNotToldAnyMoreIsForgotten) {
  read();
  backend.answers[asking] = "korvex2 err 5 \"there is no body b01\"";
  read();
  sent();
  change();
  EXPECT_EQ(sent(), Lines{transform});
}

TEST_F(Guard, OtherChangesTouchNothing) {
  read();
  channel.set_value("body marker standard b02 m01 1 2 3");
  channel.set_value("body desc standard b01 \"Cup\"");
  backend.state = "00000000000000aa";
  sent();
  change();
  EXPECT_EQ(sent(), guarded(transform));
}

TEST_F(Guard, ALineIsKnownByItsWordsHoweverTheyAreWritten) {
  const auto expectGuarded = [this](const QByteArray& line) {
    backend.state = "00000000000000aa";
    read();
    sent();
    change(line);
    EXPECT_EQ(sent(), guarded(line)) << line.toStdString();
  };
  expectGuarded("korvex2 body transform standard b1 1");
  expectGuarded("korvex2 body transform standard b001 1");
  expectGuarded("korvex2 body transform  standard b01");
  expectGuarded("  korvex2   body  transform   standard   b01  1 ");
  expectGuarded("korvex2  set  body  marker  standard  b01  m01 1 2 3");
  expectGuarded("korvex2 body transform standard b01");
  backend.changeByOthers();
  change("korvex2  get  body  number_of_marker  standard  b01");
  EXPECT_EQ(sent(), (Lines{asking, "korvex2  get  body  number_of_marker  standard  b01"}));
}

TEST_F(Guard, WhatWasReadFromAnotherBackendIsStillWhatWasRead) {
  read();
  SharedConnection other;
  other.state = "00000000000000dd";
  channel.setConnection(&other);
  EXPECT_EQ(change(), HostChannel::refused);
  EXPECT_TRUE(other.carriedOut.empty());
  EXPECT_EQ(reports(), std::vector<std::string>{stale});
  SharedConnection same;
  channel.setConnection(&same);
  EXPECT_EQ(change(), 0) << "the same markers";
}

TEST_F(Guard, TheStateIsAskedForThroughARawCommandAsWell) {
  change(reading);
  EXPECT_EQ(sent(), (Lines{asking, reading}));
}
