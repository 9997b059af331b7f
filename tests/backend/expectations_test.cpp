// The state of a body's markers as a text, and changes that are made only if the markers are as their sender read them.
#include <gtest/gtest.h>

#include <set>

#include "bodystate.h"
#include "clientstate.h"
#include "databasecopy.h"

namespace {

using korvex2::Body;
using korvex2::ClientState;

const std::string ok = "korvex2 ok";
const std::string changed = "korvex2 err 11 \"the markers of the body are not those that were expected\"";
const std::string turn = "standard b01 1 2 3 1 0 0 0 1 0 0 0 1";

class Expectations : public korvex2_test::DatabaseCopy {
 protected:
  std::string tell(const std::string& line) { return tell(client, line); }
  std::string tell(ClientState& who, const std::string& line) {
    return interpreter->answer(QByteArray::fromStdString("korvex2 " + line), who).toStdString();
  }
  std::string state(const std::string& key = "standard b01") {
    const std::string head = "korvex2 set body state " + key + " ";
    const std::string answer = tell("get body state " + key);
    EXPECT_EQ(answer.substr(0, head.size()), head);
    return answer.substr(head.size());
  }
  std::string expectState(const std::string& hex, const std::string& key = "standard b01") {
    return tell("body expect " + key + " " + hex);
  }

  std::string expected(const std::string& key = "standard b01") {
    const std::string head = "korvex2 set body expect " + key + " ";
    const std::string answer = tell("get body expect " + key);
    EXPECT_EQ(answer.substr(0, head.size()), head);
    return answer.substr(head.size());
  }

