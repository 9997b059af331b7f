// Plain arithmetic on marker positions, against which the demonstration checks what the backend ends up with.
#ifndef KORVEX2_HOST_DEMO_PLAINFRAME_H
#define KORVEX2_HOST_DEMO_PLAINFRAME_H

#include <QPointF>
#include <QSizeF>
#include <QString>

#include <array>
#include <vector>

namespace korvex2 {

/// Millimetres, x, y, z.
using Point = std::array<double, 3>;

Point difference(const Point& a, const Point& b);
double dot(const Point& a, const Point& b);
Point cross(const Point& a, const Point& b);
/// The unit vector along a; a must not be zero.
Point unit(const Point& a);
double distance(const Point& a, const Point& b);
Point mean(const std::vector<Point>& points);

/// Marker positions of a body file, in the file's coordinates; empty when the file cannot be read.
std::vector<Point> readMarkerPositions(const QString& file);

/// A body coordinate system: where its origin and its axes lie in the coordinates of the body file.
///
/// It shares no code with the module and none of its formulas beyond the textbook ones: axes are three unit vectors,
/// a turn mixes two of them, a position is read off by projecting on the axes.
class PlainFrame {
 public:
  /// Coordinates of a point of the file in this frame.
  Point coordinatesOf(const Point& point) const;

  void putOriginAt(const Point& point) { origin_ = point; }
  /// A move along the frame's own axes.
  void move(double x, double y, double z);
  /// Turns about the frame's own axes, degrees: first about x, then about the turned y, then about the turned z.
  void turn(double aboutX, double aboutY, double aboutZ);
  /// Axis `set` (0 x, 1 y, 2 z) runs from one point to the other; axis `keep` stays as near as it can.
  void layAxis(int set, int keep, const Point& from, const Point& to);
  /// Origin in the marker at one end of the longest distance, namely the end nearer to some other marker; x along that
  /// distance, z normal to the plane of the three, right-handed. Exact ties are decided for the earlier pair.
  void followBody(const std::vector<Point>& markers);

 private:
  void turnPair(int from, int to, double degrees);

  Point origin_{{0.0, 0.0, 0.0}};
  std::array<Point, 3> axes_{{{{1.0, 0.0, 0.0}}, {{0.0, 1.0, 0.0}}, {{0.0, 0.0, 1.0}}}};
};

/// Where a camera that looks along -z from `distance` mm before `centre` sees a point: widget coordinates.
QPointF projected(const Point& point, const Point& centre, double distance, const QSizeF& widget);

}  // namespace korvex2

#endif
