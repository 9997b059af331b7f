// Live lines for tests, put together from texts, so that no locale has a say in them.
#ifndef KORVEX2_TESTS_LIVELINES_H
#define KORVEX2_TESTS_LIVELINES_H

#include <gtest/gtest.h>

#include <string>

#include "trackingstream.h"

/// Position (1, 2, 3) and a rotation of nine different values, column by column.
inline const std::string poseBlocks = "[1 2 3][11 21 31 12 22 32 13 23 33]";
inline const std::string identityBlocks = "[0 0 0][1 0 0 0 1 0 0 0 1]";

/// One record of a "6d" line.
inline std::string body(const std::string& id, const std::string& quality, const std::string& blocks = poseBlocks) {
  return "[" + id + " " + quality + "]" + blocks;
}
/// One record of a "6dw" line.
inline std::string device(const std::string& id, const std::string& quality, const std::string& buttons,
                          const std::string& blocks = poseBlocks) {
  return "[" + id + " " + quality + " " + buttons + "]" + blocks;
}
/// One record of a "6dw2" line.
inline std::string device2(const std::string& id, const std::string& quality, const std::string& buttons,
                           const std::string& blocks = poseBlocks) {
  return "[" + id + " " + quality + " " + buttons + " 2]" + blocks + "[0 0.5]";
}

/// Rotation values row by row as the test expects them.
inline void expectRotation(const bsMatrix& rotation, std::initializer_list<double> rows) {
  int i = 0;
  for (const double value : rows) {
    EXPECT_EQ(rotation.data(i / 3, i % 3), value) << "row " << i / 3 << ", column " << i % 3;
    ++i;
  }
  for (int n = 0; n < 3; ++n) {
    EXPECT_EQ(rotation.data(3, n), 0.0);
    EXPECT_EQ(rotation.data(n, 3), 0.0);
  }
  EXPECT_EQ(rotation.data(3, 3), 1.0);
}

inline void expectIdentity(const bsMatrix& rotation) { expectRotation(rotation, {1, 0, 0, 0, 1, 0, 0, 0, 1}); }

/// The pose of `poseBlocks`.
inline void expectPose(const korvex2::TrackedPose& pose) {
  EXPECT_EQ(pose.position.x, 1.0);
  EXPECT_EQ(pose.position.y, 2.0);
  EXPECT_EQ(pose.position.z, 3.0);
  expectRotation(pose.rotation, {11, 12, 13, 21, 22, 23, 31, 32, 33});
}

inline void expectUntouched(const korvex2::TrackedPose& pose) {
  EXPECT_EQ(pose.id, -1);
  EXPECT_EQ(pose.quality, -1.0F);
  EXPECT_EQ(pose.position.x, 0.0);
  EXPECT_EQ(pose.position.y, 0.0);
  EXPECT_EQ(pose.position.z, 0.0);
  EXPECT_EQ(pose.buttons, 0);
  expectIdentity(pose.rotation);
}

#endif
