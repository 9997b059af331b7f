// See glUtils.h.
#include "glUtils.h"

#include <GL/gl.h>

#include <cmath>

#include "bsMatrix.h"
#include "glquadric.h"

namespace {

constexpr double maxGridLines = 100000.0;

struct AxisStyle {
  /// The turn that brings the z axis onto this one, in degrees about (x, y, 0).
  double turn, x, y;
  double red, green, blue;
};

constexpr AxisStyle axisStyles[] = {
    {90.0, 0.0, 1.0, 1.0, 0.0, 0.0},
    {-90.0, 1.0, 0.0, 0.0, 1.0, 0.0},
    {0.0, 0.0, 0.0, 0.0, 0.0, 1.0},
};

void drawArrow(const double* origin, double length) {
  korvex2::drawCylinder(length / 80.0, length / 80.0, length, 16, 1);
  // Shifts the cone alone, not the shaft: kept on purpose.
  glTranslated(origin[0], origin[1], origin[2] + length);
  korvex2::drawCylinder(length / 10.0, 0.0, length / 5.0, 16, 1);
}

void drawLongAxes(double reach) {
  glEnable(GL_LINE_STIPPLE);
  glLineStipple(1, 0xF0F0);
  glDisable(GL_LIGHTING);
  glLineWidth(1.0f);
  glBegin(GL_LINES);
  glColor3d(1.0, 0.0, 0.0);
  glVertex3d(-reach, 0.0, 0.0);
  glVertex3d(reach, 0.0, 0.0);
  glColor3d(0.0, 1.0, 0.0);
  glVertex3d(0.0, -reach, 0.0);
  glVertex3d(0.0, reach, 0.0);
  glColor3d(0.0, 0.0, 1.0);
  glVertex3d(0.0, 0.0, -reach);
  glVertex3d(0.0, 0.0, reach);
  glEnd();
  glDisable(GL_LINE_STIPPLE);
}

/// Where the grid lines of one direction are: at -reach + i * step, for i from 0 below count.
struct GridLines {
  double reach = 0.0;
  double step = 0.0;
  int count = 0;
};

GridLines gridLines(double extent, double step) {
  GridLines lines;
  // Only the extent loses its fraction; a step that does not divide it shifts the last line inwards.
  lines.reach = std::trunc(extent) / step * step;
  lines.step = step;
  const double steps = 2.0 * lines.reach / step;
  if (std::isfinite(lines.reach) && step > 0.0 && steps >= 0.0 && steps < maxGridLines) {
    // A last line that rounding alone would push out of reach belongs to the grid.
    lines.count = static_cast<int>(std::floor(steps + 1e-6)) + 1;
  }
  return lines;
}

void drawFace(const bsVector& normal, const bsVector& a, const bsVector& b, const bsVector& c, const bsVector& d) {
  glNormal3dv(normal);
  glVertex3dv(a);
  glVertex3dv(b);
  glVertex3dv(c);
  glVertex3dv(d);
}

}  // namespace

void drawAxes(const double* origin, double length, double /*size*/, bool longAxes, double longAxesFactor,
              double intensity) {
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glEnable(GL_LIGHTING);
  for (const AxisStyle& axis : axisStyles) {
    glPushMatrix();
    glColor3d(axis.red * intensity, axis.green * intensity, axis.blue * intensity);
    if (axis.turn != 0.0) {
      glRotated(axis.turn, axis.x, axis.y, 0.0);
    }
    drawArrow(origin, length);
    glPopMatrix();
  }
  if (longAxes) {
    drawLongAxes(length * longAxesFactor);
  }
}

void drawGrid(double extentX, double extentY, double stepX, double stepY) {
  glDisable(GL_LIGHTING);
  glLineWidth(1.0f);
  const GridLines alongX = gridLines(extentX, stepX);
  const GridLines alongY = gridLines(extentY, stepY);
  if (alongX.count == 0 || alongY.count == 0) {
    return;
  }
  glBegin(GL_LINES);
  for (int i = 0; i < alongX.count; ++i) {
    const double x = -alongX.reach + i * alongX.step;
    glVertex3d(x, -alongY.reach, 0.0);
    glVertex3d(x, alongY.reach, 0.0);
  }
  for (int i = 0; i < alongY.count; ++i) {
    const double y = -alongY.reach + i * alongY.step;
    glVertex3d(-alongX.reach, y, 0.0);
    glVertex3d(alongX.reach, y, 0.0);
  }
  glEnd();
}

void drawRectangle(const bsVector& from, const bsVector& to, double width) {
  bsVector d = to - from;
  // The fixed reference direction leaves a bar along y without a cross-section: kept on purpose.
  bsVector a = d ^ bsVector(0.0, 1.0, 0.0);
  bsVector b = a ^ d;
  d.normalize();
  a.normalize();
  b.normalize();
  a *= width * 0.5;
  b *= width * 0.5;

  // p: plus, m: minus, first for a, then for b. Each face runs counter-clockwise seen from outside.
  const bsVector fromPP = from + a + b, fromPM = from + a - b, fromMP = from - a + b, fromMM = from - a - b;
  const bsVector toPP = to + a + b, toPM = to + a - b, toMP = to - a + b, toMM = to - a - b;
  glBegin(GL_QUADS);
  drawFace(-d, fromMM, fromPM, fromPP, fromMP);
  drawFace(d, toMM, toMP, toPP, toPM);
  drawFace(a, fromPM, toPM, toPP, fromPP);
  drawFace(-a, fromMM, fromMP, toMP, toMM);
  drawFace(b, fromPP, toPP, toMP, fromMP);
  drawFace(-b, fromMM, toMM, toPM, fromPM);
  glEnd();
}

void drawRotationAxes(const bsQuaternion& q) {
  glEnable(GL_LINE_STIPPLE);
  glLineStipple(1, 7239);
  glDisable(GL_LIGHTING);
  glLineWidth(2.0f);
  glBegin(GL_LINES);
  glColor3d(1.0, 0.0, 0.0);
  glVertex3d(-500.0, 0.0, 0.0);
  glVertex3d(500.0, 0.0, 0.0);
  glEnd();
  glMultMatrixd(q.toMatrix());
  glBegin(GL_LINES);
  glColor3d(0.0, 1.0, 0.0);
  glVertex3d(0.0, -500.0, 0.0);
  glVertex3d(0.0, 500.0, 0.0);
  glEnd();
  glDisable(GL_LINE_STIPPLE);
}
