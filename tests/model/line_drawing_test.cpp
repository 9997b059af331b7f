// How a line between two markers is drawn.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include "abcLine.h"
#include "abcMarker.h"
#include "glprobe.h"
#include "shapes.h"

namespace {

/// Corners of the bar of this width between the two markers of LineDrawing: along x, so its sides face y and z.
shapes::Points bar(double width) {
  shapes::Points corners;
  for (double x : {-20.0, 30.0}) {
    for (double y : {5.0 - width / 2, 5.0 + width / 2}) {
      for (double z : {-width / 2, width / 2}) {
        corners.emplace_back(x, y, z);
      }
    }
  }
  return corners;
}

class LineDrawing : public testing::Test {
 protected:
  testing::AssertionResult isBar(const GlProbe::Recording& drawn, double width) {
    return shapes::same(shapes::points(drawn, probe.tolerance()), bar(width), probe.tolerance());
  }

  GlProbe probe{100.0};
  abcMarker first{0, bsVector(-20, 5, 0)};
  abcMarker second{1, bsVector(30, 5, 0)};
  abcLine line{&first, &second};
};

TEST_F(LineDrawing, IsABarOfTheWideOrTheThinWidth) {
  EXPECT_TRUE(isBar(probe.record([this] { line.draw(false, true); }), 6.0));
  EXPECT_TRUE(isBar(probe.record([this] { line.draw(true, true); }), 1.5));
}

TEST_F(LineDrawing, HasItsOwnColourColouredOrNot) {
  const double grey = 100.0 / 255.0;
  for (bool colored : {false, true}) {
    const auto drawn = probe.record([this, colored] { line.draw(false, colored); });
    EXPECT_GT(drawn.size(), 0u);
    EXPECT_EQ(shapes::ofColor(drawn, grey, grey, grey).size(), drawn.size());
  }
  line.setColor(QColor(0, 0, 255));
  const auto blue = probe.record([this] { line.draw(false, false); });
  EXPECT_EQ(shapes::ofColor(blue, 0.0, 0.0, 1.0).size(), blue.size());
}

TEST_F(LineDrawing, LeavesLightingAsItIs) {
  probe.record([this] { line.draw(false, true); }, [] { EXPECT_FALSE(glIsEnabled(GL_LIGHTING)); });
  probe.record(
      [this] {
        glEnable(GL_LIGHTING);
        line.draw(false, true);
      },
      [] { EXPECT_TRUE(glIsEnabled(GL_LIGHTING)); });
}

TEST_F(LineDrawing, SelectedIsACageOf1Point4TheWidthInTheCallersColour) {
  for (bool small : {false, true}) {
    const auto drawn = probe.record(
        [this, small] {
          glEnable(GL_LIGHTING);
          glLineWidth(5.0f);
          glColor3ub(255, 0, 0);
          line.drawSelected(small);
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
    EXPECT_TRUE(isBar(drawn, small ? 2.1 : 8.4));
    EXPECT_EQ(shapes::count(drawn, GlProbe::Kind::Line), drawn.size());
    EXPECT_EQ(shapes::ofColor(drawn, 1.0, 0.0, 0.0).size(), drawn.size());
  }
}

TEST_F(LineDrawing, ForPickingIsTheBarWithNoChangeOfState) {
  for (bool small : {false, true}) {
    const auto drawn =
        probe.record([this, small] { line.drawForPicking(small); }, [] { EXPECT_FALSE(glIsEnabled(GL_LIGHTING)); });
    EXPECT_TRUE(isBar(drawn, small ? 1.5 : 6.0));
    EXPECT_EQ(shapes::ofColor(drawn, 0.5, 0.5, 0.5).size(), drawn.size());
  }
}

TEST_F(LineDrawing, BetweenMarkersThatDifferOnlyInYIsInvisible) {
  abcMarker above(2, bsVector(-20, 45, 0));
  abcLine upright(&first, &above);
  const auto drawn = probe.record([&upright] { upright.draw(false, true); });
  EXPECT_TRUE(shapes::same(shapes::points(drawn, probe.tolerance()), {bsVector(-20, 5, 0), bsVector(-20, 45, 0)},
                           probe.tolerance()));
  const QImage picture = probe.picture([&upright] { upright.draw(false, true); });
  for (double y = 0.0; y < 50.0; y += 0.5) {
    for (double x = -24.0; x < -16.0; x += 0.5) {
      ASSERT_EQ(picture.pixelColor(probe.pixelOf(bsVector(x, y, 0))), QColor(0, 0, 0));
    }
  }
}

TEST_F(LineDrawing, WithoutItsMarkersDrawsNothing) {
  abcLine loose(&first, nullptr);
  EXPECT_TRUE(probe.record([&loose] { loose.draw(false, true); }).empty());
}

}  // namespace
