// Tests of bsVector.
#include "bsVector.h"

#include <cstdint>
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
using geometrytesting::written;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Vector, IsThreeConsecutiveDoublesAndNothingElse) {
  static_assert(sizeof(bsVector) == 24);
  static_assert(std::is_trivially_copyable_v<bsVector>);
  static_assert(std::is_standard_layout_v<bsVector>);
  bsVector v(1.0, 2.0, 3.0);
  double* p = v;
  EXPECT_EQ(static_cast<void*>(p), static_cast<void*>(&v));
  EXPECT_EQ(p[0], 1.0);
  EXPECT_EQ(p[1], 2.0);
  EXPECT_EQ(p[2], 3.0);
  p[1] = 7.0;
  EXPECT_EQ(v.y, 7.0);
  const bsVector& constant = v;
  const double* q = constant;
  EXPECT_EQ(q, p);
}

TEST(Vector, IsZeroByDefault) { expectExactly(bsVector(), 0.0, 0.0, 0.0); }

TEST(Vector, IsMadeFromEveryKindOfArgument) {
  const double doubles[] = {1.5, -2.5, 3.5, 99.0};
  const float floats[] = {0.1f, -0.2f, 0.3f, 99.0f};
  expectExactly(bsVector(4.5), 4.5, 4.5, 4.5);
  expectExactly(bsVector(1.0, 2.0, 3.0), 1.0, 2.0, 3.0);
  expectExactly(bsVector(doubles), 1.5, -2.5, 3.5);
  expectExactly(bsVector(floats), static_cast<double>(0.1f), static_cast<double>(-0.2f), static_cast<double>(0.3f));
  expectExactly(bsVector(0), 0.0, 0.0, 0.0);
  expectExactly(bsVector(-3), -3.0, -3.0, -3.0);
  expectExactly(bsVector(2.5f), 2.5, 2.5, 2.5);
  const bsVector copied(bsVector(7.0, 8.0, 9.0));
  expectExactly(copied, 7.0, 8.0, 9.0);
}

TEST(Vector, SetValuesMeansWhatTheConstructorsMean) {
  const double doubles[] = {1.5, -2.5, 3.5};
  const float floats[] = {0.1f, -0.2f, 0.3f};
  bsVector v(9.0, 9.0, 9.0);
  v.setValues(4.5);
  expectExactly(v, 4.5, 4.5, 4.5);
  v.setValues(1.0, 2.0, 3.0);
  expectExactly(v, 1.0, 2.0, 3.0);
  v.setValues(doubles);
  expectExactly(v, 1.5, -2.5, 3.5);
  v.setValues(floats);
  expectExactly(v, static_cast<double>(0.1f), static_cast<double>(-0.2f), static_cast<double>(0.3f));
  v.setValues(0);
  expectExactly(v, 0.0, 0.0, 0.0);
}

TEST(Vector, AssignmentCopiesAndReturnsTheTarget) {
  bsVector target;
  const bsVector source(1.0, 2.0, 3.0);
  bsVector& returned = (target = source);
  EXPECT_EQ(static_cast<void*>(&returned), static_cast<void*>(&target));
  expectExactly(target, 1.0, 2.0, 3.0);
  bsVector& same = target;
  target = same;
  expectExactly(target, 1.0, 2.0, 3.0);
}

TEST(Vector, IndexReadsAndWritesComponents) {
  bsVector v(1.0, 2.0, 3.0);
  EXPECT_EQ(v[0], 1.0);
  EXPECT_EQ(v[1], 2.0);
  EXPECT_EQ(v[2], 3.0);
  v[0] = 4.0;
  v[1] = 5.0;
  v[2] = 6.0;
  expectExactly(v, 4.0, 5.0, 6.0);
  const bsVector constant(7.0, 8.0, 9.0);
  EXPECT_EQ(constant[0], 7.0);
  EXPECT_EQ(constant[1], 8.0);
  EXPECT_EQ(constant[2], 9.0);
}

