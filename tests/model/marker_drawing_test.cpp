// How a marker and its emission are drawn.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cmath>
#include <limits>

#include "abcMarker.h"
#include "glprobe.h"
#include "shapes.h"

namespace {

using shapes::operator+;

constexpr double radiansPerDegree = 3.14159265358979323846 / 180.0;
const bsVector position(10, 20, 30);

/// Spheres lie with their poles on the y axis: the quarter turn about x brings z to -y and y to z.
const shapes::Pose lying{position, bsVector(1, 0, 0), bsVector(0, 0, 1), bsVector(0, -1, 0)};

class MarkerDrawing : public testing::Test {
 protected:
  shapes::Points pointsOf(const GlProbe::Recording& drawn) { return shapes::points(drawn, probe.tolerance()); }

  GlProbe probe{100.0};
  abcMarker marker{0, position};
};

TEST_F(MarkerDrawing, IsALitSphereOfItsRadiusAroundItsPosition) {
  const auto drawn = probe.record([this] { marker.draw(false, false); }, [] { EXPECT_TRUE(glIsEnabled(GL_LIGHTING)); });
  EXPECT_TRUE(shapes::same(pointsOf(drawn), shapes::sphere(lying, 10.0, 16, 16), probe.tolerance()));
  EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Polygon), drawn.size());
  // White and lit: see GlProbe for the factor 0.2.
  EXPECT_EQ(shapes::ofColor(drawn, 0.2, 0.2, 0.2).size(), drawn.size());
}

TEST_F(MarkerDrawing, HasTheSmallRadiusWhenSmall) {
  const auto drawn = probe.record([this] { marker.draw(true, false); });
  EXPECT_TRUE(shapes::same(pointsOf(drawn), shapes::sphere(lying, 3.0, 16, 16), probe.tolerance()));
}

TEST_F(MarkerDrawing, HasItsOwnColourOnlyWhenColoured) {
  marker.setColor(QColor(255, 0, 255));
  const auto coloured = probe.record([this] { marker.draw(false, true); });
  EXPECT_EQ(shapes::ofColor(coloured, 0.2, 0.0, 0.2).size(), coloured.size());
  const auto white = probe.record([this] { marker.draw(false, false); });
  EXPECT_EQ(shapes::ofColor(white, 0.2, 0.2, 0.2).size(), white.size());
}

TEST_F(MarkerDrawing, IsSeenAsADiscAtItsPlace) {
  const QImage picture = probe.picture([this] { marker.draw(false, true); });
  const QColor lit(51, 51, 51);  // 0.2 of white
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(position)), lit);
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(position + bsVector(8, 0, 0))), lit);
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(position + bsVector(0, -8, 0))), lit);
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(position + bsVector(12, 0, 0))), QColor(0, 0, 0));
  EXPECT_EQ(picture.pixelColor(probe.pixelOf(position + bsVector(9, 9, 0))), QColor(0, 0, 0));
}

TEST_F(MarkerDrawing, SelectedIsACageOfOneAndAFifthTheRadiusInTheCallersColour) {
  const auto drawn = probe.record(
      [this] {
        glEnable(GL_LIGHTING);
        glLineWidth(5.0f);
        glColor3ub(0, 255, 0);
        marker.drawSelected(false);
      },
      [] {
        float width = 0.0f;
        int modes[2] = {0, 0};
        glGetFloatv(GL_LINE_WIDTH, &width);
        glGetIntegerv(GL_POLYGON_MODE, modes);
        EXPECT_EQ(width, 1.0f);
        EXPECT_EQ(modes[0], GL_FILL);
        EXPECT_EQ(modes[1], GL_FILL);
        EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
      });
  EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Line), drawn.size());
  EXPECT_TRUE(shapes::same(pointsOf(drawn), shapes::sphere(lying, 12.0, 8, 8), probe.tolerance()));
  EXPECT_EQ(shapes::ofColor(drawn, 0.0, 1.0, 0.0).size(), drawn.size());
}

TEST_F(MarkerDrawing, SelectedIsSmallWhenSmall) {
  const auto drawn = probe.record([this] { marker.drawSelected(true); });
  EXPECT_TRUE(shapes::same(pointsOf(drawn), shapes::sphere(lying, 3.6, 8, 8), probe.tolerance()));
}

TEST_F(MarkerDrawing, ForPickingIsTheSphereWithNoChangeOfState) {
  marker.setColor(QColor(255, 0, 0));
  for (bool small : {false, true}) {
    const auto drawn =
        probe.record([this, small] { marker.drawForPicking(small); }, [] { EXPECT_FALSE(glIsEnabled(GL_LIGHTING)); });
    EXPECT_TRUE(shapes::same(pointsOf(drawn), shapes::sphere(lying, small ? 3.0 : 10.0, 16, 16), probe.tolerance()));
    EXPECT_EQ(shapes::ofColor(drawn, 0.5, 0.5, 0.5).size(), drawn.size());
  }
}

