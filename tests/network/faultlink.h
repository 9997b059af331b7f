// One host's connection through the relay: two streams of lines, and the datagrams of the channels it opened.
#ifndef KORVEX2_TESTS_FAULTLINK_H
#define KORVEX2_TESTS_FAULTLINK_H

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include <QByteArray>

#include "faultproxy.h"
#include "loopbacksocket.h"

namespace korvex2_test {

class FaultLink {
 public:
  using Clock = std::chrono::steady_clock;

  struct Callbacks {
    std::function<Fate(const PassingLine&)> line;
    std::function<void(const PassingLine&)> passed;
    std::function<std::vector<QByteArray>(const QByteArray&)> datagram;
    std::function<void()> datagramSent;
  };

  FaultLink(LoopbackSocket host, LoopbackSocket backend, int number, const Callbacks& callbacks);

  /// What to wait for: readable descriptors, and the moment when something delayed is due.
  std::vector<int> descriptors() const;
  std::optional<Clock::time_point> due() const;
  /// Reads what has come and passes on what may go. Never waits for more than a reader that is slow.
  void work();
  int held() const;
  bool hasHost() const { return host_.isOpen(); }
  bool hasEnded() const { return !host_.isOpen() && !backend_.isOpen(); }

  void release();
  void cut();
  void sendToHost(const QByteArray& bytes);
  void sendDatagram(const QByteArray& datagram);

 private:
  struct Waiting {
    PassingLine line;
    QByteArray bytes;  // with its end
    Fate fate;
    Clock::time_point due;
  };
  struct Stream {
    QByteArray received;  // the beginning of a line
    std::deque<Waiting> waiting;
    QByteArray joined;  // passed on together with the next line
    bool ended = false;
  };
  struct Channel {
    QByteArray name;
    LoopbackSocket socket;
    quint16 hostPort = 0;
  };

  void read(const LoopbackSocket& from, Stream& stream, bool toBackend);
  void arrived(Stream& stream, bool toBackend, const QByteArray& bytes);
  void passOn(Stream& stream, LoopbackSocket& to);
  QByteArray outgoing(const Waiting& next);
  void closeHost();
  void closeWhatEnded();
  void relayDatagrams();

  LoopbackSocket host_;
  LoopbackSocket backend_;
  int number_;
  const Callbacks& callbacks_;
  Stream commands_;
  Stream answers_;
  std::deque<QByteArray> asked_;  // commands that the backend has yet to answer
  std::vector<Channel> channels_;
};

}  // namespace korvex2_test

#endif
