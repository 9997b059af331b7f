// Frames of the embedded backend on their way to subscribers: which lines are delivered, and the thread under load.
#include "livedelivery.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "linerecorder.h"
#include "livedistributor.h"
#include "livesource.h"

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

}  // namespace

TEST(LiveDelivery, WantsFramesWhileSomebodyListensToAnyOfTheirLines) {
  LiveDistributor distributor;
  LineRecorder listener;
  const LiveDelivery delivery(distributor);
  EXPECT_FALSE(delivery.wantsFrames());
  for (const char* tag : {"fr", "ts", "6d", "6dw", "6dw2"}) {
    distributor.add(tag, &listener);
    EXPECT_TRUE(delivery.wantsFrames()) << tag;
    distributor.remove(tag, &listener);
  }
  distributor.add("other", &listener);
  EXPECT_FALSE(delivery.wantsFrames());
}

TEST(LiveDelivery, HandsOverOnlyLinesThatSomebodyListensTo) {
  LiveDistributor distributor;
  LineRecorder listener;
  LineRecorder second;
  LiveDelivery delivery(distributor);
  distributor.add("6d", &listener);
  delivery.frame({"fr 7", "ts 0.5", "6d 0", "6dw2 0 0"});
  EXPECT_EQ(listener.takeCalls(), Calls{"6d 0"});
  EXPECT_EQ(delivery.delivered(), 1U);
  distributor.remove("6d", &listener);
  delivery.frame({"fr 8", "6d 0"});
  EXPECT_EQ(delivery.delivered(), 1U);
  for (const char* tag : {"6dw2", "fr"}) {
    distributor.add(tag, &listener);
    distributor.add(tag, &second);
  }
  delivery.frame({"fr 9", "ts 0.6", "6d 0", "6dw2 0 0"});
  EXPECT_EQ(listener.takeCalls(), (Calls{"fr 9", "6dw2 0 0"}));
  EXPECT_EQ(second.takeCalls(), (Calls{"fr 9", "6dw2 0 0"}));
  EXPECT_EQ(delivery.delivered(), 3U) << "a line counts once, however many listen";
  EXPECT_EQ(listener.wrongTags(), 0);
}

TEST(LiveDelivery, TellsTheBeginningAndTheEndOfMeasurements) {
  LiveDistributor distributor;
  LineRecorder listener;
  LiveDelivery delivery(distributor);
  distributor.add("6d", &listener);
  delivery.measurementStarted();
  delivery.measurementStopped();
  EXPECT_EQ(listener.calls(), (Calls{"started", "stopped"}));
  EXPECT_EQ(delivery.delivered(), 0U);
}

TEST(LiveDelivery, NoSubscriberIsCalledAfterItLeftUnderFullLoad) {
  LiveDistributor distributor;
  LiveSource source(LiveLines(), 1000);
  source.publish(stateOf(true));
  LiveDelivery delivery(distributor);
  source.start(delivery);
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