TEST(Vector, EveryIntegerTypeIndexes) {
  bsVector v(1.0, 2.0, 3.0);
  EXPECT_EQ(v[2u], 3.0);
  EXPECT_EQ(v[2L], 3.0);
  EXPECT_EQ(v[std::size_t{1}], 2.0);
  EXPECT_EQ(v[std::int8_t{1}], 2.0);
  const bsVector constant(v);
  EXPECT_EQ(constant[2u], 3.0);
  EXPECT_EQ(constant[2L], 3.0);
  enum Axis { X, Y, Z };
  EXPECT_EQ(v[Z], 3.0);
  EXPECT_EQ(constant[Y], 2.0);
  EXPECT_EQ(v[X], 1.0);
}

TEST(VectorDeathTest, AnIndexOutsideTheComponentsAborts) {
  bsVector v(1.0, 2.0, 3.0);
  const bsVector constant(v);
  KORVEX2_EXPECT_ABORT(v[3], "Assertion `false' failed");
  KORVEX2_EXPECT_ABORT(v[-1], "Assertion `false' failed");
  KORVEX2_EXPECT_ABORT(constant[3], "Assertion `false' failed");
  KORVEX2_EXPECT_ABORT(constant[-1], "Assertion `false' failed");
  KORVEX2_EXPECT_ABORT(v[3L], "Assertion `false' failed");
  KORVEX2_EXPECT_ABORT(v[3u], "Assertion `false' failed");
  KORVEX2_EXPECT_ABORT(v[std::size_t(-1)], "Assertion `false' failed");
  KORVEX2_EXPECT_ABORT(v[std::int64_t{1} << 32], "Assertion `false' failed");  // 0 if it were cut to an int
}

TEST(Vector, SumsAndDifferencesGoComponentByComponent) {
  bsVector a(1.0, 2.0, 3.0);
  const bsVector b(10.0, -20.0, 0.5);
  expectExactly(a + b, 11.0, -18.0, 3.5);
  expectExactly(a - b, -9.0, 22.0, 2.5);
  expectExactly(-b, -10.0, 20.0, -0.5);
  EXPECT_EQ(&(a += b), &a);
  expectExactly(a, 11.0, -18.0, 3.5);
  EXPECT_EQ(&(a -= b), &a);
  expectExactly(a, 1.0, 2.0, 3.0);
}

TEST(Vector, ProductOfVectorsIsComponentByComponent) {
  bsVector a(1.0, 2.0, 3.0);
  const bsVector b(4.0, -5.0, 0.5);
  expectExactly(a * b, 4.0, -10.0, 1.5);
  a *= b;
  expectExactly(a, 4.0, -10.0, 1.5);
  const bsVector& same = a;
  a *= same;
  expectExactly(a, 16.0, 100.0, 2.25);
}

TEST(Vector, ScalesByNumbersOfEveryType) {
  bsVector a(1.0, -2.0, 3.0);
  expectExactly(a * 2.0, 2.0, -4.0, 6.0);
  expectExactly(a * 2, 2.0, -4.0, 6.0);
  expectExactly(a * 2.0f, 2.0, -4.0, 6.0);
  expectExactly(a / 2.0, 0.5, -1.0, 1.5);
  expectExactly(a / 2, 0.5, -1.0, 1.5);
  a *= 4.0;
  expectExactly(a, 4.0, -8.0, 12.0);
  a /= 8;
  expectExactly(a, 0.5, -1.0, 1.5);
}

TEST(Vector, DividesEachComponentRatherThanMultiplyingByTheReciprocal) {
  // 49 * (1 / 49) is not 1 in double precision.
  expectExactly(bsVector(49.0, 98.0, 0.0) / 49.0, 1.0, 2.0, 0.0);
}

