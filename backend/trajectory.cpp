// Reads recorded motions and interpolates between their samples.
#include "trajectory.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "numbertext.h"
#include "wholefile.h"

namespace korvex2 {

namespace {

constexpr double millimetresPerMetre = 1000.0;
constexpr double furthestMetres = 10000.0;
constexpr double latestSeconds = 1e11;  // a double still tells 0.1 ms apart there
constexpr double lengthTolerance = 0.01;
constexpr std::size_t valuesPerLine = 8;

double lengthOf(const UnitQuaternion& q) { return std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]); }

UnitQuaternion normalized(const UnitQuaternion& q) {
  const double length = lengthOf(q);
  return {{q[0] / length, q[1] / length, q[2] / length, q[3] / length}};
}

bool isBlank(char c) { return c == ' ' || c == '\t'; }

/// Reads the eight numbers of a line; returns why they are none.
QString takeValues(const char* begin, const char* end, std::array<double, valuesPerLine>& values) {
  std::size_t count = 0;
  while (begin != end) {
    if (isBlank(*begin)) {
      ++begin;
      continue;
    }
    if (count == valuesPerLine) {
      return QStringLiteral("there are more than eight numbers");
    }
    const std::optional<double> value = takeReal(begin, end);
    if (!value || (begin != end && !isBlank(*begin))) {
      return QStringLiteral("number %1 is none").arg(count + 1);
    }
    values[count] = *value;
    ++count;
  }
  return count == valuesPerLine ? QString() : QStringLiteral("there are %1 numbers, eight are expected").arg(count);
}

/// Makes a sample of a line's numbers, its time as it stands; returns why it is none.
QString takeSample(const std::array<double, valuesPerLine>& values, TrajectorySample& sample) {
  sample.seconds = values[0];
  if (std::fabs(sample.seconds) > latestSeconds) {
    return QStringLiteral("the time is out of range");
  }
  for (std::size_t i = 0; i < 3; ++i) {
    if (std::fabs(values[1 + i]) > furthestMetres) {
      return QStringLiteral("the position is out of range");
    }
    sample.position[i] = values[1 + i] * millimetresPerMetre;
  }
  const UnitQuaternion q{{values[4], values[5], values[6], values[7]}};
  // Negated so that a length that overflowed is refused as well.
  if (!(std::fabs(lengthOf(q) - 1.0) <= lengthTolerance)) {
    return QStringLiteral("the orientation is no unit quaternion");
  }
  sample.orientation = normalized(q);
  return QString();
}

}  // namespace

std::array<double, 9> rotationOf(const UnitQuaternion& q) {
  const double x = q[0];
  const double y = q[1];
  const double z = q[2];
  const double w = q[3];
  return {{1.0 - 2.0 * (y * y + z * z), 2.0 * (x * y + z * w), 2.0 * (x * z - y * w),  //
           2.0 * (x * y - z * w), 1.0 - 2.0 * (x * x + z * z), 2.0 * (y * z + x * w),  //
           2.0 * (x * z + y * w), 2.0 * (y * z - x * w), 1.0 - 2.0 * (x * x + y * y)}};
}

UnitQuaternion interpolate(const UnitQuaternion& from, const UnitQuaternion& to, double fraction) {
  double cosine = 0.0;
  for (std::size_t i = 0; i < 4; ++i) {
    cosine += from[i] * to[i];
  }
  const double sign = cosine < 0.0 ? -1.0 : 1.0;  // q and -q are the same orientation
  cosine = std::min(std::fabs(cosine), 1.0);
  double first = 1.0 - fraction;
  double second = fraction;
  const double angle = std::acos(cosine);
  const double sine = std::sin(angle);
  if (sine > 1e-6) {  // below, the straight way differs by less than the rounding
    first = std::sin(first * angle) / sine;
    second = std::sin(second * angle) / sine;
  }
  UnitQuaternion result{};
  for (std::size_t i = 0; i < 4; ++i) {
    result[i] = first * from[i] + sign * second * to[i];
  }
  return normalized(result);
}

