// Spheres, cylinders and cones.
#include <gtest/gtest.h>

#include <limits>

#include "glprobe.h"
#include "glquadric.h"
#include "shapes.h"

namespace {

const shapes::Pose upright{0.0, bsVector(1, 0, 0), bsVector(0, 1, 0), bsVector(0, 0, 1)};

class Quadric : public testing::Test {
 protected:
  GlProbe probe{100.0};
};

TEST_F(Quadric, SphereHasPolesOnZAndTheGivenSlicesAndStacks) {
  const auto drawn = probe.record([] { korvex2::drawSphere(10.0, 16, 16); });
  const auto points = shapes::points(drawn, probe.tolerance());
  EXPECT_EQ(points.size(), 2u + 15u * 16u);
  EXPECT_TRUE(shapes::same(points, shapes::sphere(upright, 10.0, 16, 16), probe.tolerance()));
  EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Polygon), drawn.size());
}

TEST_F(Quadric, CylinderRunsFromItsBaseAtZeroToItsTop) {
  const auto drawn = probe.record([] { korvex2::drawCylinder(4.0, 8.0, 20.0, 14, 2); });
  EXPECT_TRUE(shapes::same(shapes::points(drawn, probe.tolerance()), shapes::cylinder(upright, 4.0, 8.0, 20.0, 14, 2),
                           probe.tolerance()));
}

TEST_F(Quadric, ShapesOfNegativeSizeAreNotDrawn) {
  EXPECT_TRUE(probe.record([] { korvex2::drawCylinder(-1.0, 1.0, 20.0, 14, 1); }).empty());
  EXPECT_TRUE(probe.record([] { korvex2::drawCylinder(1.0, 1.0, -20.0, 14, 1); }).empty());
  EXPECT_TRUE(probe.record([] { korvex2::drawSphere(-1.0, 16, 16); }).empty());
}

TEST_F(Quadric, ShapesCanBeSelected) {
  const auto hits = probe.select([] { korvex2::drawSphere(10.0, 16, 16); });
  EXPECT_EQ(hits.size(), 1u);
}

}  // namespace
