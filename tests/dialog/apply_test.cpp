// Typed edits and Apply: what is stored as one step, what is sent, what becomes of failures.
#include <qwt_wheel.h>

#include <QApplication>
#include <QPushButton>

#include "bsDoubleWidget.h"
#include "dialogtest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr const char* transformFailure = "Error: Unable to set body transformation";

class Apply : public DialogTest {
 protected:
  unsigned int undoSteps() { return canvas().getBody().getUndoCount(); }
  Log transforms() { return backend.io.logged("send_raw_command korvex2 body transform"); }
};

TEST_F(Apply, ATypedNumberAndReturnAreOneUndoStep) {
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    EXPECT_EQ(undoSteps(), 1U);
    EXPECT_EQ(field("body_pos_xyzWidget", 0)->value(), 0.0);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
    EXPECT_TRUE(enabled("undo_button"));
    EXPECT_FALSE(enabled("redo_button"));
    EXPECT_TRUE(enabled("apply_button"));
    EXPECT_TRUE(dialog->isVisible());
    click("undo_button");
    EXPECT_EQ(cells("tableWidget_data").front(), "1|10.00|20.00|30.00");
    EXPECT_FALSE(enabled("undo_button"));
    EXPECT_TRUE(enabled("redo_button"));
    EXPECT_FALSE(enabled("apply_button"));
    click("redo_button");
    EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
    EXPECT_TRUE(enabled("apply_button"));
  });
}

TEST_F(Apply, LeavingTheEntryFinishesTheEditAsOneStep) {
  run([&] {
    choose(cupRow);
    type("body_pos_xyzWidget", 1, "14");
    EXPECT_EQ(undoSteps(), 0U);
    EXPECT_TRUE(enabled("apply_button"));
    press(Qt::Key_Tab);
    EXPECT_EQ(undoSteps(), 1U);
    EXPECT_EQ(field("body_pos_xyzWidget", 1)->value(), 0.0);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|10.00|6.00|30.00");
  });
}

TEST_F(Apply, GoingFromOneEntryToTheNextStoresOneStepEach) {
  run([&] {
    choose(cupRow);
    type("body_pos_xyzWidget", 0, "14");
    type("body_pos_xyzWidget", 2, "7");
    EXPECT_EQ(undoSteps(), 1U);
    type("body_ori_xyzWidget", 2, "90");
    EXPECT_EQ(undoSteps(), 2U);
    press(Qt::Key_Return);
    EXPECT_EQ(undoSteps(), 3U);
    // A quarter turn about z: the old y becomes x, the old x becomes -y.
    EXPECT_EQ(cells("tableWidget_data").front(), "1|20.00|4.00|23.00");
  });
}

TEST_F(Apply, TwoTurnsAboutOneAxisAddUp) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    enter("body_ori_xyzWidget", 2, "14");
    enter("body_ori_xyzWidget", 2, "166");
    EXPECT_EQ(undoSteps(), 2U);
    heard();
    click("apply_button");
    EXPECT_THAT(changesHeard(), ElementsAre("send_raw_command korvex2 tracking stop",
                                            transformOf("standard", 1, {0, 0, 0}, {-1, 0, 0, 0, -1, 0, 0, 0, 1}),
                                            "send_raw_command korvex2 tracking start"));
  });
  std::vector<Point> expected = before;
  for (Point& p : expected) {
    p = {-p[0], -p[1], p[2]};
  }
  expectPoints(backend.body("standard", 1).markers, expected);
}

TEST_F(Apply, TheInverseOfTheNewFrameIsSentColumnByColumn) {
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "100");
    enter("body_ori_xyzWidget", 0, "30");
    heard();
    click("apply_button");
    // The new frame stands at (100, 0, 0), turned by 30 degrees: points go back by 100 and turn by -30 degrees.
    EXPECT_THAT(heard(), Contains(transformOf("standard", 1, {-100, 0, 0}, turn(0, -30))));
  });
}

TEST_F(Apply, AfterAnApplyTheBodyStandsInItsNewCoordinatesAsRead) {
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 2, "30");
    click("apply_button");
    EXPECT_FALSE(canvas().isBodyModified());
    EXPECT_EQ(undoSteps(), 0U);
    EXPECT_FALSE(enabled("apply_button"));
    EXPECT_FALSE(enabled("undo_button"));
    EXPECT_FALSE(enabled("redo_button"));
    EXPECT_TRUE(enabled("body_pos_xyzWidget"));
    EXPECT_TRUE(enabled("set_origin_cog_button"));
    EXPECT_TRUE(enabled("pushButton_due_to_body"));
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    EXPECT_FALSE(enabled("pushButton_due_to_room"));
    EXPECT_EQ(cells("tableWidget_data").front(), "1|10.00|20.00|0.00");
    EXPECT_TRUE(canvas().getBodyTransformation() == bsMatrix::getIdentityMatrix());
  });
}

