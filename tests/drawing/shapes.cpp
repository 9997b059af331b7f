// See shapes.h.
#include "shapes.h"

#include <algorithm>
#include <cmath>

namespace shapes {

namespace {

constexpr double pi = 3.14159265358979323846;

bool near(const bsVector& a, const bsVector& b, double tolerance) { return (a - b).getLength() <= tolerance; }

bool contains(const Points& points, const bsVector& point, double tolerance) {
  return std::any_of(points.begin(), points.end(), [&](const bsVector& p) { return near(p, point, tolerance); });
}

/// GLU counts the slices from the y axis on towards x.
void addRing(Points& points, const Pose& pose, double height, double radius, int slices) {
  const bsVector center = pose.origin + pose.z * height;
  if (std::fabs(radius) < 1e-9) {
    points.push_back(center);
    return;
  }
  for (int i = 0; i < slices; ++i) {
    const double angle = 2.0 * pi * i / slices;
    points.push_back(center + pose.x * (radius * std::sin(angle)) + pose.y * (radius * std::cos(angle)));
  }
}

}  // namespace

Points sphere(const Pose& pose, double radius, int slices, int stacks) {
  Points points;
  for (int i = 0; i <= stacks; ++i) {
    const double fromPole = pi * i / stacks;
    addRing(points, pose, radius * std::cos(fromPole), radius * std::sin(fromPole), slices);
  }
  return points;
}

Points cylinder(const Pose& pose, double base, double top, double height, int slices, int stacks) {
  Points points;
  for (int i = 0; i <= stacks; ++i) {
    const double part = static_cast<double>(i) / stacks;
    addRing(points, pose, part * height, base + part * (top - base), slices);
  }
  return points;
}

Points points(const GlProbe::Recording& recording, double tolerance) {
  Points found;
  for (const GlProbe::Primitive& primitive : recording) {
    for (const GlProbe::Vertex& vertex : primitive.vertices) {
      if (!contains(found, vertex.position, tolerance)) {
        found.push_back(vertex.position);
      }
    }
  }
  return found;
}

Points points(const GlProbe::Recording& recording, GlProbe::Kind kind, double tolerance) {
  GlProbe::Recording chosen;
  std::copy_if(recording.begin(), recording.end(), std::back_inserter(chosen),
               [kind](const GlProbe::Primitive& primitive) { return primitive.kind == kind; });
  return points(chosen, tolerance);
}

GlProbe::Recording ofColor(const GlProbe::Recording& recording, double red, double green, double blue) {
  constexpr double tolerance = 1e-3;  // half a step of an 8-bit colour is 2e-3
  GlProbe::Recording chosen;
  std::copy_if(recording.begin(), recording.end(), std::back_inserter(chosen),
               [&](const GlProbe::Primitive& primitive) {
                 return std::all_of(primitive.vertices.begin(), primitive.vertices.end(), [&](const auto& v) {
                   return std::fabs(v.red - red) < tolerance && std::fabs(v.green - green) < tolerance &&
                          std::fabs(v.blue - blue) < tolerance;
                 });
               });
  return chosen;
}

std::size_t count(const GlProbe::Recording& recording, GlProbe::Kind kind) {
  return static_cast<std::size_t>(std::count_if(recording.begin(), recording.end(),
                                                [kind](const auto& primitive) { return primitive.kind == kind; }));
}

testing::AssertionResult same(const Points& actual, const Points& expected, double tolerance) {
  for (const bsVector& point : expected) {
    if (!contains(actual, point, tolerance)) {
      return testing::AssertionFailure() << "no vertex at (" << point.x << ", " << point.y << ", " << point.z
                                         << ") among " << actual.size() << ", expected " << expected.size();
    }
  }
  for (const bsVector& point : actual) {
    if (!contains(expected, point, tolerance)) {
      return testing::AssertionFailure() << "a vertex too many at (" << point.x << ", " << point.y << ", " << point.z
                                         << ")";
    }
  }
  return testing::AssertionSuccess();
}

Points operator+(Points a, const Points& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace shapes
