// Tests of the rotation angle conversions.
#include "am_rot.h"

#include <algorithm>
#include <array>
#include <limits>

#include "am_rot_from_c.h"
#include "bsMatrix.h"
#include "geometrytesting.h"

using geometrytesting::expectNear;
using geometrytesting::pi;
using geometrytesting::Random;
using geometrytesting::rounding;

namespace {

using Array = std::array<double, 9>;
using Angles = std::array<double, 3>;

const Array identity{1, 0, 0, 0, 1, 0, 0, 0, 1};

Array arrayOf(const Angles& angles) {
  Array r{};
  am_rot_equals_ang(r.data(), angles.data());
  return r;
}

Angles anglesOf(const Array& r) {
  Angles a{};
  am_ang_equals_rot(a.data(), r.data());
  return a;
}

/// The array read column by column, applied to p.
bsVector applied(const Array& r, const bsVector& p) {
  return {r[0] * p.x + r[3] * p.y + r[6] * p.z, r[1] * p.x + r[4] * p.y + r[7] * p.z,
          r[2] * p.x + r[5] * p.y + r[8] * p.z};
}

void expectNear(const Array& r, const Array& expected, double tolerance = rounding) {
  for (std::size_t k = 0; k < 9; ++k) {
    EXPECT_NEAR(r[k], expected[k], tolerance) << "r[" << k << "]";
  }
}

void expectNear(const Angles& a, const Angles& expected, double tolerance = rounding) {
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(a[k], expected[k], tolerance) << "a[" << k << "]";
  }
}

TEST(RotationAngles, NoAnglesGiveTheIdentity) { expectNear(arrayOf({0, 0, 0}), identity, 0.0); }

TEST(RotationAngles, TurnCounterClockwiseAboutEachAxis) {
  expectNear(applied(arrayOf({pi / 2, 0, 0}), bsVector(0, 1, 0)), 0, 0, 1);
  expectNear(applied(arrayOf({0, pi / 2, 0}), bsVector(0, 0, 1)), 1, 0, 0);
  expectNear(applied(arrayOf({0, 0, pi / 2}), bsVector(1, 0, 0)), 0, 1, 0);
}

TEST(RotationAngles, FillTheArrayElementByElement) {
  // a0 = 30, a1 = 60, a2 = 45 degrees; h is the root of 1/2, t that of 3/4.
  const double h = std::sqrt(0.5);
  const double t = std::sqrt(0.75);
  const Array expected{0.5 * h,  t * h + 0.5 * t * h, 0.5 * h - t * t * h,
                       -0.5 * h, t * h - 0.5 * t * h, 0.5 * h + t * t * h,
                       t,        -0.5 * 0.5,          t * 0.5};
  expectNear(arrayOf({pi / 6, pi / 3, pi / 4}), expected);
}

TEST(RotationAngles, ComposeXYZInTheStorageOrderOfTheMatrix) {
  Random random(17);
  for (int n = 0; n < 200; ++n) {
    const Angles a{random.between(-pi, pi), random.between(-pi, pi), random.between(-pi, pi)};
    const bsMatrix m = bsMatrix().rotationX(a[0] * 180.0 / pi) * bsMatrix().rotationY(a[1] * 180.0 / pi) *
                       bsMatrix().rotationZ(a[2] * 180.0 / pi);
    const double* stored = m;
    const Array r = arrayOf(a);
    for (std::size_t i = 0; i < 3; ++i) {
      for (std::size_t j = 0; j < 3; ++j) {
        EXPECT_NEAR(r[i + 3 * j], stored[i + 4 * j], rounding);
      }
    }
  }
}

TEST(RotationAngles, AreReadBackFromTheArray) {
  expectNear(anglesOf(arrayOf({0.1, -0.2, 0.3})), {0.1, -0.2, 0.3});
  Random random(18);
  for (int n = 0; n < 500; ++n) {
    const Angles a{random.between(-3.14, 3.14), random.between(-1.57, 1.57), random.between(-3.14, 3.14)};
    expectNear(anglesOf(arrayOf(a)), a, 1e-12);  // the arc sine is steep near a quarter turn
  }
}

