// The operator at a numeric entry: what each way of editing reports, in order, and how often an edit begins and ends.
#include <gmock/gmock.h>

#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QVBoxLayout>
#include <QtTest>

#include <algorithm>
#include <memory>

#include "bsDoubleWidget.h"
#include "entryfixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// One entry in an active window. `connectReset` wires it as a relative input: each finished edit resets it.
class DoubleWidgetEdit : public testing::Test {
 protected:
  void open(bsDoubleMode mode, double minimum = -999.0, double maximum = 999.0) {
    widget = new bsDoubleWidget(nullptr, mode, minimum, maximum, false);
    window = std::make_unique<EntryWindow>(widget);
    record(widget, &log);
    spin = spinOf(widget);
    wheel = wheelOf(widget);
    ASSERT_TRUE(window->activate());
    ASSERT_THAT(log, IsEmpty());
  }
  void connectReset() { QObject::connect(widget, &bsDoubleWidget::editingFinished, widget, &bsDoubleWidget::reset); }
  void type(const char* text) {
    spin->setFocus();
    spin->selectAll();
    QTest::keyClicks(spin, text);
  }

  Log log;  // outlives the window, whose end may end an edit
  std::unique_ptr<EntryWindow> window;
  bsDoubleWidget* widget = nullptr;
  QDoubleSpinBox* spin = nullptr;
  QwtWheel* wheel = nullptr;
};

}  // namespace

TEST_F(DoubleWidgetEdit, TypingReportsEachKeyAndReturnEndsOneEdit) {
  open(bsDoubleSpin);
  type("14");
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "value 14"));
  QTest::keyClick(spin, Qt::Key_Return);
  // The spin box confirms its value on Return, changed or not.
  EXPECT_THAT(take(&log), ElementsAre("value 14", "finished"));
  EXPECT_FALSE(spin->hasFocus());
  EXPECT_EQ(widget->value(), 14.0);
  window->elsewhere->setFocus();
  EXPECT_THAT(take(&log), IsEmpty());
  type("7");
  window->elsewhere->setFocus();
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 7", "finished")) << "the next edit has its own beginning";
}

TEST_F(DoubleWidgetEdit, ResetWithinTheFinishedEditAddsOnlyTheZero) {
  open(bsDoubleSpin);
  connectReset();
  for (int round = 0; round < 2; ++round) {
    type("14");
    QTest::keyClick(spin, Qt::Key_Return);
    EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "value 14", "value 14", "finished", "value 0"));
    EXPECT_EQ(widget->value(), 0.0);
    EXPECT_EQ(spin->cleanText(), spin->textFromValue(0.0));
    window->elsewhere->setFocus();
    QApplication::processEvents();
    EXPECT_THAT(take(&log), IsEmpty()) << "the zero belongs to the edit that ended";
  }
}

TEST_F(DoubleWidgetEdit, TabEndsOneEdit) {
  open(bsDoubleSpin);
  connectReset();
  type("5");
  QTest::keyClick(spin, Qt::Key_Tab);
  EXPECT_FALSE(spin->hasFocus());
  EXPECT_TRUE(window->elsewhere->hasFocus()) << "the focus goes where the operator sent it";
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 5", "finished", "value 0"));
  type("6");
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 6"));
}

TEST_F(DoubleWidgetEdit, ArrowsEditUntilTheFocusLeaves) {
  open(bsDoubleSpin);
  connectReset();
  spin->setFocus();
  QTest::keyClick(spin, Qt::Key_Up);
  QTest::keyClick(spin, Qt::Key_Up);
  QTest::keyClick(spin, Qt::Key_Down);
  scroll(spin, 120);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "value 2", "value 1", "value 2"));
  leave(widget);
  EXPECT_THAT(take(&log), IsEmpty()) << "only an edit on the wheel ends with the leaving mouse";
  window->elsewhere->setFocus();
  EXPECT_THAT(take(&log), ElementsAre("finished", "value 0"));
}

TEST_F(DoubleWidgetEdit, SpinButtonsEditUntilTheFocusLeaves) {
  open(bsDoubleSpin);
  QStyleOptionSpinBox option;
  option.initFrom(spin);
  option.subControls = QStyle::SC_All;
  const QRect up = spin->style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, spin);
  QTest::mouseClick(spin, Qt::LeftButton, Qt::NoModifier, up.center());
  EXPECT_TRUE(spin->hasFocus());
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1"));
  window->elsewhere->setFocus();
  EXPECT_THAT(take(&log), ElementsAre("finished"));
}

