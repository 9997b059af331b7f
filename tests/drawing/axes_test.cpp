// The coordinate axes and the rotation guide.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <algorithm>

#include "glUtils.h"
#include "glprobe.h"
#include "shapes.h"

namespace {

using shapes::operator+;

const double origin[3] = {0.0, 0.0, 0.0};
const bsVector x(1, 0, 0);
const bsVector y(0, 1, 0);
const bsVector z(0, 0, 1);

/// The vertices of an arrow of this length along pose.z.
shapes::Points arrow(const shapes::Pose& pose, double length) {
  shapes::Pose tip = pose;
  tip.origin = pose.origin + pose.z * length;
  return shapes::cylinder(pose, length / 80.0, length / 80.0, length, 16, 1) +
         shapes::cylinder(tip, length / 10.0, 0.0, length / 5.0, 16, 1);
}

std::vector<bsVector> ends(const GlProbe::Recording& lines) {
  std::vector<bsVector> found;
  for (const GlProbe::Primitive& line : lines) {
    for (const GlProbe::Vertex& vertex : line.vertices) {
      found.push_back(vertex.position);
    }
  }
  return found;
}

class Axes : public testing::Test {
 protected:
  GlProbe probe{1000.0};
};

TEST_F(Axes, AreThreeArrowsInRedGreenAndBlue) {
  const GlProbe::Recording drawn = probe.record([] { drawAxes(origin, 80.0, 5.0, false, 10.0, 1.0); });
  EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Line), 0u);
  // Lit: see GlProbe for the factor 0.2.
  const auto red = shapes::ofColor(drawn, 0.2, 0.0, 0.0);
  const auto green = shapes::ofColor(drawn, 0.0, 0.2, 0.0);
  const auto blue = shapes::ofColor(drawn, 0.0, 0.0, 0.2);
  EXPECT_EQ(red.size() + green.size() + blue.size(), drawn.size());
  const double tolerance = probe.tolerance();
  EXPECT_TRUE(shapes::same(shapes::points(red, tolerance), arrow({0.0, y, z, x}, 80.0), tolerance));
  EXPECT_TRUE(shapes::same(shapes::points(green, tolerance), arrow({0.0, z, x, y}, 80.0), tolerance));
  EXPECT_TRUE(shapes::same(shapes::points(blue, tolerance), arrow({0.0, x, y, z}, 80.0), tolerance));
}

TEST_F(Axes, TakeTheirBrightnessFromTheIntensity) {
  const GlProbe::Recording drawn = probe.record([] { drawAxes(origin, 80.0, 5.0, false, 10.0, 0.5); });
  const std::size_t red = shapes::ofColor(drawn, 0.1, 0.0, 0.0).size();
  EXPECT_GT(red, 0u);
  EXPECT_EQ(shapes::ofColor(drawn, 0.0, 0.1, 0.0).size(), red);
  EXPECT_EQ(shapes::ofColor(drawn, 0.0, 0.0, 0.1).size(), red);
  EXPECT_EQ(drawn.size(), 3 * red);
}

TEST_F(Axes, ShiftOnlyTheConesByTheOrigin) {
  const double shifted[3] = {1.0, 2.0, 4.0};
  const GlProbe::Recording drawn = probe.record([&shifted] { drawAxes(shifted, 80.0, 5.0, false, 10.0, 1.0); });
  const double tolerance = probe.tolerance();
  const auto blue = shapes::points(shapes::ofColor(drawn, 0.0, 0.0, 0.2), tolerance);
  const shapes::Pose shaft{0.0, x, y, z};
  const shapes::Pose tip{bsVector(1.0, 2.0, 84.0), x, y, z};
  EXPECT_TRUE(shapes::same(
      blue, shapes::cylinder(shaft, 1.0, 1.0, 80.0, 16, 1) + shapes::cylinder(tip, 8.0, 0.0, 16.0, 16, 1), tolerance));
  // The x arrow is the z arrow turned by 90 degrees about y, and its shift with it: (1, 2, 4) goes to (4, 2, -1).
  const auto red = shapes::points(shapes::ofColor(drawn, 0.2, 0.0, 0.0), tolerance);
  EXPECT_TRUE(shapes::same(red,
                           shapes::cylinder({0.0, y, z, x}, 1.0, 1.0, 80.0, 16, 1) +
                               shapes::cylinder({bsVector(84.0, 2.0, -1.0), y, z, x}, 8.0, 0.0, 16.0, 16, 1),
                           tolerance));
}

TEST_F(Axes, DoNotHeedTheSize) {
  const auto small = probe.record([] { drawAxes(origin, 80.0, 0.0, false, 10.0, 1.0); });
  const auto large = probe.record([] { drawAxes(origin, 80.0, 300.0, false, 10.0, 1.0); });
  const double tolerance = probe.tolerance();
  EXPECT_EQ(small.size(), large.size());
  EXPECT_TRUE(shapes::same(shapes::points(small, tolerance), shapes::points(large, tolerance), tolerance));
}

TEST_F(Axes, AreLitAndFilledWhateverWasSetBefore) {
  const GlProbe::Recording drawn = probe.record(
      [] {
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        drawAxes(origin, 80.0, 5.0, false, 10.0, 1.0);
      },
      [] { EXPECT_TRUE(glIsEnabled(GL_LIGHTING)); });
  EXPECT_GT(shapes::count(drawn, GlProbe::Kind::Polygon), 0u);
  EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Line), 0u);
}

