// Deleting a marker: when it is allowed, how it is undone, redone and taken back.
#include <QMessageBox>

#include "dialogtest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr const char* deleteQuestion = "Delete selected marker?";
constexpr const char* deleteFailure = "Error: Unable to delete marker of body";

class Deletion : public DialogTest {
 protected:
  void setVersion(int major, int minor, int revision) {
    backend.versions.backend_major = major;
    backend.versions.backend_minor = minor;
    backend.versions.backend_revision = revision;
  }
  /// Selects the marker (index from 0), presses the button and confirms.
  void deleteMarker(std::size_t marker) {
    select({marker});
    watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
    click("pushButton_deleteMarker");
  }
  ScriptedBody& cup() { return backend.body("standard", 1); }
  static std::vector<Point> without(std::vector<Point> points, std::ptrdiff_t index) {
    points.erase(points.begin() + index);
    return points;
  }
  std::size_t deletions() { return backend.io.logged("send_raw_command korvex2 body delete_marker").size(); }
};

TEST_F(Deletion, TheQuestionHasCancelAsDefaultAndCancelDeletesNothing) {
  watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Cancel);
  run([&] {
    choose(cupRow);
    select({2});
    heard();
    click("pushButton_deleteMarker");
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_FALSE(enabled("undo_button"));
  });
  ASSERT_EQ(watch.boxes().size(), 1U);
  EXPECT_EQ(watch.boxes()[0].buttons, QMessageBox::Ok | QMessageBox::Cancel);
  EXPECT_EQ(watch.boxes()[0].defaultButton, QMessageBox::Cancel);
  EXPECT_EQ(watch.boxes()[0].icon, QMessageBox::Question);
  EXPECT_EQ(cup().markers.size(), 6U);
}

TEST_F(Deletion, TheMarkerIsDeletedInTheBackendAndTheBodyReadAgain) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    heard();
    deleteMarker(2);
    EXPECT_THAT(heard(), ElementsAreArray(joined({{"send_raw_command korvex2 body delete_marker standard b01 m03"},
                                                  fetchOf("standard", 1)})));
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_EQ(cells("tableWidget_data").size(), 5U);
    EXPECT_TRUE(enabled("undo_button"));
    EXPECT_FALSE(enabled("redo_button"));
    EXPECT_FALSE(enabled("apply_button"));
    EXPECT_FALSE(canvas().isBodyModified());
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    click("ok_button");
  });
  expectPoints(cup().markers, without(before, 2));
}

TEST_F(Deletion, TheDeleteKeyDeletesToo) {
  run([&] {
    choose(cupRow);
    select({5});
    canvas().setFocus();
    watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
    press(Qt::Key_Delete);
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
  });
  EXPECT_EQ(cup().markers.size(), 5U);
}

TEST_F(Deletion, IsOfferedForExactlyOneSelectedMarkerOfMoreThanFour) {
  run([&] {
    choose(cupRow);
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    for (std::size_t marker = 0; marker < 6; ++marker) {
      select({marker});
      EXPECT_TRUE(enabled("pushButton_deleteMarker")) << marker;
    }
    select({0, 1});
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    dialog->deleteMarker();  // would ask if it were possible
    select({});
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    dialog->deleteMarker();
    choose(handRow);
    dialog->deleteMarker();
    choose(-1);
    dialog->deleteMarker();
    EXPECT_EQ(deletions(), 0U);
    // Down to four markers, and no further.
    choose(cupRow);
    deleteMarker(0);
    deleteMarker(0);
    select({0});
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    dialog->deleteMarker();
    EXPECT_EQ(deletions(), 2U);
  });
  EXPECT_EQ(cup().markers.size(), 4U);
}

TEST_F(Deletion, IsNotOfferedByAnOldBackend) {
  struct Case {
    int major, minor, revision;
    bool offered;
  };
  for (const Case& c : {Case{1, 16, 9, false}, Case{1, 17, -2, false}, Case{1, 17, -1, true}, Case{1, 17, 0, true},
                        Case{1, 18, -5, true}, Case{2, 0, 0, true}, Case{0, 99, 0, false}}) {
    SCOPED_TRACE(std::to_string(c.major) + "." + std::to_string(c.minor) + "." + std::to_string(c.revision));
    setVersion(c.major, c.minor, c.revision);
    run([&] {
      choose(cupRow);
      select({1});
      EXPECT_EQ(enabled("pushButton_deleteMarker"), c.offered);
      if (!c.offered) {
        dialog->deleteMarker();
      }
    });
  }
  EXPECT_EQ(cup().markers.size(), 6U);
}