TEST_F(MarkerDrawing, LeavesTheModelViewMatrixAsItWas) {
  marker.setMarkerEmission(0.3, 0.4, 0.5, 60.0);
  double matrix[16];
  probe.record(
      [this] {
        marker.draw(false, true);
        marker.drawSelected(false);
        marker.drawForPicking(true);
        marker.drawEmission(false);
      },
      [&matrix] { glGetDoublev(GL_MODELVIEW_MATRIX, matrix); });
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(matrix[i], i % 5 == 0 ? 1.0 : 0.0);
  }
}

TEST_F(MarkerDrawing, AtAPositionThatIsNotFiniteIsNotDrawn) {
  abcMarker lost(0, bsVector(0, std::numeric_limits<double>::quiet_NaN(), 0));
  lost.setMarkerEmission(0, 0, 1, 30);
  EXPECT_TRUE(probe
                  .record([&lost] {
                    lost.draw(false, true);
                    lost.drawSelected(false);
                    lost.drawForPicking(false);
                    lost.drawEmission(false);
                  })
                  .empty());
}

// --- emission ---

/// The pose of a shape turned by `aboutX` and then, in the turned system, by `aboutY` degrees: Rx * Ry, by columns.
shapes::Pose turned(double aboutX, double aboutY) {
  const double sx = std::sin(aboutX * radiansPerDegree);
  const double cx = std::cos(aboutX * radiansPerDegree);
  const double sy = std::sin(aboutY * radiansPerDegree);
  const double cy = std::cos(aboutY * radiansPerDegree);
  return {position, bsVector(cy, sx * sy, -cx * sy), bsVector(0, cx, sx), bsVector(sy, -sx * cy, cx * cy)};
}

shapes::Pose moved(shapes::Pose pose, double along) {
  pose.origin = pose.origin + pose.z * along;
  return pose;
}

shapes::Points arrow(const shapes::Pose& pose, double shaft) {
  return shapes::cylinder(pose, 0.3125, 0.3125, shaft, 14, 1) +
         shapes::cylinder(moved(pose, shaft), 2.5, 0.0, 5.0, 14, 1);
}

class Emissions : public MarkerDrawing {
 protected:
  GlProbe::Recording emission(double x, double y, double z, double angle, bool small = false) {
    marker.setMarkerEmission(x, y, z, angle);
    return probe.record([this, small] { marker.drawEmission(small); });
  }
  testing::AssertionResult isDrawn(const GlProbe::Recording& drawn, const shapes::Points& expected) {
    return shapes::same(pointsOf(drawn), expected, probe.tolerance());
  }
};

TEST_F(Emissions, OfNoDirectionDrawNothingWhateverTheAngle) {
  EXPECT_TRUE(emission(0, 0, 0, 0).empty());
  EXPECT_TRUE(emission(0, 0, 0, 30).empty());
  EXPECT_TRUE(emission(0, 0, -0.0, 150, true).empty());
}

TEST_F(Emissions, AreAnArrowAndAForwardConeWithItsApexAtTheMarker) {
  const shapes::Pose pose = turned(0, 0);
  const double height = 25.8 * std::sin(60.0 * radiansPerDegree);
  const double rim = 25.8 * std::cos(60.0 * radiansPerDegree);
  const auto drawn = emission(0, 0, 1, 30);
  EXPECT_TRUE(isDrawn(drawn, arrow(pose, 30.3) + shapes::cylinder(pose, 0.0, rim, height, 20, 20)));
  // The same by what it means: the cone's side is 25.8 long, 30 degrees off the direction.
  EXPECT_NEAR(std::atan2(rim, height) / radiansPerDegree, 30.0, 1e-9);
  EXPECT_NEAR(std::hypot(rim, height), 25.8, 1e-9);
}

TEST_F(Emissions, OfSmallMarkersAreShorter) {
  const shapes::Pose pose = turned(0, 0);
  const double height = 15.0 * std::sin(60.0 * radiansPerDegree);
  const double rim = 15.0 * std::cos(60.0 * radiansPerDegree);
  EXPECT_TRUE(
      isDrawn(emission(0, 0, 1, 30, true), arrow(pose, 19.5) + shapes::cylinder(pose, 0.0, rim, height, 20, 20)));
}

TEST_F(Emissions, BeyondARightAngleHaveTheSameConeMirroredBehindTheMarker) {
  const shapes::Pose pose = turned(0, 0);
  const double height = 25.8 * std::sin(60.0 * radiansPerDegree);
  const double rim = 25.8 * std::cos(60.0 * radiansPerDegree);
  EXPECT_TRUE(isDrawn(emission(0, 0, 1, 150),
                      arrow(pose, 30.3) + shapes::cylinder(moved(pose, -height), rim, 0.0, height, 20, 20)));
}

