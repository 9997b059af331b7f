// Multi-user mode: what is asked, what is switched off, and that exactly that is switched on again.
#include "multiusermode.h"

#include "linkfixture.h"

using korvex2::MultiUserMode;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class MultiUserModeTest : public LinkTest {
 protected:
  void backendHas(const char* multiUser, const char* withHead) {
    io.answers["wandgrip multiuser_available"] = "yes";
    io.answers["wandgrip multiuser"] = multiUser;
    io.answers["wandgrip multiuser_with_head_available"] = "yes";
    io.answers["wandgrip multiuser_with_head"] = withHead;
    for (const char* setting : {"wandgrip multiuser yes", "wandgrip multiuser no", "wandgrip multiuser_with_head yes",
                                "wandgrip multiuser_with_head no"}) {
      io.answers[setting] = "";
    }
  }

  MultiUserMode mode{channel};
  const Log allQueries = {"get_string wandgrip multiuser_available", "get_string wandgrip multiuser",
                          "get_string wandgrip multiuser_with_head_available",
                          "get_string wandgrip multiuser_with_head"};
};

TEST_F(MultiUserModeTest, IsActiveWhenAvailableAndOn) {
  backendHas("yes", "no");
  EXPECT_TRUE(mode.isActive());
  EXPECT_THAT(io.takeLog(), ElementsAre(allQueries[0], allQueries[1]));
  EXPECT_FALSE(mode.isWithHead());
  EXPECT_THAT(io.takeLog(), ElementsAre(allQueries[2], allQueries[3]));
  backendHas("no", "yes");
  EXPECT_FALSE(mode.isActive());
  EXPECT_TRUE(mode.isWithHead());
}

TEST_F(MultiUserModeTest, IsNotAskedForWhenNotAvailable) {
  backendHas("yes", "yes");
  for (const char* answer : {"no", "", "yes ", "Yes"}) {
    io.answers["wandgrip multiuser_available"] = answer;
    io.answers["wandgrip multiuser_with_head_available"] = answer;
    io.takeLog();
    EXPECT_FALSE(mode.isActive());
    EXPECT_FALSE(mode.isWithHead());
    EXPECT_THAT(io.log, ElementsAre(allQueries[0], allQueries[2])) << '"' << answer << '"';
  }
}

TEST_F(MultiUserModeTest, FailedQueriesMeanInactiveWithoutAReport) {
  backendHas("yes", "yes");
  io.failing = {allQueries[0], allQueries[2]};
  EXPECT_FALSE(mode.isActive());
  EXPECT_FALSE(mode.isWithHead());
  EXPECT_THAT(io.takeLog(), ElementsAre(allQueries[0], allQueries[2]));
  io.failing = {allQueries[1], allQueries[3]};
  EXPECT_FALSE(mode.isActive());
  EXPECT_FALSE(mode.isWithHead());
  EXPECT_THAT(io.log, ElementsAreArray(allQueries));
}

TEST_F(MultiUserModeTest, OnlyTheExactAnswerYesIsOn) {
  for (const char* answer : {"no", "", "yes ", " yes", "Yes", "YES"}) {
    backendHas(answer, answer);
    EXPECT_FALSE(mode.isActive()) << '"' << answer << '"';
    EXPECT_FALSE(mode.isWithHead()) << '"' << answer << '"';
  }
}

TEST_F(MultiUserModeTest, BothModesAreSwitchedOffWithHeadFirstAndOnAgainMultiUserFirst) {
  backendHas("yes", "yes");
  mode.deactivateIfActive();
  Log expected = allQueries;
  expected.insert(expected.end(), {"set_value wandgrip multiuser_with_head no", "set_value wandgrip multiuser no"});
  EXPECT_THAT(io.takeLog(), ElementsAreArray(expected));
  EXPECT_TRUE(mode.wasActive());
  EXPECT_TRUE(mode.wasWithHead());
  mode.resetIfWasActive();
  EXPECT_THAT(io.takeLog(),
              ElementsAre("set_value wandgrip multiuser yes", "set_value wandgrip multiuser_with_head yes"));
  EXPECT_FALSE(mode.wasActive());
  EXPECT_FALSE(mode.wasWithHead());
  mode.resetIfWasActive();
  EXPECT_THAT(io.log, IsEmpty()) << "forgotten after the first reset";
}

