// Settings, commands that run and stop the measurement, and the configuration lock.
#include <gtest/gtest.h>

#include "databasecopy.h"

namespace {

using korvex2::ErrorNumber;

class Settings : public korvex2_test::DatabaseCopy {
 protected:
  /// Value of a query, without the words around it.
  std::string get(const std::string& query) {
    const std::string head = "korvex2 set " + query + " ";
    const std::string answer = ask("korvex2 get " + query);
    EXPECT_EQ(0U, answer.rfind(head, 0)) << answer;
    return answer.substr(std::min(head.size(), answer.size()));
  }
};

TEST_F(Settings, MeasurementStartsAndStops) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 tracking start"));
  EXPECT_EQ("mea", get("status active"));
  EXPECT_TRUE(interpreter->isMeasuring());
  EXPECT_EQ("korvex2 ok", ask("korvex2 tracking start"));
  EXPECT_EQ("mea", get("status active"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 tracking stop"));
  EXPECT_EQ("idle", get("status active"));
  EXPECT_FALSE(interpreter->isMeasuring());
  EXPECT_EQ("korvex2 ok", ask("korvex2 tracking stop"));
}

TEST_F(Settings, MeasurementDoesNotStartWithoutTracking) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set tracking available no"));
  EXPECT_EQ("korvex2 err 8 \"tracking is not available\"", ask("korvex2 tracking start"));
  EXPECT_EQ("idle", get("status active"));
}

TEST_F(Settings, MeasurementEndsForGoodWhenTrackingGoes) {
  ask("korvex2 tracking start");
  EXPECT_EQ("korvex2 ok", ask("korvex2 set tracking available no"));
  EXPECT_EQ("idle", get("status active"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set tracking available yes"));
  EXPECT_EQ("idle", get("status active"));
}

TEST_F(Settings, MeasurementIsIdleWhileTheDatabaseSaysTrackingIsGone) {
  ask("korvex2 tracking start");
  ASSERT_TRUE(database->setTrackingAvailable(false));
  EXPECT_EQ("idle", get("status active"));
}

TEST_F(Settings, OutputsAreSwitchedOneByOne) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set output active chmon 6dw2 yes"));
  EXPECT_TRUE(interpreter->isOutputActive("6dw2"));
  EXPECT_FALSE(interpreter->isOutputActive("6dw"));
  EXPECT_EQ("yes", get("output active chmon 6dw2"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set output active chmon 6dw yes"));
  EXPECT_EQ("yes", get("output active chmon 6dw"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set output active chmon 6dw2 no"));
  EXPECT_EQ("no", get("output active chmon 6dw2"));
  EXPECT_EQ("yes", get("output active chmon 6d"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set output active chother 6dw2 yes"));
  EXPECT_EQ("yes", get("output active chother 6dw2"));
  EXPECT_EQ("no", get("output active chmon 6dw2")) << "a channel of its own";
  EXPECT_EQ(4, errorOf("korvex2 set output active chmon 7d yes"));
  EXPECT_EQ(4, errorOf("korvex2 set output active chmon 6dw2 maybe"));
}

TEST_F(Settings, ModesOfTheDevicesGoOnAndOff) {
  for (const std::string mode : {"wandgrip multiuser", "wandgrip multiuser_with_head", "wandgrip output_6dw"}) {
    EXPECT_EQ("korvex2 ok", ask("korvex2 set " + mode + " yes"));
    EXPECT_EQ("yes", get(mode));
    EXPECT_EQ("korvex2 ok", ask("korvex2 set " + mode + " no"));
    EXPECT_EQ("no", get(mode));
  }
}

TEST_F(Settings, HeadModeDoesNotDependOnThePlainMode) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set wandgrip multiuser_with_head yes"));
  EXPECT_EQ("no", get("wandgrip multiuser"));
  EXPECT_EQ("yes", get("wandgrip multiuser_with_head"));
}

TEST_F(Settings, ModeThatIsNotAvailableCannotBeOn) {
  for (const std::string mode : {"wandgrip multiuser", "wandgrip multiuser_with_head"}) {
    ask("korvex2 set " + mode + " yes");
    EXPECT_EQ("korvex2 ok", ask("korvex2 set " + mode + "_available no"));
    EXPECT_EQ("no", get(mode + "_available"));
    EXPECT_EQ("no", get(mode));
    EXPECT_EQ("korvex2 err 8 \"the mode is not available\"", ask("korvex2 set " + mode + " yes"));
    EXPECT_EQ("korvex2 ok", ask("korvex2 set " + mode + " no"));
    EXPECT_EQ("no", get(mode));
  }
}

TEST_F(Settings, VersionIsASettingOfThreeNumbers) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set version 1.9.-1"));
  EXPECT_EQ("1.9.-1", get("version"));
  EXPECT_TRUE(database->setVersion({0, 5, 3}));
  EXPECT_EQ("0.5.3", get("version"));
  for (const char* wrong : {"1.9", "1.9.0.0", "a.b.c", "1..2", "-1.0.0", "1.-1.0", "10000.0.0", "99999999999.0.0"}) {
    EXPECT_EQ(4, errorOf(std::string("korvex2 set version ") + wrong)) << wrong;
  }
  EXPECT_EQ("0.5.3", get("version"));
}

TEST_F(Settings, EverySettingOfTheDatabaseIsHeldOverARestart) {
  korvex2::BackendSettings changed;
  changed.version = {1, 16, 7};
  changed.configChangeable = false;
  changed.trackingAvailable = false;
  changed.deviceOutput6dw = true;
  changed.multiuserAvailable = true;
  changed.multiuser = true;
  changed.multiuserWithHeadAvailable = true;
  changed.multiuserWithHead = true;
  ASSERT_TRUE(database->setSettings(changed));
  open();
  EXPECT_TRUE(changed == database->settings());
  ASSERT_TRUE(database->setMultiuserWithHeadAvailable(false));
  ASSERT_TRUE(database->setDeviceOutput6dw(false));
  ASSERT_TRUE(database->setConfigChangeable(true));
  ASSERT_TRUE(database->setMultiuser(false));
  open();
  changed.multiuserWithHeadAvailable = false;
  changed.multiuserWithHead = false;
  changed.deviceOutput6dw = false;
  changed.configChangeable = true;
  changed.multiuser = false;
  EXPECT_TRUE(changed == database->settings());
}

TEST_F(Settings, MeasurementAndOutputsAreNotHeldOverARestart) {
  ask("korvex2 tracking start");
  ask("korvex2 set output active chmon 6dw2 yes");
  open();
  EXPECT_EQ("idle", get("status active"));
  EXPECT_EQ("no", get("output active chmon 6dw2"));
}

TEST_F(Settings, LockedConfigurationRefusesEveryChangeOfABody) {
  ASSERT_EQ("korvex2 ok", ask("korvex2 set config is_changeable no"));
  EXPECT_EQ("no", get("config is_changeable"));
  const std::string before = dump();
  for (const char* line :
       {"korvex2 set body desc standard b01 \"Mug\"", "korvex2 set body target_type standard b01 tt_5dof",
        "korvex2 set body calibrated standard b01 no", "korvex2 set body number_of_marker standard b01 6",
        "korvex2 set body marker standard b01 m01 1 2 3", "korvex2 set body marker_emission standard b01 m01 0 0 1 30",
        "korvex2 body delete_marker standard b01 m01", "korvex2 body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 1"}) {
    EXPECT_EQ("korvex2 err 7 \"the configuration is locked\"", ask(line)) << line;
  }
  EXPECT_EQ(before, dump());
}

TEST_F(Settings, LockedConfigurationLeavesModesAndMeasurementFree) {
  ask("korvex2 set config is_changeable no");
  EXPECT_EQ("korvex2 ok", ask("korvex2 set wandgrip multiuser yes"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set output active chmon 6dw2 yes"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 tracking start"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set config is_changeable yes"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m01 1 2 3"));
}

TEST_F(Settings, DescriptionTargetTypeAndCalibrationCanBeSet) {
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body desc standard b01 \"Big mug\""));
  EXPECT_EQ("\"Big mug\"", get("body desc standard b01"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body desc standard b01 Mug"));
  EXPECT_EQ("\"Mug\"", get("body desc standard b01"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body desc standard b01 \"\""));
  EXPECT_EQ("\"\"", get("body desc standard b01"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body target_type standard b01 'tt_5dof'"));
  EXPECT_EQ("'tt_5dof'", get("body target_type standard b01"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body target_type standard b01 tt_cyl"));
  EXPECT_EQ("'tt_cyl'", get("body target_type standard b01"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body calibrated standard b01 no"));
  EXPECT_EQ("no", get("body calibrated standard b01"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body calibrated standard b06 yes"));
  EXPECT_EQ("yes", get("body calibrated standard b06"));
}

TEST_F(Settings, DescriptionsThatCannotBeSentAreRefused) {
  const std::string before = dump();
  EXPECT_EQ(4, errorOf("korvex2 set body desc standard b01 \"" + std::string(121, 'x') + "\""));
  EXPECT_EQ(1, errorOf("korvex2 set body desc standard b01 \"a\x01z\""));
  EXPECT_EQ(4, errorOf("korvex2 set body desc standard b01 \"a\xc2\x85z\""));  // a control character of Latin-1
  EXPECT_EQ(1, errorOf("korvex2 set body desc standard b01 \"a\xffz\""));      // not UTF-8
  EXPECT_EQ(1, errorOf("korvex2 set body desc standard b01 \"never closed"));
  EXPECT_EQ(3, errorOf("korvex2 set body desc standard b01 two words"));
  EXPECT_EQ(4, errorOf("korvex2 set body target_type standard b01 \"tt std\""));
  EXPECT_EQ(4, errorOf("korvex2 set body target_type standard b01 ''"));
  EXPECT_EQ(before, dump());
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body desc standard b01 \"" + std::string(120, 'x') + "\""));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body desc standard b01 \"T\xc3\xbcr\""));
  EXPECT_EQ("\"T\xc3\xbcr\"", get("body desc standard b01"));
}

}  // namespace
