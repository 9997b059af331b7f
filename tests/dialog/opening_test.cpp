// How the dialog opens and shows itself: what it asks first, what it tells the operator, what it starts with.
#include <QTimer>

#include "dialogtest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr const char* trackingMessage = "<b><font color=red>Tracking is not available!</font></b>";
constexpr const char* multiUserMessage = "<b><font color=red>Multi user should be disabled!</font></b>";

const std::vector<const char*> bodyControls = {"pushButton_due_to_body",
                                               "apply_button",
                                               "body_pos_xyzWidget",
                                               "body_ori_xyzWidget",
                                               "undo_button",
                                               "redo_button",
                                               "set_origin_cog_button",
                                               "pushButton_deleteMarker"};
const std::vector<const char*> viewControls = {"reset_view_button", "pos_xyzWidget", "ori_xyzWidget"};
const std::vector<const char*> roomControls = {"pushButton_due_to_room", "pushButton_due_to_room_0",
                                               "adjust_axes_to_room_button"};

class Opening : public DialogTest {
 protected:
  void setVersion(int major, int minor, int revision = 0) {
    backend.versions.backend_major = major;
    backend.versions.backend_minor = minor;
    backend.versions.backend_revision = revision;
  }
  std::vector<bool> pagesEnabled() {
    auto* const tabs = find<QTabWidget>("tabWidget");
    return {tabs->widget(0)->isEnabled(), tabs->widget(1)->isEnabled(), tabs->widget(2)->isEnabled()};
  }
};

TEST_F(Opening, WithoutARequestNoBodyIsShownAndTheSelectorHasTheFocus) {
  run([&] {
    EXPECT_EQ(bodies().count(), 5);
    EXPECT_EQ(bodies().currentIndex(), -1);
    EXPECT_TRUE(bodies().isEnabled());
    EXPECT_TRUE(bodies().hasFocus());
    EXPECT_FALSE(canvas().isBodyLoaded());
    EXPECT_EQ(text("loadBody"), "Bod&y");
    EXPECT_EQ(find<QLabel>("body_icon")->pixmap(Qt::ReturnByValue).isNull(), true);
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_THAT(disabledOf(viewControls), IsEmpty());
    EXPECT_EQ(disabledOf(roomControls).size(), roomControls.size());
    EXPECT_THAT(pagesEnabled(), ElementsAre(true, true, true));
    EXPECT_FALSE(find("error_label")->isVisible());
    EXPECT_FALSE(enabled("online_checkbox"));
    EXPECT_FALSE(enabled("set_origin_button"));
    EXPECT_FALSE(enabled("set_axis_button"));
    EXPECT_TRUE(enabled("ok_button"));
    EXPECT_TRUE(enabled("cancel_button"));
    EXPECT_TRUE(enabled("help_button"));
  });
}

TEST_F(Opening, TheSelectorListsBodiesAsTheBackendDescribesThem) {
  run([&] {
    for (int row = 0; row < 5; ++row) {
      const ScriptedBody& body = backend.bodies[static_cast<std::size_t>(row)];
      EXPECT_EQ(bodies().itemText(row).toStdString(), body.text());
      EXPECT_EQ(bodies().itemData(row).toString().toStdString(), body.data());
      EXPECT_TRUE(bodies().itemIcon(row).isNull());
    }
    EXPECT_EQ(bodies().itemText(cupRow), "Cup (Standard body 01)");
    EXPECT_EQ(bodies().itemText(stickRow), "Standard body 03");
    EXPECT_EQ(bodies().itemData(tubeRow).toString(), "standard|4|calibrated|tt_long_cyl");
  });
}

TEST_F(Opening, FillingTheSelectorLoadsNoBody) {
  run([&] {
    for (const std::string& entry : heard()) {
      EXPECT_THAT(entry, Not(StartsWith("get_int body number_of_marker")));
      EXPECT_THAT(entry, Not(StartsWith("get_reals")));
    }
  });
}

