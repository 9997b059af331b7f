// The bar between two points.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

#include "glUtils.h"
#include "glprobe.h"
#include "shapes.h"

namespace {

class Bar : public testing::Test {
 protected:
  GlProbe::Recording barOf(bsVector from, bsVector to, double width) {
    return probe.record([&] { drawRectangle(from, to, width); });
  }

  GlProbe probe{100.0};
};

TEST_F(Bar, AlongXHasEightCornersHalfAWidthOffItsEnds) {
  const auto drawn = barOf(bsVector(10, 20, 30), bsVector(50, 20, 30), 6.0);
  // d = x, a = d x y = z, b = a x d = y, each 3 long.
  shapes::Points corners;
  for (double x : {10.0, 50.0}) {
    for (double y : {17.0, 23.0}) {
      for (double z : {27.0, 33.0}) {
        corners.emplace_back(x, y, z);
      }
    }
  }
  EXPECT_TRUE(shapes::same(shapes::points(drawn, probe.tolerance()), corners, probe.tolerance()));
}

TEST_F(Bar, InAnyDirectionHasASquareCrossSection) {
  const bsVector from(-10, 5, 20);
  const bsVector to(30, -25, 40);
  const auto drawn = barOf(from, to, 4.0);
  // d = (40, -30, 20). a is level: (-20, 0, 40) / sqrt(2000). b = a x d, across both.
  const bsVector a = bsVector(-20, 0, 40) * (2.0 / std::sqrt(2000.0));
  const bsVector b = bsVector(1200, 2000, 600) * (2.0 / std::sqrt(1200.0 * 1200 + 2000.0 * 2000 + 600.0 * 600));
  shapes::Points corners;
  for (const bsVector& end : {from, to}) {
    corners.insert(corners.end(), {end + a + b, end + a - b, end - a + b, end - a - b});
  }
  EXPECT_TRUE(shapes::same(shapes::points(drawn, probe.tolerance()), corners, probe.tolerance()));
}

TEST_F(Bar, IsClosedBySixFaces) {
  const auto drawn = barOf(bsVector(-10, 0, 0), bsVector(10, 0, 0), 6.0);
  // Each face is a quadrilateral, or two triangles where the driver takes it apart. Sum the areas by the coordinate
  // that a face keeps: two ends of 6 x 6, four sides of 20 x 6.
  double ends = 0.0;
  double sides = 0.0;
  for (const GlProbe::Primitive& face : drawn) {
    ASSERT_EQ(face.kind, GlProbe::Kind::Polygon);
    bsVector area;
    for (std::size_t i = 2; i < face.vertices.size(); ++i) {
      const bsVector u = face.vertices[i - 1].position - face.vertices[0].position;
      const bsVector v = face.vertices[i].position - face.vertices[0].position;
      area += (u ^ v) * 0.5;
    }
    // Counter-clockwise from outside: the area points away from the middle of the bar.
    EXPECT_GT(bsVector::dotProduct(area, face.vertices[0].position), 0.0);
    (std::fabs(area.x) > 1.0 ? ends : sides) += area.getLength();
  }
  EXPECT_NEAR(ends, 2 * 36.0, 0.01);  // areas multiply the single precision of the vertices by the lengths
  EXPECT_NEAR(sides, 4 * 120.0, 0.01);
}

TEST_F(Bar, FacesTheLightWithEachOfItsSides) {
  // One distant light, diffuse only, on a white bar along x whose half width of 1 makes the normals unit vectors: lit
  // is the face towards the light, and no other.
  for (const bsVector& light : {bsVector(1, 0, 0), bsVector(-1, 0, 0), bsVector(0, 1, 0), bsVector(0, -1, 0),
                                bsVector(0, 0, 1), bsVector(0, 0, -1)}) {
    const auto drawn = probe.record([&light] {
      const float direction[] = {static_cast<float>(light.x), static_cast<float>(light.y), static_cast<float>(light.z),
                                 0.0f};
      const float none[] = {0.0f, 0.0f, 0.0f, 1.0f};
      glLightfv(GL_LIGHT0, GL_POSITION, direction);
      glLightModelfv(GL_LIGHT_MODEL_AMBIENT, none);
      glEnable(GL_LIGHT0);
      glEnable(GL_LIGHTING);
      glColor3d(1.0, 1.0, 1.0);
      drawRectangle(bsVector(-10, 0, 0), bsVector(10, 0, 0), 2.0);
    });
    for (const GlProbe::Primitive& face : drawn) {
      const bool towardsLight =
          std::all_of(face.vertices.begin(), face.vertices.end(),
                      [&light](const GlProbe::Vertex& v) { return bsVector::dotProduct(v.position, light) > 0.5; });
      for (const GlProbe::Vertex& vertex : face.vertices) {
        EXPECT_NEAR(vertex.red, towardsLight ? 1.0 : 0.0, 1e-3);  // half a step of an 8-bit colour is 2e-3
      }
    }
  }
}

TEST_F(Bar, AlongYHasNoCrossSection) {
  const auto drawn = barOf(bsVector(10, -20, 30), bsVector(10, 20, 30), 6.0);
  EXPECT_TRUE(shapes::same(shapes::points(drawn, probe.tolerance()), {bsVector(10, -20, 30), bsVector(10, 20, 30)},
                           probe.tolerance()));
}

TEST_F(Bar, AlongYIsInvisible) {
  const QImage picture = probe.picture([] {
    glColor3d(1.0, 1.0, 1.0);
    drawRectangle(bsVector(10, -20, 30), bsVector(10, 20, 30), 6.0);
  });
  for (int row = 0; row < picture.height(); ++row) {
    for (int column = 0; column < picture.width(); ++column) {
      ASSERT_EQ(picture.pixelColor(column, row), QColor(0, 0, 0)) << column << ", " << row;
    }
  }
}

TEST_F(Bar, IsSeenWhereItIs) {
  const QImage picture = probe.picture([] {
    glColor3d(1.0, 1.0, 1.0);
    drawRectangle(bsVector(-40, 10, 0), bsVector(40, 10, 0), 10.0);
  });
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(bsVector(0, 10, 0))), QColor(255, 255, 255));
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(bsVector(-38, 13, 0))), QColor(255, 255, 255));
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(bsVector(0, 17, 0))), QColor(0, 0, 0));
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(bsVector(43, 10, 0))), QColor(0, 0, 0));
}

TEST_F(Bar, BetweenEqualPointsIsAPoint) {
  const auto drawn = barOf(bsVector(1, 2, 3), bsVector(1, 2, 3), 6.0);
  EXPECT_TRUE(shapes::same(shapes::points(drawn, probe.tolerance()), {bsVector(1, 2, 3)}, probe.tolerance()));
}

}  // namespace
