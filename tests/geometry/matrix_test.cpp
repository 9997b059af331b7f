// Tests of bsMatrix but for its measures and inverses: storage, builders, arithmetic, comparisons, text.
#include "bsMatrix.h"

#include <iomanip>
#include <limits>
#include <type_traits>

#include "geometrytesting.h"

using geometrytesting::Answers;
using geometrytesting::CapturedOutput;
using geometrytesting::commaLocale;
using geometrytesting::expectExactly;
using geometrytesting::expectNear;
using geometrytesting::matrixOf;
using geometrytesting::pi;
using geometrytesting::Random;
using geometrytesting::randomRows;
using geometrytesting::Rows;
using geometrytesting::rowsOf;
using geometrytesting::turned;
using geometrytesting::written;

namespace {

const Rows identityRows{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
const Rows nullRows{};
const Rows counted{{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}};

TEST(Matrix, IsSixteenDoublesStoredColumnByColumn) {
  static_assert(sizeof(bsMatrix) == 128);
  static_assert(std::is_trivially_copy_constructible_v<bsMatrix> && std::is_trivially_destructible_v<bsMatrix>);
  static_assert(std::is_standard_layout_v<bsMatrix>);
  bsMatrix m;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      m.data(i, j) = 10.0 * i + j;
    }
  }
  const double* p = m;
  const double expected[16] = {0, 10, 20, 30, 1, 11, 21, 31, 2, 12, 22, 32, 3, 13, 23, 33};
  for (int k = 0; k < 16; ++k) {
    EXPECT_EQ(p[k], expected[k]) << "position " << k;
  }
  EXPECT_EQ(static_cast<const void*>(p), static_cast<const void*>(&m));
}

TEST(Matrix, IsNullByDefault) { expectExactly(bsMatrix(), nullRows); }

TEST(Matrix, IsFilledWithOneNumber) {
  expectExactly(bsMatrix(2.5),
                {{{2.5, 2.5, 2.5, 2.5}, {2.5, 2.5, 2.5, 2.5}, {2.5, 2.5, 2.5, 2.5}, {2.5, 2.5, 2.5, 2.5}}});
  expectExactly(bsMatrix(0), nullRows);
}

TEST(Matrix, IsCopiedFromSixteenValuesInStorageOrder) {
  double values[16] = {1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16};
  const bsMatrix m(values);
  expectExactly(m, counted);
  const bsMatrix copy(m);
  expectExactly(copy, counted);
  const double* stored = m;
  expectExactly(bsMatrix(stored), counted);
}

TEST(Matrix, DataAndCallOperatorReadAndWriteTheSameElement) {
  bsMatrix m = matrixOf(counted);
  const bsMatrix& constant = m;
  EXPECT_EQ(m.data(1, 2), 7.0);
  EXPECT_EQ(constant.data(2, 1), 10.0);
  EXPECT_EQ(m(1, 2), 7.0);
  EXPECT_EQ(constant(2u, 1u), 10.0);
  m(3, 0) = -1.0;
  EXPECT_EQ(m.data(3, 0), -1.0);
  m.data(0, 3) = -2.0;
  EXPECT_EQ(constant(0, 3), -2.0);
}

TEST(Matrix, AssignmentCopiesAndReturnsTheTarget) {
  const bsMatrix source = matrixOf(counted);
  bsMatrix target;
  EXPECT_EQ(&(target = source), &target);
  expectExactly(target, counted);
}

TEST(MatrixDeathTest, AssigningAMatrixToItselfAborts) {
  bsMatrix m;
  const bsMatrix& same = m;
  KORVEX2_EXPECT_ABORT(m = same, "Assertion `&m != this' failed");
}

TEST(Matrix, RowsAndColumnsAreReadWithoutTheirFourthValue) {
  const bsMatrix m = matrixOf(counted);
  expectExactly(m.getRow(0), 1, 2, 3);
  expectExactly(m.getRow(1), 5, 6, 7);
  expectExactly(m.getRow(3), 13, 14, 15);
  expectExactly(m.getColumn(0), 1, 5, 9);
  expectExactly(m.getColumn(2), 3, 7, 11);
  expectExactly(m.getColumn(3), 4, 8, 12);
}

