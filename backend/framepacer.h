// When the frames of a fixed rate are due.
#ifndef KORVEX2_BACKEND_FRAMEPACER_H
#define KORVEX2_BACKEND_FRAMEPACER_H

#include <chrono>
#include <cstdint>
#include <optional>

namespace korvex2 {

/// Frame k is due k / rate seconds after the start, for ever: times are computed from the frame's number, never added
/// up, so nothing drifts. Frames whose time passed while nobody asked are skipped, not made up for; their numbers are
/// missing then.
class FramePacer {
 public:
  using Time = std::chrono::nanoseconds;  ///< since the start

  /// @param rate  frames a second, 1 or more
  explicit FramePacer(int rate) : rate_(rate) {}

  /// The latest frame that is due and was not given out yet, or nothing.
  std::optional<std::int64_t> take(Time now) {
    const std::int64_t seconds = now.count() / second;
    const std::int64_t frame = seconds * rate_ + now.count() % second * rate_ / second;
    if (frame < next_) {
      return std::nullopt;
    }
    next_ = frame + 1;
    return frame;
  }

  /// When the next frame is due; rounded up, so that take() gives it out then.
  Time deadline() const { return Time(next_ / rate_ * second + (next_ % rate_ * second + rate_ - 1) / rate_); }

  /// Ideal time of a frame in seconds.
  double secondsOf(std::int64_t frame) const { return static_cast<double>(frame) / static_cast<double>(rate_); }

 private:
  static constexpr std::int64_t second = 1'000'000'000;

  std::int64_t rate_;
  std::int64_t next_ = 0;
};

}  // namespace korvex2

#endif