TEST(Vector, QuotientOfVectorsIsComponentByComponentAndUnchecked) {
  bsVector a(1.0, -2.0, 0.0);
  expectExactly(bsVector(1.0, -6.0, 8.0) / bsVector(4.0, 2.0, -2.0), 0.25, -3.0, -4.0);
  const bsVector byZero = a / bsVector(0.0, 0.0, 0.0);
  EXPECT_EQ(byZero.x, infinity);
  EXPECT_EQ(byZero.y, -infinity);
  EXPECT_TRUE(std::isnan(byZero.z));
  const bsVector byNumber = a / 0.0;
  EXPECT_EQ(byNumber.x, infinity);
  EXPECT_TRUE(std::isnan(byNumber.z));
  a /= bsVector(2.0, 4.0, 1.0);
  expectExactly(a, 0.5, -0.5, 0.0);
}

TEST(Vector, CrossProductIsRightHanded) {
  expectExactly(bsVector(1.0, 0.0, 0.0) ^ bsVector(0.0, 1.0, 0.0), 0.0, 0.0, 1.0);
  expectExactly(bsVector(0.0, 1.0, 0.0) ^ bsVector(0.0, 0.0, 1.0), 1.0, 0.0, 0.0);
  expectExactly(bsVector(0.0, 0.0, 1.0) ^ bsVector(1.0, 0.0, 0.0), 0.0, 1.0, 0.0);
  // (2*7 - 3*6, 3*5 - 1*7, 1*6 - 2*5)
  expectExactly(bsVector(1.0, 2.0, 3.0) ^ bsVector(5.0, 6.0, 7.0), -4.0, 8.0, -4.0);
  bsVector a(1.0, 2.0, 3.0);
  a ^= bsVector(5.0, 6.0, 7.0);
  expectExactly(a, -4.0, 8.0, -4.0);
  const bsVector& same = a;
  a ^= same;
  expectExactly(a, 0.0, 0.0, 0.0);
}

TEST(Vector, DotProductSumsTheProducts) {
  EXPECT_EQ(bsVector::dotProduct(bsVector(1.0, 2.0, 3.0), bsVector(4.0, -5.0, 6.0)), 12.0);
}

TEST(Vector, EqualityToleratesLessThanATenMillionthInEachComponent) {
  const bsVector a(1.0, 2.0, 3.0);
  EXPECT_TRUE(a == bsVector(1.0 + 5e-8, 2.0, 3.0));
  EXPECT_FALSE(a == bsVector(1.0 + 2e-7, 2.0, 3.0));
  EXPECT_FALSE(a == bsVector(1.0, 2.0 - 2e-7, 3.0));
  EXPECT_FALSE(a == bsVector(1.0, 2.0, 3.0 + 2e-7));
  EXPECT_TRUE(a == bsVector(1.0 + 9e-8, 2.0 - 9e-8, 3.0 + 9e-8)) << "each component has the tolerance to itself";
  EXPECT_FALSE(bsVector(1e-7, 0.0, 0.0) == bsVector()) << "strictly less";
  EXPECT_TRUE(bsVector(0.99e-7, 0.0, 0.0) == bsVector());
  EXPECT_FALSE(bsVector(nan, 0.0, 0.0) == bsVector(nan, 0.0, 0.0));
}

TEST(Vector, InequalityIsTheOppositeOfEquality) {
  const bsVector a(1.0, 2.0, 3.0);
  const bsVector others[] = {a, bsVector(1.0 + 5e-8, 2.0, 3.0), bsVector(1.0 + 2e-7, 2.0, 3.0), bsVector(nan)};
  for (const bsVector& b : others) {
    EXPECT_NE(a == b, a != b);
  }
  EXPECT_TRUE(bsVector(nan) != bsVector(nan));
}