TEST_F(Opening, ABodyThatTheLastClosingLeftLoadedIsNotShownAgain) {
  run([&] {
    choose(penRow);
    click("ok_button");
  });
  run([&] {
    EXPECT_FALSE(canvas().isBodyLoaded());
    EXPECT_EQ(bodies().currentIndex(), -1);
    for (const char* const table : {"tableWidget_data", "tableWidget_emissions"}) {
      for (const std::string& row : cells(table)) {
        EXPECT_EQ(row.find_first_not_of('|'), std::string::npos) << row;
      }
    }
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
  });
}

TEST_F(Opening, ALabelOfTheLastSessionIsNotShownAgain) {
  run([&] {
    choose(handRow);
    EXPECT_EQ(text("loadBody"), "<b><font color=red>Bod&y not calibrated!</font></b>");
    click("cancel_button");
  });
  run([&] {
    EXPECT_EQ(text("loadBody"), "Bod&y");
    EXPECT_TRUE(find<QLabel>("body_icon")->pixmap(Qt::ReturnByValue).isNull());
  });
}

TEST_F(Opening, ARequestedBodyIsShownAndCannotBeExchanged) {
  runOnRequest("Host", "standard|1", [&] {
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_FALSE(bodies().isEnabled());
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_THAT(disabledOf({"pushButton_due_to_body", "body_pos_xyzWidget", "body_ori_xyzWidget",
                            "set_origin_cog_button", "reset_view_button", "pos_xyzWidget", "ori_xyzWidget"}),
                IsEmpty());
    EXPECT_FALSE(enabled("apply_button"));
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    EXPECT_EQ(disabledOf(roomControls).size(), roomControls.size());
    click("ok_button");
  });
  run([&] { EXPECT_TRUE(bodies().isEnabled()); });
}

TEST_F(Opening, ARequestForABodyThatDoesNotExistShowsNone) {
  for (const char* const key : {"standard|9", "", "Standard|1", "standard|", "standard|1|calibrated|tt_st"}) {
    SCOPED_TRACE(key);
    runOnRequest("Host", key, [&] {
      EXPECT_EQ(bodies().currentIndex(), -1);
      EXPECT_FALSE(canvas().isBodyLoaded());
      EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    });
  }
}

TEST_F(Opening, ARequestNamesTheBodyByTheBeginningOfItsEntryUpToASeparator) {
  for (int number = 5; number <= 12; ++number) {
    backend.add({"standard", number, "Extra", {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}}, {}});
  }
  runOnRequest("Host", "standard|12",
               [&] { EXPECT_EQ(bodies().currentData().toString(), "standard|12|calibrated|tt_std"); });
  runOnRequest("Host", "standard|1",
               [&] { EXPECT_EQ(bodies().currentData().toString(), "standard|1|calibrated|tt_std"); });
  runOnRequest("Host", "wandgrip",
               [&] { EXPECT_EQ(bodies().currentData().toString(), "wandgrip|1|calibrated|tt_std"); });
}

TEST_F(Opening, ASecondRequestWhileOpenDoesNotNestASecondRun) {
  run([&] {
    choose(cupRow);
    heard();
    QTimer::singleShot(300, dialog.get(), [] { ADD_FAILURE() << "a second modal run began"; });
    dialog->update_and_exec();
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_TRUE(canvas().isBodyLoaded());
    dialog->onReceiveOpenBodyAdjustmentDialog("Host", "wandgrip|1");
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    click("ok_button");
    EXPECT_FALSE(dialog->isVisible());
  });
}