TEST_F(MultiUserModeTest, MultiUserWithoutHeadIsSwitchedAlone) {
  backendHas("yes", "no");
  mode.deactivateIfActive();
  Log expected = allQueries;
  expected.push_back("set_value wandgrip multiuser no");
  EXPECT_THAT(io.takeLog(), ElementsAreArray(expected));
  mode.resetIfWasActive();
  EXPECT_THAT(io.log, ElementsAre("set_value wandgrip multiuser yes"));
}

TEST_F(MultiUserModeTest, WithHeadAloneIsLeftAlone) {
  backendHas("no", "yes");
  mode.deactivateIfActive();
  EXPECT_THAT(io.takeLog(), ElementsAreArray(allQueries)) << "asked, nothing switched";
  EXPECT_FALSE(mode.wasActive());
  EXPECT_TRUE(mode.wasWithHead());
  mode.resetIfWasActive();
  EXPECT_THAT(io.log, IsEmpty());
  EXPECT_FALSE(mode.wasWithHead());
}

TEST_F(MultiUserModeTest, BothQuestionsAreAskedEvenWhenMultiUserIsNotAvailable) {
  io.answers["wandgrip multiuser_available"] = "no";
  io.answers["wandgrip multiuser_with_head_available"] = "no";
  mode.deactivateIfActive();
  EXPECT_THAT(io.log, ElementsAre(allQueries[0], allQueries[2]));
}

TEST_F(MultiUserModeTest, FailedSwitchesAreReportedAndTheNextFollows) {
  backendHas("yes", "yes");
  io.failing = {"set_value wandgrip multiuser_with_head no", "set_value wandgrip multiuser no",
                "set_value wandgrip multiuser yes", "set_value wandgrip multiuser_with_head yes"};
  mode.deactivateIfActive();
  Log expected = allQueries;
  expected.insert(expected.end(),
                  {"set_value wandgrip multiuser_with_head no",
                   reported("Error: Unable to deactivate multi user Wandgrip with head"),
                   "set_value wandgrip multiuser no", reported("Error: Unable to deactivate multi user Wandgrip")});
  EXPECT_THAT(io.takeLog(), ElementsAreArray(expected));
  mode.resetIfWasActive();
  EXPECT_THAT(io.log,
              ElementsAre("set_value wandgrip multiuser yes", reported("Error: Unable to activate multi user Wandgrip"),
                          "set_value wandgrip multiuser_with_head yes",
                          reported("Error: Unable to activate multi user Wandgrip with head")));
  EXPECT_FALSE(mode.wasActive());
  EXPECT_FALSE(mode.wasWithHead());
}

TEST_F(MultiUserModeTest, ASecondDeactivationRemembersTheBackendsStateOfNow) {
  backendHas("yes", "yes");
  mode.deactivateIfActive();
  backendHas("no", "no");
  mode.deactivateIfActive();
  io.takeLog();
  mode.resetIfWasActive();
  EXPECT_THAT(io.log, IsEmpty());
}

TEST_F(MultiUserModeTest, NothingIsRememberedAtFirst) {
  EXPECT_FALSE(mode.wasActive());
  EXPECT_FALSE(mode.wasWithHead());
  mode.resetIfWasActive();
  EXPECT_THAT(io.log, IsEmpty());
}

TEST_F(MultiUserModeTest, DevicesAreCounted) {
  io.answers["wandgrip number_of_devices"] = "3";
  EXPECT_EQ(mode.numberOfDevices(), 3);
  EXPECT_THAT(io.takeLog(), ElementsAre("get_int wandgrip number_of_devices"));
  io.answers.clear();
  EXPECT_EQ(mode.numberOfDevices(), 0);
  EXPECT_THAT(io.log,
              ElementsAre("get_int wandgrip number_of_devices", reported("Error: Unable to get number of wandgrips")));
}

TEST_F(MultiUserModeTest, TheOperatorIsWarnedWhenTheModeIsOnAndThereAreDevices) {
  backendHas("yes", "no");
  io.answers["wandgrip number_of_devices"] = "1";
  EXPECT_TRUE(mode.warningNeeded());
  EXPECT_THAT(io.takeLog(), ElementsAre(allQueries[0], allQueries[1], "get_int wandgrip number_of_devices"));
  io.answers["wandgrip number_of_devices"] = "0";
  EXPECT_FALSE(mode.warningNeeded());
  io.takeLog();
  backendHas("no", "yes");
  io.answers["wandgrip number_of_devices"] = "1";
  EXPECT_FALSE(mode.warningNeeded());
  EXPECT_THAT(io.log, ElementsAre(allQueries[0], allQueries[1])) << "devices are not counted when the mode is off";
}