TEST(Vector, ComparesValuesAndNotAddressesWhateverIsConstant) {
  const bsVector constant(1.0, 2.0, 3.0);
  const bsVector alsoConstant(1.0, 2.0, 3.0);
  bsVector variable(1.0, 2.0, 3.0);
  bsVector alsoVariable(1.0, 2.0, 3.0);
  EXPECT_TRUE(constant == alsoConstant);
  EXPECT_TRUE(constant == variable);
  EXPECT_TRUE(variable == constant);
  EXPECT_TRUE(variable == alsoVariable);
  EXPECT_FALSE(constant != alsoConstant);
  EXPECT_FALSE(constant != variable);
  EXPECT_FALSE(variable != constant);
  // Of two addresses one is the smaller; of two equal values none is.
  EXPECT_FALSE(constant < alsoConstant || alsoConstant < constant);
  EXPECT_FALSE(constant < variable || variable < constant);
  EXPECT_FALSE(constant > alsoConstant || alsoConstant > constant);
  EXPECT_TRUE(constant <= alsoConstant && alsoConstant <= constant);
  EXPECT_TRUE(constant >= variable && variable >= constant);
}

TEST(Vector, OrderingsHoldOnlyForAllThreeComponents) {
  const bsVector a(1.0, 2.0, 3.0);
  EXPECT_TRUE(a < bsVector(2.0, 3.0, 4.0));
  EXPECT_FALSE(a < bsVector(2.0, 2.0, 4.0));
  EXPECT_FALSE(a < bsVector(1.0, 3.0, 4.0));
  EXPECT_FALSE(a < bsVector(2.0, 3.0, 3.0));
  EXPECT_FALSE(a >= bsVector(2.0, 2.0, 4.0)) << "neither less nor greater or equal";

  EXPECT_TRUE(a <= bsVector(1.0, 2.0, 3.0));
  EXPECT_TRUE(a <= bsVector(2.0, 2.0, 4.0));
  EXPECT_FALSE(a <= bsVector(0.9, 5.0, 5.0));
  EXPECT_FALSE(a <= bsVector(5.0, 1.9, 5.0));
  EXPECT_FALSE(a <= bsVector(5.0, 5.0, 2.9));

  EXPECT_TRUE(a > bsVector(0.0, 1.0, 2.0));
  EXPECT_FALSE(a > bsVector(1.0, 1.0, 2.0));
  EXPECT_FALSE(a > bsVector(0.0, 2.0, 2.0));
  EXPECT_FALSE(a > bsVector(0.0, 1.0, 3.0));

  EXPECT_TRUE(a >= bsVector(1.0, 2.0, 3.0));
  EXPECT_FALSE(a >= bsVector(1.1, 0.0, 0.0));
  EXPECT_FALSE(a >= bsVector(0.0, 2.1, 0.0));
  EXPECT_FALSE(a >= bsVector(0.0, 0.0, 3.1));
}

TEST(Vector, OrderingsHaveNoTolerance) {
  const bsVector a(1.0, 2.0, 3.0);
  const bsVector justAbove(1.0 + 1e-12, 2.0 + 1e-12, 3.0 + 1e-12);
  EXPECT_TRUE(a < justAbove);
  EXPECT_FALSE(a >= justAbove);
  EXPECT_TRUE(justAbove > a);
  EXPECT_FALSE(justAbove <= a);
}

TEST(Vector, NormalizeScalesToLengthOneAndReturnsTheVector) {
  bsVector v(3.0, 0.0, 4.0);
  EXPECT_EQ(&v.normalize(), &v);
  expectNear(v, 0.6, 0.0, 0.8);
  Random random(1);
  for (int i = 0; i < 100; ++i) {
    bsVector any = random.vector(1000.0);
    any.normalize();
    EXPECT_NEAR(std::hypot(any.x, any.y, any.z), 1.0, 1e-14);
  }
}

