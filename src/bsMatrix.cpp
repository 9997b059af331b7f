// See bsMatrix.h.
#include "bsMatrix.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <utility>

#include "bsPrompt.h"

static_assert(sizeof(bsMatrix) == 16 * sizeof(double), "a matrix is handed out as sixteen consecutive doubles");

namespace {

/// The 4x8 table [M | I] of the elimination.
struct Table {
  double rows[4][8] = {};

  explicit Table(const bsMatrix& m) {
    for (int i = 0; i < 4; ++i) {
      for (int j = 0; j < 4; ++j) {
        rows[i][j] = m.data(i, j);
      }
      rows[i][4 + i] = 1.0;
    }
  }

  /// Kept as it is on purpose: a sound diagonal entry is exchanged for the first negligible one below it, and the last
  /// column stays behind. Where no row below has a negligible entry nothing is exchanged.
  void exchange(int c) {
    constexpr int exchangedColumns = 7;
    if (!(std::fabs(rows[c][c]) >= bsMatrix::tolerance)) {
      return;
    }
    for (int r = c + 1; r < 4; ++r) {
      if (std::fabs(rows[r][c]) < bsMatrix::tolerance) {
        std::swap_ranges(rows[c], rows[c] + exchangedColumns, rows[r]);
        return;
      }
    }
  }

  void divideRow(int c) {
    const double pivot = rows[c][c];
    for (double& entry : rows[c]) {
      entry /= pivot;
    }
  }

  void clearColumn(int c) {
    for (int k = 0; k < 4; ++k) {
      if (k == c) {
        continue;
      }
      const double factor = rows[k][c] / rows[c][c];
      for (int j = 0; j < 8; ++j) {
        rows[k][j] -= rows[c][j] * factor;
      }
    }
  }
};

}  // namespace

const bsMatrix& bsMatrix::getIdentityMatrix() {
  static const bsMatrix identity = bsMatrix().setIdentity();
  return identity;
}

const bsMatrix& bsMatrix::getNullMatrix() {
  static const bsMatrix null;
  return null;
}

bsMatrix& bsMatrix::rotationX(double a) {
  const double c = std::cos(a * radiansPerDegree);
  const double s = std::sin(a * radiansPerDegree);
  setIdentity();
  data(1, 1) = c;
  data(2, 1) = s;
  data(1, 2) = -s;
  data(2, 2) = c;
  return *this;
}

bsMatrix& bsMatrix::rotationY(double a) {
  const double c = std::cos(a * radiansPerDegree);
  const double s = std::sin(a * radiansPerDegree);
  setIdentity();
  data(0, 0) = c;
  data(2, 0) = -s;
  data(0, 2) = s;
  data(2, 2) = c;
  return *this;
}

bsMatrix& bsMatrix::rotationZ(double a) {
  const double c = std::cos(a * radiansPerDegree);
  const double s = std::sin(a * radiansPerDegree);
  setIdentity();
  data(0, 0) = c;
  data(1, 0) = s;
  data(0, 1) = -s;
  data(1, 1) = c;
  return *this;
}

// The signs of the sine terms turn the opposite way to the three above, on purpose.
bsMatrix& bsMatrix::rotation(double a, const bsVector& u) {
  const double c = std::cos(a * radiansPerDegree);
  const double s = std::sin(a * radiansPerDegree);
  const double x = u.x;
  const double y = u.y;
  const double z = u.z;
  setIdentity();
  data(0, 0) = x * x + (1.0 - x * x) * c;
  data(1, 1) = y * y + (1.0 - y * y) * c;
  data(2, 2) = z * z + (1.0 - z * z) * c;
  data(1, 0) = x * y * (1.0 - c) - z * s;
  data(0, 1) = x * y * (1.0 - c) + z * s;
  data(2, 0) = x * z * (1.0 - c) + y * s;
  data(0, 2) = x * z * (1.0 - c) - y * s;
  data(2, 1) = y * z * (1.0 - c) - x * s;
  data(1, 2) = y * z * (1.0 - c) + x * s;
  return *this;
}

