// OpenGL state of the canvas: what initialising, resizing and painting leave behind.
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QStackedWidget>
#include <QTest>
#include <QVBoxLayout>

#include <cmath>

#include "canvastest.h"

using namespace canvastest;

namespace {

int integer(GLenum name) {
  GLint value = -1;
  glGetIntegerv(name, &value);
  return value;
}

class PaintCountingCanvas : public GLCanvas {
 public:
  void paintGL() override {
    ++paints;
    GLCanvas::paintGL();
  }
  int paints = 0;
};

class CanvasState : public testing::Test {
 protected:
  void SetUp() override {
    show(canvas);
    canvas.makeCurrent();
  }
  void expectProjection(int width, int height) {
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 0);
    EXPECT_EQ(viewport[1], 0);
    EXPECT_EQ(viewport[2], width);
    EXPECT_EQ(viewport[3], height);
    GLdouble found[16];
    glGetDoublev(GL_PROJECTION_MATRIX, found);
    const double cotangent = 1.0 / std::tan(std::acos(-1.0) / 8.0);
    const double near = 1.0;
    const double far = 100000.0;
    const GLdouble expected[16] = {
        cotangent * height / width,    0, 0, 0, 0, cotangent, 0, 0, 0, 0, (far + near) / (near - far), -1, 0, 0,
        2 * far * near / (near - far), 0};
    for (int i = 0; i < 16; ++i) {
      // The driver keeps matrices in single precision.
      EXPECT_NEAR(found[i], expected[i], 1e-5 * std::max(1.0, std::fabs(expected[i]))) << "value " << i;
    }
    EXPECT_EQ(integer(GL_MATRIX_MODE), GL_MODELVIEW);
  }

  CountingCanvas canvas;
};

}  // namespace

TEST_F(CanvasState, InitialisingSetsEverythingPaintingReliesOn) {
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glShadeModel(GL_FLAT);
  for (const GLenum capability : {GL_COLOR_MATERIAL, GL_DEPTH_TEST, GL_LIGHT0, GL_LIGHTING}) {
    glDisable(capability);
  }
  glDepthFunc(GL_ALWAYS);
  glClearDepth(0.5);
  glClearColor(1, 1, 1, 0);
  canvas.initializeGL();
  GLint modes[2];
  glGetIntegerv(GL_POLYGON_MODE, modes);
  EXPECT_EQ(modes[0], GL_FILL);
  EXPECT_EQ(modes[1], GL_FILL);
  EXPECT_EQ(integer(GL_SHADE_MODEL), GL_SMOOTH);
  for (const GLenum capability : {GL_COLOR_MATERIAL, GL_DEPTH_TEST, GL_LIGHT0, GL_LIGHTING}) {
    EXPECT_EQ(glIsEnabled(capability), GL_TRUE) << capability;
  }
  EXPECT_EQ(integer(GL_DEPTH_FUNC), GL_LESS);
  GLdouble depth = 0.0;
  glGetDoublev(GL_DEPTH_CLEAR_VALUE, &depth);
  EXPECT_EQ(depth, 1.0);
  GLdouble color[4];
  glGetDoublev(GL_COLOR_CLEAR_VALUE, color);
  EXPECT_EQ(color[0], 0.0);
  EXPECT_EQ(color[1], 0.0);
  EXPECT_EQ(color[2], 0.0);
  EXPECT_EQ(color[3], 1.0);
}

TEST_F(CanvasState, ShowingInitialisesAndSizesTheView) {
  EXPECT_EQ(glIsEnabled(GL_LIGHTING), GL_TRUE);
  expectProjection(400, 300);
}

TEST_F(CanvasState, ResizingSetsViewportProjectionAndModelViewAndRedraws) {
  glLoadIdentity();
  glTranslated(1, 2, 3);
  canvas.takeRedraws();
  canvas.resizeGL(320, 200);
  EXPECT_EQ(canvas.takeRedraws(), 1);
  expectProjection(320, 200);
  GLdouble found[16];
  glGetDoublev(GL_MODELVIEW_MATRIX, found);
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(found[i], i % 5 == 0 ? 1.0 : 0.0);
  }
}

TEST_F(CanvasState, AHeightOfNothingCountsAsOnePixel) {
  canvas.resizeGL(320, 0);
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  expectProjection(320, 1);
}

TEST_F(CanvasState, AWidthOfNothingIsSurvived) {
  load(canvas, tetrahedron());
  canvas.resizeGL(0, 0);
  EXPECT_EQ(canvas.doPicking(0, 0), nullptr);
  canvas.resizeGL(400, 300);
  expectProjection(400, 300);
}

