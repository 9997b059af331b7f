// See livesource.h.
#include "livesource.h"

#include <algorithm>
#include <utility>

#include <QByteArray>

#include "livedistributor.h"

namespace korvex2 {

LiveSource::LiveSource(LiveLines lines, int rate)
    : lines_(std::move(lines)),
      rate_(std::clamp(rate, lowestRate, highestRate)),
      published_(std::make_shared<const Published>()),
      pacer_(rate_) {}

LiveSource::~LiveSource() { stop(); }

void LiveSource::publish(LiveState state) {
  auto next = std::make_shared<Published>();
  next->state = std::move(state);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (next->state.measuring) {
      const bool goesOn = published_->measurement != 0;
      measurements_ += goesOn ? 0 : 1;
      next->measurement = measurements_;
    }
    published_ = std::move(next);
    isNew_ = true;
  }
  changed_.notify_all();
}

bool LiveSource::isMeasuring() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return published_->measurement != 0;
}

void LiveSource::start(LiveDistributor& distributor) {
  if (thread_.joinable()) {
    return;
  }
  pacer_ = FramePacer(rate_);
  measurement_ = 0;
  thread_ = std::thread([this, &distributor] { run(distributor); });
}

void LiveSource::stop() {
  if (!thread_.joinable()) {
    return;
  }
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
  stopping_ = false;
}

void LiveSource::run(LiveDistributor& distributor) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  std::unique_lock<std::mutex> lock(mutex_);
  const auto wanted = [this] { return stopping_ || isNew_; };
  while (!stopping_) {
    isNew_ = false;
    lock.unlock();
    const std::optional<Time> next = turn(distributor, Clock::now() - begin);
    lock.lock();
    if (next) {
      changed_.wait_until(lock, begin + *next, wanted);
    } else {
      changed_.wait(lock, wanted);
    }
  }
}

std::optional<LiveSource::Time> LiveSource::turn(LiveDistributor& distributor, Time now) {
  std::shared_ptr<const Published> present;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    present = published_;
  }
  if (present->measurement != measurement_) {
    // A measurement that was stopped and started again since the last turn is told as both.
    if (measurement_ != 0) {
      distributor.measurementStopped();
    }
    if (present->measurement != 0) {
      distributor.measurementStarted();
    }
    measurement_ = present->measurement;
  }
  if (measurement_ == 0) {
    return std::nullopt;
  }
  const std::optional<std::int64_t> frame = pacer_.take(now);
  if (frame) {
    deliver(distributor, present->state, *frame);
  }
  return pacer_.deadline();
}

void LiveSource::deliver(LiveDistributor& distributor, const LiveState& state, std::int64_t frame) {
  static const QByteArray tags[] = {"fr", "ts", "6d", "6dw", "6dw2"};
  const bool listened = std::any_of(std::begin(tags), std::end(tags),
                                    [&](const QByteArray& tag) { return distributor.hasSubscriber(tag); });
  if (!listened) {
    return;
  }
  for (const QByteArray& line : lines_.frame(state, frame, pacer_.secondsOf(frame))) {
    const QByteArray tag = line.left(line.indexOf(' '));
    if (distributor.hasSubscriber(tag)) {
      delivered_.fetch_add(1, std::memory_order_relaxed);
      distributor.deliver(tag, line);
    }
  }
}

}  // namespace korvex2