TEST_F(Opening, ALockedConfigurationShowsTheLockAndDisablesEveryPage) {
  backend.changeable = false;
  QWidget parent;
  QPixmap red(16, 16);
  red.fill(Qt::red);
  parent.setWindowIcon(red);
  dialog = std::make_unique<BodyAdjustmentDialog>(&backend.io, &parent, &backend.versions);
  run([&] {
    EXPECT_EQ(dialog->windowIcon().pixmap(16, 16).toImage(), QIcon(":/lock.png").pixmap(16, 16).toImage());
    EXPECT_THAT(pagesEnabled(), ElementsAre(false, false, false));
    choose(cupRow);
    EXPECT_TRUE(canvas().isBodyLoaded());
    EXPECT_THAT(pagesEnabled(), ElementsAre(false, false, false));
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_THAT(disabledOf(viewControls), IsEmpty());
    select({0, 1});
    EXPECT_FALSE(enabledItself("set_origin_button"));
    EXPECT_FALSE(enabledItself("set_axis_button"));
    for (const char* const control : bodyControls) {
      EXPECT_FALSE(enabledItself(control)) << control;
    }
  });
  backend.changeable = true;
  run([&] {
    EXPECT_EQ(dialog->windowIcon().pixmap(16, 16).toImage(), red.toImage());
    EXPECT_THAT(pagesEnabled(), ElementsAre(true, true, true));
  });
  dialog.reset();
}

TEST_F(Opening, ALockedConfigurationLetsARequestedBodyBeSeenOnly) {
  backend.changeable = false;
  runOnRequest("Host", "standard|1", [&] {
    EXPECT_TRUE(canvas().isBodyLoaded());
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_THAT(pagesEnabled(), ElementsAre(false, false, false));
  });
}

TEST_F(Opening, AFailedLockQueryMeansNotLocked) {
  backend.changeable = false;
  backend.fail("config is_changeable");
  run([&] {
    EXPECT_THAT(pagesEnabled(), ElementsAre(true, true, true));
    EXPECT_THAT(backend.io.reports(), IsEmpty());
  });
}

TEST_F(Opening, AnUnavailableTrackingCanBeReadWhileTheDialogIsOpen) {
  backend.trackingAvailable = false;
  backend.measuring = true;  // somebody else's measurement
  run([&] {
    EXPECT_EQ(text("error_label"), trackingMessage);
    EXPECT_TRUE(find("error_label")->isVisible());
    choose(cupRow);
    EXPECT_EQ(text("error_label"), trackingMessage);
    EXPECT_TRUE(find("error_label")->isVisible());
  });
}

TEST_F(Opening, WithoutTrackingNoTrackingCommandIsSent) {
  backend.trackingAvailable = false;
  backend.measuring = true;
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    click("apply_button");
    click("ok_button");
  });
  for (const std::string& entry : heard()) {
    EXPECT_THAT(entry, Not(StartsWith("send_raw_command korvex2 tracking")));
  }
  EXPECT_TRUE(backend.measuring);
}

TEST_F(Opening, EnablingTheDialogEmptiesTheErrorAndDisablingShowsIt) {
  make();
  dialog->enable_dialog(false);
  EXPECT_EQ(text("error_label"), trackingMessage);
  EXPECT_FALSE(find("error_label")->isHidden());
  EXPECT_FALSE(enabled("reset_view_button"));
  dialog->enable_dialog(true);
  EXPECT_EQ(text("error_label"), "");
  EXPECT_TRUE(find("error_label")->isHidden());
  EXPECT_TRUE(enabled("reset_view_button"));
}

TEST_F(Opening, MultiUserModeThatStaysOnIsShown) {
  backend.multiUser = true;
  backend.multiUserStuck = true;
  run([&] {
    EXPECT_EQ(text("error_label"), multiUserMessage);
    EXPECT_TRUE(find("error_label")->isVisible());
    EXPECT_EQ(bodies().count(), 5);
  });
}

TEST_F(Opening, MultiUserModeWithoutDevicesIsNoneOfTheOperatorsBusiness) {
  backend.multiUser = true;
  backend.multiUserStuck = true;
  backend.devices = 0;
  run([&] { EXPECT_FALSE(find("error_label")->isVisible()); });
}

