// Whole sessions of an operator, each compared as one ordered list of what the backend heard.
#include "dialogtest.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

class DialogSession : public DialogTest {};

/// What an opening asks, written out once: three standard bodies would only repeat the second one.
const Log openingLog = {"get_string config is_changeable",
                        "get_string tracking available",
                        "get_int body number_of_bodies standard",
                        "get_int body number_of_bodies wandgrip",
                        "get_string wandgrip multiuser_available",
                        "get_string wandgrip multiuser",
                        "get_string wandgrip multiuser_with_head_available",
                        "get_string wandgrip multiuser_with_head",
                        "get_string wandgrip multiuser_available",
                        "get_string wandgrip multiuser",
                        "get_int body number_of_types",
                        "get_string body type t01",
                        "get_int body number_of_bodies standard",
                        "get_string body type_desc standard",
                        "get_string body calibrated standard b01",
                        "get_string body target_type standard b01",
                        "get_string body desc standard b01",
                        "get_string body calibrated standard b02",
                        "get_string body target_type standard b02",
                        "get_string body desc standard b02",
                        "get_string body calibrated standard b03",
                        "get_string body target_type standard b03",
                        "get_string body desc standard b03",
                        "get_string body calibrated standard b04",
                        "get_string body target_type standard b04",
                        "get_string body desc standard b04",
                        "get_string body type t02",
                        "get_int body number_of_bodies wandgrip",
                        "get_string body type_desc wandgrip",
                        "get_string body calibrated wandgrip b01",
                        "get_string body target_type wandgrip b01",
                        "get_string body desc wandgrip b01",
                        "get_string wandgrip multiuser_with_head_available",
                        "get_string wandgrip multiuser_with_head",
                        "send_raw_command korvex2 get wandgrip output_6dw",
                        "register_requester 6d",
                        "register_requester 6dw2",
                        "set_value output active chmon 6dw2 yes",
                        "send_raw_command korvex2 tracking start",
                        "get_string status active"};

const Log trackingStops = {"send_raw_command korvex2 tracking stop"};
const Log trackingStarts = {"send_raw_command korvex2 tracking start"};

TEST_F(DialogSession, OpeningAndCancellingAsksAndChangesNothing) {
  const int result = run([this] {
    EXPECT_THAT(heard(), ElementsAreArray(openingLog));
    click("cancel_button");
    EXPECT_FALSE(dialog->isVisible());
  });
  EXPECT_EQ(result, QDialog::Rejected);
  EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
}

TEST_F(DialogSession, OriginToAMarkerAppliedAndConfirmed) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  Log all;
  const int result = run([&] {
    choose(cupRow);
    select({1});
    click("set_origin_button");
    click("apply_button");
    click("ok_button");
  });
  EXPECT_EQ(result, QDialog::Accepted);
  EXPECT_THAT(heard(), ElementsAreArray(joined({openingLog,
                                                fetchOf("standard", 1),
                                                trackingStops,
                                                {transformOf("standard", 1, {-110, -25, -32})},
                                                trackingStarts,
                                                fetchOf("standard", 1),
                                                hideLog()})));
  expectPoints(backend.body("standard", 1).markers, seenFrom({110, 25, 32}, before));
}

TEST_F(DialogSession, OriginAppliedAnotherBodyTurnedCancelledWithNoThenYes) {
  const std::vector<Point> cup = backend.body("standard", 1).markers;
  const std::vector<Point> pen = backend.body("wandgrip", 1).markers;
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::No);
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  const int result = run([&] {
    choose(cupRow);
    select({1});
    click("set_origin_button");
    click("apply_button");
    choose(penRow);
    enter("body_ori_xyzWidget", 2, "90");
    EXPECT_THAT(heard(), ElementsAreArray(joined({openingLog,
                                                  fetchOf("standard", 1),
                                                  trackingStops,
                                                  {transformOf("standard", 1, {-110, -25, -32})},
                                                  trackingStarts,
                                                  fetchOf("standard", 1),
                                                  fetchOf("wandgrip", 1)})));
    click("cancel_button");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_TRUE(canvas().isBodyModified());
    EXPECT_EQ(bodies().currentIndex(), penRow);
    EXPECT_THAT(heard(), ElementsAre());
    click("cancel_button");
  });
  EXPECT_EQ(result, QDialog::Rejected);
  EXPECT_THAT(heard(), ElementsAreArray(joined({{transformOf("standard", 1, {110, 25, 32})}, hideLog()})));
  expectPoints(backend.body("standard", 1).markers, cup);
  expectPoints(backend.body("wandgrip", 1).markers, pen);
}

