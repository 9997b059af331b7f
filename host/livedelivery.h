// Hands the embedded backend's frames to the subscribers of live lines.
#ifndef KORVEX2_HOST_LIVEDELIVERY_H
#define KORVEX2_HOST_LIVEDELIVERY_H

#include <atomic>
#include <cstdint>

#include "livesink.h"

namespace korvex2 {

class LiveDistributor;

/// Each line of a frame goes to the subscribers of its first word; lines that nobody subscribed to are left out.
class LiveDelivery : public LiveSink {
 public:
  /// `distributor` must outlive the delivery.
  explicit LiveDelivery(LiveDistributor& distributor) : distributor_(distributor) {}

  bool wantsFrames() const override;
  void frame(const std::vector<QByteArray>& lines) override;
  void measurementStarted() override;
  void measurementStopped() override;

  /// Lines handed to subscribers so far; one counts once, however many listen. Any thread.
  std::uint64_t delivered() const { return delivered_.load(std::memory_order_relaxed); }

 private:
  LiveDistributor& distributor_;
  std::atomic<std::uint64_t> delivered_{0};
};

}  // namespace korvex2

#endif
