// A session with the mouse in the picture: markers clicked where they are seen, menus opened, the view dragged.
#include <QAbstractItemView>
#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QWheelEvent>

#include <cmath>

#include "dialogtest.h"

using testing::SizeIs;

namespace {

class Pointing : public DialogTest {
 protected:
  /// Where a marker is seen from the starting camera: 300 mm before the centre of gravity, 45 degrees upright.
  QPoint pixelOf(const std::vector<Point>& markers, std::size_t marker) {
    const Point eye = seenFrom(meanOf(markers), {markers[marker]})[0];
    const double distance = 300.0 - eye[2];
    const double perUnit = canvas().height() / 2.0 / std::tan(22.5 * std::acos(-1.0) / 180.0);
    return {static_cast<int>(std::lround(canvas().width() / 2.0 + perUnit * eye[0] / distance)),
            static_cast<int>(std::lround(canvas().height() / 2.0 - perUnit * eye[1] / distance))};
  }
  void clickMarker(std::size_t marker) {
    QTest::mouseClick(&canvas(), Qt::LeftButton, Qt::NoModifier, pixelOf(backend.body("standard", 1).markers, marker));
  }
  void drag(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPoint& by) {
    const QPoint from = canvas().rect().center();
    QTest::mousePress(&canvas(), button, modifiers, from);
    for (int step = 1; step <= 4; ++step) {
      QMouseEvent move(QEvent::MouseMove, from + by * step / 4, button, button, modifiers);
      QApplication::sendEvent(&canvas(), &move);
    }
    QTest::mouseRelease(&canvas(), button, modifiers, from + by);
  }
};

TEST_F(Pointing, MarkersAreClickedTheOriginSetAndTheBodyApplied) {
  const std::vector<Point> before = backend.body("standard", 1).markers;
  run([&] {
    choose(cupRow);
    QApplication::processEvents();
    clickMarker(1);
    ASSERT_THAT(canvas().getSelection(), SizeIs(1));
    EXPECT_EQ(canvas().getSelectedMarker(), 1);
    EXPECT_TRUE(enabled("set_origin_button"));
    EXPECT_TRUE(enabled("pushButton_deleteMarker"));
    clickMarker(3);
    EXPECT_THAT(canvas().getSelection(), SizeIs(2));
    EXPECT_TRUE(enabled("set_axis_button"));
    EXPECT_FALSE(enabled("pushButton_deleteMarker"));
    QTest::mouseClick(&canvas(), Qt::LeftButton, Qt::NoModifier, QPoint(3, 3));
    EXPECT_TRUE(canvas().getSelection().empty());
    EXPECT_FALSE(enabled("set_origin_button"));
    clickMarker(4);
    click("set_origin_button");
    click("apply_button");
    click("ok_button");
  });
  expectPoints(backend.body("standard", 1).markers, seenFrom(before[4], before));
}

TEST_F(Pointing, AMarkerIsClickedAndDeletedByKey) {
  run([&] {
    choose(cupRow);
    QApplication::processEvents();
    clickMarker(5);
    EXPECT_TRUE(canvas().hasFocus());
    watch.expectBox("Korvex2", "Delete selected marker?", QMessageBox::Ok);
    press(Qt::Key_Delete);
  });
  EXPECT_EQ(backend.body("standard", 1).markers.size(), 5U);
}

TEST_F(Pointing, DragsAndTheWheelMoveTheViewAddingUp) {
  run([&] {
    choose(cupRow);
    drag(Qt::LeftButton, Qt::ControlModifier, {12, 8});
    EXPECT_TRUE(canvas().getViewPosition() == bsVector(12, -8, -300));
    drag(Qt::LeftButton, Qt::ControlModifier, {12, 8});
    EXPECT_TRUE(canvas().getViewPosition() == bsVector(24, -16, -300));
    drag(Qt::LeftButton, Qt::ShiftModifier, {0, 20});
    EXPECT_TRUE(canvas().getViewPosition() == bsVector(24, -16, -280));
    const QPointF centre = canvas().rect().center();
    QWheelEvent wheel(centre, canvas().mapToGlobal(centre.toPoint()), QPoint(), QPoint(0, 240), Qt::NoButton,
                      Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&canvas(), &wheel);
    EXPECT_TRUE(canvas().getViewPosition() == bsVector(24, -16, -274));
    drag(Qt::RightButton, Qt::ControlModifier, {20, 0});
    const bsMatrix turned = canvas().get_view().orientation.toMatrix();
    EXPECT_NEAR(turned(0, 0), std::cos(20 * std::acos(-1.0) / 180.0), 1e-9);
    EXPECT_FALSE(canvas().isBodyModified());
  });
}

TEST_F(Pointing, ARightClickOpensTheMenuOfTheView) {
  run([&] {
    choose(penRow);
    for (const char* const entry : {"Data view", "Graphic view"}) {
      QWidget* const target =
          canvas().isVisible() ? static_cast<QWidget*>(&canvas()) : find<QTableWidget>("tableWidget_data");
      QTest::mousePress(target, Qt::RightButton, Qt::NoModifier, QPoint(20, 20));
      auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      ASSERT_NE(menu, nullptr);
      ASSERT_TRUE(menu->actions().contains(menuEntry(entry)));
      QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(menuEntry(entry)).center());
      EXPECT_EQ(canvas().isVisible(), std::string(entry) == "Graphic view");
    }
  });
}

TEST_F(Pointing, BodiesArePickedFromTheOpenListWithTheMouse) {
  run([&] {
    QTest::mouseClick(&bodies(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return bodies().view()->isVisible(); }));
    QTest::qWait(QApplication::doubleClickInterval() / 4);
    auto* const list = bodies().view();
    const QPoint at = list->visualRect(bodies().model()->index(penRow, 0)).center();
    heard();
    QMouseEvent move(QEvent::MouseMove, at, list->viewport()->mapToGlobal(at), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &move);
    EXPECT_EQ(canvas().getBodyNumMarker(), 5U);  // pointing at it is enough
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_EQ(bodies().currentIndex(), penRow);
    EXPECT_EQ(heard(), fetchOf("wandgrip", 1)) << "and the click that follows fetches nothing again";
  });
}

TEST_F(Pointing, EveryDisplayEntryChangesThePictureAndBack) {
  backend.body("wandgrip", 1).markers[4] = {90, 90, -20};  // or it hides the centre of gravity
  run([&] {
    choose(penRow);
    canvas().setViewOrientation(bsQuaternion(35.0, bsVector(1, 1, 0)).toMatrix());
    const auto picture = [&] {
      canvas().updateGL();
      return canvas().grabFrameBuffer();
    };
    const QImage before = picture();
    for (const char* const entry : {"Small markers", "Colored markers", "Emissions", "Long axes", "Show COG",
                                    "Show XY plane", "Show YZ plane", "Show XZ plane"}) {
      menuEntry(entry)->trigger();
      EXPECT_NE(picture(), before) << entry;
      menuEntry(entry)->trigger();
      EXPECT_EQ(picture(), before) << entry;
    }
    click("online_checkbox");
    const std::string line = "6dw2 1 1 [0 1.000 0 0][10 20 30][0 1 0 -1 0 0 0 0 1][0]";
    dialog->set_ascii_data("6dw2", line.c_str());
    dialog->update_track();
    ASSERT_TRUE(canvas().isTrackedBodySeen());
    const QImage online = picture();
    menuEntry("Show room orientation")->trigger();
    EXPECT_NE(picture(), online);
    menuEntry("Show room orientation")->trigger();
    EXPECT_EQ(picture(), online);
  });
}

}  // namespace
