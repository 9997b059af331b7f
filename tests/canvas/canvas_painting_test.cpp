// What the canvas paints, by colours at places computed by arithmetic of the tests' own.
#include <gtest/gtest.h>

#include <QColor>

#include <cmath>

#include "canvastest.h"

using namespace canvastest;

namespace {

/// Around a centre of gravity at the loaded origin, with nothing on the axes.
std::vector<Point> rectangle() { return {{60, 40, 0}, {-60, 40, 0}, {60, -40, 0}, {-60, -40, 0}}; }
/// Far from the loaded origin, with nothing at its centre of gravity.
std::vector<Point> offset() { return {{200, 240, 0}, {140, 240, 0}, {200, 160, 0}, {140, 160, 0}}; }

class CanvasPainting : public testing::Test {
 protected:
  void start(const std::vector<Point>& positions) {
    body = positions;
    load(canvas, body);
    show(canvas);
    camera = cameraOf(canvas, body);
  }
  void view(const Rotation& turn) {
    canvas.set_view(bsFrame(poseOf(turn, {0, 0, -300}), nullptr));
    camera.turn = turn;
  }
  void paint() { image = painted(canvas); }

  QColor colorAt(const QPointF& place) const {
    const QPoint at(static_cast<int>(std::floor(place.x())), static_cast<int>(std::floor(place.y())));
    EXPECT_TRUE(image.rect().contains(at)) << at.x() << ", " << at.y();
    return image.pixelColor(at);
  }
  QColor colorAt(const Point& loaded) const { return colorAt(camera.pixel(loaded)); }
  /// Pixels of exactly this colour whose distance from a place lies in a range.
  int count(const QColor& color, const QPointF& place, double from, double to) const {
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const double distance = std::hypot(x + 0.5 - place.x(), y + 0.5 - place.y());
        found += distance >= from && distance <= to && image.pixelColor(x, y) == color ? 1 : 0;
      }
    }
    return found;
  }
  /// Lines one pixel wide may lie beside the place by rounding.
  bool hasNear(const QColor& color, const Point& loaded, double pixels = 2.0) const {
    return count(color, camera.pixel(loaded), 0, pixels) > 0;
  }
  int notBlack() const {
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        found += image.pixelColor(x, y) == QColor(Qt::black) ? 0 : 1;
      }
    }
    return found;
  }
  /// A lit surface in a colour: the components of that colour are bright, the others dark.
  static bool lit(const QColor& found, bool red, bool green, bool blue) {
    const auto agrees = [](int value, bool bright) { return bright ? value > 80 : value < 20; };
    return agrees(found.red(), red) && agrees(found.green(), green) && agrees(found.blue(), blue);
  }

  GLCanvas canvas;
  std::vector<Point> body;
  Camera camera;
  QImage image;
};

const QColor black(0, 0, 0);
const QColor white(255, 255, 255);
const QColor grey(128, 128, 128);

}  // namespace

// --- Background ---

TEST_F(CanvasPainting, WithoutABodyAllIsBlack) {
  start(rectangle());
  canvas.showCOG(true);
  canvas.showXYGrid(true);
  canvas.unloadBody();
  paint();
  EXPECT_EQ(notBlack(), 0);
}

TEST_F(CanvasPainting, InOtherModificationModesAllIsBlack) {
  start(rectangle());
  canvas.showCOG(true);
  canvas.showXYGrid(true);
  canvas.checkSelection(marker(canvas, 0));
  paint();
  EXPECT_GT(notBlack(), 100);
  for (const abcModificationMode mode : {ABC_MODIFY_SUSPENDED, ABC_MODIFY_LOCKED}) {
    canvas.setModificationMode(mode);
    paint();
    EXPECT_EQ(notBlack(), 0);
  }
  canvas.setModificationMode(ABC_MODIFY_BODY);
  paint();
  EXPECT_GT(notBlack(), 100);
}

// --- Markers ---

