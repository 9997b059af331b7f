// Vertices that spheres, cylinders and cones should have, computed from their geometry alone, and how to compare them.
#ifndef KORVEX2_TESTS_SHAPES_H
#define KORVEX2_TESTS_SHAPES_H

#include <gtest/gtest.h>

#include <vector>

#include "bsVector.h"
#include "glprobe.h"

namespace shapes {

using Points = std::vector<bsVector>;

/// Where a shape's own z axis points, and the two axes across it.
struct Pose {
  bsVector origin;
  bsVector x, y, z;
};

/// Vertices of a sphere of `slices` meridians and `stacks` bands, poles along pose.z.
Points sphere(const Pose& pose, double radius, int slices, int stacks);
/// Vertices of a cylinder or cone from `base` at the origin to `top` at `height` along pose.z.
Points cylinder(const Pose& pose, double base, double top, double height, int slices, int stacks);

/// The different points among the vertices of a recording.
Points points(const GlProbe::Recording& recording, double tolerance);
/// The same for primitives of one kind only.
Points points(const GlProbe::Recording& recording, GlProbe::Kind kind, double tolerance);
/// Primitives all of whose vertices have this colour.
GlProbe::Recording ofColor(const GlProbe::Recording& recording, double red, double green, double blue);
/// How many primitives of the kind there are.
std::size_t count(const GlProbe::Recording& recording, GlProbe::Kind kind);

/// Whether both sets hold the same points; says which point is missing or too many.
testing::AssertionResult same(const Points& actual, const Points& expected, double tolerance);

Points operator+(Points a, const Points& b);

}  // namespace shapes

#endif
