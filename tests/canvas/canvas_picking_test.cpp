// Picking in the canvas by real clicks at places computed by arithmetic of the tests' own.
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <QTest>

#include <cmath>
#include <limits>

#include "canvastest.h"

using namespace canvastest;

namespace {

using Ids = std::vector<int>;

class CanvasPicking : public testing::Test {
 protected:
  void start(const std::vector<Point>& positions) {
    body = positions;
    load(canvas, body);
    show(canvas);
    camera = cameraOf(canvas, body);
  }
  void view(const Rotation& turn, const Point& position) {
    canvas.set_view(bsFrame(poseOf(turn, position), nullptr));
    camera.turn = turn;
    camera.position = position;
  }
  void click(QPoint at) { QTest::mouseClick(&canvas, Qt::LeftButton, Qt::NoModifier, at); }
  abcObject* pick(QPoint at) {
    return canvas.doPicking(static_cast<unsigned int>(at.x()), static_cast<unsigned int>(at.y()));
  }
  abcObject* pick(const Point& loaded) { return pick(camera.click(loaded)); }

  GLCanvas canvas;
  std::vector<Point> body;
  Camera camera;
};

/// Distance of a point from the ray through a pixel, and how far along the ray; eye coordinates.
struct Aim {
  double miss = 0.0;
  double along = 0.0;
};

Aim aimAt(const Point& eye, const Camera& camera, QPoint pixel) {
  const double scale = std::tan(std::acos(-1.0) / 8.0) / (camera.height / 2.0);
  const Point ray = unit({(pixel.x() - camera.width / 2.0) * scale, (camera.height / 2.0 - pixel.y()) * scale, -1.0});
  return {norm(cross(eye, ray)), dot(eye, ray)};
}

}  // namespace

TEST_F(CanvasPicking, ClicksOnMarkersSelectThem) {
  start(tetrahedron());
  click(camera.click(body[0]));
  EXPECT_EQ(selectedIds(canvas), Ids{0});
  click(camera.click(body[1]));
  EXPECT_EQ(selectedIds(canvas), (Ids{0, 1}));
  click(camera.click(body[0]));
  EXPECT_EQ(selectedIds(canvas), (Ids{1, 0}));
  click(camera.click(body[2]));
  EXPECT_EQ(selectedIds(canvas), Ids{2});
  click(QPoint(3, 3));
  EXPECT_EQ(selectedIds(canvas), Ids{});
}

TEST_F(CanvasPicking, FollowsATurnedAndZoomedView) {
  start(tetrahedron());
  view(turnX(25) * turnY(-40) * turnZ(15), {12, -7, -230});
  for (std::size_t i = 0; i < body.size(); ++i) {
    click(QPoint(3, 3));
    click(camera.click(body[i]));
    EXPECT_EQ(selectedIds(canvas), Ids{static_cast<int>(i)});
  }
}

TEST_F(CanvasPicking, FollowsAResizedCanvas) {
  start(tetrahedron());
  show(canvas, 250, 420);
  camera = cameraOf(canvas, body);
  for (std::size_t i = 0; i < body.size(); ++i) {
    EXPECT_EQ(pick(body[i]), marker(canvas, i));
  }
}

TEST_F(CanvasPicking, FollowsTheTrackedOrientationOnline) {
  start(tetrahedron());
  camera.room = turnZ(90) * turnX(35);
  canvas.setOnline(true);
  canvas.setTrackedBodyOrientation(matrixOf(camera.room));
  for (std::size_t i = 0; i < body.size(); ++i) {
    EXPECT_EQ(pick(body[i]), marker(canvas, i));
  }
  canvas.setOnline(false);
  camera.room = noTurn;
  for (std::size_t i = 0; i < body.size(); ++i) {
    EXPECT_EQ(pick(body[i]), marker(canvas, i));
  }
}

TEST_F(CanvasPicking, FindsMarkersWhereTheyAreWhateverChangeIsPendingOrCommitted) {
  start(tetrahedron());
  canvas.translateBody(80, 30, 0);
  canvas.rotateBody(0, 0, 90);
  EXPECT_EQ(pick(body[1]), marker(canvas, 1));
  emit canvas.storeBodyRequest();
  EXPECT_EQ(pick(body[1]), marker(canvas, 1));
}

