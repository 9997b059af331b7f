// Recorded and built-in motions of the simulated bodies.
#include "motion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace korvex2 {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double degrees = pi / 180.0;

/// Turn about a coordinate axis (0 x, 1 y, 2 z), positive from the next axis to the one after it.
RigidTransform turn(std::size_t axis, double angle) {
  RigidTransform result;
  const std::size_t a = (axis + 1) % 3;
  const std::size_t b = (axis + 2) % 3;
  result.rotation[3 * a + a] = std::cos(angle);
  result.rotation[3 * a + b] = std::sin(angle);
  result.rotation[3 * b + a] = -std::sin(angle);
  result.rotation[3 * b + b] = std::cos(angle);
  return result;
}

/// Turned about x, then y, then z of the room, and moved to a place.
RigidTransform placed(const Vector3& position, double aboutX, double aboutY, double aboutZ) {
  RigidTransform result =
      RigidTransform::compose(turn(2, aboutZ), RigidTransform::compose(turn(1, aboutY), turn(0, aboutX)));
  result.position = position;
  return result;
}

RigidTransform table() { return placed({{-400.0, 1200.0, 735.0}}, 4.0 * degrees, -2.5 * degrees, 30.0 * degrees); }

double swing(double seconds, double period, double phase) { return std::sin(2.0 * pi * seconds / period + phase); }

/// Sways about a place that depends on the number; no two bodies share a place or a rhythm.
RigidTransform swaying(int number, double seconds, double reach, double slowness) {
  constexpr double goldenAngle = 2.39996322972865332;  // spreads any number of bodies around the room's middle
  const double index = number - 1;
  const double bearing = index * goldenAngle;
  const double distance = 500.0 + 120.0 * std::sqrt(index);
  const Vector3 position{{distance * std::cos(bearing) + reach * swing(seconds, 7.0 * slowness, index),
                          distance * std::sin(bearing) + 0.8 * reach * swing(seconds, 9.0 * slowness, 2.0 * index),
                          1100.0 + 0.5 * reach * swing(seconds, 5.0 * slowness, 3.0 * index)}};
  return placed(position, 12.0 * degrees * swing(seconds, 8.0 * slowness, index),
                9.0 * degrees * swing(seconds, 11.0 * slowness, 1.0 + index),
                bearing + 25.0 * degrees * swing(seconds, 13.0 * slowness, 2.0 + index));
}

}  // namespace

void Motion::setTrajectory(const BodyKey& key, Trajectory trajectory) {
  const auto known =
      std::find_if(recorded_.begin(), recorded_.end(), [&key](const auto& entry) { return entry.first == key; });
  if (known != recorded_.end()) {
    known->second = std::move(trajectory);
  } else {
    recorded_.emplace_back(key, std::move(trajectory));
  }
}

std::optional<RigidTransform> Motion::pose(const BodyKey& key, double seconds) const {
  for (const auto& [recordedKey, trajectory] : recorded_) {
    if (recordedKey == key) {
      return trajectory.poseAt(trajectory.loopedTime(seconds));
    }
  }
  if (key.type == "wandgrip") {
    return swaying(key.number, seconds, 150.0, 0.8);
  }
  return key.number == 2 ? table() : swaying(key.number, seconds, 60.0, 1.0);
}

Motion motionWith(const QString& trajectory, QStringList& problems) {
  Motion motion;
  if (!trajectory.isEmpty()) {
    TrajectoryContent content = readTrajectory(trajectory);
    if (content.trajectory) {
      motion.setTrajectory({"standard", 1}, std::move(*content.trajectory));
    } else {
      problems += content.problem;
    }
  }
  return motion;
}

}  // namespace korvex2