TEST_F(CanvasPainting, MarkersAreWhiteOrInTheirColours) {
  start(rectangle());
  paint();
  for (const Point& point : body) {
    EXPECT_EQ(colorAt(point), white);
  }
  canvas.showColoredMarkers(true);
  paint();
  EXPECT_EQ(colorAt(body[0]), QColor(255, 0, 0));
  EXPECT_EQ(colorAt(body[1]), QColor(0, 255, 0));
  EXPECT_EQ(colorAt(body[2]), QColor(0, 0, 255));
  EXPECT_EQ(colorAt(body[3]), QColor(255, 255, 0));
}

TEST_F(CanvasPainting, MarkersAreTenMillimetresInRadiusOrThree) {
  start(rectangle());
  const Point inSmall = body[0] + Point{0, 1.5, 0};
  const Point inNormal = body[0] + Point{0, 7, 0};
  const Point outside = body[0] + Point{0, 13, 0};
  paint();
  EXPECT_TRUE(lit(colorAt(inSmall), true, true, true));
  EXPECT_TRUE(lit(colorAt(inNormal), true, true, true));
  EXPECT_EQ(colorAt(outside), black);
  canvas.showSmallMarkers(true);
  paint();
  EXPECT_TRUE(lit(colorAt(inSmall), true, true, true));
  EXPECT_EQ(colorAt(inNormal), black);
}

TEST_F(CanvasPainting, MarkersStandAroundTheCentreOfGravityInTheTurnedAndMovedView) {
  start(offset());
  canvas.showColoredMarkers(true);
  camera.turn = turnX(30) * turnY(-20) * turnZ(70);
  camera.position = {15, -10, -260};
  canvas.set_view(bsFrame(poseOf(camera.turn, camera.position), nullptr));
  paint();
  EXPECT_TRUE(lit(colorAt(body[0]), true, false, false));
  EXPECT_TRUE(lit(colorAt(body[1]), false, true, false));
  EXPECT_TRUE(lit(colorAt(body[2]), false, false, true));
  EXPECT_TRUE(lit(colorAt(body[3]), true, true, false));
}

TEST_F(CanvasPainting, TheNearerMarkerHidesTheOther) {
  start({{0, 0, 50}, {0, 0, -50}, {80, 0, 0}, {-80, 0, 0}});
  canvas.showColoredMarkers(true);
  paint();
  EXPECT_EQ(colorAt(body[0]), QColor(255, 0, 0));
  view(turnY(180));
  paint();
  EXPECT_EQ(colorAt(body[1]), QColor(0, 255, 0));
}

TEST_F(CanvasPainting, AChangeOfTheCoordinateSystemMovesNoMarker) {
  start(rectangle());
  canvas.showColoredMarkers(true);
  canvas.translateBody(50, 20, 0);
  canvas.rotateBody(0, 0, 45);
  paint();
  EXPECT_EQ(colorAt(body[0]), QColor(255, 0, 0));
  emit canvas.storeBodyRequest();
  paint();
  EXPECT_EQ(colorAt(body[0]), QColor(255, 0, 0));
  EXPECT_EQ(colorAt(body[2]), QColor(0, 0, 255));
}

TEST_F(CanvasPainting, EmissionsCanBeHidden) {
  start(rectangle());
  canvas.setMarkerEmission(0, 1, 0, 20);
  const Point arrowHead = body[0] + Point{0, 32, 0};
  paint();
  EXPECT_TRUE(lit(colorAt(arrowHead), true, true, true));
  canvas.showMarkerEmissions(false);
  paint();
  EXPECT_EQ(colorAt(arrowHead), black);
}