TEST(Matrix, RowsAndColumnsAreSetWithTheirFourthValue) {
  bsMatrix m = matrixOf(counted);
  m.setRow(1, bsVector(-1, -2, -3), -4);
  expectExactly(m, {{{1, 2, 3, 4}, {-1, -2, -3, -4}, {9, 10, 11, 12}, {13, 14, 15, 16}}});
  m = matrixOf(counted);
  m.setColumn(3, bsVector(-1, -2, -3), -4);
  expectExactly(m, {{{1, 2, 3, -1}, {5, 6, 7, -2}, {9, 10, 11, -3}, {13, 14, 15, -4}}});
  m.setRow(0, bsVector(0, 0, 0), 0);
  m.setRow(3, bsVector(1, 1, 1), 1);
  expectExactly(m, {{{0, 0, 0, 0}, {5, 6, 7, -2}, {9, 10, 11, -3}, {1, 1, 1, 1}}});
}

TEST(MatrixDeathTest, ARowOrColumnOutsideTheMatrixAborts) {
  bsMatrix m;
  const char* const text = "Assertion `n>=0 && n<4' failed";
  KORVEX2_EXPECT_ABORT(m.getRow(4), text);
  KORVEX2_EXPECT_ABORT(m.getRow(-1), text);
  KORVEX2_EXPECT_ABORT(m.getColumn(4), text);
  KORVEX2_EXPECT_ABORT(m.getColumn(-1), text);
  KORVEX2_EXPECT_ABORT(m.setRow(4, bsVector(), 0.0), text);
  KORVEX2_EXPECT_ABORT(m.setRow(-1, bsVector(), 0.0), text);
  KORVEX2_EXPECT_ABORT(m.setColumn(4, bsVector(), 0.0), text);
  KORVEX2_EXPECT_ABORT(m.setColumn(-1, bsVector(), 0.0), text);
}

TEST(Matrix, IsSetToNullAndToTheIdentity) {
  bsMatrix m = matrixOf(counted);
  m.setNull();
  expectExactly(m, nullRows);
  m = matrixOf(counted);
  m.setIdentity();
  expectExactly(m, identityRows);
}

TEST(Matrix, SharedConstantsAreOneObjectEach) {
  expectExactly(bsMatrix::getIdentityMatrix(), identityRows);
  expectExactly(bsMatrix::getNullMatrix(), nullRows);
  EXPECT_EQ(&bsMatrix::getIdentityMatrix(), &bsMatrix::getIdentityMatrix());
  EXPECT_EQ(&bsMatrix::getNullMatrix(), &bsMatrix::getNullMatrix());
  static_assert(std::is_same_v<decltype(bsMatrix::getIdentityMatrix()), const bsMatrix&>);
  static_assert(std::is_same_v<decltype(bsMatrix::getNullMatrix()), const bsMatrix&>);
}

TEST(Matrix, BuildersOverwriteTheWholeMatrixAndReturnIt) {
  const Rows translated{{{1, 0, 0, 2}, {0, 1, 0, 3}, {0, 0, 1, 4}, {0, 0, 0, 1}}};
  const Rows scaled{{{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 4, 0}, {0, 0, 0, 1}}};
  bsMatrix m = matrixOf(counted);
  EXPECT_EQ(&m.translation(2, 3, 4), &m);
  expectExactly(m, translated);
  m = matrixOf(counted);
  EXPECT_EQ(&m.translation(bsVector(2, 3, 4)), &m);
  expectExactly(m, translated);
  m = matrixOf(counted);
  EXPECT_EQ(&m.scaling(2, 3, 4), &m);
  expectExactly(m, scaled);
  m = matrixOf(counted);
  EXPECT_EQ(&m.scaling(bsVector(2, 3, 4)), &m);
  expectExactly(m, scaled);
  m = matrixOf(counted);
  EXPECT_EQ(&m.rotationX(0), &m);
  expectExactly(m, identityRows);
  m = matrixOf(counted);
  EXPECT_EQ(&m.rotationY(0), &m);
  expectExactly(m, identityRows);
  m = matrixOf(counted);
  EXPECT_EQ(&m.rotationZ(0), &m);
  expectExactly(m, identityRows);
  m = matrixOf(counted);
  EXPECT_EQ(&m.rotation(0, bsVector(0, 0, 1)), &m);
  expectExactly(m, identityRows);
}

