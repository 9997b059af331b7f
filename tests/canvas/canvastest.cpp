// See canvastest.h.
#include "canvastest.h"

#include <gtest/gtest.h>

#include <QTest>

#include <cmath>
#include <sstream>
#include <utility>

namespace canvastest {

namespace {

double radians(double degrees) { return degrees * std::acos(-1.0) / 180.0; }

std::string text(bool value) { return value ? "true" : "false"; }

std::string text(double x, double y, double z) {
  std::ostringstream out;
  out << x << " " << y << " " << z;
  return out.str();
}

}  // namespace

Point operator+(const Point& a, const Point& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Point operator-(const Point& a, const Point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Point operator*(const Point& a, double s) { return {a[0] * s, a[1] * s, a[2] * s}; }
double dot(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Point cross(const Point& a, const Point& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double norm(const Point& a) { return std::sqrt(dot(a, a)); }
Point unit(const Point& a) { return a * (1.0 / norm(a)); }

Rotation turnX(double degrees) {
  const double c = std::cos(radians(degrees));
  const double s = std::sin(radians(degrees));
  return {{{1, 0, 0}, {0, c, -s}, {0, s, c}}};
}
Rotation turnY(double degrees) {
  const double c = std::cos(radians(degrees));
  const double s = std::sin(radians(degrees));
  return {{{c, 0, s}, {0, 1, 0}, {-s, 0, c}}};
}
Rotation turnZ(double degrees) {
  const double c = std::cos(radians(degrees));
  const double s = std::sin(radians(degrees));
  return {{{c, -s, 0}, {s, c, 0}, {0, 0, 1}}};
}

Rotation transposed(const Rotation& r) {
  return {{{r[0][0], r[1][0], r[2][0]}, {r[0][1], r[1][1], r[2][1]}, {r[0][2], r[1][2], r[2][2]}}};
}
Rotation fromColumns(const Point& x, const Point& y, const Point& z) { return transposed({{x, y, z}}); }
Point column(const Rotation& r, int i) { return transposed(r)[static_cast<std::size_t>(i)]; }
Point operator*(const Rotation& r, const Point& p) { return {dot(r[0], p), dot(r[1], p), dot(r[2], p)}; }
Rotation operator*(const Rotation& a, const Rotation& b) {
  return fromColumns(a * column(b, 0), a * column(b, 1), a * column(b, 2));
}

Rotation randomRotation(std::mt19937& random) {
  std::uniform_real_distribution<double> angle(0.0, 360.0);
  return turnX(angle(random)) * turnY(angle(random)) * turnZ(angle(random));
}

Point randomPoint(std::mt19937& random, double extent) {
  std::uniform_real_distribution<double> coordinate(-extent, extent);
  return {coordinate(random), coordinate(random), coordinate(random)};
}

Point pointOf(const bsVector& v) { return {v.x, v.y, v.z}; }
bsVector vectorOf(const Point& p) { return {p[0], p[1], p[2]}; }

Rotation rotationOf(const bsMatrix& m) {
  Rotation r{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      r[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = m.data(i, j);
    }
  }
  return r;
}

bsMatrix poseOf(const Rotation& r, const Point& translation) {
  bsMatrix m;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      m.data(i, j) = r[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
    }
    m.data(i, 3) = translation[static_cast<std::size_t>(i)];
  }
  m.data(3, 3) = 1.0;
  return m;
}

bsMatrix matrixOf(const Rotation& r) { return poseOf(r, {0, 0, 0}); }

void expectNear(const Point& found, const Point& expected, double tolerance) {
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(found[i], expected[i], tolerance) << "component " << i;
  }
}

void expectNear(const Rotation& found, const Rotation& expected, double tolerance) {
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      EXPECT_NEAR(found[i][j], expected[i][j], tolerance) << "row " << i << ", column " << j;
    }
  }
}

void expectPose(const bsMatrix& found, const Rotation& turn, const Point& translation, double tolerance) {
  expectNear(rotationOf(found), turn, tolerance);
  expectNear({found.data(0, 3), found.data(1, 3), found.data(2, 3)}, translation, tolerance);
  EXPECT_EQ(found.data(3, 0), 0.0);
  EXPECT_EQ(found.data(3, 1), 0.0);
  EXPECT_EQ(found.data(3, 2), 0.0);
  EXPECT_EQ(found.data(3, 3), 1.0);
}

void expectSamePoints(const std::vector<bsVector>& found, const std::vector<Point>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    SCOPED_TRACE("point " + std::to_string(i));
    expectNear(pointOf(found[i]), expected[i]);
  }
}