TEST(Vector, NormalizeLeavesANearlyZeroVectorUnchanged) {
  expectExactly(bsVector().normalize(), 0.0, 0.0, 0.0);
  expectExactly(bsVector(5e-8, 0.0, 0.0).normalize(), 5e-8, 0.0, 0.0);
  expectExactly(bsVector(5e-8, -5e-8, 5e-8).normalize(), 5e-8, -5e-8, 5e-8);
  expectNear(bsVector(0.0, -2e-7, 0.0).normalize(), 0.0, -1.0, 0.0);
  // Each component is below the tolerance, the length is not.
  expectNear(bsVector(9e-8, 9e-8, 0.0).normalize(), std::sqrt(0.5), std::sqrt(0.5), 0.0);
}

TEST(Vector, MinimizeAndMaximizeTakeEachComponentOnItsOwn) {
  bsVector low(1.0, 5.0, -3.0);
  EXPECT_EQ(&low.minimize(bsVector(2.0, 4.0, -3.0)), &low);
  expectExactly(low, 1.0, 4.0, -3.0);
  bsVector high(1.0, 5.0, -3.0);
  EXPECT_EQ(&high.maximize(bsVector(2.0, 4.0, -2.0)), &high);
  expectExactly(high, 2.0, 5.0, -2.0);
}

TEST(Vector, MinimizeAndMaximizeReplaceOnlyWhatIsStrictlyBeyond) {
  bsVector zero(0.0, 0.0, 0.0);
  zero.minimize(bsVector(-0.0, nan, 1.0));
  EXPECT_FALSE(std::signbit(zero.x)) << "-0 is not smaller than 0";
  EXPECT_EQ(zero.y, 0.0) << "no number is not smaller";
  bsVector negativeZero(-0.0, -0.0, -0.0);
  negativeZero.maximize(bsVector(0.0, nan, -1.0));
  EXPECT_TRUE(std::signbit(negativeZero.x)) << "0 is not larger than -0";
  EXPECT_EQ(negativeZero.y, 0.0);
}

TEST(Vector, SnapsToTheAxisOfTheLargestComponent) {
  expectExactly(bsVector(0.9, 0.1, -0.2).getSnappedToAxis(), 1.0, 0.0, 0.0);
  expectExactly(bsVector(-0.9, 0.1, -0.2).getSnappedToAxis(), -1.0, 0.0, 0.0);
  expectExactly(bsVector(0.1, 7.0, -0.2).getSnappedToAxis(), 0.0, 1.0, 0.0);
  expectExactly(bsVector(0.0, -2.0, 0.0).getSnappedToAxis(), 0.0, -1.0, 0.0);
  expectExactly(bsVector(0.1, 0.2, 300.0).getSnappedToAxis(), 0.0, 0.0, 1.0);
  expectExactly(bsVector(0.1, 0.2, -300.0).getSnappedToAxis(), 0.0, 0.0, -1.0);
}

TEST(Vector, SnappingGivesATieToTheLaterAxis) {
  expectExactly(bsVector(-1.0, 1.0, 0.5).getSnappedToAxis(), 0.0, 1.0, 0.0);
  expectExactly(bsVector(1.0, 1.0, 1.0).getSnappedToAxis(), 0.0, 0.0, 1.0);
  expectExactly(bsVector(0.5, 0.0, 0.5).getSnappedToAxis(), 0.0, 0.0, 1.0);
  expectExactly(bsVector(0.0, 1.0, -1.0).getSnappedToAxis(), 0.0, 0.0, -1.0);
  expectExactly(bsVector(0.0, 0.0, 0.0).getSnappedToAxis(), 0.0, 0.0, -1.0);
}

TEST(Vector, SnappingCountsMagnitudesWithinTheToleranceAsATie) {
  expectExactly(bsVector(1.0 + 5e-8, 1.0, 0.0).getSnappedToAxis(), 0.0, 1.0, 0.0);
  expectExactly(bsVector(1.0 + 5e-8, 0.0, 1.0).getSnappedToAxis(), 0.0, 0.0, 1.0);
  expectExactly(bsVector(0.0, 1.0 + 5e-8, 1.0).getSnappedToAxis(), 0.0, 0.0, 1.0);
  expectExactly(bsVector(1.0 + 2e-7, 1.0, 1.0).getSnappedToAxis(), 1.0, 0.0, 0.0);
  expectExactly(bsVector(0.0, 1.0 + 2e-7, 1.0).getSnappedToAxis(), 0.0, 1.0, 0.0);
  expectExactly(bsVector(1e-7, 0.0, 0.0).getSnappedToAxis(), 1.0, 0.0, 0.0);  // a lead of the tolerance is enough
}