TEST_F(Emissions, OfARightAngleHaveAFlatDisc) {
  const shapes::Pose pose = turned(0, 0);
  EXPECT_TRUE(isDrawn(emission(0, 0, 1, 90), arrow(pose, 30.3) + shapes::cylinder(pose, 0.0, 25.8, 0.0, 20, 20)));
}

TEST_F(Emissions, OfNoOpeningHaveAConeWithoutWidth) {
  const shapes::Pose pose = turned(0, 0);
  EXPECT_TRUE(isDrawn(emission(0, 0, 1, 0), arrow(pose, 30.3) + shapes::cylinder(pose, 0.0, 0.0, 25.8, 20, 20)));
}

TEST_F(Emissions, PointAlongTheirDirection) {
  const struct {
    double x, y, z, aboutX, aboutY;
  } cases[] = {
      {0, 0, 1, 0, 0},
      {0, 0, -1, -180, 0},
      {1, 0, 0, 0, 90},
      {-1, 0, 0, 0, -90},
      {0, 1, 0, -90, 0},
      {0, -1, 0, 90, 0},
      {0, 0.5, 0.8660254037844386, -30, 0},
      {0, 0.5, -0.8660254037844386, -150, 0},
      {0.5, 0, 0.8660254037844386, 0, 30},
      {0.5, 0, -0.8660254037844386, -180, 30},
  };
  for (const auto& one : cases) {
    const shapes::Pose pose = turned(one.aboutX, one.aboutY);
    // Within a coordinate plane the two turns lead exactly to the direction.
    EXPECT_NEAR((pose.z - bsVector(one.x, one.y, one.z)).getLength(), 0.0, 1e-9);
    EXPECT_TRUE(
        isDrawn(emission(one.x, one.y, one.z, 90), arrow(pose, 30.3) + shapes::cylinder(pose, 0.0, 25.8, 0.0, 20, 20)))
        << one.x << ", " << one.y << ", " << one.z;
  }
}

TEST_F(Emissions, WithTwoComponentsTurnAboutXByTheOneAndAboutYByTheOther) {
  // asin(0.5) = 30 for both. One turn after the other does not lead to the direction itself: kept on purpose.
  const shapes::Pose pose = turned(-30, 30);
  EXPECT_TRUE(isDrawn(emission(0.5, 0.5, std::sqrt(0.5), 90),
                      arrow(pose, 30.3) + shapes::cylinder(pose, 0.0, 25.8, 0.0, 20, 20)));
}

TEST_F(Emissions, TakeAComponentInsideTheUnitRangeAsItIs) {
  // Not normalised: (0.5, 0, 0) counts as 30 degrees, not 90.
  const shapes::Pose pose = turned(0, 30);
  EXPECT_TRUE(isDrawn(emission(0.5, 0, 0, 90), arrow(pose, 30.3) + shapes::cylinder(pose, 0.0, 25.8, 0.0, 20, 20)));
}

TEST_F(Emissions, TakeAComponentBeyondTheUnitRangeAsItsEnd) {
  const shapes::Pose up = turned(-90, 0);
  EXPECT_TRUE(isDrawn(emission(0, 700, 0, 90), arrow(up, 30.3) + shapes::cylinder(up, 0.0, 25.8, 0.0, 20, 20)));
  const shapes::Pose left = turned(0, -90);
  EXPECT_TRUE(
      isDrawn(emission(-1.0000001, 0, 0, 90), arrow(left, 30.3) + shapes::cylinder(left, 0.0, 25.8, 0.0, 20, 20)));
}

TEST_F(Emissions, ThatAreNotFiniteDrawNoMoreThanIsKnown) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(emission(nan, 0, 1, 30).empty());
  EXPECT_TRUE(emission(0, infinity, 1, 30).empty());
  EXPECT_TRUE(isDrawn(emission(0, 0, 1, nan), arrow(turned(0, 0), 30.3)));
}

TEST_F(Emissions, OfAnglesThatMakeNoConeDrawTheArrow) {
  EXPECT_TRUE(isDrawn(emission(0, 0, 1, -10), arrow(turned(0, 0), 30.3)));
  EXPECT_TRUE(isDrawn(emission(0, 0, 1, 200), arrow(turned(0, 0), 30.3)));
  EXPECT_TRUE(isDrawn(emission(0, 0, 1, 350), arrow(turned(0, 0), 30.3)));
}

TEST_F(Emissions, AreWhiteLitAndFilled) {
  marker.setColor(QColor(255, 0, 0));
  marker.setMarkerEmission(0, 0, 1, 30);
  const auto drawn = probe.record(
      [this] {
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        marker.drawEmission(false);
      },
      [] { EXPECT_TRUE(glIsEnabled(GL_LIGHTING)); });
  EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Polygon), drawn.size());
  EXPECT_EQ(shapes::ofColor(drawn, 0.2, 0.2, 0.2).size(), drawn.size());
}

}  // namespace
