// Where every simulated body is in the room at a time.
#ifndef KORVEX2_BACKEND_MOTION_H
#define KORVEX2_BACKEND_MOTION_H

#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

#include "body.h"
#include "trajectory.h"

namespace korvex2 {

/// Poses of the bodies' measured coordinates in the room (right-handed, z upwards, millimetres), a function of time
/// alone: the same time gives the same poses, however often measurements are started.
///
/// A body moves by the trajectory it was given, over and over; else by a built-in motion: `standard b02`, the table of
/// the shipped database, stands still and tilted; hand-held devices sway at arm's reach; the others sway slowly, each
/// at a place of its own.
class Motion {
 public:
  /// A second trajectory for the same body takes the place of the first.
  void setTrajectory(const BodyKey& key, Trajectory trajectory);

  /// Pose at a time in seconds, of any origin. Nothing while the body is out of sight (a gap of the recording).
  std::optional<RigidTransform> pose(const BodyKey& key, double seconds) const;

 private:
  std::vector<std::pair<BodyKey, Trajectory>> recorded_;
};

/// The built-in motions, but `standard b01`, the cup of the shipped database, moves by a recording in a file; with an
/// empty name, or a file that cannot be used (which is told in `problems`), by its built-in motion, too.
Motion motionWith(const QString& trajectory, QStringList& problems);

}  // namespace korvex2

#endif
