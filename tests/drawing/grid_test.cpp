// The reference grid.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

#include "glUtils.h"
#include "glprobe.h"
#include "shapes.h"

namespace {

struct Grid {
  /// x of the lines parallel to y, y of the lines parallel to x, in the order drawn.
  std::vector<double> x, y;
  /// Reach of the former along y, of the latter along x.
  double reachY = 0.0, reachX = 0.0;
};

class GridTest : public testing::Test {
 protected:
  Grid gridOf(double extentX, double extentY, double stepX, double stepY) {
    const auto drawn = probe.record([=] { drawGrid(extentX, extentY, stepX, stepY); });
    EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Line), drawn.size());
    Grid grid;
    for (const GlProbe::Primitive& line : drawn) {
      const bsVector from = line.vertices[0].position;
      const bsVector to = line.vertices[1].position;
      EXPECT_NEAR(from.z, 0.0, probe.tolerance());
      EXPECT_NEAR(to.z, 0.0, probe.tolerance());
      if (std::fabs(to.x - from.x) < probe.tolerance()) {
        grid.x.push_back(from.x);
        grid.reachY = to.y;
        EXPECT_NEAR(from.y, -to.y, probe.tolerance());
      } else {
        EXPECT_NEAR(from.y, to.y, probe.tolerance());
        grid.y.push_back(from.y);
        grid.reachX = to.x;
        EXPECT_NEAR(from.x, -to.x, probe.tolerance());
      }
    }
    return grid;
  }

  std::size_t linesOf(double extentX, double extentY, double stepX, double stepY) {
    return probe.record([=] { drawGrid(extentX, extentY, stepX, stepY); }).size();
  }

  GlProbe probe{1000.0};
};

TEST_F(GridTest, OfExtent100Point7AndStep10Has21LinesEachWayFromMinus100To100) {
  const Grid grid = gridOf(100.7, 100.7, 10.0, 10.0);
  ASSERT_EQ(grid.x.size(), 21u);
  ASSERT_EQ(grid.y.size(), 21u);
  for (int i = 0; i <= 20; ++i) {
    EXPECT_NEAR(grid.x[static_cast<std::size_t>(i)], -100.0 + 10.0 * i, probe.tolerance());
    EXPECT_NEAR(grid.y[static_cast<std::size_t>(i)], -100.0 + 10.0 * i, probe.tolerance());
  }
  EXPECT_NEAR(grid.reachX, 100.0, probe.tolerance());
  EXPECT_NEAR(grid.reachY, 100.0, probe.tolerance());
}

TEST_F(GridTest, OfTheBodysExtentAndStepHas41LinesEachWay) {
  const Grid grid = gridOf(500.0, 500.0, 25.0, 25.0);
  EXPECT_EQ(grid.x.size(), 41u);
  EXPECT_EQ(grid.y.size(), 41u);
}

TEST_F(GridTest, KeepsItsTwoDirectionsApart) {
  const Grid grid = gridOf(100.0, 60.0, 50.0, 20.0);
  ASSERT_EQ(grid.x.size(), 5u);
  ASSERT_EQ(grid.y.size(), 7u);
  EXPECT_NEAR(grid.x.front(), -100.0, probe.tolerance());
  EXPECT_NEAR(grid.y.front(), -60.0, probe.tolerance());
  EXPECT_NEAR(grid.reachX, 100.0, probe.tolerance());
  EXPECT_NEAR(grid.reachY, 60.0, probe.tolerance());
}

TEST_F(GridTest, TruncatesTheExtentAloneSoAStepThatDoesNotDivideItStopsShort) {
  const Grid grid = gridOf(100.0, 100.0, 30.0, 30.0);
  ASSERT_EQ(grid.x.size(), 7u);
  EXPECT_NEAR(grid.x.front(), -100.0, probe.tolerance());
  EXPECT_NEAR(grid.x.back(), 80.0, probe.tolerance());
  EXPECT_NEAR(grid.reachY, 100.0, probe.tolerance());
}

TEST_F(GridTest, KeepsTheLastLineOfAStepThatIsNoExactBinaryFraction) {
  // 66 / 1.1 comes out a little below 60.
  const Grid grid = gridOf(33.0, 10.0, 1.1, 0.1);
  ASSERT_EQ(grid.x.size(), 61u);
  EXPECT_NEAR(grid.x.back(), 33.0, probe.tolerance());
  ASSERT_EQ(grid.y.size(), 201u);
  EXPECT_NEAR(grid.y.back(), 10.0, probe.tolerance());
}

TEST_F(GridTest, OfAnExtentBelow1IsACrossOfOneLineEachWay) { EXPECT_EQ(linesOf(0.9, 0.9, 10.0, 10.0), 2u); }

TEST_F(GridTest, IsUnlitInTheCurrentColourAndLeavesLightingOff) {
  const auto drawn = probe.record(
      [] {
        glEnable(GL_LIGHTING);
        glLineWidth(4.0f);
        glColor3ub(255, 255, 0);
        drawGrid(100.0, 100.0, 10.0, 10.0);
      },
      [] {
        float width = 0.0f;
        glGetFloatv(GL_LINE_WIDTH, &width);
        EXPECT_EQ(width, 1.0f);
        EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
      });
  EXPECT_EQ(shapes::ofColor(drawn, 1.0, 1.0, 0.0).size(), 42u);
}

TEST_F(GridTest, OfValuesThatMakeNoGridDrawsNothingAndReturnsAtOnce) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(linesOf(100.0, 100.0, 0.0, 10.0), 0u);
  EXPECT_EQ(linesOf(100.0, 100.0, 10.0, -10.0), 0u);
  EXPECT_EQ(linesOf(-100.0, 100.0, 10.0, 10.0), 0u);
  EXPECT_EQ(linesOf(nan, 100.0, 10.0, 10.0), 0u);
  EXPECT_EQ(linesOf(100.0, 100.0, nan, 10.0), 0u);
  EXPECT_EQ(linesOf(infinity, 100.0, 10.0, 10.0), 0u);
  EXPECT_EQ(linesOf(100.0, 100.0, 10.0, infinity), 0u);
  EXPECT_EQ(linesOf(1e9, 100.0, 1.0, 10.0), 0u);
  EXPECT_EQ(linesOf(100.0, 100.0, 1e-300, 10.0), 0u);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