TEST(RotationAngles, AreReadFromTheNamedElements) {
  Array r{};
  r[7] = -0.3;
  r[8] = -0.4;
  r[6] = -0.5;
  r[3] = 0.6;
  r[0] = -0.8;
  expectNear(anglesOf(r), {-std::atan2(-0.3, -0.4), std::asin(-0.5), -std::atan2(0.6, -0.8)}, 0.0);
}

TEST(RotationAngles, OfAQuarterTurnAboutYStillComeOut) {
  for (const double sign : {1.0, -1.0}) {
    const Array r = arrayOf({0.4, sign * pi / 2, -0.7});
    const Angles a = anglesOf(r);
    EXPECT_NEAR(a[1], sign * pi / 2, 1e-7);  // the arc sine of nearly 1
    EXPECT_TRUE(std::isfinite(a[0]) && std::isfinite(a[2]));
    EXPECT_EQ(a[0], -std::atan2(r[7], r[8]));
    EXPECT_EQ(a[2], -std::atan2(r[3], r[0]));
  }
  const Angles exact = anglesOf({0, 0, 0, 0, 1, 0, 1, 0, 0});
  EXPECT_EQ(exact[1], std::asin(1.0));
  EXPECT_EQ(exact[0], 0.0);
  EXPECT_EQ(exact[2], 0.0);
}

TEST(RotationAngles, DoNotClampTheSine) {
  Array r = identity;
  r[6] = 1.0 + 1e-15;
  EXPECT_TRUE(std::isnan(anglesOf(r)[1]));
  r[6] = -1.0 - 1e-15;
  EXPECT_TRUE(std::isnan(anglesOf(r)[1]));
}

TEST(RotationAngle, IsThatOfTheOneTurnThatTheArrayIs) {
  EXPECT_EQ(am_rot_angle(identity.data()), 0.0);
  EXPECT_NEAR(am_rot_angle(arrayOf({0.7, 0, 0}).data()), 0.7, rounding);
  EXPECT_NEAR(am_rot_angle(arrayOf({0, -0.7, 0}).data()), 0.7, rounding);
  EXPECT_NEAR(am_rot_angle(arrayOf({0, 0, 3.0}).data()), 3.0, rounding);
  // Half turns about x, y, z and about (1, 1, 1).
  const Array halfTurns[] = {{1, 0, 0, 0, -1, 0, 0, 0, -1},
                             {-1, 0, 0, 0, 1, 0, 0, 0, -1},
                             {-1, 0, 0, 0, -1, 0, 0, 0, 1},
                             {-1. / 3, 2. / 3, 2. / 3, 2. / 3, -1. / 3, 2. / 3, 2. / 3, 2. / 3, -1. / 3}};
  for (const Array& r : halfTurns) {
    EXPECT_NEAR(am_rot_angle(r.data()), pi, 1e-7);  // the root of a rounding
  }
  // A third of a circle about (1, 1, 1): the trace is 0.
  const Array third{0, 1, 0, 0, 0, 1, 1, 0, 0};
  EXPECT_NEAR(am_rot_angle(third.data()), 2 * pi / 3, rounding);
}

TEST(RotationAngle, IsNotClamped) {
  Array r = identity;
  r[4] += 1e-12;
  EXPECT_TRUE(std::isnan(am_rot_angle(r.data())));
  const Array below{-1, 0, 0, 0, -1, 0, 0, 0, 1 - 1e-12};
  EXPECT_TRUE(std::isnan(am_rot_angle(below.data())));
}

/// The passes written down once more, in long double, over a 3x3 grid; returns how many were made.
int balance(long double (&grid)[3][3]) {
  for (int pass = 1; pass <= 100; ++pass) {
    long double furthest = 0.0L;
    long double across[3];
    long double down[3];
    for (int k = 0; k < 3; ++k) {
      across[k] = std::sqrt(grid[k][0] * grid[k][0] + grid[k][1] * grid[k][1] + grid[k][2] * grid[k][2]);
      down[k] = std::sqrt(grid[0][k] * grid[0][k] + grid[1][k] * grid[1][k] + grid[2][k] * grid[2][k]);
      furthest = std::max({furthest, std::fabs(1.0L - across[k]), std::fabs(1.0L - down[k])});
    }
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        grid[i][j] /= std::sqrt(across[i] * down[j]);
      }
    }
    if (furthest <= 1e-6L) {
      return pass;
    }
  }
  return 100;
}

