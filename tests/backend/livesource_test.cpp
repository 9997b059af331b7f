// The delivery of live lines: turns under a clock of the test's own, and the real thread under load.
#include "livesource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "livesink.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

using Calls = std::vector<std::string>;

LiveState stateOf(bool measuring) {
  LiveState state;
  state.measuring = measuring;
  state.output6d = true;
  state.output6dw2 = true;
  state.standard = {{{"standard", 1}, {}, true}, {{"standard", 2}, {}, true}};
  state.devices = {{{"wandgrip", 1}, {}, true}};
  return state;
}

std::string tagOf(const std::string& line) { return line.substr(0, line.find(' ')); }

/// Lines, and "started" and "stopped" between them, in the order of the calls.
class SinkRecorder : public LiveSink {
 public:
  bool wantsFrames() const override { return wanted; }
  void frame(const std::vector<QByteArray>& lines) override {
    thread = std::this_thread::get_id();
    for (const QByteArray& line : lines) {
      add(line.toStdString());
    }
  }
  void measurementStarted() override { add("started"); }
  void measurementStopped() override { add("stopped"); }

  Calls calls() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
  }
  Calls takeCalls() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::move(calls_);
  }

  std::atomic<bool> wanted{true};
  std::atomic<std::thread::id> thread{};

 private:
  void add(const std::string& call) {
    const std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back(call);
  }

  mutable std::mutex mutex_;
  Calls calls_;
};

/// Waits until the condition holds; false when it does not within ten seconds.
template <typename Condition>
bool holdsInTime(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + 10s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

/// Turns by hand: no thread, no waiting.
class LiveTurns : public testing::Test {
 protected:
  /// Numbers of the frames delivered since the last call.
  std::vector<int> frames() {
    std::vector<int> numbers;
    for (const std::string& call : sink.takeCalls()) {
      if (tagOf(call) == "fr") {
        numbers.push_back(std::stoi(call.substr(3)));
      }
    }
    return numbers;
  }
  std::optional<LiveSource::Time> turn(LiveSource::Time now) { return source.turn(sink, now); }

  SinkRecorder sink;
  LiveSource source{LiveLines(), 100};
};

}  // namespace

TEST_F(LiveTurns, SleepWhileNothingIsMeasured) {
  EXPECT_EQ(turn(0ms), std::nullopt);
  source.publish(stateOf(false));
  EXPECT_EQ(turn(50ms), std::nullopt);
  EXPECT_EQ(sink.calls(), Calls{});
}

TEST_F(LiveTurns, DeliverEachFrameWhenItIsDue) {
  source.publish(stateOf(true));
  EXPECT_EQ(turn(0ms), 10ms);
  EXPECT_EQ(turn(5ms), 10ms) << "woken too early";
  EXPECT_EQ(turn(10ms), 20ms);
  EXPECT_EQ(frames(), (std::vector<int>{0, 1}));
  int count = 0;
  for (LiveSource::Time now = 20ms; now < 1000ms; now = *turn(now)) {
    ++count;
  }
  EXPECT_EQ(count, 98);
  EXPECT_EQ(frames().size(), 98U);
}

TEST_F(LiveTurns, StampFramesWithTheirIdealTimes) {
  source.publish(stateOf(true));
  turn(1234567us);
  EXPECT_EQ(sink.calls().at(1), "fr 123");
  EXPECT_EQ(sink.calls().at(2), "ts 1.230000");
}

TEST_F(LiveTurns, LeaveOutWhatAStallPrevented) {
  source.publish(stateOf(true));
  turn(0ms);
  EXPECT_EQ(turn(777ms), 780ms);
  EXPECT_EQ(turn(778ms), 780ms);
  EXPECT_EQ(turn(780ms), 790ms);
  EXPECT_EQ(frames(), (std::vector<int>{0, 77, 78}));
}

TEST_F(LiveTurns, TellTheBeginningAndTheEndOfAMeasurementAroundItsLines) {
  source.publish(stateOf(true));
  turn(0ms);
  turn(10ms);
  source.publish(stateOf(true));  // something else changed
  turn(20ms);
  source.publish(stateOf(false));
  EXPECT_EQ(turn(25ms), std::nullopt);
  Calls tags;
  for (const std::string& call : sink.calls()) {
    tags.push_back(tagOf(call));
  }
  EXPECT_EQ(tags, (Calls{"started", "fr", "ts", "6d", "6dw2", "fr", "ts", "6d", "6dw2", "fr", "ts", "6d", "6dw2",
                         "stopped"}));
}

TEST_F(LiveTurns, TellBothWhenAMeasurementWasRestartedInBetween) {
  source.publish(stateOf(true));
  turn(0ms);
  sink.takeCalls();
  source.publish(stateOf(false));
  source.publish(stateOf(true));
  turn(5ms);
  EXPECT_EQ(sink.takeCalls(), (Calls{"stopped", "started"}));
  turn(6ms);
  EXPECT_EQ(sink.takeCalls(), Calls{}) << "told once";
}

TEST_F(LiveTurns, FollowWhatWasPublishedLast) {
  source.publish(stateOf(true));
  turn(0ms);
  EXPECT_EQ(sink.takeCalls().at(3).substr(0, 9), "6d 2 [0 1");
  LiveState state = stateOf(true);
  state.standard[0].calibrated = false;
  source.publish(state);
  turn(10ms);
  EXPECT_EQ(sink.takeCalls().at(2).substr(0, 10), "6d 2 [0 -1");
  state.output6d = false;
  state.output6dw2 = false;
  source.publish(state);
  turn(20ms);
  EXPECT_EQ(sink.takeCalls(), (Calls{"fr 2", "ts 0.020000"}));
}

