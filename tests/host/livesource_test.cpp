// The delivery of live lines: turns under a clock of the test's own, and the real thread under load.
#include "livesource.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "linerecorder.h"
#include "livedistributor.h"

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

/// Turns by hand: no thread, no waiting.
class LiveTurns : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* tag : {"fr", "6d"}) {
      distributor.add(tag, &listener);
    }
  }
  /// Numbers of the frames delivered since the last call.
  std::vector<int> frames() {
    std::vector<int> numbers;
    for (const std::string& call : listener.takeCalls()) {
      if (tagOf(call) == "fr") {
        numbers.push_back(std::stoi(call.substr(3)));
      }
    }
    return numbers;
  }
  std::optional<LiveSource::Time> turn(LiveSource::Time now) { return source.turn(distributor, now); }

  LiveDistributor distributor;
  LineRecorder listener;
  LiveSource source{LiveLines(), 100};
};

}  // namespace

TEST_F(LiveTurns, SleepWhileNothingIsMeasured) {
  EXPECT_EQ(turn(0ms), std::nullopt);
  source.publish(stateOf(false));
  EXPECT_EQ(turn(50ms), std::nullopt);
  EXPECT_EQ(listener.calls(), Calls{});
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
  distributor.add("ts", &listener);
  source.publish(stateOf(true));
  turn(1234567us);
  EXPECT_EQ(listener.calls().at(1), "fr 123");
  EXPECT_EQ(listener.calls().at(2), "ts 1.230000");
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
  for (const std::string& call : listener.calls()) {
    tags.push_back(tagOf(call));
  }
  EXPECT_EQ(tags, (Calls{"started", "fr", "6d", "fr", "6d", "fr", "6d", "stopped"}));
}

TEST_F(LiveTurns, TellBothWhenAMeasurementWasRestartedInBetween) {
  source.publish(stateOf(true));
  turn(0ms);
  listener.takeCalls();
  source.publish(stateOf(false));
  source.publish(stateOf(true));
  turn(5ms);
  EXPECT_EQ(listener.takeCalls(), (Calls{"stopped", "started"}));
  turn(6ms);
  EXPECT_EQ(listener.takeCalls(), Calls{}) << "told once";
}

TEST_F(LiveTurns, FollowWhatWasPublishedLast) {
  source.publish(stateOf(true));
  turn(0ms);
  EXPECT_EQ(listener.takeCalls().at(2).substr(0, 9), "6d 2 [0 1");
  LiveState state = stateOf(true);
  state.standard[0].calibrated = false;
  source.publish(state);
  turn(10ms);
  EXPECT_EQ(listener.takeCalls().at(1).substr(0, 10), "6d 2 [0 -1");
  state.output6d = false;
  source.publish(state);
  turn(20ms);
  EXPECT_EQ(listener.takeCalls(), Calls{"fr 2"});
}

TEST_F(LiveTurns, MakeOnlyLinesThatSomebodyListensTo) {
  distributor.remove("fr", &listener);
  source.publish(stateOf(true));
  turn(0ms);
  EXPECT_EQ(listener.calls().size(), 2U) << "started, 6d";
  EXPECT_EQ(source.delivered(), 1U);
  distributor.remove("6d", &listener);
  EXPECT_EQ(turn(10ms), 20ms) << "somebody may come";
  EXPECT_EQ(source.delivered(), 1U);
  distributor.add("6dw2", &listener);
  turn(20ms);
  EXPECT_EQ(tagOf(listener.calls().back()), "6dw2");
  EXPECT_EQ(source.delivered(), 2U);
  EXPECT_EQ(listener.wrongTags(), 0);
}

TEST_F(LiveTurns, KeepTheRateWithinItsLimits) {
  EXPECT_EQ(LiveSource(LiveLines()).rate(), 60);
  EXPECT_EQ(LiveSource(LiveLines(), 0).rate(), 1);
  EXPECT_EQ(LiveSource(LiveLines(), -7).rate(), 1);
  EXPECT_EQ(LiveSource(LiveLines(), 1000).rate(), 1000);
  EXPECT_EQ(LiveSource(LiveLines(), 1001).rate(), 1000);
}

