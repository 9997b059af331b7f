// See livedistributor.h.
#include "livedistributor.h"

#include <algorithm>

#include "hostlogging.h"
#include "requester.h"

namespace korvex2 {

bool LiveDistributor::add(const QByteArray& tag, Requester* requester) {
  if (tag.isEmpty() || requester == nullptr) {
    return false;
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  const bool known = std::any_of(subscriptions_.cbegin(), subscriptions_.cend(),
                                 [&](const auto& s) { return s->requester == requester && s->tag == tag; });
  if (!known) {
    auto subscription = std::make_shared<Subscription>();
    // A deep copy: the caller's bytes may be a wrapped buffer that does not outlive the call.
    subscription->tag = QByteArray(tag.constData(), tag.size());
    subscription->requester = requester;
    subscriptions_.push_back(std::move(subscription));
  }
  return true;
}

bool LiveDistributor::remove(const QByteArray& tag, Requester* requester) {
  std::unique_lock<std::mutex> lock(mutex_);
  const auto found = std::find_if(subscriptions_.cbegin(), subscriptions_.cend(),
                                  [&](const auto& s) { return s->requester == requester && s->tag == tag; });
  if (found == subscriptions_.cend()) {
    return false;
  }
  const std::shared_ptr<Subscription> subscription = *found;
  subscription->active = false;
  subscriptions_.erase(found);
  const std::thread::id self = std::this_thread::get_id();
  callEnded_.wait(lock, [&] {
    return std::all_of(subscription->callers.cbegin(), subscription->callers.cend(),
                       [self](std::thread::id caller) { return caller == self; });
  });
  return true;
}

bool LiveDistributor::hasSubscriber(const QByteArray& tag) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::any_of(subscriptions_.cbegin(), subscriptions_.cend(), [&](const auto& s) { return s->tag == tag; });
}

void LiveDistributor::deliver(const QByteArray& tag, const QByteArray& line) {
  Subscriptions listeners;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::copy_if(subscriptions_.cbegin(), subscriptions_.cend(), std::back_inserter(listeners),
                 [&](const auto& s) { return s->tag == tag; });
  }
  callEach(listeners, [&](Requester& requester) {
    if (requester.set_ascii_data(tag.constData(), line.constData()) != 0) {
      qCDebug(logChannel) << "a subscriber found a live line malformed:" << line;
    }
  });
}

void LiveDistributor::deliverLine(const QByteArray& line) {
  const QByteArray text = line.trimmed();
  const int blank = text.indexOf(' ');
  const QByteArray tag = blank < 0 ? text : text.left(blank);
  if (!tag.isEmpty()) {
    deliver(tag, text);
  }
}

void LiveDistributor::measurementStarted() {
  callEach(oncePerSubscriber(), [](Requester& requester) { requester.set_mea_started(); });
}

void LiveDistributor::measurementStopped() {
  callEach(oncePerSubscriber(), [](Requester& requester) { requester.set_mea_stopped(); });
}

LiveDistributor::Subscriptions LiveDistributor::oncePerSubscriber() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  Subscriptions once;
  for (const auto& subscription : subscriptions_) {
    const bool listed =
        std::any_of(once.cbegin(), once.cend(), [&](const auto& s) { return s->requester == subscription->requester; });
    if (!listed) {
      once.push_back(subscription);
    }
  }
  return once;
}

void LiveDistributor::callEach(const Subscriptions& subscriptions, const std::function<void(Requester&)>& call) {
  const std::lock_guard<std::recursive_mutex> oneDelivery(deliveryMutex_);
  for (const auto& subscription : subscriptions) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (!subscription->active) {
        continue;  // removed since the list was taken
      }
      subscription->callers.push_back(std::this_thread::get_id());
    }
    try {
      call(*subscription->requester);
    } catch (...) {
      // The contract forbids it; a subscriber that throws must not take the delivery thread down.
      qCWarning(logChannel) << "a subscriber threw while it was called";
    }
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      const auto caller =
          std::find(subscription->callers.begin(), subscription->callers.end(), std::this_thread::get_id());
      subscription->callers.erase(caller);
    }
    callEnded_.notify_all();
  }
}

}  // namespace korvex2