TEST_F(LiveTurns, MakeNoFrameThatNobodyWants) {
  sink.wanted = false;
  source.publish(stateOf(true));
  EXPECT_EQ(turn(0ms), 10ms) << "somebody may come";
  EXPECT_EQ(turn(10ms), 20ms);
  EXPECT_EQ(sink.takeCalls(), Calls{"started"}) << "told all the same";
  sink.wanted = true;
  turn(20ms);
  EXPECT_EQ(frames(), std::vector<int>{2});
}

TEST_F(LiveTurns, KeepTheRateWithinItsLimits) {
  EXPECT_EQ(LiveSource(LiveLines()).rate(), 60);
  EXPECT_EQ(LiveSource(LiveLines(), 0).rate(), 1);
  EXPECT_EQ(LiveSource(LiveLines(), -7).rate(), 1);
  EXPECT_EQ(LiveSource(LiveLines(), 1000).rate(), 1000);
  EXPECT_EQ(LiveSource(LiveLines(), 1001).rate(), 1000);
}

TEST(LiveThread, DeliversOnAThreadOfItsOwnUntilItIsStopped) {
  SinkRecorder sink;
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  source.start(sink);
  source.start(sink);  // nothing more happens
  EXPECT_TRUE(source.isMeasuring());
  EXPECT_TRUE(holdsInTime([&] { return sink.calls().size() > 20; }));
  source.stop();
  const std::size_t calls = sink.calls().size();
  EXPECT_NE(sink.thread.load(), std::thread::id());
  EXPECT_NE(sink.thread.load(), std::this_thread::get_id());
  source.publish(stateOf(false));
  source.publish(stateOf(true));
  source.stop();
  EXPECT_EQ(sink.calls().size(), calls);
}

TEST(LiveThread, CanBeStartedAgain) {
  SinkRecorder sink;
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  for (int i = 0; i < 5; ++i) {
    source.start(sink);
    EXPECT_TRUE(holdsInTime([&] { return sink.calls().size() > 3; }));
    source.stop();
    EXPECT_EQ(sink.takeCalls().at(0), "started");
  }
}

TEST(LiveThread, WakesUpForAMeasurementAndGoesBackToSleep) {
  SinkRecorder sink;
  LiveSource source(LiveLines(), 1);  // its next frame is up to a second away, news are told at once
  source.start(sink);
  for (int i = 0; i < 3; ++i) {
    source.publish(stateOf(true));
    EXPECT_TRUE(holdsInTime([&] { return !sink.calls().empty(); }));
    source.publish(stateOf(false));
    EXPECT_TRUE(holdsInTime([&] { return sink.calls().back() == "stopped"; }));
    EXPECT_EQ(sink.takeCalls().front(), "started");
  }
}

TEST(LiveThread, SettlesWhenTheFrameUnderWayIsDelivered) {
  /// Stays in its first frame until it is let go.
  class SlowSink : public SinkRecorder {
   public:
    void frame(const std::vector<QByteArray>& lines) override {
      const bool first = !entered.exchange(true);
      while (first && !released) {
        std::this_thread::sleep_for(1ms);
      }
      SinkRecorder::frame(lines);
    }
    std::atomic<bool> entered{false};
    std::atomic<bool> released{false};
  };
  SlowSink sink;
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  source.start(sink);
  ASSERT_TRUE(holdsInTime([&] { return sink.entered.load(); }));
  std::atomic<bool> settled{false};
  std::atomic<std::size_t> callsWhenSettled{0};
  std::thread waiting([&] {
    LiveState state = stateOf(true);
    state.standard[0].calibrated = false;
    source.publish(state);
    source.settle();
    callsWhenSettled = sink.calls().size();
    settled = true;
  });
  std::this_thread::sleep_for(20ms);
  EXPECT_FALSE(settled) << "a frame of the state before is still under way";
  sink.released = true;
  waiting.join();
  source.stop();
  const Calls calls = sink.calls();
  ASSERT_GE(callsWhenSettled, 4U);
  for (std::size_t i = callsWhenSettled; i < calls.size(); ++i) {
    EXPECT_NE(calls[i].substr(0, 9), "6d 2 [0 1") << "of the state before, call " << i;
  }
  source.settle();  // nothing is under way
}

TEST(LiveThread, EndsWithItsSource) {
  SinkRecorder sink;
  for (const bool measuring : {false, true}) {
    LiveSource source(LiveLines(), 1);
    source.publish(stateOf(measuring));
    source.start(sink);
  }
}

TEST(LiveThread, TellsTheEndOfAMeasurementThatGoesOnWithoutItsSink) {
  SinkRecorder sink;
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  source.start(sink);
  ASSERT_TRUE(holdsInTime([&] { return sink.calls().size() > 3; }));
  source.stop();
  Calls calls = sink.takeCalls();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "stopped"), 1);
  EXPECT_EQ(calls.back(), "stopped");
  source.stop();
  EXPECT_EQ(sink.calls(), Calls{});
  source.start(sink);
  ASSERT_TRUE(holdsInTime([&] { return !sink.calls().empty(); }));
  EXPECT_EQ(sink.calls().front(), "started") << "it never ended for the backend";
  source.publish(stateOf(false));
  ASSERT_TRUE(holdsInTime([&] { return sink.calls().back() == "stopped"; }));
  source.stop();
  calls = sink.takeCalls();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "stopped"), 1) << "told already";
}
