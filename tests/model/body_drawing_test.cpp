// What a body draws, in which order and where, and the names it gives for picking.
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <QGLWidget>
#include <QMessageBox>

#include <algorithm>

#include "abcBody.h"
#include "glprobe.h"
#include "modalwatch.h"
#include "shapes.h"

namespace {

using Hits = std::vector<GlProbe::Hit>;

// What is drawn lit has 0.2 times its colour: see GlProbe.
constexpr double lit = 0.2;

class BodyDrawing : public testing::Test {
 protected:
  BodyDrawing() { body.load(&positions); }
  GlProbe::Recording drawn() {
    return probe.record([this] { body.draw(); });
  }
  void join(std::size_t first, std::size_t second) {
    body.addLine(new abcLine(body.getMarkers()[first], body.getMarkers()[second]));
  }
  shapes::Points pointsOf(const GlProbe::Recording& recording) { return shapes::points(recording, probe.tolerance()); }
  /// Centre of the box around a recording.
  bsVector centerOf(const GlProbe::Recording& recording) {
    const shapes::Points points = pointsOf(recording);
    bsVector low = points.at(0);
    bsVector high = points.at(0);
    for (const bsVector& point : points) {
      low.minimize(point);
      high.maximize(point);
    }
    return (low + high) * 0.5;
  }