TEST_F(CanvasPainting, LinesAreGreyBars) {
  start(rectangle());
  canvas.checkSelection(marker(canvas, 0));
  canvas.checkSelection(marker(canvas, 1));
  canvas.introduceLine();
  const Point beside = {0, 42, 0};
  paint();
  EXPECT_TRUE(lit(colorAt(beside), true, true, true));
  EXPECT_EQ(colorAt(Point{0, 45, 0}), black);
  // Thin bars are 1.5 mm wide.
  canvas.showSmallMarkers(true);
  paint();
  const QColor bar = colorAt(Point{0, 40, 0});
  EXPECT_EQ(bar.red(), bar.green());
  EXPECT_EQ(bar.red(), bar.blue());
  EXPECT_GT(bar.red(), 60);
  EXPECT_LT(bar.red(), 130);
  EXPECT_EQ(colorAt(beside), black);
  canvas.checkSelection(nullptr);
  canvas.checkSelection(line(canvas, 0));
  canvas.deleteLine();
  paint();
  EXPECT_EQ(colorAt(Point{0, 40, 0}), black);
}

// --- Selection ---

TEST_F(CanvasPainting, TheFirstSelectedMarkerIsCagedInWhiteAndTheSecondInGrey) {
  start(rectangle());
  canvas.showColoredMarkers(true);
  const double radius = 10.0 * camera.pixelsPerMillimetre(body[0]);
  const auto caged = [&](std::size_t index, const QColor& color) {
    return count(color, camera.pixel(body[index]), 1.04 * radius, 1.3 * radius) > 5;
  };
  paint();
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_FALSE(caged(i, white));
    EXPECT_FALSE(caged(i, grey));
  }
  canvas.checkSelection(marker(canvas, 2));
  canvas.checkSelection(marker(canvas, 1));
  paint();
  EXPECT_TRUE(caged(2, white));
  EXPECT_FALSE(caged(2, grey));
  EXPECT_TRUE(caged(1, grey));
  EXPECT_FALSE(caged(1, white));
  EXPECT_FALSE(caged(0, white) || caged(0, grey) || caged(3, white) || caged(3, grey));
  canvas.checkSelection(marker(canvas, 2));
  paint();
  EXPECT_TRUE(caged(1, white));
  EXPECT_TRUE(caged(2, grey));
  canvas.checkSelection(nullptr);
  paint();
  EXPECT_FALSE(caged(1, white) || caged(2, grey));
}

TEST_F(CanvasPainting, SmallMarkersHaveSmallCages) {
  start(rectangle());
  canvas.showColoredMarkers(true);
  canvas.showSmallMarkers(true);
  canvas.checkSelection(marker(canvas, 0));
  paint();
  const double pixels = camera.pixelsPerMillimetre(body[0]);
  EXPECT_GT(count(white, camera.pixel(body[0]), 0, 4.5 * pixels), 3);
  EXPECT_EQ(count(white, camera.pixel(body[0]), 5.0 * pixels, 14.0 * pixels), 0);
}

TEST_F(CanvasPainting, ASelectedLineIsCagedInWhite) {
  start(rectangle());
  canvas.showColoredMarkers(true);
  canvas.checkSelection(marker(canvas, 0));
  canvas.checkSelection(marker(canvas, 1));
  canvas.introduceLine();
  canvas.checkSelection(line(canvas, 0));
  paint();
  // 1.4 times as wide as the bar of 6 mm: its edges run 4.2 mm beside the middle.
  EXPECT_TRUE(hasNear(white, {0, 44.2, 0}, 1.0));
  EXPECT_TRUE(hasNear(white, {0, 35.8, 0}, 1.0));
  canvas.checkSelection(nullptr);
  paint();
  EXPECT_FALSE(hasNear(white, {0, 44.2, 0}, 1.0));
}

// --- Axes and grids ---

TEST_F(CanvasPainting, TheBodysAxesAreRedGreenAndBlue) {
  start(rectangle());
  paint();
  EXPECT_TRUE(lit(colorAt(Point{26.5, 0, 0}), true, false, false));
  EXPECT_TRUE(lit(colorAt(Point{0, 26.5, 0}), false, true, false));
  view(turnY(90));
  paint();
  EXPECT_TRUE(lit(colorAt(Point{0, 0, 26.5}), false, false, true));
}