TEST_F(Apply, ReturnInAnEntryPressesNoButton) {
  make();
  for (QPushButton* const button : dialog->findChildren<QPushButton*>()) {
    if (button->window() == dialog.get()) {
      EXPECT_FALSE(button->isDefault()) << qPrintable(button->objectName());
      EXPECT_FALSE(button->autoDefault()) << qPrintable(button->objectName());
    }
  }
  run([&] {
    choose(cupRow);
    for (const char* const group : {"body_pos_xyzWidget", "body_ori_xyzWidget"}) {
      for (int axis = 0; axis < 3; ++axis) {
        enter(group, axis, "5");
        press(Qt::Key_Return);
        press(Qt::Key_Enter);
        EXPECT_TRUE(dialog->isVisible());
      }
    }
    find<QTabWidget>("tabWidget")->setCurrentIndex(2);
    find("doubleSpinBox_ex")->setFocus();
    press(Qt::Key_Return);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_THAT(transforms(), IsEmpty());
  });
}

TEST_F(Apply, TheShortcutRightAfterTypingAppliesWhatWasTyped) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    type("body_pos_xyzWidget", 0, "14");
    press(Qt::Key_A, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !transforms().empty(); })) << "the button shows its click first";
    EXPECT_THAT(transforms(), ElementsAre(StartsWith("send_raw_command korvex2 body transform standard b01 -14.000 ")));
    EXPECT_EQ(field("body_pos_xyzWidget", 0)->value(), 0.0);
    EXPECT_FALSE(canvas().isBodyModified());
    EXPECT_FALSE(enabled("apply_button"));
    press(Qt::Key_Tab);  // the edit is over and is not stored a second time
    EXPECT_FALSE(canvas().isBodyModified());
  });
  expectPoints(backend.body("standard", 1).markers, seenFrom({14, 0, 0}, before));
}

TEST_F(Apply, ATypedEditComesBeforeTheButtonThatIsPressedNext) {
  run([&] {
    choose(cupRow);
    type("body_ori_xyzWidget", 2, "90");
    press(Qt::Key_U, Qt::AltModifier);  // undoes what was typed
    EXPECT_TRUE(QTest::qWaitFor([&] { return canvas().getBody().canRedo(); })) << "the button shows its click first";
    EXPECT_EQ(undoSteps(), 0U);
    EXPECT_EQ(canvas().getBody().getRedoCount(), 1U);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|10.00|20.00|30.00");
    const auto immediate = canvas().give_immediate_data();
    EXPECT_NEAR(immediate.at(0).x, 10.0, 1e-9);
  });
}

TEST_F(Apply, ADragOfAViewWheelIsOneStoredView) {
  run([&] {
    choose(cupRow);
    int stored = 0;
    QObject::connect(&canvas(), &GLCanvas::storeViewRequest, [&] { ++stored; });
    for (const char* const group : {"pos_xyzWidget", "ori_xyzWidget"}) {
      SCOPED_TRACE(group);
      stored = 0;
      const bsMatrix before = canvas().get_view().toMatrix();
      auto* const wheel = find<xyzWidget>(group)->findChild<QwtWheel*>();
      const QPoint centre = wheel->rect().center();
      QTest::mousePress(wheel, Qt::LeftButton, Qt::NoModifier, centre);
      for (int step = 1; step <= 8; ++step) {
        QTest::mouseMove(wheel, centre + QPoint(2 * step, 0));
        QMouseEvent move(QEvent::MouseMove, centre + QPoint(2 * step, 0), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(wheel, &move);
      }
      const bsMatrix dragged = canvas().get_view().toMatrix();
      EXPECT_TRUE(dragged != before);
      EXPECT_EQ(stored, 0);
      QTest::mouseRelease(wheel, Qt::LeftButton, Qt::NoModifier, centre + QPoint(16, 0));
      EXPECT_EQ(stored, 1);
      EXPECT_TRUE(canvas().get_view().toMatrix() == dragged);
      EXPECT_EQ(find<xyzWidget>(group)->xValue(), 0.0);
      EXPECT_EQ(canvas().getViewMode(), ABC_VIEW_IDLE);
    }
    EXPECT_FALSE(canvas().isBodyModified());
    EXPECT_FALSE(enabled("apply_button"));
  });
}

TEST_F(Apply, WithoutAChangeNothingIsSent) {
  run([&] {
    choose(cupRow);
    heard();
    dialog->apply_button_enable();
    EXPECT_TRUE(enabled("apply_button"));
    dialog->on_apply_button_clicked();
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_FALSE(enabled("apply_button"));
    choose(-1);
    dialog->on_apply_button_clicked();
    dialog->update_after_apply(0);
    EXPECT_THAT(heard(), IsEmpty());
  });
}

TEST_F(Apply, ATransformThatFailsStaysInTheCanvasAndTrackingGoesOn) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    heard();
    backend.failAll("korvex2 body transform");
    click("apply_button");
    EXPECT_THAT(heard(), ElementsAre("send_raw_command korvex2 tracking stop",
                                     StartsWith("send_raw_command korvex2 body transform"), report(transformFailure),
                                     "send_raw_command korvex2 tracking start"));
    EXPECT_TRUE(canvas().isBodyModified());
    EXPECT_FALSE(enabled("apply_button"));
    EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
    expectPoints(backend.body("standard", 1).markers, before);
    backend.nothingFails();
    enter("body_pos_xyzWidget", 1, "1");
    click("apply_button");
    expectPoints(backend.body("standard", 1).markers, seenFrom({14, 1, 0}, before));
  });
}

