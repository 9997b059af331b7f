// Recorded motions: reading, refusing with the line, interpolation and endless presentation.
#include "trajectory.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>

#include "commalocale.h"

using namespace korvex2;

namespace {

/// Refused as "line: problem", or "" when it was read.
std::string refusal(const QByteArray& bytes) {
  const TrajectoryContent content = parseTrajectory(bytes);
  EXPECT_NE(content.trajectory.has_value(), !content.problem.isEmpty());
  return content.problem.isEmpty() ? "" : std::to_string(content.line) + ": " + content.problem.toStdString();
}

const QByteArray two = "0 0 0 0 0 0 0 1\n1 2 4 6 0 0 0 1\n";

/// A turn about z by an angle in degrees.
UnitQuaternion aboutZ(double angle) {
  const double half = angle * std::acos(-1.0) / 360.0;
  return {{0.0, 0.0, std::sin(half), std::cos(half)}};
}

double angleAboutZ(const RigidTransform& pose) {
  return std::atan2(pose.element(1, 0), pose.element(0, 0)) * 180.0 / std::acos(-1.0);
}

Trajectory turning(const std::vector<double>& times, const std::vector<double>& angles) {
  std::vector<TrajectorySample> samples;
  for (std::size_t i = 0; i < times.size(); ++i) {
    samples.push_back({times[i], {{10.0 * times[i], 0.0, 0.0}}, aboutZ(angles[i])});
  }
  return Trajectory(samples);
}

}  // namespace

TEST(Trajectory, IsReadInMillimetresWithTimesFromTheFirstPose) {
  const TrajectoryContent content = parseTrajectory("100.5 1.25 -2 0.003 0 0 0 1\n101 0 0 0 0.6 0 0 0.8\n");
  ASSERT_TRUE(content.trajectory) << content.problem.toStdString();
  const std::vector<TrajectorySample>& samples = content.trajectory->samples();
  ASSERT_EQ(samples.size(), 2U);
  EXPECT_EQ(samples[0].seconds, 0.0);
  EXPECT_EQ(samples[1].seconds, 0.5);
  EXPECT_EQ(content.trajectory->duration(), 0.5);
  EXPECT_DOUBLE_EQ(samples[0].position[0], 1250.0);
  EXPECT_DOUBLE_EQ(samples[0].position[1], -2000.0);
  EXPECT_DOUBLE_EQ(samples[0].position[2], 3.0);
  EXPECT_DOUBLE_EQ(samples[1].orientation[0], 0.6);
  EXPECT_DOUBLE_EQ(samples[1].orientation[3], 0.8);
}

TEST(Trajectory, SkipsCommentsEmptyLinesAndLineEndsOfOtherSystems) {
  EXPECT_EQ(refusal("# seconds x y z\r\n\r\n0 0 0 0 0 0 0 1\r\n  \t\r\n#\n1\t2 4  6 0 0 0 1 \r\n"), "");
  EXPECT_EQ(refusal("0 0 0 0 0 0 0 1\n1 2 4 6 0 0 0 1"), "") << "no line end at the end";
  EXPECT_EQ(refusal("0 +1e-3 0 0 0 0 0 1\n1 2. .5 6 0 0 0 1\n"), "") << "other ways to write a number";
}

TEST(Trajectory, TellsTheLineOfWhatItRefuses) {
  EXPECT_EQ(refusal("# one\n" + two + "2 0 0 zero 0 0 0 1\n"), "4: number 4 is none");
  EXPECT_EQ(refusal(two + "2 0 0 0 0 0 0\n"), "3: there are 7 numbers, eight are expected");
  EXPECT_EQ(refusal(two + "2 0 0 0 0 0 0 1 9\n"), "3: there are more than eight numbers");
  EXPECT_EQ(refusal("0 0,5 0 0 0 0 0 1\n"), "1: number 2 is none");
  EXPECT_EQ(refusal(two + "\r\n2 0 0 0 0 0 0 1x\r\n"), "4: number 8 is none");
  EXPECT_EQ(refusal(two + "nan 0 0 0 0 0 0 1\n"), "3: number 1 is none");
  EXPECT_EQ(refusal(two + "2 inf 0 0 0 0 0 1\n"), "3: number 2 is none");
  EXPECT_EQ(refusal(two + "2 1e999 0 0 0 0 0 1\n"), "3: number 2 is none");
  EXPECT_EQ(refusal(two + "1 0 0 0 0 0 0 1\n"), "3: the time is not later than the one before");
  EXPECT_EQ(refusal(two + "0.5 0 0 0 0 0 0 1\n"), "3: the time is not later than the one before");
  EXPECT_EQ(refusal("1e12 0 0 0 0 0 0 1\n"), "1: the time is out of range");
  EXPECT_EQ(refusal(two + "2 0 0 1e7 0 0 0 1\n"), "3: the position is out of range");
  EXPECT_EQ(refusal(two + "2 0 0 0 0 0 0 0\n"), "3: the orientation is no unit quaternion");
  EXPECT_EQ(refusal(two + "2 0 0 0 0.5 0.5 0.5 0.6\n"), "3: the orientation is no unit quaternion");
  EXPECT_EQ(refusal(two + "2 0 0 0 1e300 0 0 1e300\n"), "3: the orientation is no unit quaternion");
  EXPECT_EQ(refusal(QByteArray("0 0 0 0 0 0 0 1\n1 0 \0 0 0 0 0 1\n", 32)), "2: number 3 is none");
}

