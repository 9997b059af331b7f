// Delivery of live lines, and the promise that nobody is called after unsubscribing.
#include "livedistributor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "requester.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

struct Listener : Requester {
  int set_ascii_data(const char* tag, const char* line) override {
    taken.push_back(std::string(tag) + "|" + line);
    if (const auto running = act) {  // a copy: the action may put another one in its place
      running();
    }
    return 0;
  }
  void set_mea_started() override { taken.emplace_back("started"); }
  void set_mea_stopped() override { taken.emplace_back("stopped"); }
  std::vector<std::string> taken;
  std::function<void()> act;
};

/// Counts only; safe to be called on any thread.
struct Counter : Requester {
  int set_ascii_data(const char*, const char*) override {
    const int now = ++inside;
    int most = mostInside.load();
    while (now > most && !mostInside.compare_exchange_weak(most, now)) {
    }
    if (act) {
      act();
    }
    ++calls;
    --inside;
    return 0;
  }
  void set_mea_started() override {}
  void set_mea_stopped() override {}
  std::atomic<int> inside{0};
  std::atomic<int> mostInside{0};
  std::atomic<int> calls{0};
  std::function<void()> act;
};

}  // namespace

TEST(LiveDistributor, DeliversByTagInTheOrderOfSubscription) {
  LiveDistributor distributor;
  Listener listener;
  std::vector<int> order;
  Listener second;
  listener.act = [&] { order.push_back(1); };
  second.act = [&] { order.push_back(2); };
  EXPECT_TRUE(distributor.add("6d", &listener));
  EXPECT_TRUE(distributor.add("6d", &second));
  EXPECT_TRUE(distributor.add("6dw2", &listener));
  distributor.deliver("6d", "6d 1");
  distributor.deliver("6dw2", "6dw2 0");
  distributor.deliver("6dw", "6dw 0");
  EXPECT_EQ(listener.taken, (std::vector<std::string>{"6d|6d 1", "6dw2|6dw2 0"}));
  EXPECT_EQ(second.taken, (std::vector<std::string>{"6d|6d 1"}));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 1}));
}

TEST(LiveDistributor, TakesTheTagFromTheLine) {
  LiveDistributor distributor;
  Listener listener;
  distributor.add("6d", &listener);
  distributor.deliverLine("6d 2 [0 1.0]\r\n");
  distributor.deliverLine("6d");
  distributor.deliverLine("6dw 0");
  distributor.deliverLine("");
  distributor.deliverLine("  \n");
  EXPECT_EQ(listener.taken, (std::vector<std::string>{"6d|6d 2 [0 1.0]", "6d|6d"}));
}

TEST(LiveDistributor, ASecondSubscriptionOfThePairChangesNothing) {
  LiveDistributor distributor;
  Listener listener;
  EXPECT_TRUE(distributor.add("6d", &listener));
  EXPECT_TRUE(distributor.add("6d", &listener));
  distributor.deliver("6d", "x");
  EXPECT_EQ(listener.taken.size(), 1u);
  EXPECT_TRUE(distributor.remove("6d", &listener));
  EXPECT_FALSE(distributor.remove("6d", &listener));
  distributor.deliver("6d", "x");
  EXPECT_EQ(listener.taken.size(), 1u);
}

TEST(LiveDistributor, TellsWhetherAnybodyListens) {
  LiveDistributor distributor;
  Listener listener;
  EXPECT_FALSE(distributor.hasSubscriber("6d"));
  distributor.add("6d", &listener);
  EXPECT_TRUE(distributor.hasSubscriber("6d"));
  EXPECT_FALSE(distributor.hasSubscriber("6dw"));
  distributor.remove("6d", &listener);
  EXPECT_FALSE(distributor.hasSubscriber("6d"));
}

TEST(LiveDistributor, TheTagMayBeATemporaryText) {
  LiveDistributor distributor;
  Listener listener;
  {
    char tag[] = "6d";
    distributor.add(QByteArray::fromRawData(tag, 2), &listener);
    tag[0] = 'X';
  }
  distributor.deliver("6d", "x");
  EXPECT_EQ(listener.taken.size(), 1u);
}

TEST(LiveDistributor, StartAndStopReachEverySubscriberOnce) {
  LiveDistributor distributor;
  Listener listener;
  distributor.add("6d", &listener);
  distributor.add("6dw", &listener);
  distributor.measurementStarted();
  distributor.measurementStopped();
  EXPECT_EQ(listener.taken, (std::vector<std::string>{"started", "stopped"}));
}

TEST(LiveDistributor, ASubscriberMayRemoveItselfAndOthersWhileItIsCalled) {
  LiveDistributor distributor;
  Listener first;
  Listener second;
  first.act = [&] {
    EXPECT_TRUE(distributor.remove("6d", &first));
    EXPECT_TRUE(distributor.remove("6d", &second));
  };
  distributor.add("6d", &first);
  distributor.add("6d", &second);
  distributor.deliver("6d", "x");
  distributor.deliver("6d", "x");
  EXPECT_EQ(first.taken.size(), 1u);
  EXPECT_TRUE(second.taken.empty()) << "removed before its turn";
}