bsMatrix operator*(const bsMatrix& a, const bsMatrix& b) {
  bsMatrix product;
  for (int j = 0; j < 4; ++j) {
    for (int i = 0; i < 4; ++i) {
      product.data(i, j) = a.data(i, 0) * b.data(0, j) + a.data(i, 1) * b.data(1, j) + a.data(i, 2) * b.data(2, j) +
                           a.data(i, 3) * b.data(3, j);
    }
  }
  return product;
}

bsMatrix& bsMatrix::operator*=(const bsMatrix& b) { return *this = *this * b; }

// By value: the operands of the comparison are copies, as its callers know it.
bool operator==(bsMatrix a, bsMatrix b) {
  const double* left = a;
  const double* right = b;
  return std::equal(left, left + 16, right, [](double l, double r) { return std::fabs(l - r) < bsMatrix::tolerance; });
}

bool operator!=(bsMatrix a, bsMatrix b) { return !(a == b); }

bsMatrix& bsMatrix::getTranspose(bsMatrix& out) const {
  if (&out == this) {
    return out.transpose();
  }
  for (int j = 0; j < 4; ++j) {
    for (int i = 0; i < 4; ++i) {
      out.data(j, i) = data(i, j);
    }
  }
  return out;
}

bsMatrix& bsMatrix::transpose() {
  const bsMatrix before(*this);
  return before.getTranspose(*this);
}

bsMatrix& bsMatrix::fastInvert(bsMatrix& out) const {
  const bsVector columns[3] = {getColumn(0), getColumn(1), getColumn(2)};
  const bsVector t = getColumn(3);
  const double corner = data(3, 3);
  for (int i = 0; i < 3; ++i) {
    // Subtracted from 0, so that no translation gives 0 and not -0, which would print as -0.000.
    out.setRow(i, columns[i], 0.0 - bsVector::dotProduct(columns[i], t));
  }
  out.setRow(3, bsVector(), corner);
  return out;
}

bsMatrix& bsMatrix::gaussInvert(bsMatrix& out) const {
  Table table(*this);
  for (int c = 0; c < 4; ++c) {
    table.exchange(c);
    table.divideRow(c);
    table.clearColumn(c);
  }
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      out.data(i, j) = table.rows[i][4 + j];
    }
  }
  return out;
}

double bsMatrix::getDeterminant() const {
  static constexpr int evenPermutations[12][4] = {{0, 1, 2, 3}, {0, 2, 3, 1}, {0, 3, 1, 2}, {1, 0, 3, 2},
                                                  {1, 2, 0, 3}, {1, 3, 2, 0}, {2, 0, 1, 3}, {2, 1, 3, 0},
                                                  {2, 3, 0, 1}, {3, 0, 2, 1}, {3, 1, 0, 2}, {3, 2, 1, 0}};
  double determinant = 0.0;
  for (const auto& p : evenPermutations) {
    // Exchanging the last two columns of an even permutation gives each odd one once.
    determinant += data(0, p[0]) * data(1, p[1]) * data(2, p[2]) * data(3, p[3]);
    determinant -= data(0, p[0]) * data(1, p[1]) * data(2, p[3]) * data(3, p[2]);
  }
  return determinant;
}

double bsMatrix::getNormeSquared() const {
  double sum = 0.0;
  for (int i = 15; i > 0; --i) {  // down to 1: the first value is left out on purpose
    sum += values_[i] * values_[i];
  }
  return sum;
}

std::ostream& operator<<(std::ostream& out, const bsMatrix& m) {
  for (int i = 0; i < 4; ++i) {
    out << '[';
    for (int j = 0; j < 4; ++j) {
      out << m.data(i, j) << '\t';
    }
    out << "]\n";
  }
  return out;
}

std::istream& operator>>(std::istream& in, bsMatrix& m) {
  static constexpr const char* questions[4] = {
      "? a0 b0 c0 d0 : ", "? a1 b1 c1 d1 : ", "? a2 b2 c2 d2 : ", "? a3 b3 c3 d3 : "};
  for (int i = 0; i < 4; ++i) {
    korvex2::askForNumber(in, questions[i], m.data(i, 0));
    for (int j = 1; j < 4; ++j) {
      korvex2::readNumber(in, m.data(i, j));
    }
  }
  return in;
}