TEST(RotationOrthonormalize, BringsTwiceTheIdentityToTheIdentity) {
  Array r{2, 0, 0, 0, 2, 0, 0, 0, 2};
  am_rot_orthonormalize(r.data());
  expectNear(r, identity);
}

TEST(RotationOrthonormalize, LeavesARotationAsItIs) {
  Random random(19);
  for (int n = 0; n < 100; ++n) {
    const Array before = arrayOf({random.between(-3, 3), random.between(-1.5, 1.5), random.between(-3, 3)});
    Array r = before;
    am_rot_orthonormalize(r.data());
    expectNear(r, before);
  }
}

TEST(RotationOrthonormalize, MakesOnePassMoreAfterTheLengthsWereCloseEnough) {
  // All lengths 1 + 9e-7, close enough before the first pass, which is made all the same and divides the excess away.
  Array r = identity;
  for (double& value : r) {
    value *= 1.0 + 9e-7;
  }
  am_rot_orthonormalize(r.data());
  expectNear(r, identity);
}

TEST(RotationOrthonormalize, StopsOnlyWhenAPassBeganCloseEnough) {
  // Convergence is slow enough that stopping one pass early or late shows.
  Random random(20);
  int severalPasses = 0;
  for (int n = 0; n < 300; ++n) {
    Array r = arrayOf({random.between(-3, 3), random.between(-1.5, 1.5), random.between(-3, 3)});
    long double grid[3][3];
    for (std::size_t k = 0; k < 9; ++k) {
      r[k] += random.between(-0.3, 0.3);
      grid[k % 3][k / 3] = r[k];
    }
    const int passes = balance(grid);
    severalPasses += passes > 2 && passes < 100;
    am_rot_orthonormalize(r.data());
    for (std::size_t k = 0; k < 9; ++k) {
      EXPECT_NEAR(r[k], static_cast<double>(grid[k % 3][k / 3]), 1e-13);  // some dozens of divisions
    }
  }
  EXPECT_GT(severalPasses, 100) << "hardly a case stops on the way";
}

TEST(RotationOrthonormalize, GivesUpAfterTheHundredthPass) {
  // No scaling of rows and columns can give this pattern of zeros equal lengths, so the passes go on: the elements that
  // have to vanish keep shrinking, and how far tells the number of passes.
  Array r{1, 0, 0, 1, 1, 0, 0, 0, 1};
  long double grid[3][3] = {{1, 1, 0}, {0, 1, 0}, {0, 0, 1}};
  EXPECT_EQ(balance(grid), 100);
  am_rot_orthonormalize(r.data());
  for (std::size_t k = 0; k < 9; ++k) {
    EXPECT_NEAR(r[k], static_cast<double>(grid[k % 3][k / 3]), 1e-12);
  }
}

TEST(RotationOrthonormalize, EqualisesLengthsButNotAngles) {
  const double h = std::sqrt(0.5);
  const Array before{h, h, 0, h, h, 0, 0, 0, 1};  // rows of length 1, two of them equal
  Array r = before;
  am_rot_orthonormalize(r.data());
  expectNear(r, before);
}

TEST(RotationOrthonormalize, DividesByZeroForAZeroRow) {
  Array r{1, 0, 0, 0, 1, 0, 0, 0, 0};
  am_rot_orthonormalize(r.data());
  EXPECT_FALSE(std::isfinite(r[8]));
  Array null{};
  am_rot_orthonormalize(null.data());
  EXPECT_FALSE(std::isfinite(null[0]));
}

TEST(RotationAnglesFromC, GiveTheSameAsFromHere) {
  const Angles angles{0.1, -0.2, 0.3};
  Array array{};
  Angles again{};
  const double angle = am_rot_round_trip_from_c(angles.data(), array.data(), again.data());
  expectNear(array, arrayOf(angles));
  expectNear(again, angles);
  EXPECT_NEAR(angle, am_rot_angle(arrayOf(angles).data()), 1e-14);
}

}  // namespace