TEST_F(Axes, LeaveTheModelViewMatrixAsItWas) {
  double before[16];
  double after[16];
  probe.record(
      [&before] {
        glTranslated(3.0, 4.0, 5.0);
        glGetDoublev(GL_MODELVIEW_MATRIX, before);
        drawAxes(origin, 80.0, 5.0, true, 10.0, 1.0);
      },
      [&after] { glGetDoublev(GL_MODELVIEW_MATRIX, after); });
  EXPECT_TRUE(std::equal(before, before + 16, after));
}

TEST_F(Axes, LongAxesAreUnlitLinesOverTheFactorTimesTheLength) {
  const GlProbe::Recording drawn = probe.record([] { drawAxes(origin, 25.0, 3.0, true, 10.0, 1.0); },
                                                [] {
                                                  int pattern = 0;
                                                  int factor = 0;
                                                  float width = 0.0f;
                                                  glGetIntegerv(GL_LINE_STIPPLE_PATTERN, &pattern);
                                                  glGetIntegerv(GL_LINE_STIPPLE_REPEAT, &factor);
                                                  glGetFloatv(GL_LINE_WIDTH, &width);
                                                  EXPECT_EQ(pattern, 0xF0F0);
                                                  EXPECT_EQ(factor, 1);
                                                  EXPECT_EQ(width, 1.0f);
                                                  EXPECT_FALSE(glIsEnabled(GL_LINE_STIPPLE));
                                                  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
                                                });
  EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Line), 3u);
  const double tolerance = probe.tolerance();
  EXPECT_TRUE(shapes::same(ends(shapes::ofColor(drawn, 1.0, 0.0, 0.0)), {x * -250.0, x * 250.0}, tolerance));
  EXPECT_TRUE(shapes::same(ends(shapes::ofColor(drawn, 0.0, 1.0, 0.0)), {y * -250.0, y * 250.0}, tolerance));
  EXPECT_TRUE(shapes::same(ends(shapes::ofColor(drawn, 0.0, 0.0, 1.0)), {z * -250.0, z * 250.0}, tolerance));
}

TEST_F(Axes, LongAxesAreStippledHalfAndHalf) {
  const QImage picture = probe.picture([] { drawAxes(origin, 25.0, 3.0, true, 40.0, 1.0); });
  // Left of the arrows the red line is alone in its row.
  const QPoint start = probe.pixelOf(bsVector(-1000, 0, 0));
  const QPoint stop = probe.pixelOf(bsVector(-100, 0, 0));
  const auto lit = [&picture, &start, &stop](int row) {
    int count = 0;
    for (int column = start.x(); column < stop.x(); ++column) {
      count += picture.pixelColor(column, row) == QColor(255, 0, 0) ? 1 : 0;
    }
    return count;
  };
  // A line along a border between two rows of pixels may be drawn in either.
  const int length = stop.x() - start.x();
  const int count = std::max(lit(start.y()), lit(start.y() + 1));
  EXPECT_NEAR(count, length / 2, 8) << "one run of the pattern more or less, in " << length << " pixels";
}

TEST_F(Axes, TheRotationGuideTurnsOnlyTheGreenLine) {
  const GlProbe::Recording drawn = probe.record([] { drawRotationAxes(bsQuaternion(90.0, bsVector(0, 0, 1))); },
                                                [] {
                                                  int pattern = 0;
                                                  float width = 0.0f;
                                                  glGetIntegerv(GL_LINE_STIPPLE_PATTERN, &pattern);
                                                  glGetFloatv(GL_LINE_WIDTH, &width);
                                                  EXPECT_EQ(pattern, 0x1C47);
                                                  EXPECT_EQ(width, 2.0f);
                                                  EXPECT_FALSE(glIsEnabled(GL_LINE_STIPPLE));
                                                  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
                                                });
  ASSERT_EQ(drawn.size(), 2u);
  const double tolerance = probe.tolerance();
  EXPECT_TRUE(shapes::same(ends(shapes::ofColor(drawn, 1.0, 0.0, 0.0)), {x * -500.0, x * 500.0}, tolerance));
  // The turn of 90 degrees about z brings y to -x, so the green line lies on the red one, the other way round.
  const auto green = ends(shapes::ofColor(drawn, 0.0, 1.0, 0.0));
  ASSERT_EQ(green.size(), 2u);
  EXPECT_NEAR(green[0].x, 500.0, tolerance);
  EXPECT_NEAR(green[1].x, -500.0, tolerance);
  EXPECT_NEAR(green[0].y, 0.0, tolerance);
}

TEST_F(Axes, TheRotationGuideIsUnlitEvenAfterSomethingLit) {
  const GlProbe::Recording drawn = probe.record([] {
    glEnable(GL_LIGHTING);
    drawRotationAxes(bsQuaternion());
  });
  EXPECT_EQ(shapes::ofColor(drawn, 1.0, 0.0, 0.0).size(), 1u);
  EXPECT_EQ(shapes::ofColor(drawn, 0.0, 1.0, 0.0).size(), 1u);
}

}  // namespace
