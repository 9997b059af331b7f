// One client of the server: its bytes in and out, its command lines, its place in the end.
#ifndef KORVEX2_BACKEND_CLIENTCONNECTION_H
#define KORVEX2_BACKEND_CLIENTCONNECTION_H

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "clientstate.h"
#include "datagramsender.h"
#include "filedescriptor.h"
#include "linebuffer.h"
#include "serverlimits.h"
#include "sockets.h"

namespace korvex2 {

class Interpreter;

/// Nothing here blocks or throws; memory is bounded by LineBuffer::capacity, ServerLimits::mostWaitingBytes and the
/// length of one answer.
///
/// Ends: a client that closes its side is answered what it asked completely before; a line that has no end yet is
/// forgotten. A client that is turned away gets the reason and, so that it can still be read, a moment in which what
/// it goes on sending is thrown away.
class ClientConnection {
 public:
  using Clock = std::chrono::steady_clock;

  ClientConnection(FileDescriptor socket, const ServerLimits& limits);

  int descriptor() const { return socket_.get(); }
  /// "127.0.0.1:49152"
  const QByteArray& name() const { return name_; }
  ClientState& state() { return state_; }
  const ClientState& state() const { return state_; }

  /// What poll() shall wait for.
  short events() const;
  /// Whether a line waits that can be answered now.
  bool hasWork();
  /// When check() has something to do if nothing else happens.
  std::optional<Clock::time_point> deadline() const;

  /// Takes what has come, as much as there is room for. `events` is poll()'s answer.
  void receive(short events);
  /// Answers complete lines, as many as a turn has. Returns whether one of them was no query.
  bool answerLines(Interpreter& interpreter);
  /// Sends what waits, as much as goes.
  void send(Clock::time_point now);
  /// Drops the client when it has been stuck for too long.
  void check(Clock::time_point now);
  /// Answers with an error, and ends the connection.
  void turnAway(const QByteArray& answer);

  /// Nothing more will come of it: to be removed.
  bool isGone() const { return phase_ == Phase::Gone; }
  /// Whether it was told so, and is a client no more.
  bool isTurnedAway() const { return turnedAway_; }
  /// Why the server ends the connection, once; empty when it does not.
  QString takeDropReason() { return std::exchange(dropReason_, QString()); }
  bool wasDropped() const { return dropped_; }

  /// Where its channels' frames go. Opens the socket for them with the first; when the system has none left, they go
  /// nowhere until this is called again.
  void appendDestinations(std::vector<Destination>& destinations);

 private:
  enum class Phase {
    Talking,
    Ending,    // no more commands; what waits is sent
    Farewell,  // all is sent and our side closed; what comes is thrown away
    Gone
  };

  void drop(const QString& reason);
  void endWhenSent(Clock::time_point now);

  FileDescriptor socket_;
  const ServerLimits limits_;
  SocketAddress peer_;
  QByteArray name_;
  ClientState state_{true};
  LineBuffer input_;
  std::string output_;
  std::size_t sent_ = 0;  // of output_
  Phase phase_ = Phase::Talking;
  bool inputEnded_ = false;
  bool turnedAway_ = false;
  bool dropped_ = false;
  QString dropReason_;
  std::optional<Clock::time_point> waitingSince_;  // since when output_ makes no progress
  std::optional<Clock::time_point> farewellEnd_;
  std::shared_ptr<const FileDescriptor> datagrams_;
};

}  // namespace korvex2

#endif