TEST_F(Deletion, ALineIsNoMarkerToDelete) {
  run([&] {
    choose(cupRow);
    select({0, 1});
    canvas().introduceLine();
    canvas().checkSelection(nullptr);
    canvas().checkSelection(canvas().getBody().getLines().at(0));
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    dialog->deleteMarker();
  });
  EXPECT_EQ(cup().markers.size(), 6U);
}

TEST_F(Deletion, UndoWritesTheBodyBackAndRedoDeletesAgain) {
  cup().emissions[4] = {0, 0, 1, 70};
  const std::vector<Point> before = cup().markers;
  const std::vector<EmissionValues> emissions = cup().emissions;
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    heard();
    click("undo_button");
    EXPECT_THAT(heard(), ElementsAreArray(writeOf("standard", 1, before, emissions)));
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_EQ(cells("tableWidget_data").size(), 6U);
    EXPECT_FALSE(enabled("undo_button"));
    EXPECT_TRUE(enabled("redo_button"));
    expectPoints(cup().markers, before);
    EXPECT_EQ(cup().emissions, emissions);
    click("redo_button");
    EXPECT_THAT(heard(), ElementsAreArray(joined({{"send_raw_command korvex2 body delete_marker standard b01 m03"},
                                                  fetchOf("standard", 1)})));
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_FALSE(enabled("redo_button"));
    expectPoints(cup().markers, without(before, 2));
    click("cancel_button");  // the deletion is pending again
  });
  expectPoints(cup().markers, before);
}

TEST_F(Deletion, CancelTakesItBackWithoutAQuestionWhenNothingElseWasDone) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    deleteMarker(0);
    heard();
    click("cancel_button");
  });
  EXPECT_THAT(heard(), ElementsAreArray(joined({writeOf("standard", 1, before, {}), hideLog()})));
  expectPoints(cup().markers, before);
}

TEST_F(Deletion, AnUndoneDeletionIsNotTakenBackASecondTime) {
  run([&] {
    choose(cupRow);
    deleteMarker(0);
    click("undo_button");
    heard();
    click("cancel_button");
  });
  EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
}

TEST_F(Deletion, OkKeepsIt) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    deleteMarker(0);
    heard();
    click("ok_button");
  });
  EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
  expectPoints(cup().markers, without(before, 0));
  run([&] { click("cancel_button"); });  // and the next session does not take it back
  expectPoints(cup().markers, without(before, 0));
}

TEST_F(Deletion, NoAtTheDiscardQuestionKeepsItPending) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    deleteMarker(0);
    enter("body_pos_xyzWidget", 0, "14");
    heard();
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::No);
    click("cancel_button");
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_TRUE(dialog->isVisible());
    expectPoints(cup().markers, without(before, 0));
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    click("cancel_button");
  });
  expectPoints(cup().markers, before);
}

TEST_F(Deletion, ADeletionAndAppliesAroundItAreAllDiscarded) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    enter("body_ori_xyzWidget", 2, "37");
    enter("body_pos_xyzWidget", 0, "14");
    click("apply_button");
    deleteMarker(4);
    enter("body_ori_xyzWidget", 0, "71");
    click("apply_button");
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    click("cancel_button");
  });
  expectPoints(cup().markers, before, 0.005);  // the backup travelled with three decimals, too
}

TEST_F(Deletion, UndoTakesTheLaterEditFirst) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    enter("body_pos_xyzWidget", 0, "14");
    heard();
    click("undo_button");
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|10.00|20.00|30.00");
    EXPECT_TRUE(enabled("undo_button")) << "the deletion can still be undone";
    EXPECT_TRUE(enabled("redo_button"));
    click("redo_button");
    EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
    EXPECT_EQ(deletions(), 0U);
    click("undo_button");
    click("undo_button");
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    expectPoints(cup().markers, before);
  });
}

TEST_F(Deletion, RedoNeverDeletesASecondMarker) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    enter("body_pos_xyzWidget", 0, "14");
    click("undo_button");
    click("redo_button");
    EXPECT_EQ(deletions(), 1U);
    click("undo_button");
    click("undo_button");  // the deletion
    click("redo_button");
    EXPECT_EQ(deletions(), 2U);
    expectPoints(cup().markers, without(before, 2));
    dialog->on_redo_button_clicked();
    dialog->on_redo_button_clicked();
    EXPECT_EQ(deletions(), 2U);
  });
}

