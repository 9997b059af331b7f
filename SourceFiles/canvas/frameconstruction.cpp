// See frameconstruction.h.
#include "frameconstruction.h"

#include <array>
#include <cstddef>

#include "bsAssert.h"

namespace korvex2 {

namespace {

constexpr double smallestSine = 1e-6;

/// Written this way round so that a value that is not a number is never long enough.
bool longEnough(double value, double limit) { return value >= limit; }

using DistanceTable = std::array<std::array<double, maxMarkersToChooseFrom>, maxMarkersToChooseFrom>;

struct Pair {
  int i = -1;
  int j = -1;
};

DistanceTable distances(const std::vector<bsVector>& positions) {
  DistanceTable table;
  for (auto& row : table) {
    row.fill(-1.0);
  }
  for (std::size_t i = 0; i < positions.size(); ++i) {
    for (std::size_t j = i + 1; j < positions.size(); ++j) {
      table[i][j] = (positions[j] - positions[i]).getLength();
    }
  }
  return table;
}

Pair longestPair(const DistanceTable& table, int count) {
  Pair longest;
  double best = -1.0;
  for (int i = 0; i < count; ++i) {
    for (int j = i + 1; j < count; ++j) {
      const double distance = table[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
      if (distance > best) {
        best = distance;
        longest = {i, j};
      }
    }
  }
  return longest;
}

/// Shortest pair that shares a marker with `longest`; none is found when nothing is shorter than `longest` itself.
Pair shortestPairAt(const Pair& longest, const DistanceTable& table, int count) {
  Pair shortestPair;
  double best = table[static_cast<std::size_t>(longest.i)][static_cast<std::size_t>(longest.j)];
  for (int i = 0; i < count; ++i) {
    for (int j = i + 1; j < count; ++j) {
      const bool adjacent = i == longest.i || i == longest.j || j == longest.i || j == longest.j;
      const double distance = table[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
      if (adjacent && distance < best) {
        best = distance;
        shortestPair = {i, j};
      }
    }
  }
  return shortestPair;
}

}  // namespace

bool spanPlane(const bsVector& a, const bsVector& b) {
  const double lengthA = a.getLength();
  const double lengthB = b.getLength();
  return longEnough(lengthA, bsVector::tolerance) && longEnough(lengthB, bsVector::tolerance) &&
         longEnough(((a / lengthA) ^ (b / lengthB)).getLength(), smallestSine);
}

bsMatrix computeFrame(bsVector& set, bsVector& keep, bsVector& third, abcAxis axisToSet, abcAxis axisToPreserve) {
  require(axisToSet != axisToPreserve, "axisToSet != axisToPreserve");
  set.normalize();
  const bool cyclic = axisToPreserve == (axisToSet + 1) % 3;
  if (cyclic) {
    third = set ^ keep;
    keep = third ^ set;
  } else {
    third = keep ^ set;
    keep = set ^ third;
  }
  keep.normalize();
  third.normalize();
  bsMatrix frame;
  frame.setIdentity();
  frame.setColumn(axisToSet, set, 0.0);
  frame.setColumn(axisToPreserve, keep, 0.0);
  frame.setColumn(3 - axisToSet - axisToPreserve, third, 0.0);
  frame.setColumn(3, bsVector(0.0), 1.0);
  return frame;
}

bsMatrix compute_orientation(const bsVector& p1, const bsVector& p2, const bsVector& p3) {
  const bsVector a = p2 - p1;
  const bsVector b = p3 - p1;
  bsVector x = a;
  x.normalize();
  bsVector z = a ^ b;
  z.normalize();
  bsVector y = z ^ x;
  y.normalize();
  bsMatrix frame;
  frame.setColumn(0, x, 0.0);
  frame.setColumn(1, y, 0.0);
  frame.setColumn(2, z, 0.0);
  frame.setColumn(3, bsVector(0.0), 1.0);
  return frame;
}

bool compute_marker_1_2_3(const std::vector<bsVector>& positions, int& m1, int& m2, int& m3) {
  if (positions.size() < 3 || positions.size() > maxMarkersToChooseFrom) {
    return false;
  }
  const int count = static_cast<int>(positions.size());
  const DistanceTable table = distances(positions);
  const Pair longest = longestPair(table, count);
  if (longest.i < 0) {
    return false;  // no distance is a number
  }
  const Pair nearest = shortestPairAt(longest, table, count);
  const int a = longest.i;
  const int b = longest.j;
  if (nearest.i < 0) {
    return false;
  }
  const bool fromA = a == nearest.i || a == nearest.j;
  m1 = fromA ? a : b;
  m2 = fromA ? b : a;
  m3 = nearest.i == m1 ? nearest.j : nearest.i;
  return true;
}

}  // namespace korvex2