TEST_F(DoubleWidgetEdit, FocusThatPassesThroughIsNoEdit) {
  open(bsDoubleSpin);
  spin->setFocus();
  window->elsewhere->setFocus();
  EXPECT_THAT(log, IsEmpty());
}

TEST_F(DoubleWidgetEdit, ReturnDoesNotPressTheDialogsDefaultButton) {
  QDialog dialog;
  auto* const layout = new QVBoxLayout(&dialog);
  auto* const entry = new bsDoubleWidget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  auto* const ok = new QPushButton("OK");
  layout->addWidget(entry);
  layout->addWidget(ok);
  ok->setDefault(true);
  const QSignalSpy clicked(ok, &QPushButton::clicked);
  record(entry, &log);
  ASSERT_TRUE(showActive(&dialog));
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
    spinOf(entry)->setFocus();
    spinOf(entry)->selectAll();
    QTest::keyClicks(spinOf(entry), "3");
    QTest::keyClick(spinOf(entry), key);
    EXPECT_EQ(take(&log).back(), "finished");
  }
  EXPECT_EQ(clicked.count(), 0);
  EXPECT_TRUE(dialog.isVisible());
}

TEST_F(DoubleWidgetEdit, WheelDragIsOneEditFromPressToRelease) {
  open(bsDoubleWheel);
  connectReset();
  press(wheel);
  EXPECT_THAT(take(&log), ElementsAre("begin"));
  EXPECT_FALSE(spin->hasFocus()) << "a hidden field takes no focus";
  dragTo(wheel, 40);
  EXPECT_GT(wheel->value(), 0.0);
  EXPECT_EQ(widget->value(), draggedTo(wheel->value()));
  dragTo(wheel, 80);
  const double far = widget->value();
  EXPECT_EQ(far, draggedTo(wheel->value()));
  EXPECT_GT(far, 0.0);
  EXPECT_EQ(take(&log).size(), 2U);
  leave(widget);
  EXPECT_THAT(take(&log), IsEmpty()) << "a drag may leave the widget";
  release(wheel);
  EXPECT_THAT(take(&log), ElementsAre("finished", "value 0"));
  EXPECT_EQ(wheel->value(), 0.0);
  leave(widget);
  EXPECT_THAT(take(&log), IsEmpty());
  press(wheel);
  EXPECT_THAT(take(&log), ElementsAre("begin"));
  release(wheel);
  EXPECT_THAT(take(&log), ElementsAre("finished"));
}

TEST_F(DoubleWidgetEdit, WheelDragTakesAndGivesUpTheFocusOfAShownSpinBox) {
  open(bsDoubleSpinWheel);
  connectReset();
  press(wheel);
  EXPECT_TRUE(spin->hasFocus());
  dragTo(wheel, 40);
  release(wheel);
  EXPECT_FALSE(spin->hasFocus());
  const Log all = take(&log);
  EXPECT_EQ(std::count(all.begin(), all.end(), "begin"), 1);
  EXPECT_EQ(std::count(all.begin(), all.end(), "finished"), 1);
  EXPECT_EQ(all.back(), "value 0");
}

TEST_F(DoubleWidgetEdit, ReportsTheBeginningWithTheFocusAndTheEndWithoutFocusAndWithTheWheelAtZero) {
  open(bsDoubleSpinWheel);
  std::vector<bool> focused;
  double wheelAtEnd = -1.0;
  QObject::connect(widget, &bsDoubleWidget::editingBegin, widget, [&] { focused.push_back(spin->hasFocus()); });
  QObject::connect(widget, &bsDoubleWidget::editingFinished, widget, [&] {
    focused.push_back(spin->hasFocus());
    wheelAtEnd = wheel->value();
  });
  scroll(wheel, 240);
  ASSERT_EQ(wheel->value(), 2.0);
  leave(widget);
  EXPECT_THAT(focused, ElementsAre(true, false));
  EXPECT_EQ(wheelAtEnd, 0.0);
}

TEST_F(DoubleWidgetEdit, DragAcrossTheSeamStepsByThePeriodOf361) {
  open(bsDoubleWheel);
  press(wheel);
  dragTo(wheel, -40);
  EXPECT_GT(wheel->value(), 180.0);
  EXPECT_EQ(widget->value(), wheel->value() - 361.0);
  dragTo(wheel, 0);
  EXPECT_EQ(wheel->value(), 0.0);
  EXPECT_EQ(widget->value(), 0.0) << "the same way back";
  release(wheel);
}