TEST_F(CanvasState, AResizeOfTheWidgetReachesTheViewport) {
  show(canvas, 222, 333);
  canvas.makeCurrent();
  expectProjection(222, 333);
}

TEST_F(CanvasState, PaintingLeavesTheMatricesAsTheyWere) {
  load(canvas, tetrahedron());
  canvas.checkSelection(marker(canvas, 0));
  canvas.showCOG(true);
  canvas.show_room_ori(true);
  canvas.setOnline(true);
  canvas.showXYGrid(true);
  canvas.showYZGrid(true);
  canvas.showXZGrid(true);
  for (const abcModificationMode mode : {ABC_MODIFY_BODY, ABC_MODIFY_SUSPENDED}) {
    canvas.setModificationMode(mode);
    painted(canvas);
    EXPECT_EQ(integer(GL_MODELVIEW_STACK_DEPTH), 1);
    EXPECT_EQ(integer(GL_PROJECTION_STACK_DEPTH), 1);
    expectProjection(400, 300);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  }
}

TEST_F(CanvasState, PaintingTwiceGivesTheSamePicture) {
  load(canvas, tetrahedron());
  canvas.setMarkerEmission(0, 0, 1, 30);
  canvas.showCOG(true);
  canvas.showLongAxes(true);
  canvas.showXYGrid(true);
  canvas.checkSelection(marker(canvas, 0));
  canvas.checkSelection(marker(canvas, 1));
  const QImage first = painted(canvas);
  EXPECT_EQ(painted(canvas), first);
  canvas.doPicking(10, 10);
  EXPECT_EQ(painted(canvas), first);
}

TEST(CanvasRedraw, PaintsAtOnceWhenShownAndNotAtAllWhenHidden) {
  PaintCountingCanvas canvas;
  canvas.showCOG(true);
  load(canvas, tetrahedron());
  EXPECT_EQ(canvas.paints, 0);
  show(canvas);
  EXPECT_GT(canvas.paints, 0);
  canvas.paints = 0;
  canvas.showCOG(false);
  EXPECT_EQ(canvas.paints, 1);
  canvas.hide();
  canvas.paints = 0;
  canvas.showCOG(true);
  EXPECT_EQ(canvas.paints, 0);
}

TEST(CanvasRedraw, ACanvasThatWasNeverShownNeitherPicksNorCrashes) {
  GLCanvas canvas;
  load(canvas, tetrahedron());
  EXPECT_EQ(canvas.doPicking(50, 50), nullptr);
  canvas.initializeGL();
  canvas.paintGL();
  canvas.resizeGL(100, 100);
  canvas.paintGL();
  canvas.doPicking(50, 50);
  canvas.updateGL();
}

TEST(CanvasRedraw, TwoCanvasesDoNotDisturbEachOther) {
  GLCanvas first;
  GLCanvas second;
  load(first, tetrahedron());
  load(second, {{0, 0, 0}, {50, 0, 0}});
  show(first);
  show(second, 300, 200);
  const Camera camera = cameraOf(first, tetrahedron());
  const QImage before = painted(first);
  painted(second);
  const QPoint at = camera.click(tetrahedron()[1]);
  EXPECT_EQ(first.doPicking(static_cast<unsigned int>(at.x()), static_cast<unsigned int>(at.y())), marker(first, 1));
  painted(second);
  EXPECT_EQ(painted(first), before);
}

TEST(CanvasRedraw, ACanvasOnAPageOfADialogPaintsAndPicksWheneverThePageIsShown) {
  QDialog dialog;
  auto* pages = new QStackedWidget(&dialog);
  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(new QLabel("above", &dialog));
  layout->addWidget(pages);
  auto* canvas = new GLCanvas(&dialog);
  pages->insertWidget(0, canvas);
  pages->insertWidget(1, new QLabel("other page"));
  load(*canvas, tetrahedron());
  dialog.resize(500, 450);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  const auto works = [&] {
    const Camera camera = cameraOf(*canvas, tetrahedron());
    for (std::size_t i = 0; i < 4; ++i) {
      const QPoint at = camera.click(tetrahedron()[i]);
      canvas->checkSelection(nullptr);
      QTest::mouseClick(canvas, Qt::LeftButton, Qt::NoModifier, at);
      EXPECT_EQ(selectedIds(*canvas), std::vector<int>{static_cast<int>(i)});
      if (i != 0) {  // the body's axes stand before marker 0
        EXPECT_EQ(painted(*canvas).pixelColor(at), QColor(Qt::white));
      }
    }
  };
  works();
  pages->setCurrentIndex(1);
  dialog.resize(600, 500);
  QApplication::processEvents();
  pages->setCurrentIndex(0);
  QApplication::processEvents();
  works();
  dialog.hide();
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  works();
}
