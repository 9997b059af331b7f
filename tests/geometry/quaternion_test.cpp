// Tests of bsQuaternion but for its conversions with matrices: values, axis and angle, products, slerp, text.
#include "bsQuaternion.h"

#include <iomanip>
#include <limits>
#include <type_traits>

#include "geometrytesting.h"

using geometrytesting::Answers;
using geometrytesting::CapturedOutput;
using geometrytesting::commaLocale;
using geometrytesting::expectExactly;
using geometrytesting::expectNear;
using geometrytesting::pi;
using geometrytesting::Random;
using geometrytesting::turned;
using geometrytesting::written;

namespace {

bsQuaternion randomUnit(Random& random) {
  const bsVector axis = random.direction();
  const double half = random.between(-pi, pi);
  const double s = std::sin(half);
  return {axis.x * s, axis.y * s, axis.z * s, std::cos(half)};
}

/// q p q* with the vector part u: p + 2 w (u x p) + 2 u x (u x p).
bsVector turnedBy(const bsQuaternion& q, const bsVector& p) {
  const bsVector u(q.x, q.y, q.z);
  const bsVector across = u ^ p;
  return p + across * (2.0 * q.w) + (u ^ across) * 2.0;
}

TEST(Quaternion, IsFourDoublesWithTheScalarLast) {
  static_assert(sizeof(bsQuaternion) == 32);
  static_assert(std::is_trivially_copyable_v<bsQuaternion> && std::is_standard_layout_v<bsQuaternion>);
  const bsQuaternion q(1, 2, 3, 4);
  const auto* p = reinterpret_cast<const double*>(&q);
  EXPECT_EQ(p[0], 1.0);
  EXPECT_EQ(p[3], 4.0);
  expectExactly(q, 1, 2, 3, 4);
}

TEST(Quaternion, IsTheIdentityByDefault) { expectExactly(bsQuaternion(), 0, 0, 0, 1); }

TEST(Quaternion, IsSetAndCopiedWithoutNormalising) {
  bsQuaternion q;
  q.setValues(1, 2, 3, 4);
  expectExactly(q, 1, 2, 3, 4);
  const bsQuaternion copy(q);
  expectExactly(copy, 1, 2, 3, 4);
  bsQuaternion assigned;
  assigned = q;
  expectExactly(assigned, 1, 2, 3, 4);
}

TEST(Quaternion, ComesFromAnAxisOfAnyLengthAndAnAngleInDegrees) {
  const double h = std::sqrt(0.5);
  bsQuaternion q(9, 9, 9, 9);
  const bsVector axis(0, 0, 2);
  q.fromAxis(90, axis);
  expectNear(q, 0, 0, h, h);
  expectExactly(axis, 0, 0, 2);
  expectNear(bsQuaternion(90, bsVector(0, 0, 2)), 0, 0, h, h);
  expectNear(bsQuaternion(-90, bsVector(0, 3, 0)), 0, -h, 0, h);
  expectNear(bsQuaternion(60, bsVector(-5, 0, 0)), -0.5, 0, 0, std::sqrt(0.75));
  expectNear(bsQuaternion(360, bsVector(1, 0, 0)), 0, 0, 0, -1);
  expectNear(bsQuaternion(0, bsVector(1, 2, 3)), 0, 0, 0, 1);
  expectNear(bsQuaternion(180, bsVector(1, 0, 0)), 1, 0, 0, 0);
  // 120 degrees about the diagonal: sin 60 / sqrt 3 = 1/2
  expectNear(bsQuaternion(120, bsVector(1, 1, 1)), 0.5, 0.5, 0.5, 0.5);
}

TEST(Quaternion, AZeroAxisGivesNoTurn) {
  expectExactly(bsQuaternion(180, bsVector()), 0, 0, 0, 1);
  expectExactly(bsQuaternion(90, bsVector()), 0, 0, 0, 1);
  expectExactly(bsQuaternion(270, bsVector()), 0, 0, 0, -1);  // the cosine of 135 degrees, normalised
}

TEST(Quaternion, AnAxisTooShortToNormaliseIsUsedAsItIs) {
  // (5e-8, 0, 0) stays; with a half turn nothing but 5e-8 is left, which normalising takes for no turn.
  expectExactly(bsQuaternion(180, bsVector(5e-8, 0, 0)), 0, 0, 0, 1);
  // A quarter turn keeps its scalar part.
  expectNear(bsQuaternion(90, bsVector(5e-8, 0, 0)), 5e-8, 0, 0, 1);
}

TEST(Quaternion, TurnsCounterClockwiseAboutItsAxis) {
  Random random(8);
  for (int i = 0; i < 200; ++i) {
    const bsVector axis = random.direction();
    const double degrees = random.between(-360, 360);
    const bsVector p = random.vector(1.0);
    const bsVector expected = turned(p, axis, degrees * pi / 180.0);
    const bsVector result = bsQuaternion(degrees, axis).toMatrix() * p;
    expectNear(result, expected.x, expected.y, expected.z);
  }
}

TEST(Quaternion, NormalizeScalesToLengthOne) {
  bsQuaternion q(0, 0, 0, 2);
  q.normalize();
  expectExactly(q, 0, 0, 0, 1);
  q.setValues(1, -2, 3, -4);
  q.normalize();
  const double l = std::sqrt(30.0);
  expectNear(q, 1 / l, -2 / l, 3 / l, -4 / l);
}

TEST(Quaternion, NormalizeMakesANearlyZeroQuaternionTheIdentity) {
  bsQuaternion q(0, 0, 0, 0);
  q.normalize();
  expectExactly(q, 0, 0, 0, 1);
  q.setValues(5e-8, 0, 0, 0);
  q.normalize();
  expectExactly(q, 0, 0, 0, 1);
  q.setValues(0, 0, 0, -5e-8);
  q.normalize();
  expectExactly(q, 0, 0, 0, 1);
  q.setValues(0, -2e-7, 0, 0);
  q.normalize();
  expectNear(q, 0, -1, 0, 0);
  q.setValues(9e-8, 0, 9e-8, 0);  // longer than the tolerance, though no value is
  q.normalize();
  expectNear(q, std::sqrt(0.5), 0, std::sqrt(0.5), 0);
}

TEST(Quaternion, ProductMultipliesTheUnitsAsHamiltonDid) {
  const bsQuaternion i(1, 0, 0, 0);
  const bsQuaternion j(0, 1, 0, 0);
  const bsQuaternion k(0, 0, 1, 0);
  const bsQuaternion one(0, 0, 0, 1);
  expectExactly(i * j, 0, 0, 1, 0);
  expectExactly(j * k, 1, 0, 0, 0);
  expectExactly(k * i, 0, 1, 0, 0);
  expectExactly(j * i, 0, 0, -1, 0);
  expectExactly(k * j, -1, 0, 0, 0);
  expectExactly(i * k, 0, -1, 0, 0);
  expectExactly(i * i, 0, 0, 0, -1);
  expectExactly(j * j, 0, 0, 0, -1);
  expectExactly(k * k, 0, 0, 0, -1);
  expectExactly(one * j, 0, 1, 0, 0);
  expectExactly(k * one, 0, 0, 1, 0);
}

TEST(Quaternion, ProductIsNormalised) {
  // (1,2,3,4)(5,6,7,8): x = 32+20+... by the table of units: (24, 48, 48, -6), of length 30 * sqrt(174) / sqrt(174)...
  const double x = 4 * 5 + 1 * 8 + 2 * 7 - 3 * 6;
  const double y = 4 * 6 - 1 * 7 + 2 * 8 + 3 * 5;
  const double z = 4 * 7 + 1 * 6 - 2 * 5 + 3 * 8;
  const double w = 4 * 8 - 1 * 5 - 2 * 6 - 3 * 7;
  const double l = std::sqrt(30.0 * 174.0);
  const bsQuaternion left(1, 2, 3, 4);
  const bsQuaternion right(5, 6, 7, 8);
  expectNear(left * right, x / l, y / l, z / l, w / l);
  bsQuaternion replaced(left);
  EXPECT_EQ(&(replaced *= right), &replaced);
  expectNear(replaced, x / l, y / l, z / l, w / l);
  expectExactly(bsQuaternion(0, 0, 0, 0) * right, 0, 0, 0, 1);
}

TEST(Quaternion, ProductLetsTheRightOperandActFirst) {
  const bsQuaternion aboutZ(90, bsVector(0, 0, 1));
  const bsQuaternion aboutX(90, bsVector(1, 0, 0));
  // x turns to y about z, and y to z about x.
  expectNear((aboutX * aboutZ).toMatrix() * bsVector(1, 0, 0), 0, 0, 1);
  expectNear((aboutZ * aboutX).toMatrix() * bsVector(1, 0, 0), 0, 1, 0);
  Random random(9);
  for (int n = 0; n < 100; ++n) {
    const bsQuaternion q1 = randomUnit(random);
    const bsQuaternion q2 = randomUnit(random);
    const bsVector p = random.vector(1.0);
    const bsVector expected = turnedBy(q1, turnedBy(q2, p));
    expectNear(turnedBy(q1 * q2, p), expected.x, expected.y, expected.z);
  }
}

TEST(Quaternion, IsMultipliedByItself) {
  bsQuaternion q(30, bsVector(0, 1, 0));
  const bsQuaternion& same = q;
  q *= same;
  expectNear(q, 0, 0.5, 0, std::sqrt(0.75));
}

TEST(Quaternion, SlerpGoesFromTheFirstToTheSecondAtEvenSpeed) {
  const bsVector axis = bsVector(1, -2, 3).normalize();
  const bsQuaternion from(20, axis);
  const bsQuaternion to(140, axis);
  for (const double t : {0.0, 0.25, 0.5, 0.75, 1.0, 1.5, -0.5}) {
    const double half = (20.0 + 120.0 * t) / 2.0 * pi / 180.0;
    bsQuaternion q;
    q.slerp(from, to, t);
    expectNear(q, axis.x * std::sin(half), axis.y * std::sin(half), axis.z * std::sin(half), std::cos(half));
  }
}

TEST(Quaternion, SlerpBetweenEqualQuaternionsStaysThere) {
  Random random(10);
  for (int n = 0; n < 100; ++n) {
    const bsQuaternion q = randomUnit(random);
    for (const double t : {0.0, 0.1, 0.5, 0.9, 1.0}) {
      bsQuaternion between;
      between.slerp(q, q, t);
      // Where rounding puts the product just below 1, the two sines are of angles of some 1e-8.
      expectNear(between, q.x, q.y, q.z, q.w, 1e-12);
    }
  }
}

TEST(Quaternion, SlerpIsLinearWhereTheProductIsOneOrMore) {
  bsQuaternion q;
  q.slerp(bsQuaternion(0, 0, 0, 1), bsQuaternion(0, 0, 0, 1), 0.3);
  expectExactly(q, 0, 0, 0, 1);
  q.slerp(bsQuaternion(1, 0, 0, 2), bsQuaternion(3, 1, 0, 2), 0.25);  // product 7
  expectExactly(q, 1.5, 0.25, 0, 2);
}

TEST(Quaternion, SlerpDoesNotTakeTheShorterWay) {
  const double c = std::cos(100.0 * pi / 180.0);
  const double s = std::sin(100.0 * pi / 180.0);
  bsQuaternion q;
  q.slerp(bsQuaternion(0, 0, 0, 1), bsQuaternion(s, 0, 0, c), 0.5);  // product below 0
  expectNear(q, std::sin(50.0 * pi / 180.0), 0, 0, std::cos(50.0 * pi / 180.0));
}

TEST(Quaternion, SlerpDoesNotNormalise) {
  bsQuaternion q;
  // Product 0, so both weights are the sine of 45 degrees.
  q.slerp(bsQuaternion(2, 0, 0, 0), bsQuaternion(0, 0, 4, 0), 0.5);
  expectNear(q, std::sqrt(2.0), 0, std::sqrt(8.0), 0);
}

TEST(Quaternion, SlerpBetweenOppositesWeighsTheSumAndTakesTheScalarFromTheFirstZ) {
  bsQuaternion q;
  q.slerp(bsQuaternion(0, 0, 0, 1), bsQuaternion(0, 0, 0, -1), 0.3);
  expectExactly(q, 0, 0, 0, 0);
  q.slerp(bsQuaternion(0, 0, 1, 0), bsQuaternion(0, 0, -1, 0), 0.3);
  expectExactly(q, 0, 0, 0, 1);
  // Product -14, sums (-1, -2, -3) / ..., one weight sin((1 - t) * 90 degrees)
  q.slerp(bsQuaternion(1, 2, 3, 0.5), bsQuaternion(-2, -4, -6, 9), 1.0 / 3.0);
  const double s = std::sin(pi / 3.0);
  expectNear(q, -1 * s, -2 * s, -3 * s, 3);
}

TEST(Quaternion, SlerpHasNoToleranceAroundOpposites) {
  // Product a little above -1: still the great circle.
  const double angle = pi - 1e-3;
  bsQuaternion q;
  q.slerp(bsQuaternion(0, 0, 0, 1), bsQuaternion(std::sin(angle), 0, 0, std::cos(angle)), 0.5);
  expectNear(q, std::sin(angle / 2), 0, 0, std::cos(angle / 2), 1e-11);  // divided by a sine of 1e-3
}

TEST(Quaternion, SlerpMayWriteOntoItsOwnArguments) {
  const bsQuaternion from(20, bsVector(0, 1, 0));
  const bsQuaternion to(80, bsVector(1, 0, 0));
  bsQuaternion expected;
  expected.slerp(from, to, 0.4);
  bsQuaternion first(from);
  first.slerp(first, to, 0.4);
  expectExactly(first, expected.x, expected.y, expected.z, expected.w);
  bsQuaternion second(to);
  second.slerp(from, second, 0.4);
  expectExactly(second, expected.x, expected.y, expected.z, expected.w);
  bsQuaternion opposite(1, 2, 3, 0.5);
  opposite.slerp(opposite, bsQuaternion(-2, -4, -6, 9), 1.0 / 3.0);
  EXPECT_EQ(opposite.w, 3.0);
}

TEST(Quaternion, IsWrittenInBracesWithBlanks) {
  EXPECT_EQ(written(bsQuaternion(1, 2, 3, 4)), "{1, 2, 3, 4}");
  EXPECT_EQ(written(bsQuaternion(0.5, -1, 1e-10, 1.0 / 3.0)), "{0.5, -1, 1e-10, 0.333333}");
  std::ostringstream out;
  out.imbue(commaLocale());
  out << std::fixed << std::setprecision(1) << bsQuaternion(1, 2, 3, 4.5);
  EXPECT_EQ(out.str(), "{1,0, 2,0, 3,0, 4,5}");
}

TEST(Quaternion, IsReadAfterAPromptForEachValue) {
  CapturedOutput prompts;
  std::istringstream in("1.5 -2\n3e2 4");
  bsQuaternion q;
  EXPECT_EQ(&(in >> q), &in);
  expectExactly(q, 1.5, -2, 300, 4);
  EXPECT_EQ(prompts.text(), "x : \ny : \nz : \nw : ");
}

TEST(Quaternion, AsksForEachValueOnlyAfterTheOneBeforeIsRead) {
  CapturedOutput prompts;
  Answers answers({"1\n", "2\n", "3\n", "4\n"}, prompts);
  std::istream in(&answers);
  bsQuaternion q;
  in >> q;
  EXPECT_EQ(answers.shown(),
            (std::vector<std::string>{"x : ", "x : \ny : ", "x : \ny : \nz : ", "x : \ny : \nz : \nw : "}));
  expectExactly(q, 1, 2, 3, 4);
}

TEST(Quaternion, AValueThatCannotBeReadStaysAndTheStreamFails) {
  CapturedOutput prompts;
  std::istringstream in("1.5 -2 3");
  bsQuaternion q(6, 7, 8, 9);
  in >> q;
  EXPECT_TRUE(in.fail());
  expectExactly(q, 1.5, -2, 3, 9);
  std::istringstream word("word");
  word >> q;
  EXPECT_TRUE(word.fail());
  expectExactly(q, 1.5, -2, 3, 9);
  EXPECT_EQ(prompts.text(), "x : \ny : \nz : \nw : x : \ny : \nz : \nw : ");
}

}  // namespace