TEST(Matrix, RotationsAboutTheAxesHaveTheirSinesInPlace) {
  const double c = std::cos(pi / 6.0);
  const double s = 0.5;
  expectNear(bsMatrix().rotationX(30), {{{1, 0, 0, 0}, {0, c, -s, 0}, {0, s, c, 0}, {0, 0, 0, 1}}});
  expectNear(bsMatrix().rotationY(30), {{{c, 0, s, 0}, {0, 1, 0, 0}, {-s, 0, c, 0}, {0, 0, 0, 1}}});
  expectNear(bsMatrix().rotationZ(30), {{{c, -s, 0, 0}, {s, c, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}});
}

TEST(Matrix, RotationsAboutTheAxesTurnCounterClockwise) {
  expectNear(bsMatrix().rotationX(90) * bsVector(0, 1, 0), 0, 0, 1);
  expectNear(bsMatrix().rotationY(90) * bsVector(0, 0, 1), 1, 0, 0);
  expectNear(bsMatrix().rotationZ(90) * bsVector(1, 0, 0), 0, 1, 0);
  const bsVector p(1, -2, 3);
  for (double a = -720; a <= 720; a += 37.5) {
    const bsVector x = turned(p, bsVector(1, 0, 0), a * pi / 180.0);
    const bsVector y = turned(p, bsVector(0, 1, 0), a * pi / 180.0);
    const bsVector z = turned(p, bsVector(0, 0, 1), a * pi / 180.0);
    expectNear(bsMatrix().rotationX(a) * p, x.x, x.y, x.z);
    expectNear(bsMatrix().rotationY(a) * p, y.x, y.y, y.z);
    expectNear(bsMatrix().rotationZ(a) * p, z.x, z.y, z.z);
  }
}

TEST(Matrix, RotationAboutAnAnyAxisTurnsTheOtherWay) {
  expectNear(bsMatrix().rotation(90, bsVector(0, 0, 1)) * bsVector(1, 0, 0), 0, -1, 0);
  expectNear(bsMatrix().rotation(33, bsVector(0, 0, 1)), rowsOf(bsMatrix().rotationZ(-33)));
  expectNear(bsMatrix().rotation(33, bsVector(0, 1, 0)), rowsOf(bsMatrix().rotationY(-33)));
  expectNear(bsMatrix().rotation(33, bsVector(1, 0, 0)), rowsOf(bsMatrix().rotationX(-33)));
  Random random(3);
  for (int i = 0; i < 200; ++i) {
    const bsVector axis = random.direction();
    const double degrees = random.between(-360, 360);
    const bsVector p = random.vector(1.0);
    const bsVector expected = turned(p, axis, -degrees * pi / 180.0);
    expectNear(bsMatrix().rotation(degrees, axis) * p, expected.x, expected.y, expected.z);
  }
}

TEST(Matrix, RotationTakesItsAxisUnchanged) {
  // With u = (0, 0, 2) and 90 degrees the diagonal is (cos, cos, 4 + (1 - 4) cos) and the sines carry the factor 2.
  expectNear(bsMatrix().rotation(90, bsVector(0, 0, 2)), {{{0, 2, 0, 0}, {-2, 0, 0, 0}, {0, 0, 4, 0}, {0, 0, 0, 1}}});
  // u = (1, 2, 3), 180 degrees: 2 xy, 2 xz, 2 yz off the diagonal, 2 x^2 - 1 on it.
  expectNear(bsMatrix().rotation(180, bsVector(1, 2, 3)),
             {{{1, 4, 6, 0}, {4, 7, 12, 0}, {6, 12, 17, 0}, {0, 0, 0, 1}}});
}

TEST(Matrix, ProductLetsTheRightOperandActFirst) {
  const Rows b{{{0, 1, -1, 2}, {3, 0, 2, -2}, {1, 1, 0, 4}, {-1, 5, 2, 0}}};
  // Row by column: 1*0 + 2*3 + 3*1 + 4*(-1) = 5, and so on.
  const Rows expected{{{5, 24, 11, 10}, {17, 52, 23, 26}, {29, 80, 35, 42}, {41, 108, 47, 58}}};
  const bsMatrix left = matrixOf(counted);
  expectExactly(left * matrixOf(b), expected);
  bsMatrix replaced = matrixOf(counted);
  EXPECT_EQ(&(replaced *= matrixOf(b)), &replaced);
  expectExactly(replaced, expected);

  const bsMatrix turnAfterShift = bsMatrix().rotationZ(90) * bsMatrix().translation(1, 0, 0);
  expectNear(turnAfterShift * bsVector(0, 0, 0), 0, 1, 0);
  const bsMatrix shiftAfterTurn = bsMatrix().translation(1, 0, 0) * bsMatrix().rotationZ(90);
  expectNear(shiftAfterTurn * bsVector(0, 0, 0), 1, 0, 0);
}

TEST(Matrix, IsMultipliedByItself) {
  bsMatrix m = matrixOf(counted);
  const bsMatrix& same = m;
  m *= same;
  expectExactly(m, {{{90, 100, 110, 120}, {202, 228, 254, 280}, {314, 356, 398, 440}, {426, 484, 542, 600}}});
}

TEST(Matrix, ProductSumsRowByColumn) {
  Random random(4);
  for (int n = 0; n < 50; ++n) {
    const Rows a = randomRows(random, 1.0);
    const Rows b = randomRows(random, 1.0);
    Rows expected{};
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) {
        for (int k = 0; k < 4; ++k) {
          expected.at[i][j] += a.at[i][k] * b.at[k][j];
        }
      }
    }
    expectNear(matrixOf(a) * matrixOf(b), expected);
  }
}

