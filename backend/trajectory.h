// A recorded motion: poses over time, read from a text file and interpolated.
#ifndef KORVEX2_BACKEND_TRAJECTORY_H
#define KORVEX2_BACKEND_TRAJECTORY_H

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>
#include <vector>

#include "rigidtransform.h"

namespace korvex2 {

/// Unit quaternion x, y, z, w (w is the real part): turns body axes into room axes.
using UnitQuaternion = std::array<double, 4>;

/// One recorded pose: body coordinates to room coordinates.
struct TrajectorySample {
  double seconds = 0.0;                              ///< since the first sample
  Vector3 position{{0.0, 0.0, 0.0}};                 ///< millimetres
  UnitQuaternion orientation{{0.0, 0.0, 0.0, 1.0}};  ///< unit length
};

/// R of a unit quaternion, column by column:
///   1 - 2(yy + zz)   2(xy - zw)       2(xz + yw)
///   2(xy + zw)       1 - 2(xx + zz)   2(yz - xw)
///   2(xz - yw)       2(yz + xw)       1 - 2(xx + yy)
std::array<double, 9> rotationOf(const UnitQuaternion& q);

/// Turns evenly from one orientation (at 0) to another (at 1), the shorter way round.
UnitQuaternion interpolate(const UnitQuaternion& from, const UnitQuaternion& to, double fraction);

/// At least two samples in the order of their times.
class Trajectory {
 public:
  /// Missing samples are bridged over this many seconds; in a longer gap the object was not seen.
  static constexpr double longestGap = 0.15;
  /// Seconds in which the looped motion comes to rest at an end of the recording, and the same to get going again.
  static constexpr double easing = 0.5;

  /// `samples`: two or more, their times increasing from 0.
  explicit Trajectory(std::vector<TrajectorySample> samples);

  const std::vector<TrajectorySample>& samples() const { return samples_; }
  /// Seconds from the first sample to the last.
  double duration() const { return samples_.back().seconds; }

  /// Pose at a recorded time; before the first and after the last sample theirs. Nothing inside a gap.
  std::optional<RigidTransform> poseAt(double recordedSeconds) const;

  /// Recorded time to show `seconds` after the beginning of an endless presentation: forwards to the end, backwards to
  /// the beginning, and so on. Speed is 1, but slows down evenly to rest at either end, so that no velocity jumps:
  /// one way takes T = D + e for a recording of D seconds with e seconds of easing, and within it the recorded time is
  ///   t t / (2 e)  for t < e,   t - e / 2  in between,   D - (T - t)(T - t) / (2 e)  for t > T - e.
  double loopedTime(double seconds) const;

 private:
  std::vector<TrajectorySample> samples_;
};

/// A read file; when `problem` is not empty there is no trajectory, and `line` (from 1) is where it was met.
struct TrajectoryContent {
  std::optional<Trajectory> trajectory;
  int line = 0;
  QString problem;
};

/// Reads the bytes of a recording: one pose a line, `seconds x y z qx qy qz qw`, separated by blanks or tabs; positions
/// in metres, a unit quaternion. Lines that begin with '#' and empty lines are skipped; lines end with LF or CR LF.
/// Times count from any origin and must increase. Refused are quaternions whose length differs from 1 by more than
/// 1 % (recordings are rounded to a few digits), and positions further than 10 km away.
TrajectoryContent parseTrajectory(const QByteArray& bytes);

/// Reads a file of at most 4 MiB (some ten minutes at 100 poses a second). `problem` is "FILE, line N: what is wrong".
TrajectoryContent readTrajectory(const QString& path);

}  // namespace korvex2

#endif