TEST_F(DoubleWidgetEdit, DragFrom350To10StepsBy21) {
  open(bsDoubleWheel);
  widget->setMouseEditingBegin();
  widget->wheelChanged(100.0);
  widget->wheelChanged(200.0);
  widget->wheelChanged(350.0);
  EXPECT_EQ(widget->value(), 350.0);
  widget->wheelChanged(10.0);
  EXPECT_EQ(widget->value(), 371.0);
  widget->wheelChanged(350.0);
  EXPECT_EQ(widget->value(), 350.0);
  widget->setMouseEditingFinished();
}

TEST_F(DoubleWidgetEdit, HalfATurnIsStillTakenAsItIs) {
  open(bsDoubleWheel);
  widget->wheelChanged(180.0);
  EXPECT_EQ(widget->value(), 180.0);
  widget->wheelChanged(0.0);
  EXPECT_EQ(widget->value(), 0.0);
  widget->wheelChanged(181.0);
  EXPECT_EQ(widget->value(), -180.0) << "beyond half a turn it is the other way round";
}

TEST_F(DoubleWidgetEdit, PartOfAStepIsTruncatedTowardZero) {
  open(bsDoubleWheel);
  widget->wheelChanged(2.9);
  EXPECT_EQ(widget->value(), 2.0);
  widget->wheelChanged(1.0);
  EXPECT_EQ(widget->value(), 1.0) << "-1.9 is one step back";
  widget->wheelChanged(1.9);
  EXPECT_EQ(widget->value(), 1.0);
}

TEST_F(DoubleWidgetEdit, WheelCountsSingleSteps) {
  open(bsDoubleWheel);
  widget->setStep(0.5);
  widget->wheelChanged(3.0);
  EXPECT_EQ(widget->value(), 1.5);
}

TEST_F(DoubleWidgetEdit, ScrollWheelEditEndsWhenTheMouseLeaves) {
  open(bsDoubleWheel);
  connectReset();
  scroll(wheel, 120);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1"));
  scroll(wheel, 240);
  scroll(wheel, -120);
  EXPECT_THAT(take(&log), ElementsAre("value 3", "value 2"));
  leave(widget);
  EXPECT_THAT(take(&log), ElementsAre("finished", "value 0"));
  EXPECT_EQ(wheel->value(), 0.0);
  leave(widget);
  EXPECT_THAT(take(&log), IsEmpty());
  scroll(wheel, -120);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value -2")) << "the first notch back crosses the seam: 359 less 361";
  leave(widget);
  EXPECT_THAT(take(&log), ElementsAre("finished", "value 0"));
}

TEST_F(DoubleWidgetEdit, LeaveEventIsAccepted) {
  open(bsDoubleWheel);
  QEvent event(QEvent::Leave);
  event.ignore();
  QApplication::sendEvent(widget, &event);
  EXPECT_TRUE(event.isAccepted());
}

TEST_F(DoubleWidgetEdit, FineScrollingAddsUpToNotches) {
  open(bsDoubleWheel);
  for (int i = 0; i < 3; ++i) {
    scroll(wheel, 80);
  }
  EXPECT_EQ(widget->value(), 2.0);
  for (int i = 0; i < 8; ++i) {
    scroll(wheel, 30, Qt::ControlModifier);
  }
  EXPECT_EQ(widget->value(), 22.0) << "a page a notch, not a page an event";
}

TEST_F(DoubleWidgetEdit, ScrollWheelEditWithAShownSpinBoxEndsOnce) {
  open(bsDoubleSpinWheel);
  connectReset();
  scroll(wheel, 120);
  EXPECT_TRUE(spin->hasFocus());
  leave(widget);
  EXPECT_FALSE(spin->hasFocus());
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "finished", "value 0"));
  scroll(wheel, 120);
  window->elsewhere->setFocus();
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "finished", "value 0"));
  leave(widget);
  EXPECT_THAT(take(&log), IsEmpty());
}

TEST_F(DoubleWidgetEdit, EndedWheelEditDoesNotEndATypedOne) {
  open(bsDoubleSpinWheel);
  connectReset();
  scroll(wheel, 120);
  window->elsewhere->setFocus();
  take(&log);
  type("25");
  leave(widget);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 2", "value 25"));
  widget->reset();
  leave(widget);
  EXPECT_THAT(take(&log), ElementsAre("value 0")) << "a reset is no turn of the wheel either";
}