TEST(Matrix, SumsAndDifferencesGoElementByElement) {
  const bsMatrix a = matrixOf(counted);
  const bsMatrix b(0.5);
  const Rows sum{{{1.5, 2.5, 3.5, 4.5}, {5.5, 6.5, 7.5, 8.5}, {9.5, 10.5, 11.5, 12.5}, {13.5, 14.5, 15.5, 16.5}}};
  const Rows difference{{{.5, 1.5, 2.5, 3.5}, {4.5, 5.5, 6.5, 7.5}, {8.5, 9.5, 10.5, 11.5}, {12.5, 13.5, 14.5, 15.5}}};
  expectExactly(a + b, sum);
  expectExactly(a - b, difference);
  bsMatrix c(a);
  EXPECT_EQ(&(c += b), &c);
  expectExactly(c, sum);
  EXPECT_EQ(&(c -= b), &c);
  expectExactly(c, counted);
  const bsMatrix& same = c;
  c -= same;
  expectExactly(c, nullRows);
}

TEST(Matrix, EveryElementIsScaledAndDivided) {
  const bsMatrix a = matrixOf(counted);
  const Rows doubled{{{2, 4, 6, 8}, {10, 12, 14, 16}, {18, 20, 22, 24}, {26, 28, 30, 32}}};
  expectExactly(a * 2.0, doubled);
  expectExactly(a * 2, doubled);
  expectExactly(a * 2.0f, doubled);
  expectExactly(matrixOf(doubled) / 2.0, counted);
  expectExactly(matrixOf(doubled) / 2, counted);
  bsMatrix c(a);
  EXPECT_EQ(&(c *= 2.0), &c);
  expectExactly(c, doubled);
  EXPECT_EQ(&(c /= 2.0), &c);
  expectExactly(c, counted);
  EXPECT_EQ((bsMatrix(49.0) / 49.0).data(2, 1), 1.0) << "a division, not a product with the reciprocal";
}

