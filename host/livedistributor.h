// Hands live tracking lines to their subscribers, from any thread.
#ifndef KORVEX2_HOST_LIVEDISTRIBUTOR_H
#define KORVEX2_HOST_LIVEDISTRIBUTOR_H

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <QByteArray>

class Requester;

namespace korvex2 {

/// Registry of subscribers to live lines, one entry a (record tag, subscriber) pair. Every operation may be called on
/// any thread, also from within a subscriber's own call.
///
/// Guarantee: when remove() returns, no call for that tag to that subscriber is running on another thread and none
/// will begin; the subscriber may be destroyed. A call that removes its own subscription does not wait for itself.
///
/// Subscribers are called one after the other, also when several threads deliver: so a subscriber needs no lock
/// against itself, and two subscribers that remove each other cannot wait for each other. No lock of the registry is
/// held during a call, so that other threads register and remove without waiting for subscribers that do not concern
/// them. A subscriber must not wait, inside its call, for a thread that is removing that subscriber.
class LiveDistributor {
 public:
  LiveDistributor() = default;
  LiveDistributor(const LiveDistributor&) = delete;
  LiveDistributor& operator=(const LiveDistributor&) = delete;

  /// Subscribes; a second subscription of the same pair changes nothing.
  /// @return false for an empty tag or a null subscriber
  bool add(const QByteArray& tag, Requester* requester);
  /// Ends a subscription, see the guarantee above.
  /// @return false when there was none
  bool remove(const QByteArray& tag, Requester* requester);
  /// True when somebody listens to this tag, so that a source need not produce lines for nobody.
  bool hasSubscriber(const QByteArray& tag) const;

  /// Calls set_ascii_data(tag, line) of every subscriber to `tag`, in the order they subscribed.
  void deliver(const QByteArray& tag, const QByteArray& line);
  /// Same, with the line's first word as its tag ("6d 1 [...]" has the tag "6d"). A line without a word is dropped.
  void deliverLine(const QByteArray& line);
  /// Calls set_mea_started() of every subscriber, once each however many tags it subscribed to.
  void measurementStarted();
  /// Calls set_mea_stopped() likewise.
  void measurementStopped();

 private:
  struct Subscription {
    QByteArray tag;
    Requester* requester = nullptr;
    bool active = true;                    // guarded by mutex_
    std::vector<std::thread::id> callers;  // threads inside the subscriber just now; guarded by mutex_
  };
  using Subscriptions = std::vector<std::shared_ptr<Subscription>>;

  void callEach(const Subscriptions& subscriptions, const std::function<void(Requester&)>& call);
  Subscriptions oncePerSubscriber() const;

  mutable std::mutex mutex_;
  std::condition_variable callEnded_;
  std::recursive_mutex deliveryMutex_;  // one delivery at a time; recursive for a subscriber that delivers
  Subscriptions subscriptions_;         // guarded by mutex_
};

}  // namespace korvex2

#endif