  const std::string wrong = "0123456789abcdef";
  ClientState client{true};
};

TEST_F(Expectations, TheStateIsSixteenLowerCaseHexadecimalDigits) {
  std::set<std::string> states;
  for (const char* key : {"standard b01", "standard b02", "standard b03", "wandgrip b01"}) {
    const std::string text = state(key);
    EXPECT_EQ(text.size(), 16U);
    EXPECT_EQ(text.find_first_not_of("0123456789abcdef"), std::string::npos) << text;
    EXPECT_EQ(text, state(key)) << "asked twice";
    states.insert(text);
  }
  EXPECT_EQ(states.size(), 4U);
}

TEST_F(Expectations, TheStateIsTheBeginningOfTheDigestOfTheNumbers) {
  // SHA-256 of the count 0, and of one marker (1, 2, 3) with emission (0, 0, 1) and 30 degrees, computed elsewhere.
  Body body;
  EXPECT_EQ(korvex2::bodyState(body), "af5570f5a1810b7a");
  body.markers = {{{{1.0, 2.0, 3.0}}, {{{0.0, 0.0, 1.0}}, 30.0}}};
  EXPECT_EQ(korvex2::bodyState(body), "cf63f79bc8139326");
}

TEST_F(Expectations, EveryNumberOfAMarkerMatters) {
  Body body;
  body.markers.resize(2);
  const QByteArray before = korvex2::bodyState(body);
  std::set<QByteArray> states{before};
  for (std::size_t marker = 0; marker < 2; ++marker) {
    for (std::size_t i = 0; i < 3; ++i) {
      Body other = body;
      other.markers[marker].position[i] = 1e-12;
      states.insert(korvex2::bodyState(other));
      other = body;
      other.markers[marker].emission.direction[i] = 1e-12;
      states.insert(korvex2::bodyState(other));
    }
    Body other = body;
    other.markers[marker].emission.openingAngle = 1e-12;
    states.insert(korvex2::bodyState(other));
  }
  Body longer = body;
  longer.markers.emplace_back();
  states.insert(korvex2::bodyState(longer));
  EXPECT_EQ(states.size(), 16U);
  body.markers[0].position[1] = -0.0;
  EXPECT_EQ(korvex2::bodyState(body), before) << "no reader can tell -0 from 0";
}

TEST_F(Expectations, OnlyMarkersMatter) {
  const std::string before = state();
  EXPECT_EQ(tell("set body desc standard b01 Mug"), ok);
  EXPECT_EQ(tell("set body target_type standard b01 tt_5dof"), ok);
  EXPECT_EQ(tell("set body calibrated standard b01 no"), ok);
  EXPECT_EQ(tell("set wandgrip multiuser yes"), ok);
  EXPECT_EQ(tell("tracking start"), ok);
  EXPECT_EQ(state(), before);
}

TEST_F(Expectations, TheStateFollowsEveryChangeAndComesBackWithTheMarkers) {
  const std::string before = state();
  std::set<std::string> states{before};
  for (const char* change :
       {"body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 1", "body delete_marker standard b01 m02",
        "set body number_of_marker standard b01 6", "set body marker standard b01 m01 1 2 3",
        "set body marker_emission standard b01 m01 0 0 1 30"}) {
    EXPECT_EQ(tell(change), ok) << change;
    EXPECT_TRUE(states.insert(state()).second) << change;
  }
  const std::string other = state("standard b02");
  EXPECT_EQ(tell("set body marker standard b02 m01 1 2 3"), ok);
  EXPECT_NE(state("standard b02"), other);
  EXPECT_EQ(tell("set body marker standard b03 m01 1 2 3"), ok);
  const std::string there = state("standard b03");
  EXPECT_EQ(tell("set body marker standard b03 m01 4 5 6"), ok);
  EXPECT_EQ(tell("set body marker standard b03 m01 1 2 3"), ok);
  EXPECT_EQ(state("standard b03"), there) << "the same markers again";
}

TEST_F(Expectations, TheStateIsTheSameAfterARestart) {
  // Numbers without a short decimal form.
  EXPECT_EQ(tell("body transform standard b01 0.1 0.7 0.333333333333 0.6 0.8 0 -0.8 0.6 0 0 0 1"), ok);
  EXPECT_EQ(tell("set body marker_emission standard b07 m01 0.1 -0 0.3 33.3"), ok);
  std::vector<std::string> before;
  for (const char* key : {"standard b01", "standard b02", "standard b06", "standard b07", "wandgrip b02"}) {
    before.push_back(state(key));
  }
  open();
  std::vector<std::string> after;
  for (const char* key : {"standard b01", "standard b02", "standard b06", "standard b07", "wandgrip b02"}) {
    after.push_back(state(key));
  }
  EXPECT_EQ(after, before);
}

/// Everything that changes the markers of standard b01.
const char* const changes[] = {"body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 1",
                               "body delete_marker standard b01 m01",
                               "set body number_of_marker standard b01 7",
                               "set body marker standard b01 m01 7 8 9",
                               "set body marker_emission standard b01 m01 0 0 1 33",
                               "set body file standard b01 MwoxIDAgMAowIDEgMAowIDAgMQo="};  // three markers

TEST_F(Expectations, EveryChangeThatMeetsTheExpectedMarkersIsMadeAndMovesTheExpectationOn) {
  for (const char* change : changes) {
    open();
    const std::string before = state();
    EXPECT_EQ(expectState(before), ok);
    EXPECT_EQ(tell(change), ok) << change;
    EXPECT_NE(state(), before) << change;
    EXPECT_EQ(expected(), state()) << change;
  }
}

TEST_F(Expectations, EveryChangeThatMeetsOtherMarkersIsRefusedAndChangesNothing) {
  EXPECT_EQ(expectState(wrong), ok);
  const auto files = korvex2_test::allFiles(folder());
  const std::string before = dump();
  for (const char* change : changes) {
    EXPECT_EQ(tell(change), changed) << change;
    EXPECT_EQ(tell(change), changed) << change << ": again, for it lasts";
  }
  EXPECT_EQ(dump(), before);
  EXPECT_EQ(korvex2_test::allFiles(folder()), files);
  EXPECT_EQ(expected(), wrong);
}

TEST_F(Expectations, LastOverTheClientsOwnChangesUntilSomebodyElseChangesTheBody) {
  EXPECT_EQ(expectState(state()), ok);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(tell("body transform " + turn), ok);
    EXPECT_EQ(tell("set body marker standard b01 m01 1 2 " + std::to_string(i)), ok);
  }
  const std::string own = state();
  EXPECT_EQ(ask("korvex2 set body marker standard b01 m01 1 1 1"), ok) << "by somebody else";
  const std::string before = dump();
  EXPECT_EQ(tell("body transform " + turn), changed);
  EXPECT_EQ(expected(), own) << "a refusal leaves it as it is";
  EXPECT_EQ(dump(), before);
  EXPECT_EQ(ask("korvex2 set body marker standard b01 m01 1 2 2"), ok) << "taken back";
  EXPECT_EQ(tell("body transform " + turn), ok);
}

