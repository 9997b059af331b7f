// Version gates, answers compared word for word, messages, and what happens without a channel.
#include "backendchannel.h"

#include <algorithm>
#include <cstdio>

#include "abcmarkerdata.h"
#include "bsMatrix.h"
#include "bsVector.h"
#include "linkfixture.h"
#include "messagereceiver.h"
#include "requester.h"

using korvex2::BackendChannel;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Receiver : MessageReceiver {
  int transmit_message(int, const char*, const char*) override { return 0; }
};

struct Listener : Requester {
  int set_ascii_data(const char*, const char*) override { return 0; }
  void set_mea_started() override {}
  void set_mea_stopped() override {}
};

bool passes(int major, int minor, int revision, int gateMajor, int gateMinor) {
  const BackendVersions versions = backendVersion(major, minor, revision);
  return BackendChannel(nullptr, &versions).passesGate(gateMajor, gateMinor);
}

}  // namespace

class BackendChannelTest : public LinkTest {};

// --- gates ----------------------------------------------------------------------------------------------------------

TEST(VersionGate, ComparesMajorThenMinorThenRevision) {
  struct {
    int major, minor;
  } const gates[] = {{1, 9}, {0, 6}, {0, 17}, {1, 17}, {1, 12}};
  for (const auto& gate : gates) {
    SCOPED_TRACE(std::to_string(gate.major) + "." + std::to_string(gate.minor));
    const auto at = [&gate](int majorStep, int minorStep, int revision) {
      return passes(gate.major + majorStep, gate.minor + minorStep, revision, gate.major, gate.minor);
    };
    EXPECT_TRUE(at(0, 0, 0));
    EXPECT_TRUE(at(0, 0, 1));
    EXPECT_TRUE(at(0, 0, -1)) << "an unknown revision counts as the threshold's";
    EXPECT_FALSE(at(0, 0, -2));
    EXPECT_FALSE(at(0, 0, -1000));
    EXPECT_FALSE(at(0, -1, 0)) << "one minor below";
    EXPECT_FALSE(at(0, -1, 99));
    EXPECT_TRUE(at(0, 1, 0)) << "one minor above";
    EXPECT_TRUE(at(0, 1, -2)) << "the revision counts at the exact minor only";
    EXPECT_TRUE(at(1, -gate.minor, -2)) << "next major, minor 0";
    EXPECT_FALSE(at(-1, 50, 5)) << "previous major, high minor";
  }
}

TEST(VersionGate, FeaturesHaveTheirThresholds) {
  const auto features = [](int major, int minor, int revision) {
    const BackendVersions versions = backendVersion(major, minor, revision);
    const BackendChannel channel(nullptr, &versions);
    return std::vector<bool>{channel.canDeleteMarkers(), channel.hasTargetTypes(), channel.writesEmissions()};
  };
  EXPECT_THAT(features(1, 11, 9), ElementsAre(false, false, false));
  EXPECT_THAT(features(1, 12, -2), ElementsAre(false, false, false));
  EXPECT_THAT(features(1, 12, -1), ElementsAre(false, true, true));
  EXPECT_THAT(features(1, 12, 0), ElementsAre(false, true, true));
  EXPECT_THAT(features(1, 16, 9), ElementsAre(false, true, true));
  EXPECT_THAT(features(1, 17, -2), ElementsAre(false, true, true));
  EXPECT_THAT(features(1, 17, -1), ElementsAre(true, true, true));
  EXPECT_THAT(features(1, 17, 0), ElementsAre(true, true, true));
  EXPECT_THAT(features(2, 0, -2), ElementsAre(true, true, true));
}

// --- config lock ----------------------------------------------------------------------------------------------------

TEST_F(BackendChannelTest, ConfigIsLockedWhenTheBackendAnswersNo) {
  io.answers["config is_changeable"] = "no";
  EXPECT_TRUE(channel.isConfigLocked());
  EXPECT_THAT(io.log, ElementsAre("get_string config is_changeable"));
}