TEST(Vector, SnappingCountsAZeroComponentAsNegative) {
  // A lead over y and z of less than the tolerance leaves x, and z decides with its sign: 0 is negative.
  expectExactly(bsVector(5e-8, 0.0, 0.0).getSnappedToAxis(), 0.0, 0.0, -1.0);
}

TEST(Vector, OrthogonalityHasAnAbsoluteTolerance) {
  EXPECT_TRUE(bsVector::isOrthogonal(bsVector(1.0, 0.0, 0.0), bsVector(1e-8, 5.0, 0.0)));
  EXPECT_TRUE(bsVector::isOrthogonal(bsVector(1.0, 0.0, 0.0), bsVector(-1e-8, 5.0, 0.0)));
  EXPECT_FALSE(bsVector::isOrthogonal(bsVector(1000.0, 0.0, 0.0), bsVector(1e-9, 5.0, 0.0)));
  EXPECT_FALSE(bsVector::isOrthogonal(bsVector(-1000.0, 0.0, 0.0), bsVector(1e-9, 5.0, 0.0)));
  EXPECT_FALSE(bsVector::isOrthogonal(bsVector(1.0, 0.0, 0.0), bsVector(1e-7, 0.0, 0.0))) << "strictly less";
}

TEST(Vector, AngleIsMeasuredInRadiansAndInDegrees) {
  EXPECT_NEAR(bsVector::getAngleD(bsVector(1.0, 0.0, 0.0), bsVector(0.0, 1.0, 0.0)), 90.0, 1e-12);
  EXPECT_NEAR(bsVector::getAngleR(bsVector(1.0, 0.0, 0.0), bsVector(0.0, 1.0, 0.0)), pi / 2.0, 1e-15);
  EXPECT_NEAR(bsVector::getAngleD(bsVector(2.0, 0.0, 0.0), bsVector(5.0, 5.0, 0.0)), 45.0, 1e-12);
  EXPECT_NEAR(bsVector::getAngleD(bsVector(0.0, 0.0, 2.0), bsVector(0.0, 0.0, -4.0)), 180.0, 1e-12);
  EXPECT_NEAR(bsVector::getAngleR(bsVector(0.0, 0.0, 2.0), bsVector(0.0, 0.0, 4.0)), 0.0, 1e-15);
}

TEST(Vector, AngleWithAZeroVectorIsNotANumber) {
  EXPECT_TRUE(std::isnan(bsVector::getAngleD(bsVector(1.0, 0.0, 0.0), bsVector())));
  EXPECT_TRUE(std::isnan(bsVector::getAngleR(bsVector(), bsVector(1.0, 0.0, 0.0))));
}

TEST(Vector, AngleIsNotClampedWhereRoundingPassesOne) {
  // Of vectors parallel to themselves some give a cosine past 1; each must be reported as it is.
  Random random(2);
  int past = 0;
  for (int i = 0; i < 1000; ++i) {
    const bsVector v = random.vector(10.0);
    const double length = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
    const double cosine = (v.x * v.x + v.y * v.y + v.z * v.z) / length / length;
    past += cosine > 1.0;
    EXPECT_EQ(std::isnan(bsVector::getAngleR(v, v)), cosine > 1.0);
  }
  EXPECT_GT(past, 0) << "the case under test did not come up";
}

