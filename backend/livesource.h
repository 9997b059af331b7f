// The delivery thread: turns the simulated backend's state into live lines at a fixed rate.
#ifndef KORVEX2_BACKEND_LIVESOURCE_H
#define KORVEX2_BACKEND_LIVESOURCE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "framepacer.h"
#include "livelines.h"
#include "livestate.h"

namespace korvex2 {

class LiveSink;

/// Between the thread that changes the backend and the one that delivers there is one published state: an unchanging
/// copy, replaced under a lock that is held for no longer than a pointer's copy. So the delivery never waits for a
/// command that is being carried out, and neither does a command for a receiver.
///
/// Frames are numbered from start(), and their times are number / rate. A frame that could not be made in time is left
/// out. While nothing is measured, the thread sleeps.
class LiveSource {
 public:
  static constexpr int lowestRate = 1;
  static constexpr int highestRate = 1000;
  static constexpr int defaultRate = 60;

  using Time = FramePacer::Time;  ///< since start()

  /// @param rate  frames a second; taken to the nearest limit
  explicit LiveSource(LiveLines lines, int rate = defaultRate);
  ~LiveSource();
  LiveSource(const LiveSource&) = delete;
  LiveSource& operator=(const LiveSource&) = delete;

  /// Makes a new state the present one. Any thread.
  void publish(LiveState state);

  /// Waits for the frame that is being delivered, if any: when it returns, everything that comes follows the state that
  /// was published last. For those whose sink never waits; not to be called from within the sink.
  void settle();

  /// Begins to deliver; nothing happens when it does already. `sink` must live until stop().
  void start(LiveSink& sink);
  /// Ends the delivery: a sink that knows of a measurement is told of its end, is not being called when this returns,
  /// and will not be. Nothing happens the second time.
  /// Not to be called from within the sink, nor while the sink waits for the caller.
  void stop();

  int rate() const { return rate_; }
  bool isMeasuring() const;

  /// What the thread does whenever something changed or a frame is due: tells the sink of the beginning and end of
  /// measurements, and delivers the frame that is due. Returns when it wants its next turn, nothing for "when something
  /// changes". Public for those who bring their own thread and clock, and then do not call start().
  std::optional<Time> turn(LiveSink& sink, Time now);

 private:
  struct Published {
    LiveState state;
    std::uint64_t measurement = 0;  // number of the running measurement, 0 while there is none
  };

  void run(LiveSink& sink);

  const LiveLines lines_;
  const int rate_;

  std::mutex turnMutex_;  // held during a turn; taken before mutex_
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::shared_ptr<const Published> published_;  // guarded by mutex_, as are the next three
  std::uint64_t measurements_ = 0;
  bool isNew_ = false;
  bool stopping_ = false;

  FramePacer pacer_;               // delivery thread only, as is the next
  std::uint64_t measurement_ = 0;  // the one that the sink knows of
  std::thread thread_;
};

}  // namespace korvex2

#endif