  ModalWatch watch;
  GlProbe probe{1000.0};
  const std::vector<bsVector> positions{{100, 0, 0}, {100, 200, 0}, {-100, 0, 300}};
  abcBody body;
};

/// Index of the first primitive of this colour.
std::size_t firstOf(const GlProbe::Recording& recording, double red, double green, double blue) {
  for (std::size_t i = 0; i < recording.size(); ++i) {
    if (!shapes::ofColor({recording[i]}, red, green, blue).empty()) {
      return i;
    }
  }
  ADD_FAILURE() << "nothing of colour " << red << ", " << green << ", " << blue;
  return recording.size();
}

TEST_F(BodyDrawing, OfAnUnloadedBodyIsNothing) {
  abcBody unloaded;
  unloaded.showXYGrid(true);
  EXPECT_TRUE(probe.record([&unloaded] { unloaded.draw(); }).empty());
  body.setLoaded(false);
  EXPECT_TRUE(drawn().empty());
}

TEST_F(BodyDrawing, OfNoMarkersIsTheAxes) {
  const std::vector<bsVector> none;
  ASSERT_TRUE(body.load(&none));
  const auto axes = drawn();
  EXPECT_GT(axes.size(), 0u);
  EXPECT_EQ(shapes::ofColor(axes, lit, 0, 0).size() * 3, axes.size());
}

TEST_F(BodyDrawing, ShowsMarkersWhiteAtTheirPlaces) {
  const auto white = shapes::ofColor(drawn(), lit, lit, lit);
  // Poles along y, as the markers' own tests have it.
  shapes::Points expected;
  for (const bsVector& position : positions) {
    const auto one = shapes::sphere({position, bsVector(1, 0, 0), bsVector(0, 0, 1), bsVector(0, -1, 0)}, 10.0, 16, 16);
    expected.insert(expected.end(), one.begin(), one.end());
  }
  EXPECT_TRUE(shapes::same(pointsOf(white), expected, probe.tolerance()));
}

TEST_F(BodyDrawing, ShowsSmallAndColouredMarkersWhenAsked) {
  body.showColoredMarkers(true);
  body.showSmallMarkers(true);
  const auto all = drawn();
  EXPECT_TRUE(shapes::ofColor(all, lit, lit, lit).empty());
  // The third marker is blue, and so is the z axis, which ends 30 above the origin.
  GlProbe::Recording blue = shapes::ofColor(all, 0, 0, lit);
  blue.erase(std::remove_if(blue.begin(), blue.end(),
                            [](const GlProbe::Primitive& p) { return p.vertices[0].position.z < 200.0; }),
             blue.end());
  EXPECT_EQ(pointsOf(blue).size(), 2u + 15u * 16u);
  EXPECT_NEAR((centerOf(blue) - positions[2]).getLength(), 0.0, probe.tolerance());
  for (const bsVector& point : pointsOf(blue)) {
    EXPECT_NEAR((point - positions[2]).getLength(), 3.0, probe.tolerance());
  }
}

TEST_F(BodyDrawing, HasAxesOf25ThatFollowCommittedAndPendingChange) {
  body.setImmediatePosition(bsVector(10, 20, 30));
  body.setImmediateOrientation(bsQuaternion(90.0, bsVector(0, 0, 1)));
  ASSERT_TRUE(body.store());
  body.setImmediatePosition(bsVector(5, 0, 0));
  // New x is loaded y: the origin is at (10, 25, 30), the x arrow runs along y from there, the cone ends after 25 + 5.
  const auto red = pointsOf(shapes::ofColor(drawn(), lit, 0, 0));
  bsVector low = red.at(0);
  bsVector high = red.at(0);
  for (const bsVector& point : red) {
    low.minimize(point);
    high.maximize(point);
  }
  EXPECT_NEAR(low.y, 25.0, probe.tolerance());
  EXPECT_NEAR(high.y, 55.0, probe.tolerance());
  EXPECT_NEAR(low.x, 10.0 - 2.5, probe.tolerance());
  EXPECT_NEAR(high.x, 10.0 + 2.5, probe.tolerance());
  EXPECT_NEAR(low.z, 30.0 - 2.5, probe.tolerance());
  EXPECT_NEAR(high.z, 30.0 + 2.5, probe.tolerance());
}

TEST_F(BodyDrawing, KeepsMarkersWhereTheyAreWhenTheCoordinateSystemChanges) {
  const auto before = pointsOf(shapes::ofColor(drawn(), lit, lit, lit));
  body.setImmediatePosition(bsVector(10, 20, 30));
  body.setImmediateOrientation(bsQuaternion(90.0, bsVector(0, 0, 1)));
  ASSERT_TRUE(body.store());
  EXPECT_TRUE(shapes::same(pointsOf(shapes::ofColor(drawn(), lit, lit, lit)), before, probe.tolerance()));
}

TEST_F(BodyDrawing, HasLongAxesOverTheFactorTimes25) {
  EXPECT_EQ(shapes::count(drawn(), GlProbe::Kind::Line), 0u);
  body.showLongAxes(true);
  const shapes::Points tenfold = shapes::points(drawn(), GlProbe::Kind::Line, probe.tolerance());
  EXPECT_TRUE(shapes::same(tenfold,
                           {bsVector(250, 0, 0), bsVector(-250, 0, 0), bsVector(0, 250, 0), bsVector(0, -250, 0),
                            bsVector(0, 0, 250), bsVector(0, 0, -250)},
                           probe.tolerance()));
  body.setLongAxesFactor(20.0);
  const shapes::Points twentyfold = shapes::points(drawn(), GlProbe::Kind::Line, probe.tolerance());
  EXPECT_TRUE(std::any_of(twentyfold.begin(), twentyfold.end(),
                          [this](const bsVector& p) { return std::abs(p.z - 500.0) < probe.tolerance(); }));
}

TEST_F(BodyDrawing, HasGridsInThreePlanesEachInItsColour) {
  const struct {
    void (abcBody::*show)(bool);
    double red, green, blue;
    bsVector normal;
  } grids[] = {
      {&abcBody::showXYGrid, 1, 1, 0, bsVector(0, 0, 1)},
      {&abcBody::showYZGrid, 0, 1, 1, bsVector(1, 0, 0)},
      {&abcBody::showXZGrid, 1, 0, 1, bsVector(0, 1, 0)},
  };
  for (const auto& grid : grids) {
    (body.*grid.show)(true);
    const auto all = drawn();
    EXPECT_EQ(shapes::count(all, GlProbe::Kind::Line), 82u);  // 500 / 25 = 20: 41 lines each way
    const auto lines = shapes::ofColor(all, grid.red, grid.green, grid.blue);
    EXPECT_EQ(lines.size(), 82u);
    double reach = 0.0;
    for (const bsVector& point : pointsOf(lines)) {
      EXPECT_NEAR(bsVector::dotProduct(point, grid.normal), 0.0, probe.tolerance());
      reach = std::max(reach, point.getLength());
    }
    EXPECT_NEAR(reach, 500.0 * std::sqrt(2.0), 2 * probe.tolerance());
    (body.*grid.show)(false);
  }
}

TEST_F(BodyDrawing, HasGridsOfTheGivenColourExtentAndStepInBodyCoordinates) {
  body.showXYGrid(true);
  body.setXYGridColor(QColor(0, 0, 255));
  body.setGridExtent(100.0);
  body.setGridStep(50.0);
  body.setImmediatePosition(bsVector(7, 0, 300));
  const auto lines = shapes::ofColor(drawn(), 0, 0, 1);
  EXPECT_EQ(lines.size(), 10u);
  EXPECT_NEAR((centerOf(lines) - bsVector(7, 0, 300)).getLength(), 0.0, 2 * probe.tolerance());
}

TEST_F(BodyDrawing, LightsMarkersAfterGridsAndLongAxes) {
  body.showLongAxes(true);
  body.showXYGrid(true);
  EXPECT_GT(shapes::ofColor(drawn(), lit, lit, lit).size(), 0u);
  EXPECT_EQ(shapes::ofColor(drawn(), 1, 1, 1).size(), 0u);
}

TEST_F(BodyDrawing, ShowsEmissionsOfMarkersThatHaveOneAndOnlyWhenAsked) {
  const std::size_t without = drawn().size();
  body.getMarkers()[1]->setMarkerEmission(0, 0, 1, 30);
  const auto shown = drawn();
  EXPECT_GT(shown.size(), without);
  bsVector high(-1000.0);
  for (const bsVector& point : pointsOf(shapes::ofColor(shown, lit, lit, lit))) {
    if ((point - positions[1]).getLength() < 60.0) {
      high.maximize(point);
    }
  }
  EXPECT_NEAR(high.z, 35.3, probe.tolerance());  // the arrow's tip: 30.3 + 5
  body.showMarkerEmissions(false);
  EXPECT_EQ(drawn().size(), without);
}

TEST_F(BodyDrawing, ShowsLinesInTheirOwnColourThinWithSmallMarkers) {
  join(0, 2);
  const double grey = lit * 100.0 / 255.0;
  const auto thickness = [&] {
    const auto bar = shapes::ofColor(drawn(), grey, grey, grey);
    bsVector low(1000.0);
    bsVector high(-1000.0);
    for (const bsVector& point : pointsOf(bar)) {
      low.minimize(point);
      high.maximize(point);
    }
    return high.y - low.y;  // the line runs level, so its sides face up and down
  };
  EXPECT_NEAR(thickness(), 6.0, 2 * probe.tolerance());
  body.showSmallMarkers(true);
  EXPECT_NEAR(thickness(), 1.5, 2 * probe.tolerance());
}

TEST_F(BodyDrawing, DrawsAxesGridsMarkersEmissionsLinesInThisOrder) {
  body.showColoredMarkers(true);
  body.showXYGrid(true);
  body.showYZGrid(true);
  body.showXZGrid(true);
  body.getMarkers()[0]->setColor(QColor(255, 255, 0));
  body.getMarkers()[1]->setColor(QColor(0, 255, 255));
  body.getMarkers()[2]->setColor(QColor(255, 0, 255));
  body.setMarkerEmission(0, 0, 1, 30);
  join(0, 2);
  join(1, 2);
  body.getLines()[1]->setColor(QColor(50, 50, 50));
  const auto all = drawn();
  const std::vector<std::size_t> order = {
      firstOf(all, lit, 0, 0),
      firstOf(all, 0, lit, 0),
      firstOf(all, 0, 0, lit),
      firstOf(all, 1, 1, 0),
      firstOf(all, 0, 1, 1),
      firstOf(all, 1, 0, 1),
      firstOf(all, lit, lit, 0),
      firstOf(all, 0, lit, lit),
      firstOf(all, lit, 0, lit),
      firstOf(all, lit, lit, lit),
      firstOf(all, lit * 100 / 255, lit * 100 / 255, lit * 100 / 255),
      firstOf(all, lit * 50 / 255, lit * 50 / 255, lit * 50 / 255),
  };
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end())) << testing::PrintToString(order);
}

