// See plainframe.h.
#include "demo/plainframe.h"

#include <QFile>
#include <QTextStream>

#include <cmath>

namespace korvex2 {

namespace {
constexpr double pi = 3.14159265358979323846;
constexpr double verticalFieldOfView = 45.0;  // of the module's view, degrees
}  // namespace

Point difference(const Point& a, const Point& b) { return {{a[0] - b[0], a[1] - b[1], a[2] - b[2]}}; }

double dot(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Point cross(const Point& a, const Point& b) {
  return {{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]}};
}

Point unit(const Point& a) {
  const double length = std::sqrt(dot(a, a));
  return {{a[0] / length, a[1] / length, a[2] / length}};
}

double distance(const Point& a, const Point& b) {
  const Point d = difference(a, b);
  return std::sqrt(dot(d, d));
}

Point mean(const std::vector<Point>& points) {
  Point sum{{0.0, 0.0, 0.0}};
  for (const Point& point : points) {
    for (std::size_t i = 0; i < 3; ++i) {
      sum[i] += point[i] / static_cast<double>(points.size());
    }
  }
  return sum;
}

std::vector<Point> readMarkerPositions(const QString& file) {
  QFile input(file);
  if (!input.open(QIODevice::ReadOnly)) {
    return {};
  }
  QTextStream numbers(&input);
  numbers.setLocale(QLocale::c());
  int count = 0;
  numbers >> count;
  std::vector<Point> points;
  for (int i = 0; i < count && numbers.status() == QTextStream::Ok; ++i) {
    Point point{};
    numbers >> point[0] >> point[1] >> point[2];
    points.push_back(point);
  }
  return numbers.status() == QTextStream::Ok ? points : std::vector<Point>();
}

Point PlainFrame::coordinatesOf(const Point& point) const {
  const Point d = difference(point, origin_);
  return {{dot(d, axes_[0]), dot(d, axes_[1]), dot(d, axes_[2])}};
}

void PlainFrame::move(double x, double y, double z) {
  for (std::size_t i = 0; i < 3; ++i) {
    origin_[i] += x * axes_[0][i] + y * axes_[1][i] + z * axes_[2][i];
  }
}

// A turn about one axis carries the next axis towards the one after it.
void PlainFrame::turnPair(int from, int to, double degrees) {
  const double c = std::cos(degrees * pi / 180.0);
  const double s = std::sin(degrees * pi / 180.0);
  Point& a = axes_[static_cast<std::size_t>(from)];
  Point& b = axes_[static_cast<std::size_t>(to)];
  const Point oldA = a;
  const Point oldB = b;
  for (std::size_t i = 0; i < 3; ++i) {
    a[i] = c * oldA[i] + s * oldB[i];
    b[i] = c * oldB[i] - s * oldA[i];
  }
}

void PlainFrame::turn(double aboutX, double aboutY, double aboutZ) {
  turnPair(1, 2, aboutX);
  turnPair(2, 0, aboutY);
  turnPair(0, 1, aboutZ);
}

void PlainFrame::layAxis(int set, int keep, const Point& from, const Point& to) {
  const Point along = unit(difference(to, from));
  const Point old = axes_[static_cast<std::size_t>(keep)];
  const double part = dot(old, along);
  const Point kept = unit({{old[0] - part * along[0], old[1] - part * along[1], old[2] - part * along[2]}});
  const int third = 3 - set - keep;
  // The third axis follows from right-handedness: x = y cross z, y = z cross x, z = x cross y.
  const bool cyclic = (set + 1) % 3 == keep;
  axes_[static_cast<std::size_t>(set)] = along;
  axes_[static_cast<std::size_t>(keep)] = kept;
  axes_[static_cast<std::size_t>(third)] = cyclic ? cross(along, kept) : cross(kept, along);
}

void PlainFrame::followBody(const std::vector<Point>& markers) {
  std::size_t a = 0;
  std::size_t b = 1;
  for (std::size_t i = 0; i < markers.size(); ++i) {
    for (std::size_t j = i + 1; j < markers.size(); ++j) {
      if (distance(markers[i], markers[j]) > distance(markers[a], markers[b])) {
        a = i;
        b = j;
      }
    }
  }
  std::size_t first = a;
  std::size_t third = b;
  double shortest = distance(markers[a], markers[b]);
  for (std::size_t i = 0; i < markers.size(); ++i) {
    for (const std::size_t end : {a, b}) {
      if (i != a && i != b && distance(markers[i], markers[end]) < shortest) {
        shortest = distance(markers[i], markers[end]);
        first = end;
        third = i;
      }
    }
  }
  const std::size_t second = first == a ? b : a;
  origin_ = markers[first];
  axes_[0] = unit(difference(markers[second], markers[first]));
  axes_[2] = unit(cross(axes_[0], difference(markers[third], markers[first])));
  axes_[1] = cross(axes_[2], axes_[0]);
}

QPointF projected(const Point& point, const Point& centre, double distance, const QSizeF& widget) {
  const Point seen = difference(point, centre);
  const double depth = distance - seen[2];
  const double pixelsPerTangent = widget.height() / 2.0 / std::tan(verticalFieldOfView / 2.0 * pi / 180.0);
  return {widget.width() / 2.0 + seen[0] / depth * pixelsPerTangent,
          widget.height() / 2.0 - seen[1] / depth * pixelsPerTangent};
}

}  // namespace korvex2
