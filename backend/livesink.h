// Where a live source's frames go.
#ifndef KORVEX2_BACKEND_LIVESINK_H
#define KORVEX2_BACKEND_LIVESINK_H

#include <QByteArray>

#include <vector>

namespace korvex2 {

/// Called on the thread that delivers, one call after the other. A call must not wait long: the next frame is due.
class LiveSink {
 public:
  LiveSink() = default;
  LiveSink(const LiveSink&) = delete;
  LiveSink& operator=(const LiveSink&) = delete;
  virtual ~LiveSink() = default;

  /// False when a frame that were made now would reach nobody.
  virtual bool wantsFrames() const = 0;
  /// The lines of one frame, without line ends: "fr N", "ts T", and a line for each kind that is produced.
  virtual void frame(const std::vector<QByteArray>& lines) = 0;
  virtual void measurementStarted() {}
  virtual void measurementStopped() {}
};

}  // namespace korvex2

#endif