TEST_F(CanvasPicking, OfMarkersBehindEachOtherTakesTheNearest) {
  start({{0, 0, -60}, {0, 0, 60}, {0, 0, 0}});
  EXPECT_EQ(pick(body[1]), marker(canvas, 1));
  view(turnY(180), {0, 0, -300});
  EXPECT_EQ(pick(body[0]), marker(canvas, 0));
}

TEST_F(CanvasPicking, OfEquallyNearMarkersTakesTheFirst) {
  start({{30, 0, 0}, {-30, 0, 0}, {30, 0, 0}, {30, 0, 0}});
  EXPECT_EQ(pick(body[2]), marker(canvas, 0));
}

TEST_F(CanvasPicking, SurvivesMoreHitsThanTheBufferHolds) {
  std::vector<Point> crowd(300, Point{20, 10, 0});
  crowd.push_back({-40, 0, 0});
  crowd.push_back({20, 10, 30});
  start(crowd);
  EXPECT_EQ(pick(body[301]), marker(canvas, 301));
  EXPECT_EQ(pick(body[300]), marker(canvas, 300));
  EXPECT_EQ(pick(QPoint(3, 3)), nullptr);
}

TEST_F(CanvasPicking, ReachesTwoPixelsBeyondTheSphereAndNotFarther) {
  start({{0, 0, 0}, {-80, 0, 0}, {80, 0, 0}});
  const double radius = 10.0 * camera.pixelsPerMillimetre(body[0]);
  const QPointF centre = camera.pixel(body[0]);
  const auto at = [&](double beyond) { return QPoint(qRound(centre.x()), qRound(centre.y() - radius - beyond)); };
  // The pole of the sphere is a vertex, so it is drawn where it is computed. The region is 5 pixels high.
  EXPECT_EQ(pick(at(2.0)), marker(canvas, 0));
  EXPECT_EQ(pick(at(3.0)), nullptr);
}

TEST_F(CanvasPicking, SmallMarkersAreSmallTargets) {
  start({{0, 0, 0}, {-80, 0, 0}, {80, 0, 0}});
  const Point beside = {0, 7, 0};
  EXPECT_EQ(pick(beside), marker(canvas, 0));
  canvas.showSmallMarkers(true);
  EXPECT_EQ(pick(beside), nullptr);
  EXPECT_EQ(pick(body[0]), marker(canvas, 0));
}

TEST_F(CanvasPicking, ClicksOnALineSelectIt) {
  start(tetrahedron());
  click(camera.click(body[0]));
  click(camera.click(body[1]));
  canvas.introduceLine();
  const QPoint middle = camera.click((body[0] + body[1]) * 0.5);
  click(middle);
  ASSERT_EQ(canvas.getSelection(), std::vector<abcObject*>{line(canvas, 0)});
  click(camera.click(body[2]));
  EXPECT_EQ(selectedIds(canvas), Ids{2});
  click(middle);
  canvas.deleteLine();
  EXPECT_EQ(pick(middle), nullptr);
}

TEST_F(CanvasPicking, TheSecondOfTwoLinesIsTheSecond) {
  start({{-60, 30, 0}, {60, 30, 0}, {-60, -30, 0}, {60, -30, 0}});
  for (const std::size_t first : {std::size_t{0}, std::size_t{2}}) {
    canvas.checkSelection(nullptr);
    canvas.checkSelection(marker(canvas, first));
    canvas.checkSelection(marker(canvas, first + 1));
    canvas.introduceLine();
  }
  EXPECT_EQ(pick(Point{0, 30, 0}), line(canvas, 0));
  EXPECT_EQ(pick(Point{0, -30, 0}), line(canvas, 1));
}

TEST_F(CanvasPicking, EmissionsAndAxesAreNoTargets) {
  start({{0, 0, 0}, {-80, 0, 0}, {80, 0, 0}});
  canvas.setMarkerEmission(0, 1, 0, 20);
  canvas.showXYGrid(true);
  EXPECT_EQ(pick(Point{0, 25, 0}), nullptr);
  EXPECT_EQ(pick(Point{25, 0, 0}), nullptr);
}

