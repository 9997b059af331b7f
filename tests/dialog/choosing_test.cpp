// Choosing a body: what is asked, shown and enabled, and what becomes of the body before it.
#include <QAbstractItemView>
#include <QMessageBox>

#include "dialogtest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

const std::vector<const char*> bodyControls = {"pushButton_due_to_body",
                                               "apply_button",
                                               "body_pos_xyzWidget",
                                               "body_ori_xyzWidget",
                                               "undo_button",
                                               "redo_button",
                                               "set_origin_cog_button",
                                               "pushButton_deleteMarker"};
const std::vector<const char*> viewControls = {"reset_view_button", "pos_xyzWidget", "ori_xyzWidget"};

class Choosing : public DialogTest {
 protected:
  bool pagesEnabled() {
    auto* const tabs = find<QTabWidget>("tabWidget");
    EXPECT_EQ(tabs->widget(0)->isEnabled(), tabs->widget(1)->isEnabled());
    EXPECT_EQ(tabs->widget(0)->isEnabled(), tabs->widget(2)->isEnabled());
    return tabs->widget(0)->isEnabled();
  }
  QImage stateIcon() { return find<QLabel>("body_icon")->pixmap(Qt::ReturnByValue).toImage(); }
  static QImage scaledIcon(const char* path) {
    return QPixmap(path).scaled(18, 18, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).toImage();
  }
  bool tableIsBlank(const char* table) {
    for (const std::string& row : cells(table)) {
      if (row.find_first_not_of('|') != std::string::npos) {
        return false;
      }
    }
    return true;
  }
};

TEST_F(Choosing, ACalibratedBodyIsFetchedAndShownInCanvasAndTables) {
  run([&] {
    heard();
    choose(penRow);
    EXPECT_THAT(heard(), ElementsAreArray(fetchOf("wandgrip", 1)));
    EXPECT_EQ(text("loadBody"), "Bod&y");
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_FALSE(canvas().isBodyModified());
    EXPECT_THAT(cells("tableWidget_data"), ElementsAre("1|3.00|4.00|5.00", "2|80.00|6.00|7.00", "3|9.00|85.00|11.00",
                                                       "4|14.00|15.00|95.00", "5|33.00|34.00|35.00"));
    EXPECT_THAT(cells("tableWidget_emissions"),
                ElementsAre("1|1.00|0.00|0.00|60.00", "2|0.00|1.00|0.00|60.00", "3|0.00|0.00|1.00|60.00",
                            "4|0.60|0.80|0.00|30.00", "5|0.00|0.60|0.80|45.00"));
    EXPECT_FALSE(find("tableWidget_emissions")->isHidden());
    EXPECT_TRUE(pagesEnabled());
    EXPECT_THAT(disabledOf(bodyControls),
                ElementsAre("apply_button", "undo_button", "redo_button", "pushButton_deleteMarker"));
    EXPECT_THAT(disabledOf(viewControls), IsEmpty());
    EXPECT_TRUE(enabled("online_checkbox"));
    choose(cupRow);
    EXPECT_TRUE(find("tableWidget_emissions")->isHidden());
    EXPECT_EQ(cells("tableWidget_data").size(), 6U);
  });
}

TEST_F(Choosing, AFiveDegreesBodyKeepsItsPositionAndItsFrame) {
  run([&] {
    choose(stickRow);
    EXPECT_FALSE(enabled("body_pos_xyzWidget"));
    EXPECT_FALSE(enabled("pushButton_due_to_body"));
    EXPECT_TRUE(enabled("body_ori_xyzWidget"));
    EXPECT_TRUE(enabled("set_origin_cog_button"));
    choose(cupRow);
    EXPECT_TRUE(enabled("body_pos_xyzWidget"));
    EXPECT_TRUE(enabled("pushButton_due_to_body"));
  });
}