TEST_F(BackendChannelTest, ConfigIsNotLockedOnAnyOtherAnswerOrFailure) {
  for (const char* answer : {"yes", "", "no ", " no", "No", "NO", "n", "no\n"}) {
    io.answers["config is_changeable"] = answer;
    EXPECT_FALSE(channel.isConfigLocked()) << '"' << answer << '"';
  }
  io.answers.clear();
  io.takeLog();
  EXPECT_FALSE(channel.isConfigLocked());
  EXPECT_THAT(io.log, ElementsAre("get_string config is_changeable")) << "no report for a failed query";
}

TEST_F(BackendChannelTest, ConfigLockIsAskedFromOneNineOn) {
  io.answers["config is_changeable"] = "no";
  for (const auto& old : {backendVersion(1, 8, 5), backendVersion(1, 9, -2), backendVersion(0, 20, 0)}) {
    versions = old;
    EXPECT_FALSE(channel.isConfigLocked());
  }
  EXPECT_THAT(io.log, IsEmpty());
  for (const auto& recent :
       {backendVersion(1, 9, -1), backendVersion(1, 9, 0), backendVersion(1, 10, 0), backendVersion(2, 0, 0)}) {
    versions = recent;
    EXPECT_TRUE(channel.isConfigLocked());
  }
  EXPECT_EQ(io.log.size(), 4u);
}

// --- tracking available ---------------------------------------------------------------------------------------------

TEST_F(BackendChannelTest, TrackingIsAvailableUnlessTheBackendAnswersNo) {
  for (const char* answer : {"yes", "", "no ", "No", "maybe"}) {
    io.answers["tracking available"] = answer;
    EXPECT_TRUE(channel.isTrackingAvailable()) << '"' << answer << '"';
  }
  io.answers["tracking available"] = "no";
  io.takeLog();
  EXPECT_FALSE(channel.isTrackingAvailable());
  EXPECT_THAT(io.log, ElementsAre("get_string tracking available"));
}

TEST_F(BackendChannelTest, TrackingIsAvailableWhenTheBackendCannotBeAsked) {
  EXPECT_TRUE(channel.isTrackingAvailable());
  EXPECT_THAT(io.log, ElementsAre("get_string tracking available")) << "asked, and no report";
}

TEST_F(BackendChannelTest, TrackingIsAvailableWithoutAQueryBeforeZeroSeventeen) {
  io.answers["tracking available"] = "no";
  for (const auto& old : {backendVersion(0, 16, 9), backendVersion(0, 17, -2), backendVersion(0, 5, 0)}) {
    versions = old;
    EXPECT_TRUE(channel.isTrackingAvailable());
  }
  EXPECT_THAT(io.log, IsEmpty());
  for (const auto& recent :
       {backendVersion(0, 17, -1), backendVersion(0, 17, 0), backendVersion(0, 18, 0), backendVersion(1, 0, 0)}) {
    versions = recent;
    EXPECT_FALSE(channel.isTrackingAvailable());
  }
}

// --- old device format ----------------------------------------------------------------------------------------------

TEST_F(BackendChannelTest, OldDeviceFormatIsAskedWithARawCommand) {
  io.answers["korvex2 get wandgrip output_6dw"] = "korvex2 set wandgrip output_6dw yes";
  EXPECT_TRUE(channel.hasOldDeviceFormat());
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 get wandgrip output_6dw"));
  for (const char* answer : {"korvex2 set wandgrip output_6dw no", "korvex2 set wandgrip output_6dw yes ",
                             "korvex2 set wandgrip output_6dw Yes", "yes", ""}) {
    io.answers["korvex2 get wandgrip output_6dw"] = answer;
    EXPECT_FALSE(channel.hasOldDeviceFormat()) << '"' << answer << '"';
  }
}