Trajectory::Trajectory(std::vector<TrajectorySample> samples) : samples_(std::move(samples)) {}

std::optional<RigidTransform> Trajectory::poseAt(double recordedSeconds) const {
  const double seconds = std::clamp(recordedSeconds, 0.0, duration());
  const auto after =
      std::upper_bound(samples_.begin() + 1, samples_.end() - 1, seconds,
                       [](double time, const TrajectorySample& sample) { return time < sample.seconds; });
  const TrajectorySample& a = *(after - 1);
  const TrajectorySample& b = *after;
  const double fraction = (seconds - a.seconds) / (b.seconds - a.seconds);
  if (b.seconds - a.seconds > longestGap && fraction > 0.0 && fraction < 1.0) {
    return std::nullopt;
  }
  RigidTransform pose;
  for (std::size_t i = 0; i < 3; ++i) {
    pose.position[i] = a.position[i] + fraction * (b.position[i] - a.position[i]);
  }
  pose.rotation = rotationOf(interpolate(a.orientation, b.orientation, fraction));
  return pose;
}

double Trajectory::loopedTime(double seconds) const {
  const double end = duration();
  const double ease = std::min(easing, end);
  const double oneWay = end + ease;
  double time = std::fmod(std::fabs(seconds), 2.0 * oneWay);
  if (time > oneWay) {
    time = 2.0 * oneWay - time;
  }
  if (time < ease) {
    return time * time / (2.0 * ease);
  }
  if (time > oneWay - ease) {
    return end - (oneWay - time) * (oneWay - time) / (2.0 * ease);
  }
  return time - ease / 2.0;
}

TrajectoryContent parseTrajectory(const QByteArray& bytes) {
  TrajectoryContent content;
  std::vector<TrajectorySample> samples;
  double first = 0.0;
  int start = 0;
  while (start < bytes.size()) {
    ++content.line;
    const int found = bytes.indexOf('\n', start);
    const int next = found < 0 ? bytes.size() : found + 1;
    const char* begin = bytes.constData() + start;
    const char* end = bytes.constData() + (found < 0 ? bytes.size() : found);
    start = next;
    if (end != begin && end[-1] == '\r') {
      --end;
    }
    if (std::all_of(begin, end, isBlank) || *begin == '#') {
      continue;
    }
    std::array<double, valuesPerLine> values{};
    TrajectorySample sample;
    content.problem = takeValues(begin, end, values);
    if (content.problem.isEmpty()) {
      content.problem = takeSample(values, sample);
    }
    if (samples.empty()) {
      first = sample.seconds;
    }
    sample.seconds -= first;
    if (content.problem.isEmpty() && !samples.empty() && sample.seconds <= samples.back().seconds) {
      content.problem = QStringLiteral("the time is not later than the one before");
    }
    if (!content.problem.isEmpty()) {
      return content;
    }
    samples.push_back(sample);
  }
  if (samples.size() < 2) {
    content.line = std::max(content.line, 1);
    content.problem = QStringLiteral("a motion needs at least two poses, there are %1").arg(samples.size());
    return content;
  }
  content.trajectory.emplace(std::move(samples));
  return content;
}

TrajectoryContent readTrajectory(const QString& path) {
  const FileContent file = readWholeFile(path);
  if (!file.problem.isEmpty()) {
    TrajectoryContent content;
    content.line = 1;
    content.problem = file.problem;
    return content;
  }
  TrajectoryContent content = parseTrajectory(file.bytes);
  if (!content.problem.isEmpty()) {
    content.problem =
        QStringLiteral("%1, line %2: %3").arg(QDir::toNativeSeparators(path)).arg(content.line).arg(content.problem);
  }
  return content;
}

}  // namespace korvex2