TEST_F(Expectations, StayAsTheyAreWhenTheChangeFailsForAnotherReason) {
  const std::string read = state();
  EXPECT_EQ(expectState(read), ok);
  for (const char* failing :
       {"body transform standard b01 1 2 3 1 0 0 0 1 0 0 0", "body transform standard b01 1 2 x 1 0 0 0 1 0 0 0 1",
        "body transform standard b01 1 2 3 2 0 0 0 1 0 0 0 1", "body delete_marker standard b01 m99",
        "body delete_marker standard b01", "set body number_of_marker standard b01 2",
        "set body marker standard b01 m01 1 2", "set body file standard b01 AAAA"}) {
    EXPECT_EQ(tell(failing).substr(0, 12), "korvex2 err ") << failing;
    EXPECT_NE(tell(failing), changed) << failing;
    EXPECT_EQ(expected(), read) << failing;
  }
  EXPECT_EQ(ask("korvex2 set config is_changeable no"), ok);
  EXPECT_EQ(tell("body transform " + turn), "korvex2 err 7 \"the configuration is locked\"");
  EXPECT_EQ(ask("korvex2 set config is_changeable yes"), ok);
  EXPECT_EQ(tell("body transform " + turn), ok);
}

TEST_F(Expectations, OtherMarkersAreToldBeforeAnythingElseThatIsWrong) {
  EXPECT_EQ(expectState(wrong), ok);
  EXPECT_EQ(ask("korvex2 set config is_changeable no"), ok);
  for (const char* failing : {"body delete_marker standard b01 m99", "body transform standard b01",
                              "set body marker standard b01 m99 x", "set body number_of_marker standard b01 2",
                              "set body file standard b1 ?", "body  transform\tstandard  b001 1"}) {
    EXPECT_EQ(tell(failing), changed) << failing << ": what is wrong may have been right when it was read";
  }
}

TEST_F(Expectations, DoNotConcernAnythingElse) {
  EXPECT_EQ(expectState(wrong), ok);
  for (const char* other :
       {"get body marker standard b01 m01", "get body state standard b01", "get version", "tracking start",
        "tracking stop", "set body desc standard b01 Mug", "set body target_type standard b01 tt_5dof",
        "set body calibrated standard b01 yes", "set body marker standard b02 m01 1 2 3",
        "set body number_of_marker standard b02 7", "body transform standard b02 1 2 3 1 0 0 0 1 0 0 0 1",
        "body delete_marker standard b03 m01", "body delete_marker wandgrip b01 m01",
        "set output active chmon 6d yes"}) {
    EXPECT_NE(tell(other).substr(0, 11), "korvex2 err") << other << ": " << tell(other);
  }
  EXPECT_EQ(tell("body fly standard b01"), "korvex2 err 2 \"there is no such command\"");
  EXPECT_EQ(expected(), wrong);
}

TEST_F(Expectations, ANewerOneTakesThePlaceOfTheOlder) {
  EXPECT_EQ(expectState(wrong), ok);
  EXPECT_EQ(expectState(state()), ok);
  EXPECT_EQ(tell("body transform " + turn), ok);
}

TEST_F(Expectations, EndWhenNothingIsExpectedAnyMore) {
  EXPECT_EQ(expected(), "none");
  EXPECT_EQ(expectState("none"), ok) << "nothing is there to end";
  EXPECT_EQ(expectState(wrong), ok);
  EXPECT_EQ(expectState(wrong, "standard b02"), ok);
  EXPECT_EQ(expectState("none"), ok);
  EXPECT_EQ(expected(), "none");
  EXPECT_EQ(tell("body transform " + turn), ok);
  EXPECT_EQ(expected(), "none") << "a change begins no expectation";
  EXPECT_EQ(tell("body transform standard b02 1 2 3 1 0 0 0 1 0 0 0 1"), changed);
}