TEST_F(Choosing, ABodyWithACylinderIsShownButNotEdited) {
  run([&] {
    choose(tubeRow);
    EXPECT_EQ(text("loadBody"), "<b><font color=gray>Bod&y has cylinder marker!</font></b>");
    EXPECT_EQ(canvas().getBodyNumMarker(), 4U);
    EXPECT_EQ(cells("tableWidget_data").size(), 4U);
    EXPECT_FALSE(pagesEnabled());
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_THAT(disabledOf(viewControls), IsEmpty());
    choose(cupRow);
    EXPECT_EQ(text("loadBody"), "Bod&y");
    EXPECT_TRUE(pagesEnabled());
  });
}

TEST_F(Choosing, TheCylinderIsRecognisedAtTheEndOfTheTypeOnly) {
  backend.body("standard", 4).target = "tt_cyl_std";
  run([&] {
    choose(tubeRow);
    EXPECT_EQ(text("loadBody"), "Bod&y");
    EXPECT_TRUE(pagesEnabled());
  });
}

TEST_F(Choosing, ABodyThatIsNotCalibratedIsNotShown) {
  run([&] {
    choose(penRow);
    heard();
    choose(handRow);
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_EQ(text("loadBody"), "<b><font color=red>Bod&y not calibrated!</font></b>");
    EXPECT_EQ(stateIcon(), scaledIcon(":/grey.png"));
    EXPECT_FALSE(canvas().isBodyLoaded());
    EXPECT_TRUE(tableIsBlank("tableWidget_data"));
    EXPECT_TRUE(tableIsBlank("tableWidget_emissions"));
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_EQ(disabledOf(viewControls).size(), viewControls.size());
    EXPECT_FALSE(enabled("online_checkbox"));
    EXPECT_EQ(bodies().currentIndex(), handRow);
    // A live line says nothing about a body without calibration.
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_EQ(stateIcon(), scaledIcon(":/grey.png"));
    choose(penRow);
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_EQ(stateIcon(), scaledIcon(":/green.png"));
    emit dialog->set_chosen_body_tracked(false);
    EXPECT_EQ(stateIcon(), scaledIcon(":/red.png"));
  });
}

TEST_F(Choosing, TheTrackedStateOfACalibratedBodyReachesTheRoomButtonsAgainAfterAnUncalibratedOne) {
  run([&] {
    choose(cupRow);
    click("online_checkbox");
    choose(handRow);
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_FALSE(enabled("pushButton_due_to_room"));
    choose(cupRow);
    EXPECT_FALSE(enabled("pushButton_due_to_room"));
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_TRUE(enabled("pushButton_due_to_room"));
    EXPECT_EQ(stateIcon(), scaledIcon(":/green.png"));
  });
}

TEST_F(Choosing, NoRowMeansNoBody) {
  run([&] {
    choose(penRow);
    emit dialog->set_chosen_body_tracked(true);
    heard();
    choose(-1);
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_FALSE(canvas().isBodyLoaded());
    EXPECT_EQ(text("loadBody"), "Bod&y");
    EXPECT_TRUE(find<QLabel>("body_icon")->pixmap(Qt::ReturnByValue).isNull());
    EXPECT_TRUE(tableIsBlank("tableWidget_data"));
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_FALSE(enabled("online_checkbox"));
  });
}

TEST_F(Choosing, ARowThatCannotBeReadLeavesNoBodyToEdit) {
  run([&] {
    dialog->update_current_body(99);
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_THAT(heard(), Not(Contains(StartsWith("get_reals"))));
    choose(cupRow);
    EXPECT_TRUE(canvas().isBodyLoaded());
    EXPECT_TRUE(enabled("set_origin_cog_button"));
  });
}

TEST_F(Choosing, TheQuestionBeforeAModifiedBodyIsLeftHasYesAsDefault) {
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::No);
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    choose(penRow);
  });
  ASSERT_EQ(watch.boxes().size(), 1U);
  EXPECT_EQ(watch.boxes()[0].buttons, QMessageBox::Yes | QMessageBox::No);
  EXPECT_EQ(watch.boxes()[0].defaultButton, QMessageBox::Yes);
  EXPECT_EQ(watch.boxes()[0].icon, QMessageBox::Warning);
}

TEST_F(Choosing, AnUnmodifiedBodyIsLeftWithoutAQuestion) {
  run([&] {
    choose(cupRow);
    choose(handRow);
    choose(tubeRow);
    choose(-1);
  });
}