TEST_F(Opening, BothWarningsCanBeReadTogether) {
  backend.multiUser = true;
  backend.multiUserStuck = true;
  backend.trackingAvailable = false;
  run([&] {
    EXPECT_THAT(text("error_label"), testing::HasSubstr(multiUserMessage));
    EXPECT_THAT(text("error_label"), testing::HasSubstr(trackingMessage));
    EXPECT_TRUE(find("error_label")->isVisible());
  });
}

TEST_F(Opening, AnOldBackendIsNotAskedWhatItDoesNotKnow) {
  setVersion(0, 5, 9);
  run([&] {
    const Log log = heard();
    EXPECT_THAT(log, Not(Contains("get_string config is_changeable")));
    EXPECT_THAT(log, Not(Contains("get_string tracking available")));
    EXPECT_THAT(log, Not(Contains("send_raw_command korvex2 get wandgrip output_6dw")));
    EXPECT_THAT(log, Not(Contains(StartsWith("get_string body target_type"))));
    EXPECT_THAT(log, Contains("register_requester 6dw2"));
    EXPECT_THAT(log, Contains("send_raw_command korvex2 tracking start"));
    EXPECT_EQ(bodies().itemData(tubeRow).toString(), "standard|4|calibrated|tt_std");
  });
}

TEST_F(Opening, AVersionExactlyAtTheGateCountsUnlessItsRevisionIsBelowUnknown) {
  for (const int revision : {-1, 0, 3}) {
    setVersion(1, 9, revision);
    run([&] { EXPECT_THAT(heard(), Contains("get_string config is_changeable")) << revision; });
  }
  setVersion(1, 9, -2);
  run([&] { EXPECT_THAT(heard(), Not(Contains("get_string config is_changeable"))); });
}

TEST_F(Opening, DevicesOfTheOldFormatAreFollowedByTheirOldLines) {
  backend.oldDeviceFormat = true;
  run([&] {
    EXPECT_THAT(heard(), testing::IsSupersetOf({"register_requester 6d", "register_requester 6dw",
                                                "set_value output active chmon 6dw yes"}));
    click("ok_button");
  });
  const Log log = heard();
  EXPECT_THAT(Log(log.end() - 2, log.end()), ElementsAre("unregister_requester 6d", "unregister_requester 6dw"));
  EXPECT_TRUE(backend.io.requesters.empty());
}

TEST_F(Opening, TheFormatIsTakenAnewOnEveryShow) {
  backend.oldDeviceFormat = true;
  run([&] { click("ok_button"); });
  backend.oldDeviceFormat = false;
  heard();
  run([&] { EXPECT_THAT(heard(), Contains("register_requester 6dw2")); });
}

TEST_F(Opening, AMeasurementThatCannotBeAskedForIsReportedOnShowOnly) {
  backend.fail("status active");
  run([&] {
    EXPECT_THAT(backend.io.reports(), ElementsAre("Error: Unable to check mea status"));
    choose(cupRow);
    EXPECT_FALSE(enabled("online_checkbox"));
    heard();
    click("ok_button");
  });
  EXPECT_THAT(heard(), ElementsAre("get_string status active", "unregister_requester 6d", "unregister_requester 6dw2"));
}

TEST_F(Opening, AMeasurementThatDoesNotRunIsNotStopped) {
  backend.startsMeasuring = false;
  run([&] {
    heard();
    click("ok_button");
  });
  EXPECT_THAT(heard(), ElementsAre("get_string status active", "unregister_requester 6d", "unregister_requester 6dw2"));
}

TEST_F(Opening, FollowingTheLivePoseEndsWithTheSession) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    EXPECT_TRUE(canvas().isOnline());
    click("ok_button");
  });
  run([&] {
    EXPECT_FALSE(canvas().isOnline());
    EXPECT_FALSE(find<QAbstractButton>("online_checkbox")->isChecked());
    choose(cupRow);
    EXPECT_FALSE(canvas().isOnline());
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_EQ(disabledOf(roomControls).size(), roomControls.size());
  });
}