TEST_F(Deletion, CanBeUndoneAndRedoneAgainAndAgain) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    for (std::size_t round = 1; round <= 3; ++round) {
      click("undo_button");
      expectPoints(cup().markers, before);
      click("redo_button");
      expectPoints(cup().markers, without(before, 2));
      EXPECT_EQ(deletions(), round + 1);
    }
  });
}

TEST_F(Deletion, RedoAfterAnEditDoesNotDelete) {
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    click("undo_button");
    enter("body_pos_xyzWidget", 0, "14");
    EXPECT_FALSE(enabled("redo_button"));
    dialog->on_redo_button_clicked();
    EXPECT_EQ(deletions(), 1U);
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
  });
}

TEST_F(Deletion, TheBackupBelongsToItsOwnBody) {
  const std::vector<Point> cupBefore = cup().markers;
  const std::vector<Point> penBefore = backend.body("wandgrip", 1).markers;
  run([&] {
    choose(cupRow);
    deleteMarker(1);
    choose(penRow);
    enter("body_pos_xyzWidget", 0, "14");
    click("undo_button");
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|3.00|4.00|5.00");
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    click("cancel_button");
  });
  expectPoints(cup().markers, cupBefore);
  expectPoints(backend.body("wandgrip", 1).markers, penBefore);
}

TEST_F(Deletion, RedoOfAnotherBodysDeletionDoesNotTouchTheShownOne) {
  run([&] {
    choose(cupRow);
    deleteMarker(1);
    click("undo_button");
    choose(penRow);
    dialog->on_redo_button_clicked();
    EXPECT_EQ(deletions(), 1U);
  });
  EXPECT_EQ(backend.body("wandgrip", 1).markers.size(), 5U);
  EXPECT_EQ(cup().markers.size(), 6U);
}

TEST_F(Deletion, TheBodyIsFoundAgainByItsIdTakenAsARow) {
  run([&] {
    choose(penRow);  // the first device: id 0, but row 4
    select({1});
    watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
    heard();
    click("pushButton_deleteMarker");
    EXPECT_THAT(heard(), ElementsAreArray(joined({{"send_raw_command korvex2 body delete_marker wandgrip b01 m02"},
                                                  fetchOf("standard", 1)})));
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_TRUE(enabled("undo_button"));
    const std::vector<Point> cupBefore = cup().markers;
    click("undo_button");  // the device's deletion, while the cup is shown
    EXPECT_EQ(backend.body("wandgrip", 1).markers.size(), 5U);
    expectPoints(cup().markers, cupBefore);
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
  });
}

TEST_F(Deletion, AModifiedBodyIsAskedForBeforeTheReload) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    select({2});
    watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
    watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::Yes);
    heard();
    click("pushButton_deleteMarker");
    EXPECT_THAT(changesHeard(), ElementsAre("send_raw_command korvex2 body delete_marker standard b01 m03",
                                            transformOf("standard", 1, {-14, 0, 0})));
    expectPoints(cup().markers, seenFrom({14, 0, 0}, without(before, 2)));
    click("undo_button");
    expectPoints(cup().markers, seenFrom({14, 0, 0}, before));
    EXPECT_EQ(cells("tableWidget_data").size(), 6U);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
  });
}

TEST_F(Deletion, ACallThatFailsIsReportedTwiceAndNothingChanges) {
  run([&] {
    choose(cupRow);
    heard();
    backend.failAll("korvex2 body delete_marker");
    deleteMarker(2);
    EXPECT_THAT(heard(), ElementsAre("send_raw_command korvex2 body delete_marker standard b01 m03",
                                     report(deleteFailure), report(deleteFailure)));
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_FALSE(enabled("undo_button"));
    backend.nothingFails();
    click("cancel_button");  // nothing to take back
  });
  EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
}

TEST_F(Deletion, ARefusalIsReportedOnceAndNothingChanges) {
  backend.disturb = [](int, const std::string&, const std::string& text) -> std::optional<FakeChannel::Answer> {
    return text.find("korvex2 body delete_marker") == 0 ? std::optional<FakeChannel::Answer>({0, "korvex2 error"})
                                                        : std::nullopt;
  };
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    EXPECT_THAT(backend.io.reports(), ElementsAre(deleteFailure));
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_FALSE(enabled("undo_button"));
  });
}