TEST_F(Choosing, AModifiedBodyIsLeftWithoutAQuestionWhenTheCallerSaysSo) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    dialog->update_current_body(penRow, false);
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_EQ(bodies().currentIndex(), penRow);
  });
  expectPoints(backend.body("standard", 1).markers, before);
}

TEST_F(Choosing, AChangeAppliedOnTheWayIsDiscardedWithTheOthers) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::Yes);
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    enter("body_ori_xyzWidget", 0, "33");
    choose(handRow);
    EXPECT_THAT(heard(), Contains(StartsWith("send_raw_command korvex2 body transform standard b01")));
    click("cancel_button");
  });
  expectPoints(backend.body("standard", 1).markers, before);
}

TEST_F(Choosing, HighlightingAnEntryOfTheOpenListLoadsItsBody) {
  run([&] {
    choose(cupRow);
    heard();
    bodies().showPopup();
    ASSERT_TRUE(QTest::qWaitFor([&] { return bodies().view()->isVisible(); }));
    auto* const list = bodies().view();
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(text("loadBody"), "<b><font color=red>Bod&y not calibrated!</font></b>");
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_THAT(heard(), ElementsAreArray(fetchOf("standard", 3)));
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_EQ(bodies().currentIndex(), stickRow);
    bodies().hidePopup();
  });
}

TEST_F(Choosing, HighlightingAsksBeforeAModifiedBodyIsLeft) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    bodies().showPopup();  // highlights the chosen entry: no reason to ask
    ASSERT_TRUE(QTest::qWaitFor([&] { return bodies().view()->isVisible(); }));
    EXPECT_TRUE(watch.boxes().empty());
    EXPECT_TRUE(canvas().isBodyModified());
    QTest::keyClick(bodies().view(), Qt::Key_End);
    EXPECT_EQ(watch.boxes().size(), 1U);
    EXPECT_EQ(bodies().currentIndex(), penRow);
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_FALSE(bodies().view()->isVisible());
  });
  expectPoints(backend.body("standard", 1).markers, seenFrom(meanOf(before), before));
}

TEST_F(Choosing, TheCameraStaysWhereTheOperatorLeftIt) {
  run([&] {
    choose(cupRow);
    canvas().setViewPosition(bsVector(11, 22, -333));
    canvas().setViewOrientation(bsQuaternion(30.0, bsVector(0, 1, 0)).toMatrix());
    const bsMatrix left = canvas().get_view().toMatrix();
    for (const int row : {penRow, handRow, cupRow, -1, stickRow}) {
      choose(row);
      EXPECT_TRUE(canvas().get_view().toMatrix() == left) << "row " << row;
    }
    click("set_origin_cog_button");
    click("apply_button");
    EXPECT_TRUE(canvas().get_view().toMatrix() == left);
  });
}

TEST_F(Choosing, TheSelectionDoesNotOutliveTheBody) {
  run([&] {
    choose(cupRow);
    select({0, 1});
    EXPECT_TRUE(enabled("set_origin_button"));
    EXPECT_TRUE(enabled("set_axis_button"));
    EXPECT_TRUE(menuEntry("Add line between markers")->isEnabled());
    choose(penRow);
    EXPECT_TRUE(canvas().getSelection().empty());
    EXPECT_FALSE(enabled("set_origin_button"));
    EXPECT_FALSE(enabled("set_axis_button"));
    EXPECT_FALSE(menuEntry("Add line between markers")->isEnabled());
    select({2});
    EXPECT_TRUE(enabled("pushButton_deleteMarker"));
    choose(handRow);
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    EXPECT_FALSE(enabled("set_origin_button"));
  });
}

