// The delivery thread and the GUI thread on one stream: no torn pose, no waiting for the lock, no lost count.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "livelines.h"
#include "trackingstream.h"

using korvex2::TrackedPose;
using korvex2::TrackingStream;

namespace {

/// A record whose numbers all follow from one: position (k, 2k, 3k), rotation values k + 1 ... k + 9. Held below 2^20,
/// so that single precision keeps them exact.
std::string blocksOf(int k) {
  std::string text = "[" + std::to_string(k) + " " + std::to_string(2 * k) + " " + std::to_string(3 * k) + "][";
  for (int i = 1; i <= 9; ++i) {
    text += std::to_string(k + i) + " ";
  }
  return text + "]";
}

bool isWhole(const TrackedPose& pose) {
  const double k = pose.position.x;
  bool whole = pose.position.y == 2 * k && pose.position.z == 3 * k;
  for (int i = 0; i < 9; ++i) {
    whole = whole && pose.rotation.data(i % 3, i / 3) == k + i + 1;
  }
  return whole;
}

constexpr int kinds = 1000;

/// The lines to be sent, made before the race so that the writer runs at full speed.
std::vector<std::string> preparedLines() {
  std::vector<std::string> lines;
  for (int k = 1; k <= kinds; ++k) {
    lines.push_back("6d 1 [0 1]" + blocksOf(k));
  }
  return lines;
}

}  // namespace

TEST(TrackingStreamThreads, ACopiedPoseIsNeverTorn) {
  const std::vector<std::string> lines = preparedLines();
  TrackingStream stream;
  stream.setChosenBody("standard", 0);
  stream.parse("6d", lines[0].c_str());
  std::atomic<bool> stop{false};
  std::atomic<std::uint64_t> sent{1};
  std::atomic<std::uint64_t> taken{1};
  std::atomic<int> malformed{0};
  std::thread delivery([&] {
    for (std::size_t i = 0; !stop; i = (i + 1) % lines.size()) {
      TrackingStream::Tracked marked = TrackingStream::Tracked::Unknown;
      malformed += stream.parse("6d", lines[i].c_str(), &marked) == 0 ? 0 : 1;
      taken += marked == TrackingStream::Tracked::Yes ? 1 : 0;
      ++sent;
    }
  });
  std::set<double> seen;
  int torn = 0;
  int copies = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while ((copies < 5000 || seen.size() < 100) && std::chrono::steady_clock::now() < end) {
    const TrackingStream::State state = stream.state();
    torn += isWhole(state.body) ? 0 : 1;
    seen.insert(state.body.position.x);
    ++copies;
    if (copies % 64 == 0) {
      stream.setWithHead(false);
      std::this_thread::yield();
    }
  }
  stop = true;
  delivery.join();
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(malformed, 0);
  EXPECT_GE(seen.size(), 100u) << "the threads did not run side by side";
  EXPECT_EQ(taken + stream.droppedBusy(), sent) << "every line is taken or counted as dropped";
  EXPECT_EQ(stream.state().markings, taken);
}

TEST(TrackingStreamThreads, ALineThatFindsTheLockTakenIsDroppedAndCounted) {
  TrackingStream stream;
  stream.setChosenBody("standard", 0);
  const std::string line = "6d 1 " + body("0", "1");
  int result = -5;
  auto marked = TrackingStream::Tracked::No;
  stream.look([&](const TrackingStream::State&) {
    std::thread delivery([&] { result = stream.parse("6d", line.c_str(), &marked); });
    delivery.join();  // returns although the lock is held here
  });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(marked, TrackingStream::Tracked::Unknown);
  EXPECT_EQ(stream.droppedBusy(), 1u);
  expectUntouched(stream.state().body);
  EXPECT_EQ(stream.parse("6d", line.c_str()), 0);
  expectPose(stream.state().body);
  EXPECT_EQ(stream.droppedBusy(), 1u);
}

TEST(TrackingStreamThreads, AMalformedLineThatFindsTheLockTakenIsNotRead) {
  TrackingStream stream;
  stream.setChosenBody("wandgrip", 0);
  int result = -5;
  stream.look(
      [&](const TrackingStream::State&) { std::thread([&] { result = stream.parse("6dw2", "6dw2 x"); }).join(); });
  EXPECT_EQ(result, 0);
}

TEST(TrackingStreamThreads, SettingsChangeSafelyWhileLinesArrive) {
  const std::vector<std::string> lines = preparedLines();
  TrackingStream stream;
  std::atomic<bool> stop{false};
  std::thread delivery([&] {
    for (std::size_t i = 0; !stop; i = (i + 1) % lines.size()) {
      stream.take("6d", lines[i].c_str());
    }
  });
  for (int i = 0; i < 200; ++i) {
    stream.setChosenBody(i % 3 == 0 ? "wandgrip" : "standard", i % 2);
    stream.setWithHead(i % 5 == 0);
    if (i % 7 == 0) {
      stream.resetQualities();
    }
    const TrackedPose pose = stream.state().body;
    ASSERT_TRUE(pose.id == -1 || isWhole(pose)) << "round " << i;
    std::this_thread::yield();
  }
  stop = true;
  delivery.join();
}