TEST_F(BodyDrawing, LeavesTheModelViewMatrixAsItWas) {
  body.showYZGrid(true);
  body.showXZGrid(true);
  body.setMarkerEmission(0, 0, 1, 30);
  join(0, 1);
  body.setImmediatePosition(bsVector(1, 2, 3));
  double matrix[16];
  probe.record([this] { body.draw(); }, [&matrix] { glGetDoublev(GL_MODELVIEW_MATRIX, matrix); });
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(matrix[i], i % 5 == 0 ? 1.0 : 0.0);
  }
}

// --- picking ---

TEST_F(BodyDrawing, NamesMarkersAndLinesByKindAndIndexForPicking) {
  join(0, 1);
  join(1, 2);
  const Hits hits = probe.select([this] { body.drawForPicking(); });
  EXPECT_EQ(hits, (Hits{{1, 0}, {1, 1}, {1, 2}, {2, 0}, {2, 1}}));
}

TEST_F(BodyDrawing, LeavesNoNameOnTheStackAfterPicking) {
  join(0, 1);
  int depth = -1;
  probe.select([this, &depth] {
    body.drawForPicking();
    glGetIntegerv(GL_NAME_STACK_DEPTH, &depth);
  });
  EXPECT_EQ(depth, 0);
}

TEST_F(BodyDrawing, CountsLinesAnewAfterOneIsRemoved) {
  join(0, 1);
  join(1, 2);
  join(0, 2);
  body.removeLine(body.getLines()[1]);
  const Hits hits = probe.select([this] { body.drawForPicking(); });
  EXPECT_EQ(hits, (Hits{{1, 0}, {1, 1}, {1, 2}, {2, 0}, {2, 1}}));
}

