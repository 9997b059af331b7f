// Times the geometry core's frequent operations, beside the same ones of Eigen where that is installed.
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>

#include "bsFrame.h"
#include "bsMatrix.h"
#include "bsQuaternion.h"
#include "bsVector.h"

#ifdef KORVEX2_BENCH_EIGEN
#include <Eigen/Geometry>
#endif

namespace {

/// Poses are taken in turn from a table that fits the nearest cache, so that nothing is computed ahead of time and
/// branches meet turns of every size.
constexpr std::size_t count = 64;

std::array<bsMatrix, count> poses() {
  std::array<bsMatrix, count> all;
  for (std::size_t i = 0; i < count; ++i) {
    const auto n = static_cast<double>(i);
    const bsQuaternion turn(n * 37.0, bsVector(1.0 + n, 20.0 - n, 3.0 + 7.0 * n));
    all[i] = turn.toMatrix();
    all[i].setColumn(3, bsVector(n, 100.0 - n, 3.0 * n), 1.0);
  }
  return all;
}

void matrixProduct(benchmark::State& state) {
  const auto all = poses();
  std::size_t i = 0;
  for (auto _ : state) {
    bsMatrix product = all[i % count] * all[(i + 1) % count];
    benchmark::DoNotOptimize(product);
    ++i;
  }
}

void matrixTimesVector(benchmark::State& state) {
  const auto all = poses();
  const bsVector p(1.0, 2.0, 3.0);
  std::size_t i = 0;
  for (auto _ : state) {
    bsVector image = all[i++ % count] * p;
    benchmark::DoNotOptimize(image);
  }
}

void rigidInverse(benchmark::State& state) {
  const auto all = poses();
  std::size_t i = 0;
  bsMatrix inverse;
  for (auto _ : state) {
    all[i++ % count].fastInvert(inverse);
    benchmark::DoNotOptimize(inverse);
  }
}

void quaternionFromMatrix(benchmark::State& state) {
  const auto all = poses();
  std::size_t i = 0;
  bsQuaternion q;
  for (auto _ : state) {
    q.fromMatrix(all[i++ % count]);
    benchmark::DoNotOptimize(q);
  }
}

void frameCopy(benchmark::State& state) {
  bsFrame frame(bsMatrix().rotationX(130.0), nullptr);
  for (auto _ : state) {
    bsFrame copy(frame);
    benchmark::DoNotOptimize(copy);
  }
}

BENCHMARK(matrixProduct);
BENCHMARK(matrixTimesVector);
BENCHMARK(rigidInverse);
BENCHMARK(quaternionFromMatrix);
BENCHMARK(frameCopy);

#ifdef KORVEX2_BENCH_EIGEN

std::array<Eigen::Matrix4d, count> eigenPoses() {
  const auto own = poses();
  std::array<Eigen::Matrix4d, count> all;
  for (std::size_t i = 0; i < count; ++i) {
    all[i] = Eigen::Map<const Eigen::Matrix4d>(own[i]);  // the same storage order
  }
  return all;
}

void eigenMatrixProduct(benchmark::State& state) {
  const auto all = eigenPoses();
  std::size_t i = 0;
  for (auto _ : state) {
    Eigen::Matrix4d product;
    product.noalias() = all[i % count] * all[(i + 1) % count];
    benchmark::DoNotOptimize(product);
    ++i;
  }
}

void eigenMatrixTimesVector(benchmark::State& state) {
  const auto all = eigenPoses();
  const Eigen::Vector3d p(1.0, 2.0, 3.0);
  std::size_t i = 0;
  for (auto _ : state) {
    Eigen::Vector3d image = (all[i++ % count] * p.homogeneous()).eval().hnormalized();
    benchmark::DoNotOptimize(image);
  }
}

void eigenRigidInverse(benchmark::State& state) {
  const auto all = eigenPoses();
  std::size_t i = 0;
  Eigen::Isometry3d inverse;
  for (auto _ : state) {
    inverse = Eigen::Isometry3d(all[i++ % count]).inverse(Eigen::Isometry);
    benchmark::DoNotOptimize(inverse);
  }
}

void eigenQuaternionFromMatrix(benchmark::State& state) {
  const auto all = eigenPoses();
  std::size_t i = 0;
  Eigen::Quaterniond q;
  for (auto _ : state) {
    q = all[i++ % count].topLeftCorner<3, 3>();
    benchmark::DoNotOptimize(q);
  }
}

BENCHMARK(eigenMatrixProduct);
BENCHMARK(eigenMatrixTimesVector);
BENCHMARK(eigenRigidInverse);
BENCHMARK(eigenQuaternionFromMatrix);

#endif

}  // namespace
