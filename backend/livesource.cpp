// See livesource.h.
#include "livesource.h"

#include <algorithm>
#include <utility>

#include "livesink.h"

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

void LiveSource::settle() { const std::lock_guard<std::mutex> lock(turnMutex_); }

bool LiveSource::isMeasuring() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return published_->measurement != 0;
}

void LiveSource::start(LiveSink& sink) {
  if (thread_.joinable()) {
    return;
  }
  pacer_ = FramePacer(rate_);
  measurement_ = 0;
  thread_ = std::thread([this, &sink] { run(sink); });
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

void LiveSource::run(LiveSink& sink) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  std::unique_lock<std::mutex> lock(mutex_);
  const auto wanted = [this] { return stopping_ || isNew_; };
  while (!stopping_) {
    isNew_ = false;
    lock.unlock();
    const std::optional<Time> next = turn(sink, Clock::now() - begin);
    lock.lock();
    if (next) {
      changed_.wait_until(lock, begin + *next, wanted);
    } else {
      changed_.wait(lock, wanted);
    }
  }
  lock.unlock();
  const std::lock_guard<std::mutex> turning(turnMutex_);
  if (measurement_ != 0) {  // nobody else will tell of this measurement's end
    measurement_ = 0;
    sink.measurementStopped();
  }
}

std::optional<LiveSource::Time> LiveSource::turn(LiveSink& sink, Time now) {
  const std::lock_guard<std::mutex> turning(turnMutex_);
  std::shared_ptr<const Published> present;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    present = published_;
  }
  if (present->measurement != measurement_) {
    // A measurement that was stopped and started again since the last turn is told as both.
    if (measurement_ != 0) {
      sink.measurementStopped();
    }
    if (present->measurement != 0) {
      sink.measurementStarted();
    }
    measurement_ = present->measurement;
  }
  if (measurement_ == 0) {
    return std::nullopt;
  }
  const std::optional<std::int64_t> frame = pacer_.take(now);
  if (frame && sink.wantsFrames()) {
    sink.frame(lines_.frame(present->state, *frame, pacer_.secondsOf(*frame)));
  }
  return pacer_.deadline();
}

}  // namespace korvex2
