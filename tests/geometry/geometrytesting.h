// Helpers of the geometry tests: comparisons by components, captured prompts, repeatable random values.
#ifndef KORVEX2_TESTS_GEOMETRYTESTING_H
#define KORVEX2_TESTS_GEOMETRYTESTING_H

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <iostream>
#include <locale>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "bsMatrix.h"
#include "bsQuaternion.h"
#include "bsVector.h"

/// The statement must abort the program, with `text` (a regular expression) on standard error.
#define KORVEX2_EXPECT_ABORT(statement, text) EXPECT_EXIT(statement, testing::KilledBySignal(SIGABRT), text)

namespace geometrytesting {

constexpr double pi = 3.14159265358979323846;
/// Room for a few roundings of numbers around 1; far below the tolerance of the types.
constexpr double rounding = 1e-14;

inline void expectNear(const bsVector& v, double x, double y, double z, double tolerance = rounding) {
  EXPECT_NEAR(v.x, x, tolerance);
  EXPECT_NEAR(v.y, y, tolerance);
  EXPECT_NEAR(v.z, z, tolerance);
}

inline void expectExactly(const bsVector& v, double x, double y, double z) {
  EXPECT_EQ(v.x, x);
  EXPECT_EQ(v.y, y);
  EXPECT_EQ(v.z, z);
}

inline void expectNear(const bsQuaternion& q, double x, double y, double z, double w, double tolerance = rounding) {
  EXPECT_NEAR(q.x, x, tolerance);
  EXPECT_NEAR(q.y, y, tolerance);
  EXPECT_NEAR(q.z, z, tolerance);
  EXPECT_NEAR(q.w, w, tolerance);
}

inline void expectExactly(const bsQuaternion& q, double x, double y, double z, double w) {
  EXPECT_EQ(q.x, x);
  EXPECT_EQ(q.y, y);
  EXPECT_EQ(q.z, z);
  EXPECT_EQ(q.w, w);
}

/// Rows as one reads a matrix.
struct Rows {
  double at[4][4];
};

inline Rows rowsOf(const bsMatrix& m) {
  Rows rows{};
  const double* p = m;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      rows.at[i][j] = p[4 * j + i];
    }
  }
  return rows;
}

inline bsMatrix matrixOf(const Rows& rows) {
  double columnMajor[16];
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      columnMajor[4 * j + i] = rows.at[i][j];
    }
  }
  return {columnMajor};
}

inline void expectNear(const bsMatrix& m, const Rows& expected, double tolerance = rounding) {
  const Rows rows = rowsOf(m);
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      EXPECT_NEAR(rows.at[i][j], expected.at[i][j], tolerance) << "row " << i << ", column " << j;
    }
  }
}

inline void expectExactly(const bsMatrix& m, const Rows& expected) { expectNear(m, expected, 0.0); }

/// What is written to standard output while this lives.
class CapturedOutput {
 public:
  CapturedOutput() : before_(std::cout.rdbuf(text_.rdbuf())) {}
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;
  ~CapturedOutput() { std::cout.rdbuf(before_); }
  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::streambuf* before_;
};

/// Input that arrives piece by piece, as from somebody who answers questions: keeps what standard output showed each
/// time that the next piece was asked for.
class Answers : public std::streambuf {
 public:
  Answers(std::vector<std::string> pieces, const CapturedOutput& output)
      : pieces_(std::move(pieces)), output_(output) {}
  const std::vector<std::string>& shown() const { return shown_; }

 protected:
  int_type underflow() override {
    shown_.push_back(output_.text());
    if (shown_.size() > pieces_.size()) {
      return traits_type::eof();
    }
    std::string& piece = pieces_[shown_.size() - 1];
    setg(piece.data(), piece.data(), piece.data() + piece.size());
    return traits_type::to_int_type(piece.front());
  }

 private:
  std::vector<std::string> pieces_;
  const CapturedOutput& output_;
  std::vector<std::string> shown_;
};

template <class Value>
std::string written(const Value& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

/// A locale that writes and reads a decimal comma, present on every machine.
inline std::locale commaLocale() {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  return {std::locale::classic(), new Comma};
}

/// The same sequence in every run.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  double between(double low, double high) { return low + (high - low) * static_cast<double>(engine_()) / 4294967295.0; }
  bsVector vector(double extent) {
    return {between(-extent, extent), between(-extent, extent), between(-extent, extent)};
  }
  /// A direction of length 1, every direction alike.
  bsVector direction() {
    const double z = between(-1.0, 1.0);
    const double angle = between(0.0, 2.0 * pi);
    const double r = std::sqrt(1.0 - z * z);
    return {r * std::cos(angle), r * std::sin(angle), z};
  }

 private:
  std::mt19937 engine_;
};

inline Rows randomRows(Random& random, double extent) {
  Rows rows{};
  for (auto& row : rows.at) {
    for (double& value : row) {
      value = random.between(-extent, extent);
    }
  }
  return rows;
}

/// Turns p counter-clockwise by `radians` about the unit vector u (Rodrigues), without matrix or quaternion.
inline bsVector turned(const bsVector& p, const bsVector& u, double radians) {
  const double c = std::cos(radians);
  const double s = std::sin(radians);
  const double along = (u.x * p.x + u.y * p.y + u.z * p.z) * (1.0 - c);
  return {p.x * c + (u.y * p.z - u.z * p.y) * s + u.x * along, p.y * c + (u.z * p.x - u.x * p.z) * s + u.y * along,
          p.z * c + (u.x * p.y - u.y * p.x) * s + u.z * along};
}

}  // namespace geometrytesting

#endif
