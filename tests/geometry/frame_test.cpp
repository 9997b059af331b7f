// Tests of bsFrame.
#include "bsFrame.h"

#include <type_traits>
#include <vector>

#include "geometrytesting.h"

using geometrytesting::expectExactly;
using geometrytesting::expectNear;
using geometrytesting::pi;
using geometrytesting::Random;
using geometrytesting::Rows;

namespace {

TEST(Frame, IsTheWorldByDefault) {
  const bsFrame frame;
  expectExactly(frame.position, 0, 0, 0);
  expectExactly(frame.orientation, 0, 0, 0, 1);
  EXPECT_EQ(frame.getReferenceFrame(), nullptr);
}

TEST(Frame, TakesItsFieldsAsGiven) {
  bsFrame reference;
  const bsFrame frame(bsVector(1, 2, 3), bsQuaternion(4, 5, 6, 7), &reference);
  expectExactly(frame.position, 1, 2, 3);
  expectExactly(frame.orientation, 4, 5, 6, 7);  // not of length 1, and still unchanged
  EXPECT_EQ(frame.getReferenceFrame(), &reference);
}

TEST(Frame, IsMadeFromAMatrix) {
  bsFrame reference;
  bsMatrix m = bsMatrix().rotationZ(90);
  m.setColumn(3, bsVector(1, 2, 3), 1.0);
  const bsFrame frame(m, &reference);
  expectExactly(frame.position, 1, 2, 3);
  expectNear(frame.orientation, 0, 0, std::sqrt(0.5), std::sqrt(0.5));
  EXPECT_EQ(frame.getReferenceFrame(), &reference);
  EXPECT_EQ(bsFrame(m, nullptr).getReferenceFrame(), nullptr);
}

TEST(Frame, BecomesAMatrix) {
  const bsFrame frame(bsVector(10, 20, 30), bsQuaternion(90, bsVector(0, 0, 1)), nullptr);
  expectNear(frame.toMatrix(), {{{0, -1, 0, 10}, {1, 0, 0, 20}, {0, 0, 1, 30}, {0, 0, 0, 1}}});
}

TEST(Frame, ReferenceIsSetAndRead) {
  bsFrame a;
  bsFrame b;
  b.setReferenceFrame(&a);
  EXPECT_EQ(b.getReferenceFrame(), &a);
  b.setReferenceFrame(nullptr);
  EXPECT_EQ(b.getReferenceFrame(), nullptr);
  b.setReferenceFrame(&b);  // nobody checks for loops
  EXPECT_EQ(b.getReferenceFrame(), &b);
  const bsFrame& constant = b;
  static_assert(std::is_same_v<decltype(constant.getReferenceFrame()), bsFrame*>);
}

TEST(Frame, CopyHasThePositionExactlyAndTheOrientationUpToRounding) {
  bsFrame reference;
  Random random(16);
  for (int n = 0; n < 500; ++n) {
    const double w = random.between(-1.0, 1.0);
    const double s = std::sqrt(1.0 - w * w);
    const bsVector axis = random.direction();
    const bsQuaternion q(axis.x * s, axis.y * s, axis.z * s, w);
    const bsVector p = random.vector(1000.0);
    const bsFrame source(p, q, &reference);
    const bsFrame copy(source);
    bsFrame assigned;
    bsFrame& returned = (assigned = source);
    EXPECT_EQ(&returned, &assigned);
    const double sign = w < 0.0 ? -1.0 : 1.0;  // the way through the matrix gives a positive scalar part
    for (const bsFrame* frame : {&copy, static_cast<const bsFrame*>(&assigned)}) {
      expectExactly(frame->position, p.x, p.y, p.z);
      expectNear(frame->orientation, sign * q.x, sign * q.y, sign * q.z, sign * q.w);
      EXPECT_EQ(frame->getReferenceFrame(), &reference);
    }
  }
}

TEST(Frame, CopyPassesThroughAMatrix) {
  // Seen with an orientation of length 2: its matrix is not a rotation, and what comes back is derived from that:
  // diagonal (1, 1, 1), so w = 1, and the values 2 w x = 0.
  const bsFrame source(bsVector(1, 2, 3), bsQuaternion(0, 0, 0, 2), nullptr);
  expectExactly(bsFrame(source).orientation, 0, 0, 0, 1);
  bsFrame assigned;
  assigned = source;
  expectExactly(assigned.orientation, 0, 0, 0, 1);
  // The opposite sign of the same turn.
  const bsFrame negative(bsVector(), bsQuaternion(0, 0, -0.6, -0.8), nullptr);
  expectNear(bsFrame(negative).orientation, 0, 0, 0.6, 0.8);
}

TEST(Frame, KeepsAHalfTurnWhenCopiedAgainAndAgain) {
  const bsQuaternion half = bsQuaternion(166, bsVector(1, 2, 3)) * bsQuaternion(14, bsVector(1, 2, 3));
  bsFrame frame(bsVector(1, 2, 3), half, nullptr);
  for (int n = 0; n < 1000; ++n) {
    const bsFrame copy(frame);
    frame = copy;
  }
  const double l = std::sqrt(14.0);
  expectNear(frame.orientation, 1 / l, 2 / l, 3 / l, 0, 1e-12);  // a thousand roundings
  expectExactly(frame.position, 1, 2, 3);
}

TEST(Frame, KeepsAnyOrientationWhenCopiedAgainAndAgain) {
  for (double degrees = -350; degrees <= 350; degrees += 25) {
    const bsQuaternion q(degrees, bsVector(3, -2, 1));
    bsFrame frame(bsVector(1, 2, 3), q, nullptr);
    for (int n = 0; n < 1000; ++n) {
      const bsFrame copy(frame);
      frame = copy;
    }
    const double sign = q.w < 0.0 ? -1.0 : 1.0;
    expectNear(frame.orientation, sign * q.x, sign * q.y, sign * q.z, sign * q.w, 1e-12);  // a thousand roundings
  }
}

TEST(Frame, MayBeAssignedToItself) {
  bsFrame reference;
  bsFrame frame(bsVector(1, 2, 3), bsQuaternion(30, bsVector(1, -1, 2)), &reference);
  const bsQuaternion before = frame.orientation;
  const bsFrame& same = frame;
  frame = same;
  expectExactly(frame.position, 1, 2, 3);
  expectNear(frame.orientation, before.x, before.y, before.z, before.w);
  EXPECT_EQ(frame.getReferenceFrame(), &reference);
}

TEST(Frame, LivesInContainers) {
  std::vector<bsFrame> frames;
  for (int i = 0; i < 10; ++i) {
    frames.emplace_back(bsVector(i), bsQuaternion(), nullptr);
  }
  frames.erase(frames.begin());
  expectExactly(frames.front().position, 1, 1, 1);
  expectExactly(frames.back().position, 9, 9, 9);
}

TEST(Frame, MakingAFrameThatRefersToThisOneItsReferenceCreatesALoop) {
  bsFrame a;
  bsFrame b;
  b.setReferenceFrame(&a);
  EXPECT_TRUE(a.isCreatingLoop(&b));
  EXPECT_FALSE(b.isCreatingLoop(&a));
  EXPECT_FALSE(a.isCreatingLoop(nullptr));
}

TEST(Frame, LoopsAreFoundAlongTheWholeChain) {
  bsFrame a;
  bsFrame b;
  bsFrame c;
  bsFrame d;
  b.setReferenceFrame(&a);
  c.setReferenceFrame(&b);
  d.setReferenceFrame(&c);
  EXPECT_TRUE(a.isCreatingLoop(&d));
  EXPECT_TRUE(b.isCreatingLoop(&d));
  EXPECT_TRUE(c.isCreatingLoop(&d));
  EXPECT_FALSE(d.isCreatingLoop(&c));
  EXPECT_FALSE(d.isCreatingLoop(&a));
  bsFrame outsider;
  EXPECT_FALSE(outsider.isCreatingLoop(&d));
  EXPECT_FALSE(d.isCreatingLoop(&outsider));
}

TEST(Frame, AFrameAsItsOwnReferenceIsNoticedOnlyThroughItsOwnChain) {
  bsFrame a;
  EXPECT_FALSE(a.isCreatingLoop(&a));
  a.setReferenceFrame(&a);
  EXPECT_TRUE(a.isCreatingLoop(&a));
  bsFrame b;
  bsFrame c;
  b.setReferenceFrame(&c);
  c.setReferenceFrame(&b);
  EXPECT_TRUE(b.isCreatingLoop(&b));
  EXPECT_TRUE(b.isCreatingLoop(&c));
}

}  // namespace