TEST(Trajectory, NeedsTwoPoses) {
  EXPECT_EQ(refusal(""), "1: a motion needs at least two poses, there are 0");
  EXPECT_EQ(refusal("# only\n# comments\n"), "2: a motion needs at least two poses, there are 0");
  EXPECT_EQ(refusal("0 0 0 0 0 0 0 1\n"), "1: a motion needs at least two poses, there are 1");
}

TEST(Trajectory, MakesRoundedQuaternionsUnit) {
  const TrajectoryContent content = parseTrajectory("0 0 0 0 0.5999 0 0 0.7999\n1 0 0 0 0 0 0 1.009\n");
  ASSERT_TRUE(content.trajectory);
  for (const TrajectorySample& sample : content.trajectory->samples()) {
    double square = 0.0;
    for (const double value : sample.orientation) {
      square += value * value;
    }
    EXPECT_DOUBLE_EQ(square, 1.0);
  }
}

TEST(Trajectory, ReadsNumbersWithAPointUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready());
  const TrajectoryContent content = parseTrajectory("0.5 1.5 0 0 0 0 0 1\n1.25 0 0 0 0 0 0 1\n");
  ASSERT_TRUE(content.trajectory) << content.problem.toStdString();
  EXPECT_EQ(content.trajectory->duration(), 0.75);
  EXPECT_EQ(content.trajectory->samples()[0].position[0], 1500.0);
}

TEST(Trajectory, RotationOfAQuaternionTurnsAsTheQuaternionProductDoes) {
  const UnitQuaternion q{{0.1, -0.7, 0.5, 0.5}};
  ASSERT_DOUBLE_EQ(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3], 1.0);
  RigidTransform turn;
  turn.rotation = rotationOf(q);
  const Vector3 v{{3.0, -4.0, 5.0}};
  // v' = v + 2 w (u x v) + 2 u x (u x v), with q = (u, w)
  const auto cross = [](const Vector3& a, const Vector3& b) {
    return Vector3{{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]}};
  };
  const Vector3 u{{q[0], q[1], q[2]}};
  const Vector3 once = cross(u, v);
  const Vector3 twice = cross(u, once);
  const Vector3 turned = turn.rotate(v);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(turned[i], v[i] + 2.0 * q[3] * once[i] + 2.0 * twice[i], 1e-14);
  }
  EXPECT_TRUE(turn.isRotation(1e-14));
}

TEST(Trajectory, MovesStraightAndTurnsEvenlyBetweenPoses) {
  const Trajectory trajectory = turning({0.0, 0.1}, {0.0, 80.0});
  const std::optional<RigidTransform> pose = trajectory.poseAt(0.025);
  ASSERT_TRUE(pose);
  EXPECT_NEAR(pose->position[0], 0.25, 1e-12);
  EXPECT_NEAR(angleAboutZ(*pose), 20.0, 1e-9) << "not the 18.4 degrees of a straight way through the quaternions";
  EXPECT_TRUE(pose->isRotation(1e-12));
}

TEST(Trajectory, TurnsTheShorterWay) {
  Trajectory trajectory = turning({0.0, 0.1}, {170.0, -170.0});
  EXPECT_NEAR(std::fabs(angleAboutZ(*trajectory.poseAt(0.05))), 180.0, 1e-9);
  // The same orientation written as q and -q is no turn at all.
  trajectory = turning({0.0, 0.1}, {30.0, 30.0 + 360.0});
  EXPECT_NEAR(angleAboutZ(*trajectory.poseAt(0.05)), 30.0, 1e-9);
}

TEST(Trajectory, EndsAtItsFirstAndLastPose) {
  const Trajectory trajectory = turning({0.0, 0.1, 0.2}, {0.0, 10.0, 40.0});
  EXPECT_NEAR(angleAboutZ(*trajectory.poseAt(-1.0)), 0.0, 1e-9);
  EXPECT_NEAR(angleAboutZ(*trajectory.poseAt(0.1)), 10.0, 1e-9);
  EXPECT_NEAR(angleAboutZ(*trajectory.poseAt(0.2)), 40.0, 1e-9);
  EXPECT_NEAR(angleAboutZ(*trajectory.poseAt(99.0)), 40.0, 1e-9);
}

TEST(Trajectory, BridgesMissingPosesButNotALongGap) {
  const Trajectory trajectory = turning({0.0, 0.11, 0.61}, {0.0, 11.0, 61.0});
  ASSERT_TRUE(trajectory.poseAt(0.055));
  EXPECT_NEAR(angleAboutZ(*trajectory.poseAt(0.055)), 5.5, 1e-9);
  EXPECT_FALSE(trajectory.poseAt(0.36));
  EXPECT_TRUE(trajectory.poseAt(0.11));
  EXPECT_TRUE(trajectory.poseAt(0.61));
}