TEST(Matrix, DivisionByZeroIsNotChecked) {
  const bsMatrix quotient = bsMatrix::getIdentityMatrix() / 0.0;
  EXPECT_EQ(quotient.data(0, 0), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(quotient.data(0, 1)));
}

TEST(Matrix, NegationLeavesZeroPositive) {
  bsMatrix m = bsMatrix().translation(1, -2, 3);
  const bsMatrix negated = -m;
  expectExactly(negated, {{{-1, 0, 0, -1}, {0, -1, 0, 2}, {0, 0, -1, -3}, {0, 0, 0, -1}}});
  EXPECT_FALSE(std::signbit(negated.data(0, 1)));
}

TEST(Matrix, TransformsAPointAndDividesByItsFourthValue) {
  expectExactly(bsMatrix().translation(1, 2, 3) * bsVector(1, 1, 1), 2, 3, 4);
  // (1 + 4 + 9 + 4, 5 + 12 + 21 + 8, 9 + 20 + 33 + 12) / (13 + 28 + 45 + 16)
  expectNear(matrixOf(counted) * bsVector(1, 2, 3), 18.0 / 102.0, 46.0 / 102.0, 74.0 / 102.0);
}

TEST(Matrix, TransformsAPointWithoutDividingWhereTheFourthValueIsExactlyZero) {
  bsMatrix m = matrixOf(counted);
  m.setRow(3, bsVector(), 0.0);
  expectExactly(m * bsVector(1, 2, 3), 18, 46, 74);
  m.setRow(3, bsVector(1, 1, -1), 0.0);  // 1 + 2 - 3
  expectExactly(m * bsVector(1, 2, 3), 18, 46, 74);
  m.setRow(3, bsVector(), 0x1p-60);  // small, but not 0
  expectExactly(m * bsVector(1, 2, 3), 18 * 0x1p60, 46 * 0x1p60, 74 * 0x1p60);
}

TEST(Matrix, EqualityToleratesLessThanATenMillionthInEachElement) {
  const bsMatrix m = matrixOf(counted);
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      bsMatrix near(m);
      near.data(i, j) += 5e-8;
      EXPECT_TRUE(near == m) << i << ", " << j;
      EXPECT_FALSE(near != m) << i << ", " << j;
      bsMatrix far(m);
      far.data(i, j) -= 2e-7;
      EXPECT_FALSE(far == m) << i << ", " << j;
      EXPECT_TRUE(far != m) << i << ", " << j;
    }
  }
  bsMatrix atTolerance;
  atTolerance.data(0, 0) = 1e-7;
  EXPECT_FALSE(atTolerance == bsMatrix::getNullMatrix()) << "strictly less";
  const bsMatrix notANumber(std::numeric_limits<double>::quiet_NaN());
  EXPECT_FALSE(notANumber == bsMatrix(notANumber));
  EXPECT_TRUE(notANumber != bsMatrix(notANumber));
}

TEST(Matrix, ComparesValuesAndNotAddresses) {
  const bsMatrix constant = matrixOf(counted);
  const bsMatrix alsoConstant = matrixOf(counted);
  bsMatrix variable = matrixOf(counted);
  EXPECT_TRUE(constant == alsoConstant);
  EXPECT_TRUE(constant == variable);
  EXPECT_TRUE(variable == constant);
  EXPECT_FALSE(constant != alsoConstant);
  EXPECT_FALSE(variable != constant);
}

