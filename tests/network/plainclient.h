// A client of a line server without anything of the host's: writes lines, waits for lines.
#ifndef KORVEX2_TESTS_PLAINCLIENT_H
#define KORVEX2_TESTS_PLAINCLIENT_H

#include <QByteArray>

#include "loopbacksocket.h"

namespace korvex2_test {

/// One connection to a port of 127.0.0.1. Waits at most some seconds for anything.
class PlainClient {
 public:
  explicit PlainClient(quint16 port) : socket_(LoopbackSocket::connectedTo(port)) {}
  bool isConnected() const { return socket_.isOpen(); }
  /// Sends a line and returns the answer without its end; empty when none came.
  QByteArray ask(const QByteArray& line);
  void send(const QByteArray& bytes);
  /// The next line; empty when none comes.
  QByteArray readLine();

 private:
  LoopbackSocket socket_;
  QByteArray received_;
};

}  // namespace korvex2_test

#endif
