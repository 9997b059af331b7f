// Tests of the conversions between bsQuaternion and bsMatrix.
#include <algorithm>
#include <limits>

#include "bsMatrix.h"
#include "bsQuaternion.h"
#include "geometrytesting.h"

using geometrytesting::expectExactly;
using geometrytesting::expectNear;
using geometrytesting::matrixOf;
using geometrytesting::pi;
using geometrytesting::Random;
using geometrytesting::Rows;
using geometrytesting::rowsOf;

namespace {

bsQuaternion fromMatrix(const bsMatrix& m) {
  bsQuaternion q(9, 9, 9, 9);
  q.fromMatrix(m);
  return q;
}

/// How far a is from b or from -b, whichever is nearer: the largest difference of a value.
double distanceUpToSign(const bsQuaternion& a, const bsQuaternion& b) {
  const auto largest = [](double x, double y, double z, double w) {
    return std::max({std::fabs(x), std::fabs(y), std::fabs(z), std::fabs(w)});
  };
  return std::min(largest(a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w),
                  largest(a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w));
}

/// A unit quaternion of the given scalar part about a direction.
bsQuaternion unit(const bsVector& axis, double w) {
  const double s = std::sqrt(1.0 - w * w);
  return {axis.x * s, axis.y * s, axis.z * s, w};
}

TEST(QuaternionToMatrix, FillsTheBlockWithProductsOfTheValuesAsTheyAre) {
  // (1, 2, 3, 4): 1 - 2*4 - 2*9, 2 (2 - 12), 2 (3 + 8) and so on.
  const Rows expected{{{-25, -20, 22, 0}, {28, -19, 4, 0}, {-10, 20, -9, 0}, {0, 0, 0, 1}}};
  const bsQuaternion q(1, 2, 3, 4);
  expectExactly(q.toMatrix(), expected);
  bsMatrix m(77.0);
  q.toMatrix(m);
  expectExactly(m, expected);
}

TEST(QuaternionToMatrix, OfAQuarterTurnAboutZTurnsXToY) {
  expectNear(bsQuaternion(90, bsVector(0, 0, 2)).toMatrix() * bsVector(1, 0, 0), 0, 1, 0);
}

TEST(QuaternionToMatrix, HasTheSenseOfTheRotationsAboutTheAxes) {
  expectNear(bsQuaternion(33, bsVector(1, 0, 0)).toMatrix(), rowsOf(bsMatrix().rotationX(33)));
  expectNear(bsQuaternion(33, bsVector(0, 1, 0)).toMatrix(), rowsOf(bsMatrix().rotationY(33)));
  expectNear(bsQuaternion(33, bsVector(0, 0, 1)).toMatrix(), rowsOf(bsMatrix().rotationZ(33)));
}

TEST(QuaternionFromMatrix, OfTheIdentityIsTheIdentity) {
  expectExactly(fromMatrix(bsMatrix::getIdentityMatrix()), 0, 0, 0, 1);
}

TEST(QuaternionFromMatrix, ReadsOnlyTheRotationBlock) {
  bsMatrix m = bsMatrix().rotationZ(90);
  m.setColumn(3, bsVector(10, 20, 30), 40);
  m.setRow(3, bsVector(50, 60, 70), 80);
  expectNear(fromMatrix(m), 0, 0, std::sqrt(0.5), std::sqrt(0.5));
}

TEST(QuaternionFromMatrix, DividesByTheScalarPartWhereThereIsOne) {
  // Trace + 1 = 4, so the factor is 1/4 and the scalar part 1; the differences are taken from below the diagonal.
  const bsMatrix m = matrixOf({{{1, 2, 30, 0}, {10, 1, 5, 0}, {6, 13, 1, 0}, {0, 0, 0, 1}}});
  expectExactly(fromMatrix(m), 2, 6, 2, 1);
}

TEST(QuaternionFromMatrix, TakesTheLargestVectorPartWhereTheScalarPartVanishes) {
  // In each: trace + 1 = 0, the root is that of 4, the factor 1/4.
  expectExactly(fromMatrix(matrixOf({{{1, 2, 30, 0}, {10, -1, 5, 0}, {6, 13, -1, 0}, {0, 0, 0, 1}}})), 1, 3, 9, 2);
  expectExactly(fromMatrix(matrixOf({{{-1, 2, 30, 0}, {10, 1, 5, 0}, {6, 13, -1, 0}, {0, 0, 0, 1}}})), 3, 1, 4.5, 6);
  expectExactly(fromMatrix(matrixOf({{{-1, 2, 30, 0}, {10, -1, 5, 0}, {6, 13, 1, 0}, {0, 0, 0, 1}}})), 9, 4.5, 1, 2);
}

TEST(QuaternionFromMatrix, NeedsAStrictlyLargestElementForXAndForY) {
  const double third = 1.0 / 3.0;
  // A half turn about (1, 1, 1): all three diagonal elements are equal, z is taken. Every value is sqrt(1/3).
  const bsMatrix diagonal = matrixOf({{{-third, 2 * third, 2 * third, 0},
                                       {2 * third, -third, 2 * third, 0},
                                       {2 * third, 2 * third, -third, 0},
                                       {0, 0, 0, 1}}});
  expectNear(fromMatrix(diagonal), std::sqrt(third), std::sqrt(third), std::sqrt(third), 0);
  // About (1, 1, 0): x and y tie, y is taken, and is positive. About (1, -1, 0) likewise, so that x is negative.
  const bsMatrix xy = matrixOf({{{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}});
  expectNear(fromMatrix(xy), std::sqrt(0.5), std::sqrt(0.5), 0, 0);
  const bsMatrix xMinusY = matrixOf({{{0, -1, 0, 0}, {-1, 0, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}});
  expectNear(fromMatrix(xMinusY), -std::sqrt(0.5), std::sqrt(0.5), 0, 0);
  // About (1, 0, -1): x and z tie, z is taken.
  const bsMatrix xMinusZ = matrixOf({{{0, 0, -1, 0}, {0, -1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 0, 1}}});
  expectNear(fromMatrix(xMinusZ), -std::sqrt(0.5), 0, std::sqrt(0.5), 0);
  // About (0, 1, -1): y and z tie, z is taken.
  const bsMatrix yMinusZ = matrixOf({{{-1, 0, 0, 0}, {0, 0, -1, 0}, {0, -1, 0, 0}, {0, 0, 0, 1}}});
  expectNear(fromMatrix(yMinusZ), 0, -std::sqrt(0.5), std::sqrt(0.5), 0);
}

TEST(QuaternionFromMatrix, MayGiveANegativeScalarPart) {
  const bsQuaternion q = unit(bsVector(1, 0, 0), -1e-4);  // 4 w^2 is 4e-8
  expectNear(fromMatrix(q.toMatrix()), q.x, 0, 0, -1e-4);
}

TEST(QuaternionFromMatrix, GivesAPositiveScalarPartOutsideHalfTurns) {
  Random random(21);
  for (int n = 0; n < 1000; ++n) {
    const double w = random.between(2e-4, 1.0);
    const bsQuaternion q = unit(random.direction(), w);
    expectNear(fromMatrix(q.toMatrix()), q.x, q.y, q.z, q.w);
    expectNear(fromMatrix(bsQuaternion(-q.x, -q.y, -q.z, -q.w).toMatrix()), q.x, q.y, q.z, q.w);
  }
}

TEST(QuaternionFromMatrix, DividesByAnyScalarPartOfAMatrixThatIsNoRotation) {
  expectExactly(fromMatrix(bsMatrix()), 0, 0, 0, 0.5);  // trace + 1 = 1
  // Trace + 1 = 1/4, so the scalar part is 1/4 and the factor 1; the largest element of the diagonal is not asked.
  const bsMatrix m = matrixOf({{{4, 2, 30, 0}, {10, -2.75, 5, 0}, {6, 13, -2, 0}, {0, 0, 0, 1}}});
  expectExactly(fromMatrix(m), 8, 24, 8, 0.25);
}

TEST(QuaternionFromMatrix, StaysWhereItIsThroughManyMatrices) {
  Random random(22);
  for (int n = 0; n < 200; ++n) {
    const bsQuaternion q = unit(random.direction(), random.between(-1.0, 1.0));
    bsQuaternion again(q);
    for (int copy = 0; copy < 1000; ++copy) {
      again.fromMatrix(again.toMatrix());
    }
    EXPECT_LT(distanceUpToSign(again, q), 1e-12) << q;  // a thousand roundings
  }
}

TEST(QuaternionFromMatrix, BearsAMatrixOfEightDecimals) {
  // As a backend sends it: what rounding to 1e-8 took from the matrix must not grow from copy to copy.
  Random random(23);
  for (int n = 0; n < 200; ++n) {
    const bsQuaternion q = unit(random.direction(), random.between(-1.0, 1.0));
    bsMatrix m = q.toMatrix();
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        m.data(i, j) = std::round(m.data(i, j) * 1e8) / 1e8;
      }
    }
    bsQuaternion again = fromMatrix(m);
    for (int copy = 0; copy < 100; ++copy) {
      again.fromMatrix(again.toMatrix());
    }
    EXPECT_LT(distanceUpToSign(again, q), 1e-7) << q;  // ten times the rounding
  }
}

TEST(QuaternionFromMatrix, IsNotNormalised) {
  // Twice the identity: trace + 1 = 7.
  expectNear(fromMatrix(bsMatrix().scaling(2, 2, 2)), 0, 0, 0, std::sqrt(7.0) / 2.0);
}

TEST(QuaternionFromMatrix, OfHalfTurnsAboutTheAxesIsTheAxis) {
  expectNear(fromMatrix(bsMatrix().rotationX(180)), 1, 0, 0, 0);
  expectNear(fromMatrix(bsMatrix().rotationY(180)), 0, 1, 0, 0);
  expectNear(fromMatrix(bsMatrix().rotationZ(180)), 0, 0, 1, 0);
  expectExactly(fromMatrix(bsMatrix().scaling(1, -1, -1)), 1, 0, 0, 0);
  expectExactly(fromMatrix(bsMatrix().scaling(-1, 1, -1)), 0, 1, 0, 0);
  expectExactly(fromMatrix(bsMatrix().scaling(-1, -1, 1)), 0, 0, 1, 0);
}

TEST(QuaternionFromMatrix, UndoesToMatrixForAnyUnitQuaternion) {
  Random random(11);
  for (int n = 0; n < 5000; ++n) {
    const bsQuaternion q = unit(random.direction(), random.between(-1.0, 1.0));
    EXPECT_LT(distanceUpToSign(fromMatrix(q.toMatrix()), q), 1e-14) << q;
  }
}

TEST(QuaternionFromMatrix, UndoesToMatrixForTurnsOfOrNearlyOfHalfACircle) {
  Random random(12);
  const double scalars[] = {0.0,  1e-300, 1e-20, 1e-17, 1e-16, 1e-15,  1e-12,   1e-10,  1e-9,
                            1e-8, 1e-7,   1e-6,  1e-5,  1e-4,  1.5e-4, 1.58e-4, 1.6e-4, 1e-3};
  for (int n = 0; n < 1000; ++n) {
    const bsVector axis = random.direction();
    for (const double w : scalars) {
      for (const double sign : {1.0, -1.0}) {
        const bsQuaternion q = unit(axis, sign * w);
        EXPECT_LT(distanceUpToSign(fromMatrix(q.toMatrix()), q), 1e-14) << q;
      }
    }
  }
}

TEST(QuaternionFromMatrix, UndoesToMatrixForHalfTurnsInACoordinatePlane) {
  for (int degrees = 0; degrees < 360; ++degrees) {
    const double c = std::cos(degrees * pi / 180.0);
    const double s = std::sin(degrees * pi / 180.0);
    for (const bsQuaternion& q : {bsQuaternion(c, s, 0, 0), bsQuaternion(0, c, s, 0), bsQuaternion(s, 0, c, 0)}) {
      EXPECT_LT(distanceUpToSign(fromMatrix(q.toMatrix()), q), 1e-14) << q;
    }
  }
}

TEST(QuaternionFromMatrix, KeepsAHalfTurnMadeOfTwoTurns) {
  Random random(13);
  for (int degrees = 0; degrees <= 180; ++degrees) {
    for (int n = 0; n < 20; ++n) {
      const bsVector axis = random.direction();
      const bsQuaternion q = bsQuaternion(degrees, axis) * bsQuaternion(180 - degrees, axis);
      EXPECT_LT(distanceUpToSign(q, unit(axis, 0.0)), 1e-14);
      EXPECT_LT(distanceUpToSign(fromMatrix(q.toMatrix()), q), 1e-14) << degrees << " degrees about " << axis;
      const bsMatrix product = bsMatrix().rotation(-degrees, axis) * bsMatrix().rotation(degrees - 180, axis);
      EXPECT_LT(distanceUpToSign(fromMatrix(product), q), 1e-14) << degrees << " degrees about " << axis;
    }
  }
  // 14 and 166 degrees about x, as typed one after the other.
  const bsQuaternion typed = bsQuaternion(166, bsVector(1, 0, 0)) * bsQuaternion(14, bsVector(1, 0, 0));
  expectNear(fromMatrix(typed.toMatrix()), 1, 0, 0, 0);
}

TEST(QuaternionFromMatrix, BearsRoundingInAHalfTurn) {
  Random random(14);
  for (int n = 0; n < 5000; ++n) {
    const bsQuaternion q = unit(random.direction(), 0.0);
    bsMatrix m = q.toMatrix();
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) {
        m.data(i, j) += random.between(-1e-15, 1e-15);
      }
    }
    EXPECT_LT(distanceUpToSign(fromMatrix(m), q), 1e-14) << q;
  }
}

TEST(QuaternionFromMatrix, OfAnyRotationMatrixGivesTheRotationBack) {
  Random random(15);
  for (int n = 0; n < 2000; ++n) {
    // Quarter and half turns about the axes in any mixture come through exactly the delicate places.
    bsMatrix m = bsMatrix::getIdentityMatrix();
    for (int k = 0; k < 4; ++k) {
      const double degrees =
          90.0 * std::floor(random.between(-4.0, 5.0)) + (n % 2 == 0 ? 0.0 : random.between(-1e-6, 1e-6));
      switch (static_cast<int>(random.between(0.0, 2.999))) {
        case 0:
          m *= bsMatrix().rotationX(degrees);
          break;
        case 1:
          m *= bsMatrix().rotationY(degrees);
          break;
        default:
          m *= bsMatrix().rotationZ(degrees);
      }
    }
    expectNear(fromMatrix(m).toMatrix(), rowsOf(m), 1e-13);
  }
}

TEST(QuaternionFromMatrix, PassesOnWhatIsNotANumber) {
  const bsQuaternion q = fromMatrix(bsMatrix(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_TRUE(std::isnan(q.x) && std::isnan(q.y) && std::isnan(q.z) && std::isnan(q.w));
}

}  // namespace