TEST_F(DoubleWidgetEdit, ScrollingOnWithADragIsOneEdit) {
  open(bsDoubleWheel);
  scroll(wheel, 120);
  press(wheel);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1"));
  leave(widget);
  EXPECT_THAT(take(&log), IsEmpty()) << "the press made the edit the drag's";
  release(wheel);
  EXPECT_THAT(take(&log), ElementsAre("finished"));
}

TEST_F(DoubleWidgetEdit, KeysTurnTheWheelUntilFocusOrMouseLeaves) {
  open(bsDoubleWheel);
  connectReset();
  wheel->setFocus();
  QTest::keyClick(wheel, Qt::Key_Up);
  QTest::keyClick(wheel, Qt::Key_PageUp);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "value 11"));
  EXPECT_TRUE(wheel->hasFocus());
  QTest::keyClick(wheel, Qt::Key_Tab);
  EXPECT_THAT(take(&log), ElementsAre("finished", "value 0"));
  wheel->setFocus();
  QTest::keyClick(wheel, Qt::Key_Right);
  leave(widget);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "finished", "value 0"));
}

TEST_F(DoubleWidgetEdit, KeyEditOnTheWheelGoesOnWhileTheSpinBoxHoldsItsFocus) {
  open(bsDoubleSpinWheel);
  wheel->setFocus();
  QTest::keyClick(wheel, Qt::Key_Up);
  EXPECT_TRUE(spin->hasFocus());
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1"));
  leave(widget);
  EXPECT_THAT(take(&log), ElementsAre("finished"));
}

TEST_F(DoubleWidgetEdit, WheelStopsAtTheEndsOfTheRange) {
  open(bsDoubleWheel, 0.0, 2.0);
  scroll(wheel, 360);
  EXPECT_EQ(widget->value(), 2.0);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 2"));
  scroll(wheel, 120);
  EXPECT_THAT(take(&log), IsEmpty());
}

TEST_F(DoubleWidgetEdit, HidingEndsAnEditOnTheWheel) {
  open(bsDoubleWheel);
  scroll(wheel, 120);
  take(&log);
  widget->hide();
  EXPECT_THAT(take(&log), ElementsAre("finished"));
  widget->show();
  press(wheel);
  dragTo(wheel, 40);
  take(&log);
  widget->hide();
  EXPECT_THAT(take(&log), ElementsAre("finished"));
  widget->show();
  scroll(wheel, 120);
  leave(widget);
  EXPECT_EQ(take(&log).front(), "begin");
}

TEST_F(DoubleWidgetEdit, ResetSetsWheelAndValueToZeroAndReportsIt) {
  open(bsDoubleSpinWheel);
  widget->setValue(8.0);
  take(&log);
  widget->reset();
  EXPECT_EQ(widget->value(), 0.0);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 0"));
  EXPECT_TRUE(window->elsewhere->hasFocus()) << "the operator keeps the focus";
  widget->setEditingFinished();
  EXPECT_THAT(take(&log), IsEmpty()) << "a reset leaves no edit open";
  widget->reset();
  EXPECT_THAT(take(&log), IsEmpty()) << "nothing changed";
  type("3");
  window->elsewhere->setFocus();
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 3", "finished"));
}

TEST_F(DoubleWidgetEdit, ResetWithinAnOpenEditLeavesItOpen) {
  open(bsDoubleSpin);
  type("3");
  widget->reset();
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 3", "value 0"));
  QTest::keyClicks(spin, "4");
  window->elsewhere->setFocus();
  const Log rest = take(&log);
  EXPECT_EQ(std::count(rest.begin(), rest.end(), "begin"), 0);
  EXPECT_EQ(rest.back(), "finished");
}

TEST_F(DoubleWidgetEdit, ResetDuringADragStillEndsWithTheRelease) {
  open(bsDoubleWheel);
  press(wheel);
  dragTo(wheel, 40);
  widget->reset();
  EXPECT_EQ(widget->value(), 0.0);
  take(&log);
  release(wheel);
  EXPECT_THAT(take(&log), ElementsAre("finished"));
  scroll(wheel, 120);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1"));
}

