// Tests of what compiles: implicit conversions to pointers and from numbers must not make the operators ambiguous, nor
// give a meaning to expressions that have none.
#include <iosfwd>
#include <type_traits>
#include <utility>

#include "am_rot.h"
#include "bsFrame.h"
#include "bsMatrix.h"
#include "bsQuaternion.h"
#include "bsVector.h"
#include "geometrytesting.h"

namespace {

using geometrytesting::expectExactly;

#define KORVEX2_BINARY(name, operation)     \
  template <class A, class B, class = void> \
  struct name : std::false_type {};         \
  template <class A, class B>               \
  struct name<A, B, std::void_t<decltype(std::declval<A>() operation std::declval<B>())>> : std::true_type {}

KORVEX2_BINARY(CanAdd, +);
KORVEX2_BINARY(CanSubtract, -);
KORVEX2_BINARY(CanMultiply, *);
KORVEX2_BINARY(CanDivide, /);
#undef KORVEX2_BINARY

template <class A, class B>
using Product = decltype(std::declval<A>() * std::declval<B>());

TEST(Overloads, NumbersScaleFromTheRightOnly) {
  static_assert(std::is_same_v<Product<bsVector&, double>, bsVector>);
  static_assert(std::is_same_v<Product<const bsVector&, int>, bsVector>);
  static_assert(std::is_same_v<Product<bsVector, float>, bsVector>);
  static_assert(std::is_same_v<Product<bsMatrix&, double>, bsMatrix>);
  static_assert(std::is_same_v<Product<const bsMatrix&, int>, bsMatrix>);
  static_assert(std::is_same_v<Product<bsMatrix, float>, bsMatrix>);
  static_assert(!CanMultiply<double, bsVector&>::value && !CanMultiply<int, const bsVector&>::value);
  static_assert(!CanMultiply<double, bsMatrix&>::value && !CanMultiply<int, const bsMatrix&>::value);
  static_assert(!CanDivide<double, bsVector>::value && !CanDivide<double, bsMatrix>::value);
}

TEST(Overloads, MatricesActOnVectorsFromTheLeftOnly) {
  static_assert(std::is_same_v<Product<bsMatrix&, bsVector&>, bsVector>);
  static_assert(std::is_same_v<Product<const bsMatrix&, const bsVector&>, bsVector>);
  static_assert(std::is_same_v<Product<bsMatrix&, const bsMatrix&>, bsMatrix>);
  static_assert(!CanMultiply<bsVector&, bsMatrix&>::value);
  static_assert(!CanMultiply<bsQuaternion&, bsVector&>::value);
}

TEST(Overloads, AVectorPlusANumberIsNoPointer) {
  static_assert(std::is_same_v<decltype(std::declval<bsVector&>() + std::declval<bsVector&>()), bsVector>);
  static_assert(std::is_same_v<decltype(std::declval<const bsVector&>() - std::declval<bsVector&>()), bsVector>);
  static_assert(!CanAdd<bsVector&, int>::value && !CanAdd<const bsVector&, double>::value);
  static_assert(!CanSubtract<bsVector&, int>::value && !CanSubtract<const bsVector&, double>::value);
  static_assert(!CanAdd<bsVector&, long>::value && !CanSubtract<const bsVector&, unsigned>::value);
  static_assert(!CanAdd<int, bsVector&>::value && !CanAdd<long, const bsMatrix&>::value);
  static_assert(!CanAdd<bsMatrix&, int>::value && !CanSubtract<bsMatrix&, double>::value);
}

TEST(Overloads, ConversionsAreThoseOfThreeAndSixteenDoubles) {
  static_assert(std::is_convertible_v<bsVector&, double*> && std::is_convertible_v<bsVector&, const double*>);
  static_assert(std::is_convertible_v<const bsVector&, const double*>);
  static_assert(!std::is_convertible_v<const bsVector&, double*>, "a constant vector stays constant");
  static_assert(std::is_convertible_v<bsMatrix&, const double*> && !std::is_convertible_v<bsMatrix&, double*>);
  static_assert(!std::is_constructible_v<bsMatrix, bsVector&>, "three values are no matrix");
  static_assert(!std::is_constructible_v<bsMatrix, const bsVector&>);
  static_assert(std::is_constructible_v<bsMatrix, double*> && std::is_constructible_v<bsMatrix, const double*>);
  static_assert(std::is_same_v<decltype(std::declval<bsVector&>()[0]), double&>);
  static_assert(std::is_same_v<decltype(std::declval<const bsVector&>()[0]), const double&>);
}

/// Stands for the interfaces of OpenGL that take three or sixteen doubles.
double lastOf3(const double* values) { return values[2]; }
double lastOf16(const double* values) { return values[15]; }
void writeTo3(double* values) { values[0] = values[1] = values[2] = -1.0; }

TEST(Overloads, VectorsAndMatricesPassForConsecutiveDoubles) {
  bsVector v(1, 2, 3);
  const bsVector constant(4, 5, 6);
  EXPECT_EQ(lastOf3(v), 3.0);
  EXPECT_EQ(lastOf3(constant), 6.0);
  EXPECT_EQ(lastOf3(v + constant), 9.0);
  writeTo3(v);
  expectExactly(v, -1, -1, -1);
  EXPECT_EQ(lastOf16(bsMatrix::getIdentityMatrix()), 1.0);
  EXPECT_EQ(lastOf16(bsMatrix().translation(1, 2, 3)), 1.0);
}

TEST(Overloads, ANumberStandsForAVectorWhereOneIsExpected) {
  bsVector v;
  v = 2.0;
  expectExactly(v, 2, 2, 2);
  v += 1.0;
  expectExactly(v, 3, 3, 3);
  EXPECT_TRUE(v == 3.0);
  EXPECT_TRUE(v != 4);
}

TEST(Overloads, MembersThatChangeNothingAreConstant) {
  const bsVector v(3, 0, 4);
  const bsMatrix m = bsMatrix::getIdentityMatrix();
  const bsQuaternion q;
  const bsFrame f;
  bsMatrix out;
  expectExactly(v.getSnappedToAxis(), 0, 0, 1);
  expectExactly(m.getRow(0), 1, 0, 0);
  expectExactly(m.getColumn(1), 0, 1, 0);
  EXPECT_TRUE(m.getTranspose(out) == m);
  EXPECT_TRUE(m.fastInvert(out) == m);
  m.gaussInvert(out);
  EXPECT_EQ(m.getDeterminant(), 1.0);
  EXPECT_EQ(m.getNormeSquared(), 3.0);
  EXPECT_TRUE(m.isOrthonormal());
  EXPECT_TRUE(q.toMatrix() == m);
  q.toMatrix(out);
  EXPECT_TRUE(out == m);
  EXPECT_EQ(f.getReferenceFrame(), nullptr);
  EXPECT_TRUE((m + m) - m == m * 2 / 2);
  EXPECT_TRUE(-(-m) == m);
  EXPECT_TRUE(v + v - v == v);
}

}  // namespace
