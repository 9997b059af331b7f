// Tests of the two inverses of bsMatrix.
#include "bsMatrix.h"

#include "geometrytesting.h"

using geometrytesting::expectExactly;
using geometrytesting::expectNear;
using geometrytesting::matrixOf;
using geometrytesting::Random;
using geometrytesting::Rows;
using geometrytesting::rowsOf;

namespace {

const Rows identityRows{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

bool isFinite(const bsMatrix& m) {
  const double* p = m;
  bool finite = true;
  for (int k = 0; k < 16; ++k) {
    finite = finite && std::isfinite(p[k]);
  }
  return finite;
}

TEST(MatrixFastInvert, UndoesARigidTransform) {
  Random random(6);
  for (int i = 0; i < 200; ++i) {
    bsMatrix rigid = bsMatrix().rotation(random.between(-360, 360), random.direction());
    rigid.setColumn(3, random.vector(100.0), 1.0);
    bsMatrix inverse;
    EXPECT_EQ(&rigid.fastInvert(inverse), &inverse);
    EXPECT_TRUE(rigid * inverse == bsMatrix::getIdentityMatrix());
    EXPECT_TRUE(inverse * rigid == bsMatrix::getIdentityMatrix());
    const bsVector p = random.vector(100.0);
    EXPECT_TRUE(inverse * (rigid * p) == p);
  }
}

TEST(MatrixFastInvert, TransposesTheRotationAndTurnsTheTranslationBack) {
  // Not rigid, so that every step shows: R^T, -R^T t, zeros in row 3, element (3,3) kept.
  const Rows any{{{1, 2, 3, 10}, {4, 5, 6, 20}, {7, 8, 9, 30}, {-1, -2, -3, 5}}};
  // -(1*10 + 4*20 + 7*30), -(2*10 + 5*20 + 8*30), -(3*10 + 6*20 + 9*30)
  const Rows expected{{{1, 4, 7, -300}, {2, 5, 8, -360}, {3, 6, 9, -420}, {0, 0, 0, 5}}};
  const bsMatrix m = matrixOf(any);
  bsMatrix out(77.0);
  m.fastInvert(out);
  expectExactly(out, expected);
  expectExactly(m, any);
  bsMatrix inPlace(m);
  EXPECT_EQ(&inPlace.fastInvert(), &inPlace);
  expectExactly(inPlace, expected);
  bsMatrix ontoItself(m);
  ontoItself.fastInvert(ontoItself);
  expectExactly(ontoItself, expected);
}

TEST(MatrixFastInvert, GivesNoNegativeZeroForNoTranslation) {
  bsMatrix m = bsMatrix::getIdentityMatrix();
  m.fastInvert();
  expectExactly(m, identityRows);
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(std::signbit(m.data(i, 3)));
  }
}

TEST(MatrixGaussInvert, InvertsWhereNoEntryBelowTheDiagonalIsNegligible) {
  Random random(7);
  for (int n = 0; n < 100; ++n) {
    bsMatrix m;
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) {
        m.data(i, j) = random.between(0.1, 1.0) + (i == j ? 4.0 : 0.0);  // dominant diagonal: well conditioned
      }
    }
    bsMatrix inverse;
    EXPECT_EQ(&m.gaussInvert(inverse), &inverse);
    expectNear(m * inverse, identityRows, 1e-13);
    bsMatrix inPlace(m);
    EXPECT_EQ(&inPlace.gaussInvert(), &inPlace);
    expectExactly(inPlace, rowsOf(inverse));
    bsMatrix ontoItself(m);
    ontoItself.gaussInvert(ontoItself);
    expectExactly(ontoItself, rowsOf(inverse));
  }
}

// In the following, the first columns are such that elimination arrives unscaled at the 2x2 block in the lower right
// corner with the right half (row 2) e2 - e1 and (row 3) e3 - 2 e1 + e0; all numbers are powers of two or sums of few.

TEST(MatrixGaussInvert, LeavesAnEntryOfTheToleranceOrMoreBelowTheDiagonalInPlace) {
  const double e = 0x1p-23;  // 1.2e-7
  const bsMatrix m = matrixOf({{{1, 0, 0, 0}, {1, 1, 0, 0}, {1, 1, 1, 0}, {1, 2, e, 1}}});
  bsMatrix out;
  m.gaussInvert(out);
  expectExactly(out, {{{1, 0, 0, 0}, {-1, 1, 0, 0}, {0, -1, 1, 0}, {1, -2 + e, -e, 1}}});
}

TEST(MatrixGaussInvert, ExchangesSevenColumnsWithANegligibleEntryBelowTheDiagonal) {
  const double e = 0x1p-27;  // 7.5e-9
  const bsMatrix m = matrixOf({{{1, 0, 0, 0}, {1, 1, 0, 0}, {1, 1, 1, 0}, {1, 2, e, 1}}});
  bsMatrix out;
  m.gaussInvert(out);
  // Rows 2 and 3 exchange all but their last entries: (0 0 e 1 | 1 -2 0 | 0) and (0 0 1 0 | 0 -1 1 | 1). Dividing the
  // former by e and clearing the latter leaves (0 0 0 -1/e | -1/e, -1 + 2/e, 1, 1), which gives row 3 below, and from
  // it row 2. With all eight columns exchanged the inverse would come out.
  expectExactly(out, {{{1, 0, 0, 0}, {-1, 1, 0, 0}, {0, -1, 1, 1}, {1, -2 + e, -e, -e}}});
}

TEST(MatrixGaussInvert, ExchangesWithTheFirstNegligibleEntryBelow) {
  const double e = 0x1p-27;
  // At column 1, rows 2 and 3 both have e. Exchanged with row 2, whose last entry is 0 as row 1's, the inverse comes
  // out; with row 3 the last column would be off.
  const bsMatrix m = matrixOf({{{1, 0, 0, 0}, {1, 1, 0, 0}, {1, e, 1, 0}, {1, e, 0, 1}}});
  bsMatrix out;
  m.gaussInvert(out);
  expectExactly(out, {{{1, 0, 0, 0}, {-1, 1, 0, 0}, {-1 + e, -e, 1, 0}, {-1 + e, -e, 0, 1}}});
}

TEST(MatrixGaussInvert, MakesNoExchangeWhereTheDiagonalEntryIsNegligibleItself) {
  const double a = 0x1p-27;
  const double e = 0x1p-26;
  const bsMatrix m = matrixOf({{{1, 0, 0, 0}, {1, 1, 0, 0}, {1, 1, a, 0}, {1, 2, e, 1}}});
  bsMatrix out;
  m.gaussInvert(out);
  expectExactly(out, {{{1, 0, 0, 0}, {-1, 1, 0, 0}, {0, -1 / a, 1 / a, 0}, {1, 0, -2, 1}}});
}

TEST(MatrixGaussInvert, ReportsNothingForTheIdentityAndForASingularMatrix) {
  // The identity has zeros below its diagonal: the exchange puts a zero on it.
  bsMatrix identity = bsMatrix::getIdentityMatrix();
  identity.gaussInvert();
  EXPECT_FALSE(isFinite(identity));
  bsMatrix null;
  null.gaussInvert();
  EXPECT_FALSE(isFinite(null));
  bsMatrix ones(1.0);
  ones.gaussInvert();
  EXPECT_FALSE(isFinite(ones));
}

}  // namespace