TEST_F(CanvasPainting, TheBodysAxesFollowPendingAndCommittedChanges) {
  start(rectangle());
  canvas.translateBody(-20, 10, 0);
  canvas.rotateBody(0, 0, 90);
  const Point xTip = {-20, 10 + 26.5, 0};
  const Point yTip = {-20 - 26.5, 10, 0};
  paint();
  EXPECT_TRUE(lit(colorAt(xTip), true, false, false));
  EXPECT_TRUE(lit(colorAt(yTip), false, true, false));
  EXPECT_EQ(colorAt(Point{26.5, 0, 0}), black);
  emit canvas.storeBodyRequest();
  paint();
  EXPECT_TRUE(lit(colorAt(xTip), true, false, false));
  EXPECT_TRUE(lit(colorAt(yTip), false, true, false));
  canvas.translateBody(30, 0, 0);  // along the committed x axis, which points up
  paint();
  EXPECT_TRUE(lit(colorAt(xTip + Point{0, 30, 0}), true, false, false));
}

TEST_F(CanvasPainting, LongAxesReachAsFarAsTheirFactorSays) {
  start(rectangle());
  const auto redBetween = [&](double from, double to) {
    int found = 0;
    for (double x = from; x < to; x += 1.0) {
      found += hasNear(QColor(255, 0, 0), {x, 0, 0}) ? 1 : 0;
    }
    return found;
  };
  paint();
  EXPECT_EQ(redBetween(60, 140), 0);
  canvas.showLongAxes(true);
  paint();
  EXPECT_GT(redBetween(60, 140), 10);
  EXPECT_GT(redBetween(-140, -60), 10);
  canvas.setLongAxesFactor(4.0);  // 100 mm
  paint();
  EXPECT_GT(redBetween(60, 95), 5);
  EXPECT_EQ(redBetween(105, 140), 0);
}

TEST_F(CanvasPainting, TheXYGridIsYellow) {
  start(rectangle());
  const QColor yellow(255, 255, 0);
  paint();
  EXPECT_FALSE(hasNear(yellow, {12.5, 25, 0}));
  canvas.showXYGrid(true);
  paint();
  EXPECT_TRUE(hasNear(yellow, {12.5, 25, 0}));
  EXPECT_TRUE(hasNear(yellow, {100, -87.5, 0}));
  EXPECT_EQ(colorAt(Point{12.5, 12.5, 0}), black);
  QColor orange(255, 128, 0);
  canvas.setXYGridColor(orange);
  paint();
  EXPECT_TRUE(hasNear(orange, {12.5, 25, 0}));
  EXPECT_FALSE(hasNear(yellow, {12.5, 25, 0}));
}

TEST_F(CanvasPainting, TheYZGridIsCyan) {
  start(rectangle());
  view(turnY(90));
  const QColor cyan(0, 255, 255);
  paint();
  EXPECT_FALSE(hasNear(cyan, {0, 12.5, 75}));
  canvas.showYZGrid(true);
  paint();
  EXPECT_TRUE(hasNear(cyan, {0, 12.5, 75}));
  EXPECT_TRUE(hasNear(cyan, {0, 75, -87.5}));
  EXPECT_EQ(colorAt(Point{0, 12.5, 87.5}), black);
  QColor other(10, 200, 30);
  canvas.setYZGridColor(other);
  paint();
  EXPECT_TRUE(hasNear(other, {0, 12.5, 75}));
}

TEST_F(CanvasPainting, TheXZGridIsMagenta) {
  start(rectangle());
  view(turnX(90));
  const QColor magenta(255, 0, 255);
  paint();
  EXPECT_FALSE(hasNear(magenta, {12.5, 0, 75}));
  canvas.showXZGrid(true);
  paint();
  EXPECT_TRUE(hasNear(magenta, {12.5, 0, 75}));
  EXPECT_TRUE(hasNear(magenta, {-100, 0, 87.5}));
  EXPECT_EQ(colorAt(Point{12.5, 0, 87.5}), black);
  QColor other(10, 20, 230);
  canvas.setXZGridColor(other);
  paint();
  EXPECT_TRUE(hasNear(other, {12.5, 0, 75}));
}

