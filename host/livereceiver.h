// The delivery thread of a connection over a network: takes datagrams and hands their lines to subscribers.
#ifndef KORVEX2_HOST_LIVERECEIVER_H
#define KORVEX2_HOST_LIVERECEIVER_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <QHostAddress>

#include "filedescriptor.h"

namespace korvex2 {

class LiveDistributor;

/// The GUI thread opens a port for each connection and says when a measurement begins and ends; what it says takes
/// effect in the order it was said. Subscribers are called on the delivery thread only.
///
/// Taken are datagrams from the backend's address whose frame number is higher than that of the one before: what was
/// sent twice or overtaken on its way is out of date. What is of no use is counted.
///
/// A frame that comes before the news that a measurement began is the news; frames that come shortly after a
/// measurement's end belong to it and are out of date.
class LiveReceiver {
 public:
  LiveReceiver();
  ~LiveReceiver();
  LiveReceiver(const LiveReceiver&) = delete;
  LiveReceiver& operator=(const LiveReceiver&) = delete;

  /// Begins to deliver; `distributor` must live until stop().
  /// @return false when the system has no descriptors left: nothing is delivered then
  bool start(LiveDistributor& distributor);
  /// Subscribers that know of a measurement are told of its end. No subscriber is called when this returns, and none
  /// will be. Nothing happens the second time.
  void stop();
  bool isRunning() const { return thread_.joinable(); }

  /// Takes datagrams of one connection from now on, in place of those of the one before.
  /// @param own  the local address of the connection: datagrams to others do not come in
  /// @return the port, 0 when there is none to be had
  std::uint16_t open(const QHostAddress& own, const QHostAddress& backend);
  /// The connection is no more: no measurement runs, and nothing is taken.
  void close();
  using Clock = std::chrono::steady_clock;

  /// What the backend said of its measurement.
  /// @param asked  since when that is true at least: an answer may be older than what a frame told meanwhile
  void setMeasuring(bool measuring, Clock::time_point asked = Clock::now());

  bool isMeasuring() const { return told_.load(std::memory_order_relaxed); }
  std::uint64_t delivered() const { return delivered_.load(std::memory_order_relaxed); }
  std::uint64_t droppedDatagrams() const { return droppedDatagrams_.load(std::memory_order_relaxed); }
  std::uint64_t droppedLines() const { return droppedLines_.load(std::memory_order_relaxed); }

 private:
  struct News {
    enum class Kind { opened, closed, started, stopped };
    Kind kind;
    FileDescriptor socket;  // opened: where datagrams come
    QHostAddress backend;   // opened: from whom
    Clock::time_point asked;
  };

  void run(LiveDistributor& distributor);
  void tell(News news);
  void take(News& news, LiveDistributor& distributor);
  void setTold(bool measuring, LiveDistributor& distributor);
  void receive(LiveDistributor& distributor);
  void takeDatagram(int size, LiveDistributor& distributor);

  const FileDescriptor wake_;

  std::mutex mutex_;
  std::vector<News> news_;  // guarded by mutex_
  bool measuring_ = false;  // GUI thread: what was said last
  std::atomic<bool> stopping_{false};

  FileDescriptor socket_;  // delivery thread only, as are the next ones
  QHostAddress backend_;
  std::optional<std::uint64_t> lastFrame_;
  std::optional<Clock::time_point> stoppedAt_;
  std::optional<Clock::time_point> announcedAt_;  // by a frame
  std::vector<char> buffer_;

  std::atomic<bool> told_{false};  // whether subscribers think that a measurement runs
  std::atomic<std::uint64_t> delivered_{0};
  std::atomic<std::uint64_t> droppedDatagrams_{0};
  std::atomic<std::uint64_t> droppedLines_{0};
  std::thread thread_;
};

}  // namespace korvex2

#endif