TEST_F(BodyDrawing, OffersTheMarkersInTheSizeShownForPicking) {
  const auto reach = [this] {
    const auto picked = probe.record([this] { body.drawForPicking(); });
    double highest = -1000.0;
    for (const bsVector& point : pointsOf(picked)) {
      highest = std::max(highest, point.y);
    }
    return highest;
  };
  EXPECT_NEAR(reach(), 210.0, probe.tolerance());
  body.showSmallMarkers(true);
  EXPECT_NEAR(reach(), 203.0, probe.tolerance());
}

TEST_F(BodyDrawing, OfAnEmptyBodyOffersNothingForPicking) {
  body.initialize();
  EXPECT_TRUE(probe.select([this] { body.drawForPicking(); }).empty());
}

// --- the window it belongs to ---

TEST(BodyParent, ShowsItsBoxesOverItsWindowAndGoesWithIt) {
  auto window = std::make_unique<QGLWidget>();
  auto* body = new abcBody(window.get());
  QWidget* boxParent = nullptr;
  {
    ModalWatch watch;
    watch.expectWindow([&boxParent](QWidget* box) {
      boxParent = box->parentWidget();
      qobject_cast<QMessageBox*>(box)->accept();
    });
    EXPECT_FALSE(body->load(QString("/no/such/file.body")));
  }
  EXPECT_EQ(boxParent, window.get());
  bool gone = false;
  QObject::connect(body, &QObject::destroyed, body, [&gone] { gone = true; });
  window.reset();
  EXPECT_TRUE(gone);
}

}  // namespace
