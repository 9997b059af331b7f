// What the single controls do: coordinate-system buttons, view, data view, help, keys.
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QStackedWidget>

#include "dialogtest.h"
#include "helpdialog.h"
#include "setaxisdialog.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Operations : public DialogTest {
 protected:
  std::vector<Point> shown() {
    std::vector<Point> points;
    for (const bsVector& v : canvas().give_data()) {
      points.push_back({v.x, v.y, v.z});
    }
    return points;
  }
  const std::vector<Point>& cup() { return backend.body("standard", 1).markers; }
  void expectOneStepToApply() {
    EXPECT_EQ(canvas().getBody().getUndoCount(), 1U);
    EXPECT_TRUE(enabled("apply_button"));
    EXPECT_TRUE(enabled("undo_button"));
    const std::vector<Point> points = shown();
    ASSERT_FALSE(points.empty());
    EXPECT_EQ(cells("tableWidget_data").back(),
              std::to_string(points.size()) + "|" + fixedText(points.back()[0] + 0.0, 2) + "|" +
                  fixedText(points.back()[1] + 0.0, 2) + "|" + fixedText(points.back()[2] + 0.0, 2));
  }
  void chooseInAxisDialog(int axisToSet, int axisToPreserve, const char* button) {
    watch.expectWindow([=](QWidget* window) {
      ASSERT_NE(qobject_cast<SetAxisDialog*>(window), nullptr);
      window->findChild<QComboBox*>("comboBox_axisToSet")->setCurrentIndex(axisToSet);
      window->findChild<QComboBox*>("comboBox_axisToPreserve")->setCurrentIndex(axisToPreserve);
      QTest::mouseClick(window->findChild<QAbstractButton*>(button), Qt::LeftButton);
    });
  }
};

TEST_F(Operations, TheOriginGoesToTheFirstSelectedMarker) {
  run([&] {
    choose(cupRow);
    select({4, 2});
    click("set_origin_button");
    expectPoints(shown(), seenFrom(cup()[4], cup()));
    expectOneStepToApply();
  });
}

TEST_F(Operations, TheOriginGoesToTheCentreOfGravityAndTheAxesStay) {
  run([&] {
    choose(cupRow);
    click("set_origin_cog_button");
    expectPoints(shown(), seenFrom(meanOf(cup()), cup()));
    expectOneStepToApply();
  });
}

TEST_F(Operations, TheAxisRunsFromTheFirstToTheSecondSelectedMarker) {
  run([&] {
    choose(cupRow);
    select({1, 3});
    chooseInAxisDialog(2, 0, "okButton");  // z along the markers, x preserved
    click("set_axis_button");
    const std::vector<Point> points = shown();
    const Point d = seenFrom(points[1], {points[3]})[0];
    EXPECT_NEAR(d[0], 0.0, 1e-9);
    EXPECT_NEAR(d[1], 0.0, 1e-9);
    EXPECT_GT(d[2], 0.0);
    expectOneStepToApply();
  });
}

TEST_F(Operations, ACancelledAxisChangesNothing) {
  run([&] {
    choose(cupRow);
    select({1, 3});
    chooseInAxisDialog(2, 0, "cancelButton");
    click("set_axis_button");
    EXPECT_FALSE(canvas().isBodyModified());
    EXPECT_FALSE(enabled("undo_button"));
    expectPoints(shown(), cup());
  });
}

TEST_F(Operations, TheFrameOfTheBodyStandsOnItsMarkers) {
  // Longest distance: markers 1-2; the nearest to either of them is marker 3, beside marker 1.
  backend.body("standard", 1).markers = {{0, 0, 0}, {100, 0, 0}, {1, 10, 0}, {30, 40, 0}, {60, 35, 5}};
  backend.body("standard", 1).emissions.resize(5);
  run([&] {
    choose(cupRow);
    enter("body_ori_xyzWidget", 2, "77");
    click("pushButton_due_to_body");
    expectPoints(shown(), cup(), 1e-6);
    EXPECT_EQ(canvas().getBody().getUndoCount(), 2U);
  });
}

TEST_F(Operations, RoomButtonsDoNothingWhileThePoseIsNotFollowed) {
  run([&] {
    choose(cupRow);
    heard();
    dialog->on_pushButton_due_to_room_clicked();
    dialog->on_pushButton_due_to_room_0_clicked();
    dialog->on_adjust_axes_to_room_button_clicked();
    EXPECT_FALSE(canvas().isBodyModified());
    EXPECT_FALSE(enabled("apply_button"));
    expectPoints(shown(), cup());
    EXPECT_THAT(heard(), IsEmpty());
  });
}

TEST_F(Operations, ARefreshOfTheTablesShowsTheCanvas) {
  run([&] {
    choose(cupRow);
    find<QTableWidget>("tableWidget_data")->setRowCount(0);
    dialog->table_body_change();
    EXPECT_EQ(cells("tableWidget_data").size(), 6U);
  });
}

TEST_F(Operations, ResetViewBringsTheCameraBack) {
  run([&] {
    choose(cupRow);
    canvas().setViewPosition(bsVector(1, 2, 3));
    canvas().setViewOrientation(bsQuaternion(50.0, bsVector(1, 0, 0)).toMatrix());
    click("reset_view_button");
    EXPECT_TRUE(canvas().getViewPosition() == bsVector(0, 0, -300));
    EXPECT_TRUE(canvas().get_view().orientation.toMatrix() == bsMatrix::getIdentityMatrix());
    canvas().translateView(1, 0, 0);  // from the stored view, which was reset as well
    EXPECT_TRUE(canvas().getViewPosition() == bsVector(1, 0, -300));
  });
}

