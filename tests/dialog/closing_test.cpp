// Closing the dialog: OK, the ways to cancel, and what is discarded.
#include <QMessageBox>

#include "dialogtest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class Closing : public DialogTest {};

TEST_F(Closing, CancelWithoutAChangeClosesAtOnce) {
  EXPECT_EQ(run([&] {
              choose(cupRow);
              click("cancel_button");
            }),
            QDialog::Rejected);
  EXPECT_FALSE(canvas().isBodyLoaded());
}

TEST_F(Closing, EscapeAndTheCloseBoxAreCancel) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::No);
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  EXPECT_EQ(run([&] {
              choose(cupRow);
              enter("body_pos_xyzWidget", 0, "14");
              dialog->close();
              EXPECT_TRUE(dialog->isVisible());
              press(Qt::Key_Escape);
              EXPECT_FALSE(dialog->isVisible());
            }),
            QDialog::Rejected);
}

TEST_F(Closing, TheQuestionBeforeChangesAreDiscardedHasNoAsDefault) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::No);
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    click("cancel_button");
  });
  ASSERT_EQ(watch.boxes().size(), 1U);
  EXPECT_EQ(watch.boxes()[0].buttons, QMessageBox::Yes | QMessageBox::No);
  EXPECT_EQ(watch.boxes()[0].defaultButton, QMessageBox::No);
  EXPECT_EQ(watch.boxes()[0].icon, QMessageBox::Warning);
}

TEST_F(Closing, NoChangesNothingAnywhere) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::No);
  run([&] {
    choose(penRow);
    enter("body_ori_xyzWidget", 1, "20");
    click("apply_button");
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    select({2});
    const auto cellsBefore = cells("tableWidget_data");
    heard();
    click("cancel_button");
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_EQ(cells("tableWidget_data"), cellsBefore);
    EXPECT_TRUE(canvas().isBodyModified());
    EXPECT_EQ(canvas().getSelection().size(), 1U);
    EXPECT_TRUE(enabled("apply_button"));
    EXPECT_TRUE(enabled("undo_button"));
  });
}

TEST_F(Closing, AnUnappliedChangeIsDiscardedWithoutACommand) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    heard();
    click("cancel_button");
  });
  EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
  expectPoints(backend.body("standard", 1).markers, before);
}

TEST_F(Closing, SeveralAppliesWithTurnsAreDiscardedToTheValuesOfTheBackend) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    enter("body_ori_xyzWidget", 2, "37");
    click("apply_button");
    enter("body_ori_xyzWidget", 0, "61");
    enter("body_pos_xyzWidget", 1, "-25");
    click("apply_button");
    select({3, 5});
    click("set_origin_button");
    click("apply_button");
    heard();
    click("cancel_button");
    EXPECT_THAT(changesHeard().front(), StartsWith("send_raw_command korvex2 body transform standard b01 "));
  });
  expectPoints(backend.body("standard", 1).markers, before);
}

TEST_F(Closing, BodiesOfBothTypesWithTheSameNumberAreDiscardedEachByItsOwn) {
  const std::vector<Point> cup = backend.body("standard", 1).markers;
  const std::vector<Point> pen = backend.body("wandgrip", 1).markers;
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(penRow);
    enter("body_ori_xyzWidget", 2, "90");
    click("apply_button");
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    click("apply_button");
    heard();
    click("cancel_button");
  });
  EXPECT_THAT(
      changesHeard(),
      ElementsAre(transformOf("standard", 1, {14, 0, 0}), transformOf("wandgrip", 1, {0, 0, 0}, turn(2, 90)),
                  "send_raw_command korvex2 tracking stop", "unregister_requester 6d", "unregister_requester 6dw2"));
  expectPoints(backend.body("standard", 1).markers, cup);
  expectPoints(backend.body("wandgrip", 1).markers, pen);
}

TEST_F(Closing, BodiesOfBothTypesAreKeptApartWhenTheirCountsAreUnknown) {
  const std::vector<Point> cup = backend.body("standard", 1).markers;
  const std::vector<Point> pen = backend.body("wandgrip", 1).markers;
  backend.countFromZero();
  backend.disturb = [](int place, const std::string&, const std::string&) {
    return place == 2 || place == 3 ? std::optional<FakeChannel::Answer>({1, ""}) : std::nullopt;
  };
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    for (const int row : {cupRow, penRow}) {
      choose(row);
      enter("body_ori_xyzWidget", 2, row == cupRow ? "90" : "35");
      click("apply_button");
    }
    click("cancel_button");
  });
  expectPoints(backend.body("standard", 1).markers, cup);
  expectPoints(backend.body("wandgrip", 1).markers, pen);
}

TEST_F(Closing, MoreBodiesThanUsualAreDiscardedEachByItsOwn) {
  for (int number = 5; number <= 51; ++number) {
    backend.add({"standard", number, "", {{5, 6, 7}, {50, 8, 9}, {10, 90, 11}, {12, 13, 70}}, {}});
  }
  const std::vector<Point> last = backend.body("standard", 51).markers;
  const std::vector<Point> pen = backend.body("wandgrip", 1).markers;
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    ASSERT_EQ(bodies().itemData(50).toString(), "standard|51|calibrated|tt_std");
    for (const int row : {50, 51}) {
      choose(row);
      enter("body_ori_xyzWidget", 2, row == 50 ? "90" : "35");
      click("apply_button");
    }
    click("cancel_button");
  });
  expectPoints(backend.body("standard", 51).markers, last);
  expectPoints(backend.body("wandgrip", 1).markers, pen);
}