TEST(LiveDistributor, ASubscriberMayDeliverAndSubscribeWhileItIsCalled) {
  LiveDistributor distributor;
  Listener listener;
  Listener late;
  listener.act = [&] {
    listener.act = nullptr;
    distributor.add("6d", &late);
    distributor.deliver("6d", "nested");
  };
  distributor.add("6d", &listener);
  distributor.deliver("6d", "outer");
  EXPECT_EQ(listener.taken, (std::vector<std::string>{"6d|outer", "6d|nested"}));
  EXPECT_EQ(late.taken, (std::vector<std::string>{"6d|nested"}));
}

TEST(LiveDistributor, ASubscriberThatThrowsDoesNotStopTheOthers) {
  LiveDistributor distributor;
  Listener thrower;
  Listener other;
  thrower.act = [] { throw std::runtime_error("broken"); };
  distributor.add("6d", &thrower);
  distributor.add("6d", &other);
  distributor.deliver("6d", "x");
  EXPECT_EQ(other.taken.size(), 1u);
  EXPECT_TRUE(distributor.remove("6d", &thrower)) << "must not wait for the call that threw";
}

TEST(LiveDistributor, RemovingWaitsForTheCallInFlight) {
  LiveDistributor distributor;
  Counter counter;
  std::promise<void> entered;
  std::promise<void> leave;
  std::shared_future<void> mayLeave = leave.get_future().share();
  counter.act = [&] {
    entered.set_value();
    mayLeave.wait();
  };
  distributor.add("6d", &counter);
  std::thread delivery([&] { distributor.deliver("6d", "x"); });
  entered.get_future().wait();
  std::future<bool> removal = std::async(std::launch::async, [&] { return distributor.remove("6d", &counter); });
  // 50 ms in which a removal that does not wait would be long done.
  EXPECT_EQ(removal.wait_for(50ms), std::future_status::timeout);
  EXPECT_EQ(counter.calls, 0);
  leave.set_value();
  EXPECT_TRUE(removal.get());
  EXPECT_EQ(counter.inside, 0);
  delivery.join();
}

TEST(LiveDistributor, OtherSubscribersComeAndGoDuringACall) {
  LiveDistributor distributor;
  Counter slow;
  Counter other;
  std::promise<void> entered;
  std::promise<void> leave;
  std::shared_future<void> mayLeave = leave.get_future().share();
  slow.act = [&] {
    entered.set_value();
    mayLeave.wait();
  };
  distributor.add("6d", &slow);
  std::thread delivery([&] { distributor.deliver("6d", "x"); });
  entered.get_future().wait();
  EXPECT_TRUE(distributor.add("6d", &other));
  EXPECT_TRUE(distributor.remove("6d", &other));
  leave.set_value();
  delivery.join();
}

TEST(LiveDistributor, SubscribersAreCalledOneAfterTheOtherThoughTwoThreadsDeliver) {
  LiveDistributor distributor;
  Counter first;
  Counter second;
  std::promise<void> entered;
  std::promise<void> leave;
  std::shared_future<void> mayLeave = leave.get_future().share();
  first.act = [&] {
    entered.set_value();
    mayLeave.wait();
  };
  distributor.add("a", &first);
  distributor.add("b", &second);
  std::thread one([&] { distributor.deliver("a", "x"); });
  entered.get_future().wait();
  std::future<void> other = std::async(std::launch::async, [&] { distributor.deliver("b", "x"); });
  // 50 ms in which a delivery that does not wait would be long done.
  EXPECT_EQ(other.wait_for(50ms), std::future_status::timeout);
  EXPECT_EQ(second.calls, 0);
  leave.set_value();
  one.join();
  other.get();
  EXPECT_EQ(second.calls, 1);
}

TEST(LiveDistributor, TwoSubscribersThatRemoveEachOtherOnTwoThreadsDoNotWaitForEver) {
  for (int round = 0; round < 200; ++round) {
    LiveDistributor distributor;
    Counter first;
    Counter second;
    first.act = [&] { distributor.remove("b", &second); };
    second.act = [&] { distributor.remove("a", &first); };
    distributor.add("a", &first);
    distributor.add("b", &second);
    std::thread one([&] { distributor.deliver("a", "x"); });
    std::thread two([&] { distributor.deliver("b", "x"); });
    one.join();
    two.join();
    EXPECT_EQ(first.calls + second.calls, 1) << "whoever came first removed the other";
  }
}

TEST(LiveDistributor, NobodyIsCalledAfterRemovalWhileManyThreadsDeliver) {
  LiveDistributor distributor;
  std::atomic<bool> stop{false};
  std::atomic<int> delivered{0};
  std::vector<std::thread> sources;
  for (int i = 0; i < 3; ++i) {
    sources.emplace_back([&] {
      while (!stop) {
        distributor.deliver("6d", "6d 0");
        ++delivered;
      }
    });
  }
  int used = 0;
  const auto end = std::chrono::steady_clock::now() + 5s;
  while (used < 60 && std::chrono::steady_clock::now() < end) {
    auto counter = std::make_unique<Counter>();
    distributor.add("6d", counter.get());
    while (counter->calls == 0 && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
    distributor.remove("6d", counter.get());
    EXPECT_EQ(counter->inside, 0);
    EXPECT_LE(counter->mostInside, 1) << "one call at a time";
    const int calls = counter->calls;
    std::this_thread::yield();
    EXPECT_EQ(counter->calls, calls);
    ++used;
    // From here on a late call would write into freed memory, which the sanitizers see.
  }
  stop = true;
  for (std::thread& source : sources) {
    source.join();
  }
  EXPECT_EQ(used, 60) << "after " << delivered << " deliveries";
}