TEST_F(BackendChannelTest, OldDeviceFormatIsNewWithoutACommandBeforeZeroSix) {
  io.answers["korvex2 get wandgrip output_6dw"] = "korvex2 set wandgrip output_6dw yes";
  for (const auto& old : {backendVersion(0, 5, 9), backendVersion(0, 6, -2)}) {
    versions = old;
    EXPECT_FALSE(channel.hasOldDeviceFormat());
  }
  EXPECT_THAT(io.log, IsEmpty());
  for (const auto& recent : {backendVersion(0, 6, -1), backendVersion(0, 6, 0), backendVersion(1, 0, 0)}) {
    versions = recent;
    EXPECT_TRUE(channel.hasOldDeviceFormat());
  }
}

namespace {

/// Writes an answer and says that the call failed.
struct AnsweringFailure : FakeChannel {
  int send_raw_command(char* answer, const char*, ...) override {
    std::snprintf(answer, 200, "%s", text.c_str());
    return 1;
  }
  int get_string(char* answer, const char*, ...) override {
    std::snprintf(answer, 200, "%s", text.c_str());
    return 1;
  }
  int get_int(int* answer, const char*, ...) override {
    *answer = 17;
    return 1;
  }
  std::string text;
};

/// Answers with characters that no terminator follows.
struct EndlessAnswers : FakeChannel {
  int get_string(char* answer, const char*, ...) override {
    std::fill_n(answer, length, 'x');
    return 0;
  }
  std::size_t length = 200;
};

}  // namespace

TEST(BackendChannelFailures, OldDeviceFormatLooksAtTheAnswerOnly) {
  AnsweringFailure io;
  io.text = "korvex2 set wandgrip output_6dw yes";
  const BackendVersions versions = backendVersion(2, 0, 0);
  EXPECT_TRUE(BackendChannel(&io, &versions).hasOldDeviceFormat());
}

TEST(BackendChannelFailures, AnswersOfFailedCallsAreNotBelieved) {
  AnsweringFailure io;
  const BackendVersions versions = backendVersion(2, 0, 0);
  BackendChannel channel(&io, &versions);
  io.text = "no";
  EXPECT_FALSE(channel.isConfigLocked());
  EXPECT_TRUE(channel.isTrackingAvailable());
  io.text = "mea";
  EXPECT_EQ(channel.measurement(), BackendChannel::Measurement::Unknown);
  io.text = "yes";
  EXPECT_FALSE(channel.isBodyCalibrated("standard", 1));
  EXPECT_FALSE(channel.isMultiUserAvailable());
  EXPECT_FALSE(channel.isMultiUserOn());
  EXPECT_FALSE(channel.isMultiUserWithHeadAvailable());
  EXPECT_FALSE(channel.isMultiUserWithHeadOn());
  EXPECT_EQ(channel.numberOfDevices(), 0);
  io.text = "korvex2 ok";
  EXPECT_EQ(channel.sendBodyTransform("standard", 1, bsMatrix::getIdentityMatrix()),
            BackendChannel::CommandResult::Failed);
}

TEST(BackendChannelFailures, AFailedDeletionWhoseAnswerIsOkIsReportedOnce) {
  AnsweringFailure io;
  io.text = "korvex2 ok";
  const BackendVersions versions = backendVersion(2, 0, 0);
  EXPECT_FALSE(BackendChannel(&io, &versions).deleteMarker("standard", 1, 1));
  EXPECT_THAT(io.log, ElementsAre(reported("Error: Unable to delete marker of body")));
}

TEST(BackendChannelFailures, TheOpeningsBodyCountKeepsWhatAFailedQueryLeft) {
  AnsweringFailure io;
  const BackendVersions versions = backendVersion(2, 0, 0);
  int count = 0;
  EXPECT_FALSE(BackendChannel(&io, &versions).numberOfBodies("standard", count));
  EXPECT_EQ(count, 17);
  EXPECT_THAT(io.log, IsEmpty()) << "no report";
}

TEST(BackendChannelFailures, AnswersWithoutATerminatorEndWithTheBuffer) {
  EndlessAnswers io;
  const BackendVersions versions = backendVersion(2, 0, 0);
  BackendChannel channel(&io, &versions);
  QByteArray name;
  EXPECT_TRUE(channel.typeName(1, name));
  EXPECT_EQ(name, QByteArray(200, 'x'));
  EXPECT_FALSE(channel.isConfigLocked());
  EXPECT_TRUE(channel.isTrackingAvailable());
  EXPECT_FALSE(channel.isBodyCalibrated("standard", 1));
  io.length = 256;
  EXPECT_TRUE(channel.bodyDescription("standard", 1, name));
  EXPECT_EQ(name, QByteArray(255, 'x'));
}