TEST_F(Expectations, CanBeAskedFor) {
  EXPECT_EQ(expectState(wrong), ok);
  EXPECT_EQ(tell("get body expect standard b01"), "korvex2 set body expect standard b01 " + wrong);
  EXPECT_EQ(tell("get body expect standard b02"), "korvex2 set body expect standard b02 none");
  EXPECT_EQ(tell("get body expect standard b08"), "korvex2 err 5 \"there is no body b08\"");
  EXPECT_EQ(tell("get body expect standard"), "korvex2 err 3 \"there are too few fields\"");
  EXPECT_EQ(ask("korvex2 get body expect standard b01"), "korvex2 set body expect standard b01 none")
      << "another client";
}

TEST_F(Expectations, AreKeptForEveryBodyAtTheSameTime) {
  const char* const keys[] = {"standard b01", "standard b02", "standard b03", "wandgrip b01", "wandgrip b02"};
  for (const char* key : keys) {
    EXPECT_EQ(expectState(wrong, key), ok);
  }
  for (const std::string key : keys) {
    EXPECT_EQ(tell("body transform " + key + " 1 2 3 1 0 0 0 1 0 0 0 1"), changed) << key;
  }
}

TEST_F(Expectations, AreEachClientsOwn) {
  ClientState other(true);
  EXPECT_EQ(expectState(wrong), ok);
  EXPECT_EQ(tell(other, "body transform " + turn), ok);
  EXPECT_EQ(tell("body transform " + turn), changed);
}

TEST_F(Expectations, WorkForTheOnlyClientToo) {
  EXPECT_EQ(ask("korvex2 body expect standard b01 " + wrong), ok);
  EXPECT_EQ(ask("korvex2 body transform " + turn), changed);
}

TEST_F(Expectations, TwoThatReadTheSameCannotBothChangeIt) {
  ClientState other(true);
  const std::string read = state();
  EXPECT_EQ(tell(client, "body expect standard b01 " + read), ok);
  EXPECT_EQ(tell(other, "body expect standard b01 " + read), ok);
  EXPECT_EQ(tell(other, "body transform " + turn), ok);
  const std::string after = dump();
  EXPECT_EQ(tell(client, "body transform " + turn), changed);
  EXPECT_EQ(dump(), after);
}

TEST_F(Expectations, WhatIsNoStateOrNoBodyIsRefused) {
  for (const std::string bad : {"0123456789abcde", "0123456789abcdef0", "0123456789ABCDEF", "0123456789abcdeg", "x"}) {
    const std::string answer = expectState(bad);
    EXPECT_EQ(answer.rfind("korvex2 err 4 \"a body state of 16 lower-case hexadecimal digits is expected", 0), 0U)
        << answer;
  }
  EXPECT_EQ(tell("body expect standard b01"), "korvex2 err 3 \"there are too few fields\"");
  EXPECT_EQ(expectState(wrong, "standard b08"), "korvex2 err 5 \"there is no body b08\"");
  EXPECT_EQ(expectState(wrong, "other b01"), "korvex2 err 5 \"there is no body type other\"");
  EXPECT_EQ(tell("get body state standard b08"), "korvex2 err 5 \"there is no body b08\"");
  EXPECT_EQ(tell("body transform " + turn), ok) << "none of them was kept";
}

TEST_F(Expectations, ThereIsOneForEachOfTwiceNinetyNineBodies) {
  for (const char* type : {"standard", "wandgrip"}) {
    for (int number = 1; number <= 99; ++number) {
      ASSERT_TRUE(client.expect({type, number}, "0123456789abcdef"));
    }
  }
  ASSERT_TRUE(client.expect({"standard", 50}, "fedcba9876543210")) << "a newer one";
  const korvex2::Outcome refused = client.expect({"third", 1}, "0123456789abcdef");
  EXPECT_EQ(refused.number, korvex2::ErrorNumber::NotAvailable);
  EXPECT_EQ(refused.text, "a client has at most 198 expectations");
  EXPECT_EQ(client.expectation({"standard", 50}), QByteArray("fedcba9876543210"));
  client.expectNothing({"standard", 50});
  EXPECT_FALSE(client.expectation({"standard", 50}).has_value());
  EXPECT_TRUE(client.expect({"third", 1}, "0123456789abcdef"));
}

}  // namespace