TEST_F(DoubleWidgetEdit, ResetBeforeTheFirstMoveDoesNotBreakADrag) {
  open(bsDoubleWheel);
  press(wheel);
  widget->reset();
  dragTo(wheel, 40);
  EXPECT_GT(widget->value(), 0.0);
  release(wheel);
  EXPECT_EQ(take(&log).back(), "finished");
}

TEST_F(DoubleWidgetEdit, ResetWheelKeepsTheValue) {
  open(bsDoubleSpinWheel);
  scroll(wheel, 240);
  take(&log);
  widget->resetWheel();
  EXPECT_EQ(wheel->value(), 0.0);
  EXPECT_EQ(widget->value(), 2.0);
  EXPECT_THAT(take(&log), IsEmpty());
  scroll(wheel, 120);
  EXPECT_EQ(widget->value(), 3.0);
}

TEST_F(DoubleWidgetEdit, ResetOnEveryValueDoesNotConfuseTheWheel) {
  open(bsDoubleWheel);
  QObject::connect(widget, &bsDoubleWidget::valueChanged, widget, [this](double value) {
    if (value != 0.0) {
      widget->reset();
    }
  });
  scroll(wheel, 120);
  scroll(wheel, 120);
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 1", "value 0", "value 1", "value 0"));
}

TEST_F(DoubleWidgetEdit, RangeThatMovesTheValueLeavesNoEditOpen) {
  open(bsDoubleSpin);
  widget->setRange(5.0, 10.0);
  EXPECT_EQ(widget->value(), 5.0);
  EXPECT_EQ(take(&log).back(), "value 5");
  EXPECT_TRUE(window->elsewhere->hasFocus());
  type("7");
  window->elsewhere->setFocus();
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 7", "finished"));
}

TEST_F(DoubleWidgetEdit, EditOnTheWheelEndsATypedEditElsewhereFirst) {
  auto* const typed = new bsDoubleWidget(nullptr, bsDoubleSpinWheel, 0.0, 100.0, false);
  open(bsDoubleSpinWheel);
  window->layout()->addWidget(typed);
  typed->show();
  QApplication::processEvents();
  record(typed, &log);
  QObject::connect(typed, &bsDoubleWidget::editingFinished, widget, &bsDoubleWidget::reset);
  spinOf(typed)->setFocus();
  spinOf(typed)->selectAll();
  QTest::keyClicks(spinOf(typed), "9");
  take(&log);
  scroll(wheel, 120);
  EXPECT_THAT(take(&log), ElementsAre("finished", "begin", "value 1"));
  scroll(wheel, 120);
  EXPECT_THAT(take(&log), ElementsAre("value 2"));
}

TEST_F(DoubleWidgetEdit, ClosingTheWindowEndsATypedEditOnce) {
  open(bsDoubleSpin);
  connectReset();
  type("2");
  window->hide();
  EXPECT_THAT(take(&log), ElementsAre("begin", "value 2", "finished", "value 0"));
}

TEST_F(DoubleWidgetEdit, WidgetMayBeDeletedWhileItReportsTheEnd) {
  open(bsDoubleSpin);
  QObject::connect(widget, &bsDoubleWidget::editingFinished, window.get(), [this] { delete widget; });
  widget->adjustValue(1.0);
  widget->setEditingFinished();
  EXPECT_EQ(take(&log).back(), "finished");
}

TEST_F(DoubleWidgetEdit, WidgetDeletedWithTheFocusReportsNothing) {
  open(bsDoubleSpinWheel);
  scroll(wheel, 120);
  type("3");
  take(&log);
  delete widget;
  EXPECT_THAT(take(&log), IsEmpty());
}

TEST_F(DoubleWidgetEdit, WindowOfItsOwnDeletedInAnEditReportsNothing) {
  for (const bool onWheel : {false, true}) {
    auto entry = std::make_unique<bsDoubleWidget>(nullptr, onWheel ? bsDoubleWheel : bsDoubleSpin, 0.0, 100.0, false);
    record(entry.get(), &log);
    ASSERT_TRUE(showActive(entry.get()));
    QWidget* const field = onWheel ? static_cast<QWidget*>(wheelOf(entry.get())) : spinOf(entry.get());
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Up);
    EXPECT_THAT(take(&log), ElementsAre("begin", "value 1"));
    EXPECT_TRUE(field->hasFocus());
    entry.reset();
    EXPECT_THAT(take(&log), IsEmpty());
  }
}