// --- measurement and tracking ---------------------------------------------------------------------------------------

TEST_F(BackendChannelTest, MeasurementRunsOnTheExactAnswerMea) {
  io.answers["status active"] = "mea";
  EXPECT_EQ(channel.measurement(), BackendChannel::Measurement::Running);
  EXPECT_THAT(io.log, ElementsAre("get_string status active"));
  for (const char* answer : {"cal", "", "mea ", "Mea", "me", "meas"}) {
    io.answers["status active"] = answer;
    EXPECT_EQ(channel.measurement(), BackendChannel::Measurement::Stopped) << '"' << answer << '"';
  }
}

TEST_F(BackendChannelTest, MeasurementIsUnknownWhenTheBackendCannotBeAsked) {
  EXPECT_EQ(channel.measurement(), BackendChannel::Measurement::Unknown);
  EXPECT_THAT(io.takeLog(), ElementsAre("get_string status active")) << "reporting it is up to the caller";
  channel.reportMeasurementFailure();
  EXPECT_THAT(io.log, ElementsAre(reported("Error: Unable to check mea status")));
}

TEST_F(BackendChannelTest, TrackingIsStartedAndStoppedWithoutLookingAtTheAnswer) {
  channel.startTracking();
  channel.stopTracking();
  io.answers["korvex2 tracking start"] = "korvex2 err";
  channel.startTracking();
  EXPECT_THAT(io.log, ElementsAre("send_raw_command korvex2 tracking start", "send_raw_command korvex2 tracking stop",
                                  "send_raw_command korvex2 tracking start"));
}

TEST_F(BackendChannelTest, OutputIsActivatedOnTheMonitorChannel) {
  channel.activateOutput("6dw");
  channel.activateOutput("6dw2");
  EXPECT_THAT(io.log, ElementsAre("set_value output active chmon 6dw yes", "set_value output active chmon 6dw2 yes"))
      << "a failure is not reported";
}

TEST_F(BackendChannelTest, LiveLinesAreSubscribedByKind) {
  Listener listener;
  channel.subscribe("6d", &listener);
  channel.subscribe("6dw2", &listener);
  using Subscription = std::pair<std::string, Requester*>;
  EXPECT_THAT(io.requesters, ElementsAre(Subscription("6d", &listener), Subscription("6dw2", &listener)));
  channel.unsubscribe("6d", &listener);
  EXPECT_THAT(io.requesters, ElementsAre(Subscription("6dw2", &listener)));
  EXPECT_THAT(io.log, ElementsAre("register_requester 6d", "register_requester 6dw2", "unregister_requester 6d"));
}

// --- messages -------------------------------------------------------------------------------------------------------

TEST_F(BackendChannelTest, ReportsGoToTheHostsStandardReceiver) {
  channel.report("Error: anything");
  channel.reportWrongBodyId();
  EXPECT_THAT(io.log, ElementsAre("send_message standard Korvex2 1 Error: anything",
                                  "send_message standard Korvex2 1 Error: Wrong body ID. Cannot discard changes"));
}

TEST_F(BackendChannelTest, ReopenIsSentInTheModulesName) {
  channel.sendReopen("BodyCalibrationModule");
  EXPECT_THAT(io.log, ElementsAre("send_message BodyCalibrationModule BodyAdjustmentModule 1 reopen"));
}

TEST_F(BackendChannelTest, TheReceiverIsRegisteredUnderTheModulesName) {
  Receiver receiver;
  channel.registerReceiver(&receiver);
  EXPECT_EQ(io.receivers["BodyAdjustmentModule"], &receiver);
  channel.unregisterReceiver(&receiver);
  EXPECT_EQ(io.receivers.count("BodyAdjustmentModule"), 0u);
  EXPECT_THAT(io.log, ElementsAre("register_message_receiver BodyAdjustmentModule",
                                  "unregister_message_receiver BodyAdjustmentModule"));
}