TEST_F(CanvasPainting, TheGridMovesWithTheCoordinateSystem) {
  start(rectangle());
  canvas.showXYGrid(true);
  canvas.translateBody(12.5, 12.5, 0);
  paint();
  EXPECT_TRUE(hasNear(QColor(255, 255, 0), {100, 37.5, 0}));
  EXPECT_EQ(colorAt(Point{100, 25, 0}), black);
}

// --- Centre of gravity ---

TEST_F(CanvasPainting, TheCentreOfGravityIsAWhitePointInTheMiddle) {
  start(offset());
  const QPointF middle(camera.width / 2.0, camera.height / 2.0);
  paint();
  EXPECT_EQ(count(white, middle, 0, 8), 0);
  canvas.showCOG(true);
  paint();
  const int pixels = count(white, middle, 0, 8);
  EXPECT_GE(pixels, 16);
  EXPECT_LE(pixels, 36);  // 5 x 5, give or take a row
  EXPECT_GE(count(white, middle, 0, 1.5), 4);
  canvas.showCOG(false);
  paint();
  EXPECT_EQ(count(white, middle, 0, 8), 0);
}

TEST_F(CanvasPainting, TheCentreOfGravityLeavesTheMarkersLit) {
  start(offset());
  canvas.showColoredMarkers(true);
  paint();
  const QColor edge = colorAt(body[0] + Point{0, 8.5, 0});
  canvas.showCOG(true);
  paint();
  EXPECT_EQ(colorAt(body[0] + Point{0, 8.5, 0}), edge);
  EXPECT_LT(edge.red(), 250) << "the sphere's edge is turned away from the light";
}

// --- Online ---

TEST_F(CanvasPainting, OnlineTheBodyIsTurnedAsTracked) {
  start(offset());
  canvas.showColoredMarkers(true);
  canvas.setOnline(true);
  camera.room = turnZ(90) * turnX(20);
  canvas.setTrackedBodyOrientation(matrixOf(camera.room));
  paint();
  EXPECT_TRUE(lit(colorAt(body[0]), true, false, false));
  EXPECT_TRUE(lit(colorAt(body[1]), false, true, false));
  EXPECT_TRUE(lit(colorAt(body[2]), false, false, true));
  canvas.setOnline(false);
  camera.room = noTurn;
  paint();
  EXPECT_TRUE(lit(colorAt(body[0]), true, false, false));
  EXPECT_TRUE(lit(colorAt(body[1]), false, true, false));
}

TEST_F(CanvasPainting, OfflineATrackedOrientationTurnsNothing) {
  start(offset());
  canvas.showColoredMarkers(true);
  canvas.setTrackedBodyOrientation(matrixOf(turnZ(90)));
  paint();
  EXPECT_TRUE(lit(colorAt(body[0]), true, false, false));
}

TEST_F(CanvasPainting, TheRoomsAxesStandStillAroundTheCentreOfGravityWhileOnline) {
  start(offset());
  const Point tipX = {42, 0, 0};
  const Point tipY = {0, 42, 0};
  const auto shown = [&] {
    paint();
    return lit(colorAt(camera.scenePixel(tipX)), true, false, false) &&
           lit(colorAt(camera.scenePixel(tipY)), false, true, false);
  };
  EXPECT_FALSE(shown());
  canvas.show_room_ori(true);
  EXPECT_FALSE(shown());
  EXPECT_EQ(colorAt(camera.scenePixel(tipX)), black);
  canvas.setOnline(true);
  EXPECT_TRUE(shown());
  canvas.setTrackedBodyOrientation(matrixOf(turnZ(90)));
  EXPECT_TRUE(shown());
  canvas.show_room_ori(false);
  EXPECT_FALSE(shown());
  EXPECT_EQ(colorAt(camera.scenePixel(tipX)), black);
}

TEST_F(CanvasPainting, TheRoomsAxesAreShownWithoutABodyToo) {
  start(offset());
  canvas.unloadBody();
  canvas.show_room_ori(true);
  canvas.setOnline(true);
  paint();
  EXPECT_TRUE(lit(colorAt(camera.scenePixel({42, 0, 0})), true, false, false));
}