QPointF Camera::scenePixel(const Point& scene) const {
  const Point eye = turn * scene + position;
  const double pixelsPerUnit = height / 2.0 / std::tan(radians(45.0 / 2.0));
  return {width / 2.0 + pixelsPerUnit * eye[0] / -eye[2], height / 2.0 - pixelsPerUnit * eye[1] / -eye[2]};
}

QPointF Camera::pixel(const Point& loaded) const { return scenePixel(room * (loaded - centre)); }

double Camera::pixelsPerMillimetre(const Point& loaded) const {
  const Point eye = turn * (room * (loaded - centre)) + position;
  return height / 2.0 / std::tan(radians(45.0 / 2.0)) / -eye[2];
}

SignalLog::SignalLog(GLCanvas& canvas) {
  const auto logFlag = [this, &canvas](void (GLCanvas::*signal)(bool), const char* name) {
    connect(&canvas, signal, this, [this, name](bool value) { entries_.push_back(name + (" " + text(value))); });
  };
  const auto logPlain = [this, &canvas](void (GLCanvas::*signal)(), const char* name) {
    connect(&canvas, signal, this, [this, name] { entries_.emplace_back(name); });
  };
  const auto logTriple = [this, &canvas](void (GLCanvas::*signal)(double, double, double), const char* name) {
    connect(&canvas, signal, this,
            [this, name](double x, double y, double z) { entries_.push_back(name + (" " + text(x, y, z))); });
  };
  logTriple(&GLCanvas::translateViewRequest, "translateViewRequest");
  logTriple(&GLCanvas::rotateViewRequest, "rotateViewRequest");
  logPlain(&GLCanvas::storeViewRequest, "storeViewRequest");
  logFlag(&GLCanvas::bodyModified, "bodyModified");
  logPlain(&GLCanvas::storeBodyRequest, "storeBodyRequest");
  logFlag(&GLCanvas::canUndo, "canUndo");
  logFlag(&GLCanvas::canRedo, "canRedo");
  logFlag(&GLCanvas::canSetOriginToMarker, "canSetOriginToMarker");
  logFlag(&GLCanvas::canSetAxisToMarkers, "canSetAxisToMarkers");
  logFlag(&GLCanvas::canSetParallelAxes, "canSetParallelAxes");
  logFlag(&GLCanvas::body_change, "body_change");
  logFlag(&GLCanvas::is_online, "is_online");
  logFlag(&GLCanvas::canIntroduceLine, "canIntroduceLine");
  logFlag(&GLCanvas::canDeleteLine, "canDeleteLine");
  logPlain(&GLCanvas::canDeleteMarker, "canDeleteMarker");
}

std::vector<std::string> SignalLog::take() { return std::exchange(entries_, {}); }

std::vector<Point> tetrahedron() { return {{0, 0, 0}, {60, 5, 0}, {-10, 50, 8}, {20, 15, -45}}; }

Point mean(const std::vector<Point>& points) {
  Point sum = {0, 0, 0};
  for (const Point& point : points) {
    sum = sum + point;
  }
  return sum * (1.0 / static_cast<double>(points.size()));
}

bool load(GLCanvas& canvas, const std::vector<Point>& positions) {
  std::vector<bsVector> vectors;
  for (const Point& position : positions) {
    vectors.push_back(vectorOf(position));
  }
  std::vector<Emission> emissions;
  return canvas.loadBody(&vectors, &emissions);
}

void show(GLCanvas& canvas, int width, int height) {
  canvas.resize(width, height);
  canvas.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&canvas));
  ASSERT_TRUE(QTest::qWaitFor([&] { return canvas.size() == QSize(width, height); }));
  ASSERT_TRUE(canvas.isValid()) << "these cases need OpenGL";
}

Camera cameraOf(const GLCanvas& canvas, const std::vector<Point>& body) {
  Camera camera;
  camera.width = canvas.width();
  camera.height = canvas.height();
  camera.centre = mean(body);
  return camera;
}

QImage painted(GLCanvas& canvas) {
  canvas.makeCurrent();
  canvas.paintGL();
  return canvas.grabFrameBuffer();
}

abcObject* marker(const GLCanvas& canvas, std::size_t index) { return canvas.getBody().getMarkers().at(index); }

abcObject* line(const GLCanvas& canvas, std::size_t index) { return canvas.getBody().getLines().at(index); }

std::vector<int> selectedIds(const GLCanvas& canvas) {
  std::vector<int> ids;
  for (const abcObject* object : canvas.getSelection()) {
    ids.push_back(object->getType() == ABC_MARKER ? static_cast<int>(static_cast<const abcMarker*>(object)->getId())
                                                  : -1);
  }
  return ids;
}

}  // namespace canvastest