TEST(Trajectory, IsShownForwardsAndBackwardsWithoutAJumpInSpeed) {
  const Trajectory trajectory = turning({0.0, 2.0, 10.0}, {0.0, 1.0, 2.0});
  EXPECT_EQ(trajectory.loopedTime(0.0), 0.0);
  EXPECT_NEAR(trajectory.loopedTime(5.25), 5.0, 1e-12) << "full speed, a quarter of a second behind";
  EXPECT_NEAR(trajectory.loopedTime(10.5), 10.0, 1e-12);
  EXPECT_NEAR(trajectory.loopedTime(10.5 + 5.25), 5.0, 1e-12);
  EXPECT_NEAR(trajectory.loopedTime(21.0), 0.0, 1e-12);
  EXPECT_NEAR(trajectory.loopedTime(2100.0 + 7.0), 6.75, 1e-9);
  constexpr double step = 0.001;
  double before = trajectory.loopedTime(0.0);
  double speedBefore = 0.0;
  for (int i = 1; i < 45000; ++i) {
    const double time = trajectory.loopedTime(i * step);
    ASSERT_GE(time, 0.0);
    ASSERT_LE(time, 10.0);
    const double speed = (time - before) / step;
    ASSERT_LE(std::fabs(speed), 1.0 + 1e-9) << i;
    ASSERT_LE(std::fabs(speed - speedBefore), 0.002 + 1e-9) << i;  // 1 / easing seconds: 2 a second
    before = time;
    speedBefore = speed;
  }
}

TEST(Trajectory, AVeryShortOneIsShownToo) {
  const Trajectory trajectory = turning({0.0, 0.01}, {0.0, 1.0});
  for (int i = 0; i < 1000; ++i) {
    const double time = trajectory.loopedTime(i * 0.00037);
    ASSERT_GE(time, 0.0);
    ASSERT_LE(time, 0.01);
    ASSERT_TRUE(trajectory.poseAt(time));
  }
}

TEST(Trajectory, TheShippedRecordingPassesThroughEachOfItsPoses) {
  const std::string path = KORVEX2_SHIPPED_DATA "/trajectories/handheld_xyz.tum";
  const TrajectoryContent content = readTrajectory(QString::fromStdString(path));
  ASSERT_TRUE(content.trajectory) << content.problem.toStdString();
  EXPECT_EQ(content.trajectory->samples().size(), 3000U);
  std::ifstream file(path);
  std::string line;
  int poses = 0;
  double first = 0.0;
  while (std::getline(file, line)) {
    double t = 0;
    double v[7] = {};
    if (line[0] == '#') {
      continue;
    }
    std::istringstream(line) >> t >> v[0] >> v[1] >> v[2] >> v[3] >> v[4] >> v[5] >> v[6];
    first = poses == 0 ? t : first;
    ++poses;
    const std::optional<RigidTransform> pose = content.trajectory->poseAt(t - first);
    ASSERT_TRUE(pose) << line;
    for (std::size_t i = 0; i < 3; ++i) {
      ASSERT_NEAR(pose->position[i], 1000.0 * v[i], 1e-6) << line;
    }
    // Four decimals leave the quaternion's length within 1e-4 of 1.
    ASSERT_NEAR(pose->element(2, 2), 1.0 - 2.0 * (v[3] * v[3] + v[4] * v[4]), 4e-4) << line;
    ASSERT_NEAR(pose->element(1, 0), 2.0 * (v[3] * v[4] + v[5] * v[6]), 4e-4) << line;
    ASSERT_TRUE(pose->isRotation(1e-12));
  }
  EXPECT_EQ(poses, 3000);
  // Every moment in between, over the gaps as well.
  for (double t = 0.0; t < content.trajectory->duration(); t += 0.00317) {
    ASSERT_TRUE(content.trajectory->poseAt(t)) << t;
  }
}

TEST(TrajectoryFile, NamesFileAndLine) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("motion.tum");
  EXPECT_EQ(readTrajectory(path).problem, path + ", line 1: the file is missing");
  EXPECT_EQ(readTrajectory(folder.path()).problem, folder.path() + ", line 1: this is no file of a sensible size");
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(two + "what\n");
  file.close();
  EXPECT_EQ(readTrajectory(path).problem, path + ", line 3: number 1 is none");
  EXPECT_FALSE(readTrajectory(path).trajectory);
}

TEST(TrajectoryFile, AHugeFileIsRefusedWithoutBeingRead) {
  const QTemporaryDir folder;
  const QString path = folder.filePath("huge.tum");
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_TRUE(file.resize(qint64{8} << 30));  // a hole, no disk space
  file.close();
  EXPECT_EQ(readTrajectory(path).problem, path + ", line 1: this is no file of a sensible size");
}

TEST(TrajectoryFile, ADeviceInItsPlaceIsRefused) {
  EXPECT_FALSE(readTrajectory("/dev/zero").trajectory);
  EXPECT_FALSE(readTrajectory("/dev/zero").problem.isEmpty());
}
