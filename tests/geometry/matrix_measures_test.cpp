// Tests of what bsMatrix tells of itself: determinant, norm, orthonormality.
#include <algorithm>
#include <limits>
#include <vector>

#include "bsMatrix.h"
#include "geometrytesting.h"

using geometrytesting::matrixOf;
using geometrytesting::Random;
using geometrytesting::randomRows;
using geometrytesting::Rows;

namespace {

const Rows counted{{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}};

/// Determinant by cofactors along the first row.
double cofactorDeterminant(const std::vector<std::vector<double>>& m) {
  if (m.size() == 1) {
    return m[0][0];
  }
  double sum = 0.0;
  for (std::size_t j = 0; j < m.size(); ++j) {
    std::vector<std::vector<double>> minor;
    for (std::size_t i = 1; i < m.size(); ++i) {
      std::vector<double> row = m[i];
      row.erase(row.begin() + static_cast<std::ptrdiff_t>(j));
      minor.push_back(row);
    }
    sum += (j % 2 == 0 ? 1.0 : -1.0) * m[0][j] * cofactorDeterminant(minor);
  }
  return sum;
}

TEST(MatrixMeasures, DeterminantHasTheSignOfEachOfThe24Permutations) {
  int permutation[4] = {0, 1, 2, 3};
  int seen = 0;
  do {
    bsMatrix m;
    int inversions = 0;
    for (int i = 0; i < 4; ++i) {
      m.data(i, permutation[i]) = i + 2.0;  // product 2 * 3 * 4 * 5
      for (int k = i + 1; k < 4; ++k) {
        inversions += permutation[i] > permutation[k];
      }
    }
    EXPECT_EQ(m.getDeterminant(), inversions % 2 == 0 ? 120.0 : -120.0);
    ++seen;
  } while (std::next_permutation(permutation, permutation + 4));
  EXPECT_EQ(seen, 24);
}

TEST(MatrixMeasures, DeterminantTakesAllSixteenElements) {
  EXPECT_EQ(bsMatrix::getIdentityMatrix().getDeterminant(), 1.0);
  EXPECT_EQ(matrixOf(counted).getDeterminant(), 0.0);
  bsMatrix m = bsMatrix().translation(2, 0, 0);
  m.data(3, 0) = 3.0;  // 1 - 2 * 3
  EXPECT_EQ(m.getDeterminant(), -5.0);
  Random random(5);
  for (int n = 0; n < 50; ++n) {
    const Rows rows = randomRows(random, 2.0);
    std::vector<std::vector<double>> nested;
    for (const auto& row : rows.at) {
      nested.emplace_back(row, row + 4);
    }
    EXPECT_NEAR(matrixOf(rows).getDeterminant(), cofactorDeterminant(nested), 1e-12);  // sums of 24 terms up to 16
  }
}

TEST(MatrixMeasures, NormLeavesTheFirstElementOut) {
  EXPECT_EQ(bsMatrix::getIdentityMatrix().getNormeSquared(), 3.0);
  EXPECT_EQ(bsMatrix::getIdentityMatrix().getNorm(), std::sqrt(3.0));
  EXPECT_EQ(matrixOf(counted).getNormeSquared(), 1495.0);  // 1 + 4 + ... + 256 = 1496
  bsMatrix m;
  m.data(0, 0) = 1e9;
  EXPECT_EQ(m.getNormeSquared(), 0.0);
  EXPECT_EQ(m.getNorm(), 0.0);
  for (int k = 1; k < 16; ++k) {
    bsMatrix one;
    one.data(k % 4, k / 4) = -2.0;
    EXPECT_EQ(one.getNormeSquared(), 4.0) << "position " << k;
    EXPECT_EQ(one.getNorm(), 2.0) << "position " << k;
  }
}

TEST(MatrixMeasures, OrthonormalityAllowsSquaredLengthsInABandAroundOne) {
  EXPECT_TRUE(bsMatrix::getIdentityMatrix().isOrthonormal());
  EXPECT_TRUE(bsMatrix().scaling(1.0004, 1.0004, 1.0004).isOrthonormal());
  EXPECT_TRUE(bsMatrix().scaling(0.9996, 0.9996, 0.9996).isOrthonormal());
  for (int axis = 0; axis < 3; ++axis) {
    bsVector larger(1.0);
    larger[axis] = 1.001;
    EXPECT_FALSE(bsMatrix().scaling(larger).isOrthonormal());
    bsVector smaller(1.0);
    smaller[axis] = 0.999;
    EXPECT_FALSE(bsMatrix().scaling(smaller).isOrthonormal());
  }
  EXPECT_FALSE(bsMatrix().scaling(1, 1, 1.00051).isOrthonormal());  // squared 1.00102
  EXPECT_TRUE(bsMatrix().scaling(1, 1, 1.00049).isOrthonormal());   // squared 1.00098
  EXPECT_FALSE(bsMatrix().scaling(1, 1, 0.99949).isOrthonormal());  // squared 0.99898
  EXPECT_TRUE(bsMatrix().scaling(1, 1, 0.99951).isOrthonormal());   // squared 0.99902
  EXPECT_FALSE(bsMatrix::getNullMatrix().isOrthonormal());
  EXPECT_FALSE(bsMatrix(std::numeric_limits<double>::quiet_NaN()).isOrthonormal());
}

TEST(MatrixMeasures, OrthonormalityIsTestedOnRowsAndOnColumns) {
  // Every row has length 1, but columns 0 and 1 have 2 and 0; then the other way round.
  const bsMatrix rowsOnly = matrixOf({{{1, 0, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}});
  EXPECT_FALSE(rowsOnly.isOrthonormal());
  bsMatrix columnsOnly;
  rowsOnly.getTranspose(columnsOnly);
  EXPECT_FALSE(columnsOnly.isOrthonormal());
}

TEST(MatrixMeasures, OrthonormalityLooksNeitherAtAnglesNorAtTheFourthRowAndColumn) {
  const double h = std::sqrt(0.5);
  EXPECT_TRUE(matrixOf({{{h, h, 0, 0}, {h, h, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}).isOrthonormal());
  EXPECT_TRUE(matrixOf({{{1, 0, 0, 70}, {0, 1, 0, 80}, {0, 0, 1, 90}, {5, 6, 7, 8}}}).isOrthonormal());
}

}  // namespace