TEST_F(Closing, AnAppliedBodyIsDiscardedAlsoWhenAnotherIsShown) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  for (const int shown : {handRow, penRow, -1}) {
    SCOPED_TRACE(shown);
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    run([&] {
      choose(cupRow);
      click("set_origin_cog_button");
      click("apply_button");
      choose(shown);
      click("cancel_button");
    });
    expectPoints(backend.body("standard", 1).markers, before);
  }
}

TEST_F(Closing, WhatOneSessionAppliedTheNextOneDoesNotDiscard) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    click("apply_button");
    click("ok_button");
  });
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 1, "5");
    click("apply_button");
    click("cancel_button");
  });
  expectPoints(backend.body("standard", 1).markers, seenFrom({14, 0, 0}, before));
  run([&] { click("cancel_button"); });
}

TEST_F(Closing, ABodyThatCannotBeAddressedEndsTheDiscarding) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    for (const int row : {cupRow, penRow}) {
      choose(row);
      click("set_origin_cog_button");
      click("apply_button");
    }
    bodies().setItemData(cupRow, "standard|0|calibrated|tt_std");
    heard();
    click("cancel_button");
  });
  EXPECT_THAT(changesHeard(), ElementsAre(report("Error: Wrong body ID. Cannot discard changes"),
                                          "send_raw_command korvex2 tracking stop", "unregister_requester 6d",
                                          "unregister_requester 6dw2"));
}

TEST_F(Closing, ABodyReadAgainAsAfterAnApplyCountsAsApplied) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    dialog->update_after_apply(cupRow);
    heard();
    click("cancel_button");
  });
  EXPECT_THAT(heard(), ElementsAreArray(joined({{transformOf("standard", 1, {0, 0, 0})}, hideLog()})));
}

TEST_F(Closing, AFailedDiscardIsReportedAndTheNextBodyFollows) {
  const std::vector<Point> pen = backend.body("wandgrip", 1).markers;
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    for (const int row : {cupRow, penRow}) {
      choose(row);
      click("set_origin_cog_button");
      click("apply_button");
    }
    heard();
    backend.failAll("korvex2 body transform standard");
    click("cancel_button");
  });
  EXPECT_THAT(changesHeard(), Contains(report("Error: Unable to set body transformation")).Times(1));
  expectPoints(backend.body("wandgrip", 1).markers, pen);
}

TEST_F(Closing, OkWithAWriteThatFailsKeepsTheDialogAndTheChange) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  EXPECT_EQ(run([&] {
              choose(cupRow);
              enter("body_pos_xyzWidget", 0, "14");
              backend.failAll("korvex2 body transform");
              click("ok_button");
              EXPECT_TRUE(dialog->isVisible());
              EXPECT_TRUE(canvas().isBodyModified());
              EXPECT_THAT(backend.io.reports(), ElementsAre("Error: Unable to set body transformation"));
              backend.nothingFails();
              click("ok_button");
            }),
            QDialog::Accepted);
  expectPoints(backend.body("standard", 1).markers, seenFrom({14, 0, 0}, before));
}

TEST_F(Closing, OkRightAfterTypingWritesWhatWasTyped) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    type("body_pos_xyzWidget", 0, "14");
    dialog->on_ok_button_clicked();  // as a shortcut does: the entry keeps the focus
  });
  expectPoints(backend.body("standard", 1).markers, seenFrom({14, 0, 0}, before));
}

TEST_F(Closing, AnEditThatIsOpenWhenTheDialogIsCancelledDoesNotComeBack) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 2, "1");
    type("body_pos_xyzWidget", 0, "14");
    press(Qt::Key_Escape);
    EXPECT_FALSE(dialog->isVisible());
  });
  run([&] {
    EXPECT_EQ(field("body_pos_xyzWidget", 0)->value(), 0.0);
    EXPECT_FALSE(enabled("undo_button"));
    EXPECT_FALSE(enabled("apply_button"));
    choose(cupRow);
    EXPECT_FALSE(canvas().isBodyModified());
  });
}

TEST_F(Closing, EscapeRightAfterTypingAsksForWhatWasTyped) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::No);
  run([&] {
    choose(cupRow);
    type("body_pos_xyzWidget", 0, "14");
    press(Qt::Key_Escape);
    EXPECT_TRUE(dialog->isVisible());
    press(Qt::Key_Return);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
  });
}

TEST_F(Closing, AFailedSwitchBackOfMultiUserModeIsReportedAndTheDialogCloses) {
  backend.multiUser = true;
  run([&] {
    backend.fail("wandgrip multiuser yes");
    heard();
    click("ok_button");
    EXPECT_FALSE(dialog->isVisible());
  });
  EXPECT_THAT(
      changesHeard(),
      ElementsAre("set_value wandgrip multiuser yes", report("Error: Unable to activate multi user Wandgrip"),
                  "send_raw_command korvex2 tracking stop", "unregister_requester 6d", "unregister_requester 6dw2"));
}

TEST_F(Closing, ARequestThatWasAnsweredIsForgottenInAllItsParts) {
  runOnRequest("", "wandgrip|1", [&] {
    EXPECT_EQ(bodies().currentIndex(), -1);  // nobody asked, so nothing is preselected
    click("ok_button");
  });
  EXPECT_THAT(backend.io.logged("send_message"), IsEmpty());
  runOnRequest("Host", "wandgrip|1", [&] { click("ok_button"); });
  runOnRequest("Other", "", [&] {
    EXPECT_EQ(bodies().currentIndex(), -1);
    click("ok_button");
  });
}

}  // namespace