TEST_F(Choosing, AnEditThatWasNeverFinishedDoesNotReachTheNextBody) {
  for (const int next : {penRow, handRow, -1}) {
    SCOPED_TRACE(next);
    run([&] {
      choose(cupRow);
      type("body_pos_xyzWidget", 0, "14");
      EXPECT_TRUE(enabled("apply_button"));
      choose(next);
      EXPECT_FALSE(enabled("apply_button"));
      EXPECT_FALSE(enabled("undo_button"));
      EXPECT_FALSE(canvas().isBodyModified());
      choose(penRow);
      EXPECT_EQ(field("body_pos_xyzWidget", 0)->value(), 0.0);
      EXPECT_FALSE(enabled("apply_button"));
      EXPECT_FALSE(enabled("undo_button"));
      EXPECT_FALSE(canvas().isBodyModified());
      EXPECT_EQ(cells("tableWidget_data").front(), "1|3.00|4.00|5.00");
      const auto immediate = canvas().give_immediate_data();
      ASSERT_EQ(immediate.size(), 5U);
      EXPECT_NEAR(immediate[0].x, 3.0, 1e-9);
      heard();
      click("ok_button");
      EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
    });
  }
}

TEST_F(Choosing, ABodyThatCannotBeFetchedLeavesThePreviousOneChosen) {
  const std::vector<Point> cup = backend.body("standard", 1).markers;
  const std::vector<Point> pen = backend.body("wandgrip", 1).markers;
  run([&] {
    choose(cupRow);
    select({1});
    backend.fail("body marker wandgrip b01 m03");
    choose(penRow);
    EXPECT_THAT(backend.io.reports(), ElementsAre("Error: Unable to check body marker info"));
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_EQ(cells("tableWidget_data").size(), 6U);
    EXPECT_EQ(text("loadBody"), "Bod&y");
    EXPECT_TRUE(enabled("online_checkbox"));
    backend.nothingFails();
    click("set_origin_button");
    click("apply_button");
    expectPoints(backend.body("standard", 1).markers, seenFrom({110, 25, 32}, cup));
    expectPoints(backend.body("wandgrip", 1).markers, pen);
    // The body can be tried again by choosing it once more.
    choose(penRow);
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
  });
}

TEST_F(Choosing, ABodyWithoutMarkersLeavesThePreviousOneChosenWithoutAReport) {
  backend.body("wandgrip", 1).markers.clear();
  run([&] {
    choose(cupRow);
    choose(penRow);
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_THAT(backend.io.reports(), IsEmpty());
  });
}

TEST_F(Choosing, ABodyThatCannotBeFetchedAfterNoBodyLeavesNone) {
  backend.failAll("body number_of_marker");
  run([&] {
    choose(cupRow);
    EXPECT_EQ(bodies().currentIndex(), -1);
    EXPECT_FALSE(canvas().isBodyLoaded());
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
    EXPECT_FALSE(enabled("online_checkbox"));
  });
}

TEST_F(Choosing, AFailedFetchAfterAnUncalibratedBodyShowsThatBodysLabelAgain) {
  run([&] {
    choose(handRow);
    backend.failAll("body number_of_marker");
    choose(tubeRow);
    EXPECT_EQ(bodies().currentIndex(), handRow);
    EXPECT_EQ(text("loadBody"), "<b><font color=red>Bod&y not calibrated!</font></b>");
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_EQ(stateIcon(), scaledIcon(":/grey.png"));
  });
}

TEST_F(Choosing, AChangeThatCannotBeWrittenOnTheWayStaysWithItsBody) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    backend.failAll("korvex2 body transform");
    choose(penRow);
    EXPECT_THAT(backend.io.reports(), ElementsAre("Error: Unable to set body transformation"));
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_TRUE(canvas().isBodyModified());
    EXPECT_TRUE(enabled("apply_button"));
    backend.nothingFails();
    click("apply_button");
  });
  expectPoints(backend.body("standard", 1).markers, seenFrom(meanOf(before), before));
}

TEST_F(Choosing, ABodyOfOneMarkerIsRefusedWithItsWarningAndCannotBeEdited) {
  backend.body("standard", 1).markers.resize(1);
  backend.body("standard", 1).emissions.resize(1);
  watch.expectBox("Error loading body", "Error : Number of markers = 1 (is it a body file ?).\nBody not loaded.",
                  QMessageBox::Ok);
  run([&] {
    choose(cupRow);
    EXPECT_FALSE(canvas().isBodyLoaded());
    EXPECT_EQ(disabledOf(bodyControls).size(), bodyControls.size());
  });
}

}  // namespace