// --- without a host -------------------------------------------------------------------------------------------------

TEST(BackendChannelAlone, WithoutVersionsEveryGateFailsAndTheRestWorks) {
  FakeChannel io;
  io.answers["config is_changeable"] = "no";
  io.answers["tracking available"] = "no";
  io.answers["status active"] = "mea";
  BackendChannel channel(&io, nullptr);
  EXPECT_FALSE(channel.passesGate(0, 0));
  EXPECT_FALSE(channel.isConfigLocked());
  EXPECT_TRUE(channel.isTrackingAvailable());
  EXPECT_FALSE(channel.hasOldDeviceFormat());
  EXPECT_FALSE(channel.canDeleteMarkers());
  EXPECT_THAT(io.log, IsEmpty());
  EXPECT_EQ(channel.measurement(), BackendChannel::Measurement::Running);
}

TEST(BackendChannelAlone, WithoutAChannelEveryCallIsNeutral) {
  const BackendVersions versions = backendVersion(2, 0, 0);
  for (const BackendVersions* given : {&versions, static_cast<const BackendVersions*>(nullptr)}) {
    BackendChannel channel(nullptr, given);
    Receiver receiver;
    Listener listener;
    channel.report("Error: nobody hears");
    channel.sendReopen("Other");
    channel.registerReceiver(&receiver);
    channel.unregisterReceiver(&receiver);
    channel.subscribe("6d", &listener);
    channel.unsubscribe("6d", &listener);
    channel.startTracking();
    channel.stopTracking();
    channel.activateOutput("6dw");
    EXPECT_FALSE(channel.isConfigLocked());
    EXPECT_TRUE(channel.isTrackingAvailable());
    EXPECT_FALSE(channel.hasOldDeviceFormat());
    EXPECT_EQ(channel.measurement(), BackendChannel::Measurement::Unknown);
    int count = 5;
    EXPECT_FALSE(channel.numberOfBodies("standard", count));
    EXPECT_FALSE(channel.numberOfTypes(count));
    EXPECT_FALSE(channel.numberOfListedBodies("standard", count));
    EXPECT_FALSE(channel.numberOfMarkers("standard", 1, count));
    EXPECT_EQ(count, 5);
    QByteArray text = "as before";
    EXPECT_FALSE(channel.typeName(1, text));
    EXPECT_FALSE(channel.typeDescription("standard", text));
    EXPECT_FALSE(channel.targetType("standard", 1, text));
    EXPECT_FALSE(channel.bodyDescription("standard", 1, text));
    EXPECT_EQ(text, "as before");
    EXPECT_FALSE(channel.isBodyCalibrated("standard", 1));
    bsVector position(1, 2, 3);
    Emission emission;
    EXPECT_FALSE(channel.markerPosition("standard", 1, 1, position));
    EXPECT_EQ(position.y, 2.0);
    EXPECT_FALSE(channel.markerEmission("standard", 1, 1, emission));
    EXPECT_FALSE(channel.setNumberOfMarkers("standard", 1, 4));
    EXPECT_FALSE(channel.setMarkerPosition("standard", 1, 1, position));
    EXPECT_FALSE(channel.setMarkerEmission("standard", 1, 1, emission));
    EXPECT_EQ(channel.sendBodyTransform("standard", 1, bsMatrix::getIdentityMatrix()),
              BackendChannel::CommandResult::Failed);
    EXPECT_FALSE(channel.deleteMarker("standard", 1, 1));
    EXPECT_FALSE(channel.isMultiUserAvailable() || channel.isMultiUserOn());
    EXPECT_FALSE(channel.isMultiUserWithHeadAvailable() || channel.isMultiUserWithHeadOn());
    EXPECT_FALSE(channel.setMultiUser(true));
    EXPECT_FALSE(channel.setMultiUserWithHead(false));
    EXPECT_EQ(channel.numberOfDevices(), 0);
  }
}