TEST_F(Deletion, ABodyThatCannotBeReadAgainDoesNotLeadToAnotherMarkersDeletion) {
  const std::vector<Point> before = cup().markers;
  run([&] {
    choose(cupRow);
    backend.failAll("body number_of_marker");
    deleteMarker(1);
    EXPECT_THAT(backend.io.reports(), ElementsAre("Error: Unable to check body marker info"));
    backend.nothingFails();
    EXPECT_TRUE(enabled("undo_button"));
    // What is shown is numbered as the backend numbers it, or the next deletion would hit a neighbour.
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);
    deleteMarker(3);
    expectPoints(cup().markers, without(without(before, 1), 3));
  });
}

TEST_F(Deletion, UndoOfABodyThatCannotBeWrittenIsReportedMarkerByMarker) {
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    heard();
    backend.fail("body number_of_marker standard b01 6");
    click("undo_button");
    EXPECT_THAT(heard(), ElementsAre("set_value body number_of_marker standard b01 6",
                                     report("Error: Unable to set body target_type")));
  });
}

TEST_F(Deletion, AnEmissionEditedAfterItSurvivesItsUndo) {
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    find<QDoubleSpinBox>("doubleSpinBox_alpha")->setValue(30);
    click("undo_button");
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    EXPECT_TRUE(enabled("apply_button"));
    click("apply_button");
    EXPECT_EQ(cup().emissions, std::vector<EmissionValues>(6, EmissionValues{1, 0, 0, 30}));
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    click("cancel_button");
  });
  EXPECT_EQ(cup().emissions, std::vector<EmissionValues>(6, EmissionValues{}));
}

TEST_F(Deletion, EmissionsAppliedAfterItAreDiscardedTogetherWithIt) {
  const std::vector<Point> before = cup().markers;
  cup().emissions[5] = {0, 1, 0, 20};
  const std::vector<EmissionValues> emissions = cup().emissions;
  run([&] {
    choose(cupRow);
    deleteMarker(2);
    enter("body_pos_xyzWidget", 0, "8");
    find<QDoubleSpinBox>("doubleSpinBox_alpha")->setValue(30);
    click("apply_button");
    watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
    click("cancel_button");
  });
  expectPoints(cup().markers, before);
  EXPECT_EQ(cup().emissions, emissions);
}

TEST_F(Deletion, CancellingAfterATurnWasAppliedBringsEveryEmissionBack) {
  cup().emissions[5] = {0, 0.6, 0.8, 20};
  cup().emissions[2] = {1, 0, 0, 30};
  const std::vector<Point> before = cup().markers;
  const std::vector<EmissionValues> emissions = cup().emissions;
  watch.expectBox("Korvex2", deleteQuestion, QMessageBox::Ok);
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    select({2});
    click("pushButton_deleteMarker");
    enter("body_ori_xyzWidget", 2, "90");
    click("apply_button");
    EXPECT_EQ(cup().emissions.back(), (EmissionValues{0.6, 0, 0.8, 20}));
    click("cancel_button");
  });
  expectPoints(cup().markers, before);
  EXPECT_EQ(cup().emissions, emissions);
}

TEST_F(Deletion, TheKeptMarkersGoBothWays) {
  make();
  run([&] {
    choose(cupRow);
    dialog->saveBodyFileForUndo();
    dialog->reloadOldMarkerValues();
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
    heard();
    EXPECT_TRUE(dialog->doDeleteMarker(5));
    EXPECT_THAT(heard(), ElementsAre("send_raw_command korvex2 body delete_marker standard b01 m06"));
  });
}

TEST_F(Deletion, IsNotPossibleInALockedConfiguration) {
  backend.changeable = false;
  run([&] {
    choose(cupRow);
    select({2});
    EXPECT_FALSE(find("pushButton_deleteMarker")->isEnabled()) << "its page is disabled";
    canvas().setFocus();
    press(Qt::Key_Delete);  // would ask if it were possible
    EXPECT_EQ(deletions(), 0U);
  });
}

TEST_F(Deletion, IsNotPossibleForABodyWithACylinder) {
  ScriptedBody& tube = backend.body("standard", 4);
  tube.markers.push_back({20, 21, 22});
  tube.emissions.resize(5);
  run([&] {
    choose(tubeRow);
    select({2});
    EXPECT_FALSE(find("pushButton_deleteMarker")->isEnabled()) << "its page is disabled";
    canvas().setFocus();
    press(Qt::Key_Delete);
    EXPECT_EQ(deletions(), 0U);
  });
}

}  // namespace
