// See livechecks.h.
#include "demo/livechecks.h"

#include <QColor>

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

#include "demo/demooperator.h"
#include "hostchannel.h"

namespace korvex2 {

namespace {

constexpr double degreesInRadian = 57.29577951308232;
constexpr double markerRadius = 10.0;     // mm, as the module draws them
constexpr double cameraDistance = 300.0;  // mm, of the view that follows the tracked body
constexpr double allowedAngle = 0.01;     // degrees
constexpr double allowedPlace = 0.01;     // mm
constexpr double allowedEmission = 0.001;
constexpr int waitForPoseMs = 3000;
constexpr int pollMs = 50;

// Colours of markers 1, 2, 3, ... in the view.
const std::array<QColor, 5> markerColours = {QColor(255, 0, 0), QColor(0, 255, 0), QColor(0, 0, 255),
                                             QColor(255, 255, 0), QColor(255, 0, 255)};

std::optional<RoomPose> waitForPose(DemoOperator& hands, PoseListener& listener, int number) {
  listener.forget();
  for (int waited = 0; waited < waitForPoseMs; waited += pollMs) {
    hands.wait(pollMs);
    if (const auto pose = listener.pose(number)) {
      return pose;
    }
  }
  hands.complain(QStringLiteral("no live pose of body %1 came").arg(number));
  return std::nullopt;
}

/// The simulated cameras lose a body now and then, which disables what needs its pose: an operator waits, then presses.
void pressWhenTracked(DemoOperator& hands, const QString& button) {
  for (int waited = 0; waited < waitForPoseMs && !hands.isEnabled(button); waited += pollMs) {
    hands.wait(pollMs);
  }
  hands.press(button);
}

// Whether another marker stands before this one, seen from the camera.
bool isHidden(const std::vector<Point>& places, std::size_t marker, const QSizeF& view) {
  const QPointF here = projected(places[marker], Point{}, cameraDistance, view);
  for (std::size_t other = 0; other < places.size(); ++other) {
    const QPointF there = projected(places[other], Point{}, cameraDistance, view);
    const double pixels = markerRadius / (cameraDistance - places[other][2]) * view.height() * 1.3;
    if (other != marker && places[other][2] > places[marker][2] &&
        std::hypot(here.x() - there.x(), here.y() - there.y()) < 1.5 * pixels) {
      return true;
    }
  }
  return false;
}

/// Visible markers that are not where this pose says.
double missingMarkers(DemoOperator& hands, const RoomPose& pose, const std::vector<Point>& markers) {
  const Point centre = mean(markers);
  std::vector<Point> places;
  for (const Point& marker : markers) {
    places.push_back(pose.turned(difference(marker, centre)));
  }
  const QSizeF view = hands.viewSize();
  int looked = 0;
  int missing = 0;
  for (std::size_t i = 0; i < places.size() && i < markerColours.size(); ++i) {
    if (isHidden(places, i, view)) {
      continue;
    }
    ++looked;
    const QPoint place = projected(places[i], Point{}, cameraDistance, view).toPoint();
    if (!hands.viewShows(place, markerColours[i])) {
      ++missing;
    }
  }
  if (looked < 2) {
    return HUGE_VAL;  // too few to tell where the body is
  }
  return missing;
}

/// The view repaints a moment after a pose came, and not while the body is lost: each look takes the newest pose.
double missingMarkersNow(DemoOperator& hands, PoseListener& listener, int number, const std::vector<Point>& markers) {
  double missing = HUGE_VAL;
  for (int waited = 0; waited < waitForPoseMs && missing > 0.0; waited += pollMs) {
    if (const auto pose = listener.pose(number)) {
      missing = missingMarkers(hands, *pose, markers);
    }
    hands.wait(pollMs);
  }
  return missing;
}

}  // namespace

Point RoomPose::turned(const Point& point) const {
  Point turnedPoint{};
  for (std::size_t row = 0; row < 3; ++row) {
    turnedPoint[row] = columns[0][row] * point[0] + columns[1][row] * point[1] + columns[2][row] * point[2];
  }
  return turnedPoint;
}

Point RoomPose::inRoom(const Point& point) const {
  const Point t = turned(point);
  return {{t[0] + position[0], t[1] + position[1], t[2] + position[2]}};
}

double RoomPose::angleToRoom() const {
  // The sine from the skew part, precise for small angles; the cosine tells a half turn from none.
  const double sine =
      0.5 * std::sqrt(std::pow(columns[1][2] - columns[2][1], 2) + std::pow(columns[2][0] - columns[0][2], 2) +
                      std::pow(columns[0][1] - columns[1][0], 2));
  const double cosine = (columns[0][0] + columns[1][1] + columns[2][2] - 1.0) / 2.0;
  return std::atan2(sine, cosine) * degreesInRadian;
}

PoseListener::PoseListener(HostChannel& channel) : channel_(channel) { channel_.register_requester("6d", this); }

PoseListener::~PoseListener() { channel_.unregister_requester("6d", this); }

int PoseListener::set_ascii_data(const char* /*tag*/, const char* line) {
  const std::lock_guard<std::mutex> guard(lock_);
  line_ = line;
  return 0;
}

void PoseListener::forget() {
  const std::lock_guard<std::mutex> guard(lock_);
  line_.clear();
}

std::optional<RoomPose> PoseListener::pose(int number) const {
  std::string line;
  {
    const std::lock_guard<std::mutex> guard(lock_);
    line = line_;
  }
  std::replace(line.begin(), line.end(), '[', ' ');
  std::replace(line.begin(), line.end(), ']', ' ');
  std::istringstream words(line);
  words.imbue(std::locale::classic());
  std::string tag;
  int count = 0;
  words >> tag >> count;
  for (int i = 0; i < count && words; ++i) {
    int id = 0;
    double quality = 0.0;
    RoomPose pose;
    words >> id >> quality >> pose.position[0] >> pose.position[1] >> pose.position[2];
    for (Point& column : pose.columns) {
      words >> column[0] >> column[1] >> column[2];
    }
    if (words && id == number - 1 && quality > 0.0) {
      return pose;
    }
  }
  return std::nullopt;
}

std::vector<DemoCheck> followMovingBody(DemoOperator& hands, PoseListener& listener, const QString& entry, int number,
                                        const std::vector<Point>& markers) {
  hands.chooseBody(entry);
  hands.press(QStringLiteral("online_checkbox"));
  std::vector<DemoCheck> checks;
  std::optional<RoomPose> first;
  for (int second = 0; second <= 3; ++second) {
    const auto pose = waitForPose(hands, listener, number);
    if (!pose) {
      return checks;
    }
    first = first ? first : pose;
    checks.push_back({QStringLiteral("%1 followed, second %2: visible markers that are not where the live line says")
                          .arg(entry.chopped(2))
                          .arg(second),
                      missingMarkersNow(hands, listener, number, markers), 0.0, QStringLiteral("markers")});
    hands.takePicture(QStringLiteral("followed_second_%1").arg(second));
    if (second < 3) {
      hands.wait(1000);
    }
    if (second == 3 && distance(first->position, pose->position) < 1.0) {
      hands.complain(QStringLiteral("%1 did not move").arg(entry));
    }
  }
  return checks;
}

std::vector<DemoCheck> alignWithRoom(DemoOperator& hands, PoseListener& listener, const QString& entry, int number,
                                     const std::vector<Point>& markers) {
  hands.chooseBody(entry);  // still followed
  std::vector<DemoCheck> checks;
  const auto before = waitForPose(hands, listener, number);
  hands.moveCameraBack(1400);
  hands.takePicture(QStringLiteral("before_adjust_to_room"));
  pressWhenTracked(hands, QStringLiteral("adjust_axes_to_room_button"));
  hands.press(QStringLiteral("apply_button"));
  const auto parallel = waitForPose(hands, listener, number);
  if (!before || !parallel) {
    return checks;
  }
  hands.takePicture(QStringLiteral("adjusted_to_room"));
  const QString name = entry.chopped(2);
  checks.push_back({name + QStringLiteral(" before: angle between its axes and the room's"), 0.0, 0.0,
                    QStringLiteral("(was %1 degrees)").arg(before->angleToRoom(), 0, 'f', 3)});
  checks.push_back({name + QStringLiteral(" adjusted to the room: angle between its axes and the room's"),
                    parallel->angleToRoom(), allowedAngle, QStringLiteral("degrees")});
  checks.push_back({name + QStringLiteral(" adjusted to the room: its origin moved by"),
                    distance(parallel->position, before->position), allowedPlace, QStringLiteral("mm")});

  hands.showPage(1);
  pressWhenTracked(hands, QStringLiteral("pushButton_due_to_room"));
  hands.press(QStringLiteral("apply_button"));
  const auto centred = waitForPose(hands, listener, number);
  if (!centred) {
    return checks;
  }
  hands.takePicture(QStringLiteral("due_to_room_in_cog"));
  hands.showPage(0);
  checks.push_back({name + QStringLiteral(" due to room: angle between its axes and the room's"),
                    centred->angleToRoom(), allowedAngle, QStringLiteral("degrees")});
  checks.push_back({name + QStringLiteral(" due to room: its origin is off the centre of gravity by"),
                    distance(centred->position, before->inRoom(mean(markers))), allowedPlace, QStringLiteral("mm")});
  return checks;
}

std::vector<DemoCheck> editEmissions(DemoOperator& hands, HostChannel& channel, const QString& entry, int number) {
  hands.chooseBody(entry);
  hands.resetCamera();
  hands.takePicture(QStringLiteral("emissions_before"));
  hands.showPage(2);
  hands.typeNumber(QStringLiteral("doubleSpinBox_ex"), QStringLiteral("0.3"));
  hands.typeNumber(QStringLiteral("doubleSpinBox_ey"), QStringLiteral("-0.6"));
  hands.typeNumber(QStringLiteral("doubleSpinBox_ez"), QStringLiteral("0.6"));
  hands.typeNumber(QStringLiteral("doubleSpinBox_alpha"), QStringLiteral("30"));
  hands.takePicture(QStringLiteral("emissions_typed"));
  hands.press(QStringLiteral("apply_button"));
  hands.takePicture(QStringLiteral("emissions_applied"));
  hands.showPage(0);
  // (0.3, -0.6, 0.6) is 0.9 long.
  const std::array<double, 4> expected{{1.0 / 3.0, -2.0 / 3.0, 2.0 / 3.0, 30.0}};
  double worst = 0.0;
  int count = 0;
  channel.get_int(&count, "body number_of_marker standard b%02d", number);
  for (int marker = 1; marker <= count; ++marker) {
    std::array<double, 4> values{};
    if (channel.get_reals(values.data(), 4, "body marker_emission standard b%02d m%02d", number, marker) != 0) {
      hands.complain(QStringLiteral("the emission of marker %1 cannot be asked").arg(marker));
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
      worst = std::max(worst, std::abs(values[i] - expected[i]));
    }
  }
  if (count == 0) {
    hands.complain(QStringLiteral("%1 has no markers").arg(entry));
  }
  return {{entry.chopped(2) + QStringLiteral(": emissions in the backend are off by"), worst, allowedEmission,
           QStringLiteral("(direction, degrees)")}};
}

}  // namespace korvex2
