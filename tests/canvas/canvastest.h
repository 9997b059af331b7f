// What the canvas's tests share: a canvas that counts redraws, an ordered log of its signals, and geometry of their
// own.
#ifndef KORVEX2_TESTS_CANVASTEST_H
#define KORVEX2_TESTS_CANVASTEST_H

#include <QImage>
#include <QPoint>
#include <QPointF>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "glcanvas.h"

namespace canvastest {

/// Plain geometry, written independently of the classes under test. Rows of rows; column vectors; degrees.
using Point = std::array<double, 3>;
using Rotation = std::array<Point, 3>;

constexpr Rotation noTurn = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

Point operator+(const Point& a, const Point& b);
Point operator-(const Point& a, const Point& b);
Point operator*(const Point& a, double s);
double dot(const Point& a, const Point& b);
Point cross(const Point& a, const Point& b);
Point unit(const Point& a);
double norm(const Point& a);
Rotation turnX(double degrees);
Rotation turnY(double degrees);
Rotation turnZ(double degrees);
Rotation operator*(const Rotation& a, const Rotation& b);
Point operator*(const Rotation& r, const Point& p);
Rotation transposed(const Rotation& r);
Rotation fromColumns(const Point& x, const Point& y, const Point& z);
Point column(const Rotation& r, int i);
/// A rotation drawn evenly enough for tests.
Rotation randomRotation(std::mt19937& random);
Point randomPoint(std::mt19937& random, double extent);

Point pointOf(const bsVector& v);
bsVector vectorOf(const Point& p);
Rotation rotationOf(const bsMatrix& m);
bsMatrix matrixOf(const Rotation& r);
bsMatrix poseOf(const Rotation& r, const Point& translation);

/// Double arithmetic over millimetres up to a few hundred leaves less than this.
constexpr double rounding = 1e-9;
void expectNear(const Point& found, const Point& expected, double tolerance = rounding);
void expectNear(const Rotation& found, const Rotation& expected, double tolerance = rounding);
/// The pose (rotation and translation) in a matrix.
void expectPose(const bsMatrix& found, const Rotation& turn, const Point& translation, double tolerance = rounding);
void expectSamePoints(const std::vector<bsVector>& found, const std::vector<Point>& expected);

/// Where the canvas must show points: perspective of 45 degrees upright, camera and placement as told. Widget pixels.
struct Camera {
  int width = 0;
  int height = 0;
  Rotation turn = noTurn;
  Point position = {0, 0, -300};
  Rotation room = noTurn;
  Point centre = {0, 0, 0};

  /// Of a point in loaded coordinates.
  QPointF pixel(const Point& loaded) const;
  /// Of a point of the scene, whose origin is the body's centre of gravity, turned by the room already.
  QPointF scenePixel(const Point& scene) const;
  QPoint click(const Point& loaded) const { return pixel(loaded).toPoint(); }
  /// Pixels that a millimetre is wide at the depth of a point in loaded coordinates.
  double pixelsPerMillimetre(const Point& loaded) const;
};

/// Ordered log of every signal of a canvas, as "canUndo true" or "translateViewRequest 1 2 3".
class SignalLog : public QObject {
 public:
  explicit SignalLog(GLCanvas& canvas);
  /// What was logged since the last call.
  std::vector<std::string> take();

 private:
  std::vector<std::string> entries_;
};

/// Counts the redraws asked for through the widget's virtual operation.
class CountingCanvas : public GLCanvas {
 public:
  using GLCanvas::GLCanvas;
  void updateGL() override {
    ++redraws;
    GLCanvas::updateGL();
  }
  int takeRedraws() { return std::exchange(redraws, 0); }
  int redraws = 0;
};

std::vector<Point> tetrahedron();
Point mean(const std::vector<Point>& points);
bool load(GLCanvas& canvas, const std::vector<Point>& positions);
/// Shows the canvas in this size and waits until it is on the screen.
void show(GLCanvas& canvas, int width = 400, int height = 300);
/// The camera of a canvas with that body loaded and the view at its start.
Camera cameraOf(const GLCanvas& canvas, const std::vector<Point>& body);
/// What the canvas paints now.
QImage painted(GLCanvas& canvas);

abcObject* marker(const GLCanvas& canvas, std::size_t index);
abcObject* line(const GLCanvas& canvas, std::size_t index);
/// Ids of the selected markers in order, -1 for a line.
std::vector<int> selectedIds(const GLCanvas& canvas);

}  // namespace canvastest

#endif