TEST_F(Operations, ResetViewInAnotherModeTurnsBackOnly) {
  run([&] {
    canvas().setModificationMode(ABC_MODIFY_SUSPENDED);
    canvas().setViewPosition(bsVector(1, 2, 3));
    canvas().setViewOrientation(bsQuaternion(50.0, bsVector(1, 0, 0)).toMatrix());
    click("reset_view_button");
    EXPECT_TRUE(canvas().getViewPosition() == bsVector(1, 2, 3));
    EXPECT_TRUE(canvas().get_view().orientation.toMatrix() == bsMatrix::getIdentityMatrix());
  });
}

TEST_F(Operations, TheDataViewTakesThePlaceOfTheGraphicViewAndBack) {
  run([&] {
    choose(cupRow);
    menuEntry("Data view")->trigger();
    EXPECT_TRUE(find("tableWidget_data")->isVisible());
    EXPECT_FALSE(canvas().isVisible());
    EXPECT_FALSE(enabled("reset_view_button"));
    menuEntry("Graphic view")->trigger();
    EXPECT_TRUE(canvas().isVisible());
    EXPECT_TRUE(enabled("reset_view_button"));
    EXPECT_TRUE(canvas().hasFocus());
  });
}

TEST_F(Operations, HelpIsShownModallyAndGone) {
  run([&] {
    watch.expectWindow([](QWidget* window) {
      ASSERT_NE(qobject_cast<HelpDialog*>(window), nullptr);
      EXPECT_TRUE(window->isModal());
      QTest::mouseClick(window->findChild<QAbstractButton*>("exit_button"), Qt::LeftButton);
    });
    click("help_button");
    EXPECT_EQ(dialog->findChild<HelpDialog*>(), nullptr);
  });
}

TEST_F(Operations, EveryResizeSetsTheEmissionColumns) {
  run([&] {
    choose(penRow);
    auto* const table = find<QTableWidget>("tableWidget_emissions");
    for (const int column : {1, 2, 3}) {
      table->setColumnWidth(column, 33);
    }
    dialog->resize(dialog->width() + 7, dialog->height() + 5);
    ASSERT_TRUE(QTest::qWaitFor([&] { return table->columnWidth(1) != 33; }));
    EXPECT_EQ(table->columnWidth(1), 80);
    EXPECT_EQ(table->columnWidth(2), 80);
    EXPECT_EQ(table->columnWidth(3), 80);
  });
}

TEST_F(Operations, TheMnemonicOfTheBodyLabelGivesTheSelectorTheFocusByItsNativeState) {
  run([&] {
    choose(cupRow);
    for (const quint32 state : {0U, 0x210U, 0x211U}) {
      canvas().setFocus();
      QKeyEvent key(QEvent::KeyPress, Qt::Key_Y, Qt::NoModifier, 0, 0, state, "y");
      key.ignore();
      QApplication::sendEvent(dialog.get(), &key);
      EXPECT_TRUE(key.isAccepted()) << state;
      EXPECT_EQ(bodies().hasFocus(), state == 529U) << state;
    }
  });
}

TEST_F(Operations, OtherKeysAreTheStandardDialogs) {
  run([&] {
    choose(cupRow);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_F9, Qt::NoModifier);
    QApplication::sendEvent(dialog.get(), &key);
    EXPECT_FALSE(key.isAccepted());
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_FALSE(dialog->isVisible());
  });
}

TEST_F(Operations, TheDeleteKeyWhileTypingBelongsToTheEntry) {
  run([&] {
    choose(cupRow);
    select({2});
    type("body_pos_xyzWidget", 0, "14");
    press(Qt::Key_Delete);  // nothing is asked, no marker is at stake
    EXPECT_EQ(canvas().getBodyNumMarker(), 6U);
  });
}

TEST_F(Operations, EveryShortcutPressesItsButton) {
  run([&] {
    choose(cupRow);
    const auto shortcut = [&](Qt::Key key, const std::function<bool()>& done) {
      press(key, Qt::AltModifier);
      EXPECT_TRUE(QTest::qWaitFor(done, 1000)) << "Alt+" << static_cast<char>(key);
    };
    select({2});
    shortcut(Qt::Key_O, [&] { return canvas().getBody().getUndoCount() == 1; });
    shortcut(Qt::Key_U, [&] { return canvas().getBody().getRedoCount() == 1; });
    shortcut(Qt::Key_R, [&] { return canvas().getBody().getUndoCount() == 1; });
    canvas().setViewPosition(bsVector(1, 2, 3));
    shortcut(Qt::Key_V, [&] { return canvas().getViewPosition() == bsVector(0, 0, -300); });
    shortcut(Qt::Key_S, [&] { return find<QTabWidget>("tabWidget")->currentIndex() == 1; });
    shortcut(Qt::Key_B, [&] { return canvas().getBody().getUndoCount() == 2; });
    shortcut(Qt::Key_G, [&] { return find<QTabWidget>("tabWidget")->currentIndex() == 0; });
    shortcut(Qt::Key_T, [&] { return canvas().isOnline(); });
    shortcut(Qt::Key_Y, [&] { return bodies().hasFocus(); });
    shortcut(Qt::Key_A, [&] { return !canvas().isBodyModified(); });
  });
}

}  // namespace