TEST_F(Apply, ARefusedTransformIsReportedAndTheBodyIsReadAgain) {
  backend.disturb = [](int, const std::string&, const std::string& text) -> std::optional<FakeChannel::Answer> {
    return text.find("korvex2 body transform") == 0 ? std::optional<FakeChannel::Answer>({0, "korvex2 error"})
                                                    : std::nullopt;
  };
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    heard();
    click("apply_button");
    EXPECT_THAT(heard(), ElementsAreArray(
                             joined({{"send_raw_command korvex2 tracking stop", transformOf("standard", 1, {-14, 0, 0}),
                                      report(transformFailure), "send_raw_command korvex2 tracking start"},
                                     fetchOf("standard", 1)})));
    // What is shown is what the backend has.
    EXPECT_EQ(cells("tableWidget_data").front(), "1|10.00|20.00|30.00");
    EXPECT_FALSE(canvas().isBodyModified());
  });
}

TEST_F(Apply, ABodyThatCannotBeReadAgainIsNotSentTwice) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  for (const char* const next : {"apply_button", "ok_button"}) {
    SCOPED_TRACE(next);
    backend.body("standard", 1).markers = before;
    run([&] {
      choose(cupRow);
      enter("body_pos_xyzWidget", 0, "14");
      backend.failAll("body marker standard b01");
      click("apply_button");
      EXPECT_THAT(backend.io.reports(), ElementsAre("Error: Unable to check body marker info"));
      EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
      EXPECT_FALSE(enabled("apply_button"));
      EXPECT_EQ(transforms().size(), 1U);
      backend.nothingFails();
      // The next change is sent on its own.
      enter("body_pos_xyzWidget", 1, "3");
      heard();
      click(next);
      EXPECT_THAT(heard(), Contains(transformOf("standard", 1, {0, -3, 0})));
    });
    heard();
    expectPoints(backend.body("standard", 1).markers, seenFrom({14, 3, 0}, before));
  }
}

TEST_F(Apply, ABodyThatCannotBeReadAgainIsNotSentByOkAloneEither) {
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    backend.failAll("body number_of_marker");
    click("apply_button");
    heard();
    click("ok_button");
    EXPECT_FALSE(dialog->isVisible());
  });
  EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
}

TEST_F(Apply, AChangeWrittenOnTheWayToABodyThatCannotBeFetchedIsNotSentTwice) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "14");
    backend.failAll("body number_of_marker wandgrip");
    choose(penRow);
    EXPECT_EQ(bodies().currentIndex(), cupRow);
    EXPECT_EQ(cells("tableWidget_data").front(), "1|-4.00|20.00|30.00");
    EXPECT_FALSE(enabled("apply_button"));
    enter("body_pos_xyzWidget", 1, "3");
    click("ok_button");
  });
  EXPECT_THAT(transforms(), ElementsAre(StartsWith("send_raw_command korvex2 body transform standard b01 -14.000 "),
                                        testing::ContainsRegex(" b01 -?0.000 -3.000 ")));
  expectPoints(backend.body("standard", 1).markers, seenFrom({14, 3, 0}, before));
}

TEST_F(Apply, EachAppliedChangeStartsFromTheOneBefore) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "10");
    click("apply_button");
    enter("body_pos_xyzWidget", 0, "5");
    click("apply_button");
    EXPECT_THAT(transforms(), ElementsAre(StartsWith("send_raw_command korvex2 body transform standard b01 -10.000 "),
                                          StartsWith("send_raw_command korvex2 body transform standard b01 -5.000 ")));
    click("ok_button");
  });
  expectPoints(backend.body("standard", 1).markers, seenFrom({15, 0, 0}, before));
}

TEST_F(Apply, NumbersAreSentWithTheDecimalPointInEveryLocale) {
  const QLocale before;
  QLocale::setDefault(QLocale(QLocale::German));
  run([&] {
    choose(cupRow);
    enter("body_pos_xyzWidget", 0, "1,5");
    click("apply_button");
    EXPECT_THAT(transforms(), ElementsAre(StartsWith("send_raw_command korvex2 body transform standard b01 -1.500 ")));
  });
  QLocale::setDefault(before);
}

}  // namespace