TEST_F(Opening, FailedBodyCountsLeaveASessionThatCanBeAppliedAndDiscarded) {
  const std::vector<Point> before = backend.body("standard", 3).markers;
  for (const char* const leftBehind : {"", "-5", "2000000000", "1"}) {
    SCOPED_TRACE(leftBehind);
    backend.countFromZero();
    backend.disturb = [leftBehind](int place, const std::string&, const std::string&) {
      return place == 2 || place == 3 ? std::optional<FakeChannel::Answer>({1, leftBehind}) : std::nullopt;
    };
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    run([&] {
      choose(stickRow);
      click("set_origin_cog_button");
      click("apply_button");
      expectPoints(backend.body("standard", 3).markers, seenFrom(meanOf(before), before));
      click("cancel_button");
    });
    expectPoints(backend.body("standard", 3).markers, before);
    EXPECT_THAT(backend.io.reports(), IsEmpty());
  }
}

TEST_F(Opening, ADialogWithoutAChannelOpensEmpty) {
  dialog = std::make_unique<BodyAdjustmentDialog>(nullptr, nullptr, nullptr);
  run([&] {
    EXPECT_EQ(bodies().count(), 0);
    click("ok_button");
  });
}

TEST_F(Opening, TheRefreshTimerRunsWhileTheDialogIsShown) {
  make();
  const auto timers = dialog->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
  ASSERT_EQ(timers.size(), 1);
  EXPECT_EQ(timers.first()->interval(), 30);
  EXPECT_FALSE(timers.first()->isSingleShot());
  EXPECT_FALSE(timers.first()->isActive());
  run([&] {
    EXPECT_TRUE(timers.first()->isActive());
    for (const int row : {0, 1, 2, 3, 4, -1}) {
      choose(row);
      EXPECT_TRUE(timers.first()->isActive()) << row;
    }
    choose(cupRow);
    click("set_origin_cog_button");
    click("apply_button");
    EXPECT_TRUE(timers.first()->isActive());
    dialog->update_current_body(99);
    EXPECT_TRUE(timers.first()->isActive());
    dialog->done(0);
    EXPECT_FALSE(timers.first()->isActive());
  });
}

TEST_F(Opening, TheHostsShutdownEndsMessagesAndRefreshing) {
  make();
  EXPECT_EQ(backend.io.receivers.count("BodyAdjustmentModule"), 1U);
  run([&] {
    heard();
    dialog->about_to_exit();
    EXPECT_THAT(heard(), ElementsAre("unregister_message_receiver BodyAdjustmentModule"));
    EXPECT_TRUE(backend.io.receivers.empty());
    EXPECT_FALSE(dialog->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly)->isActive());
  });
}

TEST_F(Opening, ADialogThatIsDestroyedWhileOpenLeavesNothingBehind) {
  make();
  QTimer::singleShot(0, [&] {  // the host ends without closing the dialog first
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(backend.io.requesters.size(), 2U);
    EXPECT_TRUE(backend.measuring);
    dialog.reset();
  });
  EXPECT_EQ(dialog->update_and_exec(), QDialog::Rejected);
  EXPECT_EQ(dialog, nullptr);
  EXPECT_TRUE(backend.io.requesters.empty());
  EXPECT_FALSE(backend.measuring);
}

TEST_F(Opening, TheReceiverIsRegisteredBeforeAnythingElseIsDone) {
  dialog = std::make_unique<BodyAdjustmentDialog>(&backend.io, nullptr, &backend.versions);
  EXPECT_THAT(heard(), ElementsAre("register_message_receiver BodyAdjustmentModule"));
  EXPECT_FALSE(enabled("online_checkbox"));
}

}  // namespace