TEST(Matrix, EqualityIsAFreeFunctionOfTwoValues) {
  bool (*equal)(bsMatrix, bsMatrix) = &operator==;
  bool (*unequal)(bsMatrix, bsMatrix) = &operator!=;
  EXPECT_TRUE(equal(bsMatrix(1.0), bsMatrix(1.0)));
  EXPECT_TRUE(unequal(bsMatrix(1.0), bsMatrix(2.0)));
}

TEST(Matrix, IsTransposedIntoAnotherMatrixAndInPlace) {
  const Rows transposed{{{1, 5, 9, 13}, {2, 6, 10, 14}, {3, 7, 11, 15}, {4, 8, 12, 16}}};
  const bsMatrix m = matrixOf(counted);
  bsMatrix out;
  EXPECT_EQ(&m.getTranspose(out), &out);
  expectExactly(out, transposed);
  expectExactly(m, counted);
  bsMatrix inPlace = matrixOf(counted);
  inPlace.transpose();
  expectExactly(inPlace, transposed);
  inPlace.getTranspose(inPlace);
  expectExactly(inPlace, counted);
}

TEST(Matrix, IsWrittenAsFourBracketedLines) {
  EXPECT_EQ(written(bsMatrix::getIdentityMatrix()), "[1\t0\t0\t0\t]\n[0\t1\t0\t0\t]\n[0\t0\t1\t0\t]\n[0\t0\t0\t1\t]\n");
  EXPECT_EQ(written(matrixOf(counted)), "[1\t2\t3\t4\t]\n[5\t6\t7\t8\t]\n[9\t10\t11\t12\t]\n[13\t14\t15\t16\t]\n");
}

TEST(Matrix, IsWrittenWithTheSettingsOfTheStream) {
  std::ostringstream out;
  out.imbue(commaLocale());
  out << std::fixed << std::setprecision(1) << bsMatrix(0.25);
  EXPECT_EQ(out.str(),
            "[0,2\t0,2\t0,2\t0,2\t]\n[0,2\t0,2\t0,2\t0,2\t]\n[0,2\t0,2\t0,2\t0,2\t]\n[0,2\t0,2\t0,2\t0,2\t]\n");
}

TEST(Matrix, IsReadRowByRowAfterAPromptForEach) {
  CapturedOutput prompts;
  std::istringstream in("1 2 3 4\n5 6 7 8\n9 10 11 12\n13 14 15 16\n");
  bsMatrix m;
  EXPECT_EQ(&(in >> m), &in);
  expectExactly(m, counted);
  EXPECT_EQ(prompts.text(), "? a0 b0 c0 d0 : ? a1 b1 c1 d1 : ? a2 b2 c2 d2 : ? a3 b3 c3 d3 : ");
}

TEST(Matrix, AsksForEachRowOnlyAfterTheOneBeforeIsRead) {
  CapturedOutput prompts;
  Answers answers({"1 2 3 4\n", "5 6 7 8\n", "9 10 11 12\n", "13 14 15 16\n"}, prompts);
  std::istream in(&answers);
  bsMatrix m;
  in >> m;
  EXPECT_EQ(answers.shown(),
            (std::vector<std::string>{"? a0 b0 c0 d0 : ", "? a0 b0 c0 d0 : ? a1 b1 c1 d1 : ",
                                      "? a0 b0 c0 d0 : ? a1 b1 c1 d1 : ? a2 b2 c2 d2 : ",
                                      "? a0 b0 c0 d0 : ? a1 b1 c1 d1 : ? a2 b2 c2 d2 : ? a3 b3 c3 d3 : "}));
  expectExactly(m, counted);
}

TEST(Matrix, AnElementThatCannotBeReadStaysAndTheStreamFails) {
  CapturedOutput prompts;
  std::istringstream in("-1 -2 -3 -4 -5 word -7");
  bsMatrix m = matrixOf(counted);
  in >> m;
  EXPECT_TRUE(in.fail());
  expectExactly(m, {{{-1, -2, -3, -4}, {-5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}});
}

}  // namespace