TEST(Vector, SphericalValuesGoFromZTowardsXAndUpToY) {
  bsVector v;
  v.setValuesFromSpherical(0.0, pi / 2.0, 2.0);
  expectNear(v, 2.0, 0.0, 0.0);
  v.setValuesFromSpherical(pi / 2.0, 0.0, 1.0);
  expectNear(v, 0.0, 1.0, 0.0);
  v.setValuesFromSpherical(0.0, 0.0, 3.0);
  expectExactly(v, 0.0, 0.0, 3.0);
  v.setValuesFromSpherical(pi / 6.0, pi / 3.0, 4.0);
  // 4 cos 30 sin 60 = 3, 4 sin 30 = 2, 4 cos 30 cos 60 = sqrt 3
  expectNear(v, 3.0, 2.0, std::sqrt(3.0));
  v.setValuesFromSpherical(-pi / 6.0, -pi / 3.0, 4.0);
  expectNear(v, -3.0, -2.0, std::sqrt(3.0));
}

TEST(Vector, IsWrittenInBracesWithoutBlanks) {
  EXPECT_EQ(written(bsVector(1.0, 2.5, -3.0)), "{1,2.5,-3}");
  EXPECT_EQ(written(bsVector(0.5, -1.0, 1e-10)), "{0.5,-1,1e-10}");
  EXPECT_EQ(written(bsVector(1.0 / 3.0, 123456789.0, 0.0)), "{0.333333,1.23457e+08,0}");
}

TEST(Vector, IsWrittenWithTheSettingsOfTheStream) {
  std::ostringstream out;
  out << std::fixed << std::setprecision(2) << std::showpos << bsVector(1.0, 2.5, -3.0);
  EXPECT_EQ(out.str(), "{+1.00,+2.50,-3.00}");
  std::ostringstream comma;
  comma.imbue(commaLocale());
  comma << bsVector(1.5, 2.0, -3.0);
  EXPECT_EQ(comma.str(), "{1,5,2,-3}");
}

TEST(Vector, IsReadAfterAPromptForEachComponent) {
  CapturedOutput prompts;
  std::istringstream in("1.5 -2\n3e2 rest");
  bsVector v(7.0, 8.0, 9.0);
  EXPECT_EQ(&(in >> v), &in);
  expectExactly(v, 1.5, -2.0, 300.0);
  EXPECT_EQ(prompts.text(), "x : \ny : \nz : ");
  std::string rest;
  in >> rest;
  EXPECT_EQ(rest, "rest");
}

TEST(Vector, AsksForEachComponentOnlyAfterTheOneBeforeIsRead) {
  CapturedOutput prompts;
  Answers answers({"1\n", "2\n", "3\n"}, prompts);
  std::istream in(&answers);
  bsVector v;
  in >> v;
  EXPECT_EQ(answers.shown(), (std::vector<std::string>{"x : ", "x : \ny : ", "x : \ny : \nz : "}));
  expectExactly(v, 1.0, 2.0, 3.0);
}

TEST(Vector, AComponentThatCannotBeReadStaysAndTheStreamFails) {
  CapturedOutput prompts;
  std::istringstream word("1.5 word 3");
  bsVector v(7.0, 8.0, 9.0);
  word >> v;
  EXPECT_TRUE(word.fail());
  expectExactly(v, 1.5, 8.0, 9.0);
  EXPECT_EQ(prompts.text(), "x : \ny : \nz : ");

  std::istringstream shortText("4 5");
  shortText >> v;
  EXPECT_TRUE(shortText.fail());
  expectExactly(v, 4.0, 5.0, 9.0);

  std::istringstream tooLarge("1e999 2 3");
  tooLarge >> v;
  EXPECT_TRUE(tooLarge.fail());
  expectExactly(v, 4.0, 5.0, 9.0);
}

TEST(Vector, IsReadWithTheSettingsOfTheStream) {
  CapturedOutput prompts;
  std::istringstream in("1,5 2,25 -3");
  in.imbue(commaLocale());
  bsVector v;
  in >> v;
  EXPECT_FALSE(in.fail());
  expectExactly(v, 1.5, 2.25, -3.0);
}

}  // namespace
