// Mouse and wheel over the canvas, by real events.
#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QPointer>
#include <QTest>
#include <QWheelEvent>

#include "canvastest.h"

using namespace canvastest;

namespace {

using Log = std::vector<std::string>;

class CanvasMouse : public testing::Test {
 protected:
  void SetUp() override {
    load(canvas, tetrahedron());
    show(canvas);
    // The canvas alone: its owner makes this connection.
    QObject::connect(&canvas, &GLCanvas::storeViewRequest, &canvas, &GLCanvas::saveCurrentView);
    log.take();
    canvas.takeRedraws();
  }

  void press(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, QPoint at) {
    held = button;
    send(QEvent::MouseButtonPress, button, button, modifiers, at);
  }
  void move(QPoint to, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    send(QEvent::MouseMove, Qt::NoButton, held, modifiers, to);
  }
  void release(QPoint at, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    send(QEvent::MouseButtonRelease, held, Qt::NoButton, modifiers, at);
    held = Qt::NoButton;
  }
  bool wheel(int delta, Qt::KeyboardModifiers modifiers) {
    QWheelEvent event(QPointF(200, 150), canvas.mapToGlobal(QPoint(200, 150)), QPoint(), QPoint(0, delta), Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&canvas, &event);
    return event.isAccepted();
  }
  void expectView(const Rotation& turn, const Point& position) {
    expectPose(canvas.get_view().toMatrix(), turn, position);
  }

  CountingCanvas canvas;
  SignalLog log{canvas};
  Qt::MouseButton held = Qt::NoButton;

 private:
  void send(QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers,
            QPoint at) {
    QMouseEvent event(type, at, canvas.mapToGlobal(at), button, buttons, modifiers);
    QApplication::sendEvent(&canvas, &event);
  }
};

}  // namespace

TEST_F(CanvasMouse, CtrlAndLeftDragPansWithThePointer) {
  press(Qt::LeftButton, Qt::ControlModifier, {100, 100});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_PAN);
  EXPECT_EQ(log.take(), Log{});
  move({110, 105});
  expectView(noTurn, {10, -5, -300});
  EXPECT_EQ(log.take(), Log{"storeViewRequest"});
  move({107, 100});
  expectView(noTurn, {7, 0, -300});
  EXPECT_EQ(log.take(), Log{"storeViewRequest"});
  release({107, 100});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_IDLE);
  EXPECT_EQ(log.take(), Log{"storeViewRequest"});
  expectView(noTurn, {7, 0, -300});
}

TEST_F(CanvasMouse, ADragByTheToolkitsOwnWindowEventsPansToo) {
  QWindow* window = canvas.windowHandle();
  QTest::mousePress(window, Qt::LeftButton, Qt::ControlModifier, QPoint(100, 100));
  QTest::mouseMove(window, QPoint(110, 105));
  QTest::mouseRelease(window, Qt::LeftButton, Qt::ControlModifier, QPoint(110, 105));
  expectView(noTurn, {10, -5, -300});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_IDLE);
}

TEST_F(CanvasMouse, ADragIsDisplacedFromTheSavedViewWhereNobodySavesIt) {
  QObject::disconnect(&canvas, &GLCanvas::storeViewRequest, &canvas, &GLCanvas::saveCurrentView);
  press(Qt::LeftButton, Qt::ControlModifier, {100, 100});
  move({110, 100});
  move({111, 100});
  expectView(noTurn, {1, 0, -300});
}

TEST_F(CanvasMouse, ShiftAndLeftDragDollies) {
  press(Qt::LeftButton, Qt::ShiftModifier, {100, 100});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_DOLLY);
  move({150, 120});
  expectView(noTurn, {0, 0, -280});
  move({10, 110});
  expectView(noTurn, {0, 0, -290});
  release({10, 110});
  EXPECT_EQ(log.take(), (Log{"storeViewRequest", "storeViewRequest", "storeViewRequest"}));
}

TEST_F(CanvasMouse, CtrlAndRightDragRotates) {
  press(Qt::RightButton, Qt::ControlModifier, {100, 100});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_ROTATE);
  move({120, 107});
  expectView(turnX(7) * turnY(20), {0, 0, -300});
  move({130, 107});
  expectView(turnY(10) * turnX(7) * turnY(20), {0, 0, -300});
  release({130, 107});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_IDLE);
  EXPECT_EQ(log.take(), (Log{"storeViewRequest", "storeViewRequest", "storeViewRequest"}));
}

TEST_F(CanvasMouse, CtrlGoesBeforeShift) {
  press(Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier, {100, 100});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_PAN);
  release({100, 100});
  press(Qt::RightButton, Qt::ControlModifier | Qt::ShiftModifier, {100, 100});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_ROTATE);
}

TEST_F(CanvasMouse, OnlyThePressDecidesTheMode) {
  press(Qt::LeftButton, Qt::ControlModifier, {100, 100});
  move({110, 100}, Qt::ShiftModifier);
  expectView(noTurn, {10, 0, -300});
  move({120, 100});
  expectView(noTurn, {20, 0, -300});
}

TEST_F(CanvasMouse, MovingWithoutAModeOnlyFollowsThePointer) {
  move({50, 60});
  press(Qt::LeftButton, Qt::NoModifier, {1, 1});
  log.take();
  move({100, 100});
  expectView(noTurn, {0, 0, -300});
  EXPECT_EQ(log.take(), Log{});
  canvas.setViewMode(ABC_VIEW_PAN);
  move({101, 100});
  expectView(noTurn, {1, 0, -300});
}