TEST(LiveThread, DeliversOnAThreadOfItsOwnUntilItIsStopped) {
  LiveDistributor distributor;
  LineRecorder listener;
  struct Where : Requester {
    virtual ~Where() = default;
    int set_ascii_data(const char*, const char*) override {
      thread = std::this_thread::get_id();
      return 0;
    }
    void set_mea_started() override {}
    void set_mea_stopped() override {}
    std::atomic<std::thread::id> thread{};
  } where;
  distributor.add("6d", &listener);
  distributor.add("6d", &where);
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  source.start(distributor);
  source.start(distributor);  // nothing more happens
  EXPECT_TRUE(source.isMeasuring());
  EXPECT_TRUE(holdsInTime([&] { return listener.calls().size() > 20; }));
  source.stop();
  const std::size_t calls = listener.calls().size();
  EXPECT_NE(where.thread.load(), std::thread::id());
  EXPECT_NE(where.thread.load(), std::this_thread::get_id());
  source.publish(stateOf(false));
  source.publish(stateOf(true));
  source.stop();
  EXPECT_EQ(listener.calls().size(), calls);
  EXPECT_EQ(source.delivered(), calls - 1) << "all but the beginning; a line counts once, however many listen";
}

TEST(LiveThread, CanBeStartedAgain) {
  LiveDistributor distributor;
  LineRecorder listener;
  distributor.add("fr", &listener);
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  for (int i = 0; i < 5; ++i) {
    source.start(distributor);
    EXPECT_TRUE(holdsInTime([&] { return listener.calls().size() > 3; }));
    source.stop();
    EXPECT_EQ(listener.takeCalls().at(0), "started");
  }
}

TEST(LiveThread, WakesUpForAMeasurementAndGoesBackToSleep) {
  LiveDistributor distributor;
  LineRecorder listener;
  distributor.add("fr", &listener);
  LiveSource source(LiveLines(), 1);  // its next frame is up to a second away, news are told at once
  source.start(distributor);
  for (int i = 0; i < 3; ++i) {
    source.publish(stateOf(true));
    EXPECT_TRUE(holdsInTime([&] { return !listener.calls().empty(); }));
    source.publish(stateOf(false));
    EXPECT_TRUE(holdsInTime([&] { return listener.calls().back() == "stopped"; }));
    EXPECT_EQ(listener.takeCalls().front(), "started");
  }
}

TEST(LiveThread, EndsWithItsSource) {
  LiveDistributor distributor;
  LineRecorder listener;
  distributor.add("fr", &listener);
  for (const bool measuring : {false, true}) {
    LiveSource source(LiveLines(), 1);
    source.publish(stateOf(measuring));
    source.start(distributor);
  }
}

TEST(LiveThread, NoSubscriberIsCalledAfterItLeftUnderFullLoad) {
  LiveDistributor distributor;
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  source.start(distributor);
  std::atomic<bool> done{false};
  // Meanwhile the backend's state changes as fast as it can.
  std::thread commands([&] {
    for (int i = 0; !done; ++i) {
      LiveState state = stateOf(i % 7 != 0);
      state.withHead = i % 2 == 0;
      source.publish(std::move(state));
      std::this_thread::sleep_for(100us);
    }
  });
  for (int i = 0; i < 40; ++i) {
    auto listener = std::make_unique<LineRecorder>();
    for (const char* tag : {"fr", "ts", "6d", "6dw2"}) {
      distributor.add(tag, listener.get());
    }
    EXPECT_TRUE(holdsInTime([&] { return listener->calls().size() > 4; }));
    for (const char* tag : {"6d", "fr", "6dw2", "ts"}) {
      distributor.remove(tag, listener.get());
    }
    EXPECT_EQ(listener->wrongTags(), 0);
    listener.reset();  // a later call would be one of a destroyed object
  }
  source.stop();
  done = true;
  commands.join();
}