TEST_F(DialogSession, AModifiedBodyIsWrittenOnTheWayToTheNextWhenTheOperatorSaysYes) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  const Point centre = meanOf(before);
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::Yes);
  const int result = run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    choose(penRow);
    click("ok_button");
  });
  EXPECT_EQ(result, QDialog::Accepted);
  EXPECT_THAT(heard(), ElementsAreArray(joined({openingLog,
                                                fetchOf("standard", 1),
                                                {transformOf("standard", 1, {-centre[0], -centre[1], -centre[2]})},
                                                fetchOf("wandgrip", 1),
                                                hideLog()})));
  expectPoints(backend.body("standard", 1).markers, seenFrom(centre, before));
}

TEST_F(DialogSession, AModifiedBodyIsLeftAsItWasWhenTheOperatorSaysNo) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::No);
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    choose(penRow);
    click("cancel_button");  // nothing is left to discard, so nothing is asked
  });
  EXPECT_THAT(heard(),
              ElementsAreArray(joined({openingLog, fetchOf("standard", 1), fetchOf("wandgrip", 1), hideLog()})));
  expectPoints(backend.body("standard", 1).markers, before);
}

TEST_F(DialogSession, OkWritesTheModifiedBodyWithoutAskingAndWithoutStoppingTracking) {
  const std::vector<Point> before = backend.body("wandgrip", 1).markers;
  run([&] {
    choose(penRow);
    enter("body_pos_xyzWidget", 0, "12.5");
    click("ok_button");
  });
  EXPECT_THAT(heard(),
              ElementsAreArray(joined(
                  {openingLog, fetchOf("wandgrip", 1), {transformOf("wandgrip", 1, {-12.5, 0, 0})}, hideLog()})));
  expectPoints(backend.body("wandgrip", 1).markers, seenFrom({12.5, 0, 0}, before));
}

TEST_F(DialogSession, MultiUserModeIsOffWhileTheDialogIsOpenAndRestoredAtItsEnd) {
  backend.multiUser = true;
  backend.withHead = true;
  for (const char* const button : {"ok_button", "cancel_button"}) {
    SCOPED_TRACE(button);
    run([&] {
      const Log opening = heard();
      const Log off = {"get_string wandgrip multiuser_available",
                       "get_string wandgrip multiuser",
                       "get_string wandgrip multiuser_with_head_available",
                       "get_string wandgrip multiuser_with_head",
                       "set_value wandgrip multiuser_with_head no",
                       "set_value wandgrip multiuser no",
                       "get_string wandgrip multiuser_available",
                       "get_string wandgrip multiuser",
                       "get_int body number_of_types"};
      ASSERT_GE(opening.size(), 13U);
      EXPECT_THAT(Log(opening.begin() + 4, opening.begin() + 13), ElementsAreArray(off));
      EXPECT_FALSE(backend.multiUser);
      EXPECT_FALSE(backend.withHead);
      click(button);
    });
    EXPECT_THAT(heard(),
                ElementsAreArray(joined(
                    {{"set_value wandgrip multiuser yes", "set_value wandgrip multiuser_with_head yes"}, hideLog()})));
    EXPECT_TRUE(backend.multiUser);
    EXPECT_TRUE(backend.withHead);
  }
}

TEST_F(DialogSession, AnotherModuleIsToldToReopenAfterTheDialogIsGone) {
  for (const char* const button : {"ok_button", "cancel_button"}) {
    SCOPED_TRACE(button);
    runOnRequest("GUI Calibration", "wandgrip|1", [&] {
      const Log opening = heard();
      const Log fetch = fetchOf("wandgrip", 1);
      // The body is loaded once the list is filled, before the dialog is shown.
      ASSERT_GT(opening.size(), 32 + fetch.size());
      EXPECT_THAT(Log(opening.begin() + 32, opening.begin() + 32 + static_cast<std::ptrdiff_t>(fetch.size())),
                  ElementsAreArray(fetch));
      click(button);
    });
    EXPECT_THAT(heard(),
                ElementsAreArray(joined({hideLog(), {"send_message GUI Calibration BodyAdjustmentModule 1 reopen"}})));
  }
  run([&] { click("ok_button"); });  // an opening from the menu is nobody else's
  EXPECT_THAT(backend.io.logged("send_message"), ElementsAre());
}

TEST_F(DialogSession, AQuestionTakenBackKeepsTheRequestAlive) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::No);
  runOnRequest("Host", "standard|1", [&] {
    click("set_origin_cog_button");
    click("cancel_button");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_THAT(backend.io.logged("send_message"), ElementsAre());
    click("ok_button");
  });
  EXPECT_THAT(backend.io.logged("send_message"), ElementsAre("send_message Host BodyAdjustmentModule 1 reopen"));
}

}  // namespace