TEST_F(CanvasPicking, AgreesWithRaysThroughRandomViews) {
  std::mt19937 random(4);
  for (int i = 0; i < 6; ++i) {
    body.push_back(randomPoint(random, 70));
  }
  start(body);
  int aimed = 0;
  for (int round = 0; round < 60; ++round) {
    view(randomRotation(random), randomPoint(random, 20) + Point{0, 0, -300});
    for (std::size_t target = 0; target < body.size(); ++target) {
      const QPoint at = camera.click(body[target]);
      if (!canvas.rect().contains(at)) {
        continue;
      }
      // Judge only where every sphere is either well hit or well missed.
      int nearest = -1;
      double nearestAlong = std::numeric_limits<double>::max();
      bool clear = true;
      for (std::size_t i = 0; i < body.size(); ++i) {
        const Aim aim = aimAt(camera.turn * (body[i] - camera.centre) + camera.position, camera, at);
        clear = clear && (aim.miss < 6.0 || aim.miss > 16.0);
        if (aim.miss < 6.0 && aim.along < nearestAlong) {
          clear = clear && nearestAlong - aim.along > 8.0;
          nearestAlong = aim.along;
          nearest = static_cast<int>(i);
        }
      }
      if (clear) {
        ++aimed;
        ASSERT_EQ(pick(at), marker(canvas, static_cast<std::size_t>(nearest))) << "round " << round;
      }
    }
  }
  EXPECT_GT(aimed, 100);
}

TEST_F(CanvasPicking, OtherModificationModesKeepTheSelection) {
  start(tetrahedron());
  click(camera.click(body[0]));
  SignalLog log(canvas);
  canvas.setModificationMode(ABC_MODIFY_LOCKED);
  click(camera.click(body[1]));
  click(QPoint(3, 3));
  EXPECT_EQ(selectedIds(canvas), Ids{0});
  EXPECT_EQ(log.take(), std::vector<std::string>{});
}

TEST_F(CanvasPicking, ClicksWithModifiersOrOtherButtonsSelectNothing) {
  start(tetrahedron());
  const QPoint at = camera.click(body[0]);
  QTest::mouseClick(&canvas, Qt::LeftButton, Qt::ControlModifier, at);
  QTest::mouseClick(&canvas, Qt::LeftButton, Qt::ShiftModifier, at);
  QTest::mouseClick(&canvas, Qt::MiddleButton, Qt::NoModifier, at);
  QTest::mouseClick(&canvas, Qt::RightButton, Qt::NoModifier, at);
  EXPECT_EQ(selectedIds(canvas), Ids{});
}

TEST_F(CanvasPicking, WithoutABodyFindsNothing) {
  start(tetrahedron());
  const QPoint at = camera.click(body[0]);
  canvas.unloadBody();
  EXPECT_EQ(pick(at), nullptr);
}

TEST_F(CanvasPicking, ABodyWithoutMarkersPoisonsNothing) {
  start(tetrahedron());
  load(canvas, {});
  EXPECT_EQ(pick(body[0]), nullptr);
  painted(canvas);
  load(canvas, body);
  EXPECT_EQ(pick(body[0]), marker(canvas, 0));
}

TEST_F(CanvasPicking, AMarkerThatIsNowhereHidesNoOther) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  start({{0, 0, 0}, {40, 0, 0}, {nan, 0, 0}});
  // Without a centre of gravity the body is shown around its origin.
  camera.centre = {0, 0, 0};
  EXPECT_EQ(pick(body[1]), marker(canvas, 1));
  EXPECT_EQ(pick(body[0]), marker(canvas, 0));
}

TEST_F(CanvasPicking, LeavesTheStateOfPaintingAsItWas) {
  start(tetrahedron());
  painted(canvas);
  GLdouble projection[16];
  GLdouble modelView[16];
  glGetDoublev(GL_PROJECTION_MATRIX, projection);
  glGetDoublev(GL_MODELVIEW_MATRIX, modelView);
  pick(body[0]);
  GLint value = 0;
  glGetIntegerv(GL_RENDER_MODE, &value);
  EXPECT_EQ(value, GL_RENDER);
  glGetIntegerv(GL_MATRIX_MODE, &value);
  EXPECT_EQ(value, GL_MODELVIEW);
  glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &value);
  EXPECT_EQ(value, 1);
  glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &value);
  EXPECT_EQ(value, 1);
  GLdouble after[16];
  glGetDoublev(GL_PROJECTION_MATRIX, after);
  EXPECT_TRUE(std::equal(after, after + 16, projection));
  glGetDoublev(GL_MODELVIEW_MATRIX, after);
  EXPECT_TRUE(std::equal(after, after + 16, modelView));
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}