TEST_F(CanvasMouse, ReleasingWithoutAModeEmitsNothing) {
  press(Qt::MiddleButton, Qt::ControlModifier, {100, 100});
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_IDLE);
  canvas.takeRedraws();
  release({100, 100});
  EXPECT_EQ(log.take(), Log{});
  EXPECT_EQ(canvas.takeRedraws(), 0);
}

TEST_F(CanvasMouse, EveryPressRedraws) {
  for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}) {
    for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier}) {
      press(button, modifier, {100, 100});
      EXPECT_EQ(canvas.takeRedraws(), 1) << button << " " << modifier;
      release({100, 100});
      canvas.takeRedraws();
    }
  }
}

TEST_F(CanvasMouse, ReleasingAModeRedraws) {
  press(Qt::LeftButton, Qt::ShiftModifier, {100, 100});
  canvas.takeRedraws();
  release({100, 100});
  EXPECT_EQ(canvas.takeRedraws(), 1);
}

TEST_F(CanvasMouse, DragsLeaveTheViewAloneWithoutABody) {
  canvas.unloadBody();
  log.take();
  press(Qt::LeftButton, Qt::ControlModifier, {100, 100});
  move({150, 150});
  expectView(noTurn, {0, 0, -300});
  EXPECT_EQ(log.take(), Log{});
  release({150, 150});
  EXPECT_EQ(log.take(), Log{"storeViewRequest"});
}

TEST_F(CanvasMouse, DragsLeaveTheViewAloneInOtherModificationModes) {
  canvas.setModificationMode(ABC_MODIFY_SUSPENDED);
  for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
    press(button, Qt::ControlModifier, {100, 100});
    move({150, 150});
    expectView(noTurn, {0, 0, -300});
    EXPECT_EQ(log.take(), Log{});
    release({150, 150});
    EXPECT_EQ(log.take(), Log{"storeViewRequest"});
  }
}

TEST_F(CanvasMouse, AMoveThatChangedNothingStillCountsAsTheLastPosition) {
  canvas.setModificationMode(ABC_MODIFY_SUSPENDED);
  press(Qt::LeftButton, Qt::ControlModifier, {100, 100});
  move({150, 150});
  canvas.setModificationMode(ABC_MODIFY_BODY);
  move({151, 150});
  expectView(noTurn, {1, 0, -300});
}

// --- Context menu ---

TEST_F(CanvasMouse, ARightClickOpensTheMenuAtThePointerAndReturns) {
  QMenu menu;
  menu.addAction("entry");
  canvas.set_menu(&menu);
  press(Qt::RightButton, Qt::NoModifier, {120, 80});
  EXPECT_TRUE(menu.isVisible());
  EXPECT_EQ(menu.pos(), canvas.mapToGlobal(QPoint(120, 80)));
  EXPECT_EQ(canvas.getViewMode(), ABC_VIEW_IDLE);
  EXPECT_EQ(canvas.takeRedraws(), 1);
  menu.close();
}

TEST_F(CanvasMouse, CtrlAndRightPressOpensNoMenu) {
  QMenu menu;
  menu.addAction("entry");
  canvas.set_menu(&menu);
  press(Qt::RightButton, Qt::ControlModifier, {120, 80});
  EXPECT_FALSE(menu.isVisible());
}

TEST_F(CanvasMouse, ARightClickWithoutAMenuDoesNothing) {
  press(Qt::RightButton, Qt::NoModifier, {120, 80});
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  release({120, 80});
  {
    QMenu shortLived;
    shortLived.addAction("entry");
    canvas.set_menu(&shortLived);
  }
  press(Qt::RightButton, Qt::NoModifier, {120, 80});
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  canvas.set_menu(nullptr);
  press(Qt::RightButton, Qt::NoModifier, {120, 80});
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
  EXPECT_EQ(log.take(), Log{});
}

// --- Wheel ---

TEST_F(CanvasMouse, ANotchOfTheWheelWithCtrlDolliesByThree) {
  EXPECT_TRUE(wheel(120, Qt::ControlModifier));
  expectView(noTurn, {0, 0, -297});
  EXPECT_EQ(log.take(), Log{"storeViewRequest"});
  EXPECT_GE(canvas.takeRedraws(), 1);
  wheel(-240, Qt::ControlModifier);
  expectView(noTurn, {0, 0, -303});
}

TEST_F(CanvasMouse, LessThanANotchMovesNothingAndIsStillStored) {
  for (const int delta : {119, -119, 15, -15, 7, 1, 0}) {
    wheel(delta, Qt::ControlModifier);
    expectView(noTurn, {0, 0, -300});
    EXPECT_EQ(log.take(), Log{"storeViewRequest"}) << delta;
  }
  wheel(239, Qt::ControlModifier);
  expectView(noTurn, {0, 0, -297});
  wheel(-239, Qt::ControlModifier);
  expectView(noTurn, {0, 0, -300});
}

TEST_F(CanvasMouse, TheWheelStepsByOneInOtherModificationModes) {
  canvas.setModificationMode(ABC_MODIFY_SUSPENDED);
  wheel(240, Qt::ControlModifier);
  expectView(noTurn, {0, 0, -298});
}

TEST_F(CanvasMouse, TheWheelWorksWithoutABody) {
  canvas.unloadBody();
  wheel(120, Qt::ControlModifier);
  expectView(noTurn, {0, 0, -297});
}

TEST_F(CanvasMouse, TheWheelWithoutCtrlIsLeftToOthers) {
  EXPECT_FALSE(wheel(120, Qt::NoModifier));
  EXPECT_FALSE(wheel(120, Qt::ShiftModifier));
  expectView(noTurn, {0, 0, -300});
  EXPECT_EQ(log.take(), Log{});
  EXPECT_EQ(canvas.takeRedraws(), 0);
}
