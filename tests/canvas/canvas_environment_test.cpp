// The canvas on other screens: scaled ones, and machines without OpenGL. Each case runs itself again in a process of
// its own with that environment.
#include <gtest/gtest.h>

#include <QApplication>
#include <QProcess>
#include <QTest>

#include "canvastest.h"

using namespace canvastest;

namespace {

/// True in the process that is to do the work; elsewhere starts that process and fails when it fails.
bool insideProcessWith(const char* variable, const char* value) {
  if (qEnvironmentVariableIsSet("CANVAS_TEST_INSIDE")) {
    return true;
  }
  const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("CANVAS_TEST_INSIDE", "1");
  environment.insert(variable, value);
  QProcess process;
  process.setProcessEnvironment(environment);
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(QApplication::applicationFilePath(),
                {QString("--gtest_filter=%1.%2").arg(info->test_suite_name(), info->name())});
  EXPECT_TRUE(process.waitForFinished(60000));
  const QByteArray output = process.readAll();
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << output.constData();
  EXPECT_EQ(process.exitCode(), 0) << output.constData();
  EXPECT_TRUE(output.contains("[  PASSED  ] 1 test")) << output.constData();
  return false;
}

void pickEveryMarker(GLCanvas& canvas, const Camera& camera, const std::vector<Point>& body) {
  for (std::size_t i = 0; i < body.size(); ++i) {
    canvas.checkSelection(nullptr);
    QTest::mouseClick(&canvas, Qt::LeftButton, Qt::NoModifier, camera.click(body[i]));
    EXPECT_EQ(selectedIds(canvas), std::vector<int>{static_cast<int>(i)});
  }
  // Just inside and clearly outside of a sphere.
  const double radius = 10.0 * camera.pixelsPerMillimetre(body[2]);
  const QPointF centre = camera.pixel(body[2]);
  canvas.checkSelection(nullptr);
  QTest::mouseClick(&canvas, Qt::LeftButton, Qt::NoModifier, (centre - QPointF(0, 0.8 * radius)).toPoint());
  EXPECT_EQ(selectedIds(canvas), std::vector<int>{2});
  QTest::mouseClick(&canvas, Qt::LeftButton, Qt::NoModifier, (centre - QPointF(0, radius + 5)).toPoint());
  EXPECT_EQ(selectedIds(canvas), std::vector<int>{});
}

void workOnAScaledScreen(double ratio) {
  GLCanvas canvas;
  const std::vector<Point> body = tetrahedron();
  load(canvas, body);
  show(canvas);
  ASSERT_EQ(canvas.devicePixelRatioF(), ratio);
  Camera camera = cameraOf(canvas, body);
  pickEveryMarker(canvas, camera, body);
  camera.turn = turnX(25) * turnY(-40);
  camera.position = {12, -7, -260};
  canvas.set_view(bsFrame(poseOf(camera.turn, camera.position), nullptr));
  pickEveryMarker(canvas, camera, body);
  EXPECT_EQ(painted(canvas).size(), QSize(qRound(400 * ratio), qRound(300 * ratio)));
}

}  // namespace

TEST(CanvasOnAScaledScreen, ClicksHitWhatTheyPointAtAtTwiceTheSize) {
  if (insideProcessWith("QT_SCALE_FACTOR", "2")) {
    workOnAScaledScreen(2.0);
  }
}

TEST(CanvasOnAScaledScreen, ClicksHitWhatTheyPointAtAtOneAndAHalfTimesTheSize) {
  if (insideProcessWith("QT_SCALE_FACTOR", "1.5")) {
    workOnAScaledScreen(1.5);
  }
}

TEST(CanvasOnAScaledScreen, DragsStayInWidgetPixels) {
  if (!insideProcessWith("QT_SCALE_FACTOR", "2")) {
    return;
  }
  GLCanvas canvas;
  load(canvas, tetrahedron());
  show(canvas);
  QObject::connect(&canvas, &GLCanvas::storeViewRequest, &canvas, &GLCanvas::saveCurrentView);
  QWindow* window = canvas.windowHandle();
  QTest::mousePress(window, Qt::LeftButton, Qt::ControlModifier, QPoint(100, 100));
  QTest::mouseMove(window, QPoint(110, 105));
  QTest::mouseRelease(window, Qt::LeftButton, Qt::ControlModifier, QPoint(110, 105));
  expectPose(canvas.get_view().toMatrix(), noTurn, {10, -5, -300});
}

TEST(CanvasWithoutOpenGL, KeepsItsStateAndNeitherDrawsNorPicksNorCrashes) {
  if (!insideProcessWith("QT_QPA_PLATFORM", "minimal")) {
    return;
  }
  GLCanvas canvas;
  SignalLog log(canvas);
  ASSERT_FALSE(canvas.isValid());
  load(canvas, tetrahedron());
  canvas.resize(400, 300);
  canvas.show();
  QApplication::processEvents();
  canvas.initializeGL();
  canvas.resizeGL(400, 300);
  canvas.paintGL();
  canvas.updateGL();
  EXPECT_EQ(canvas.doPicking(200, 150), nullptr);
  log.take();
  QTest::mouseClick(&canvas, Qt::LeftButton, Qt::NoModifier, QPoint(200, 150));
  EXPECT_EQ(log.take(), (std::vector<std::string>{"canSetOriginToMarker false", "canSetAxisToMarkers false",
                                                  "canIntroduceLine false", "canDeleteLine false", "canDeleteMarker"}));
  canvas.checkSelection(marker(canvas, 1));
  canvas.setOriginToMarker();
  expectPose(canvas.getBodyTransformation(), noTurn, tetrahedron()[1]);
  canvas.setOnline(true);
  canvas.translateView(1, 2, 3);
  expectPose(canvas.get_view().toMatrix(), noTurn, {1, 2, -297});
  canvas.undo();
  canvas.unloadBody();
}
