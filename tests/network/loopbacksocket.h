// Plain sockets on the loopback address, for relays and clients that must not depend on an event loop.
#ifndef KORVEX2_TESTS_LOOPBACKSOCKET_H
#define KORVEX2_TESTS_LOOPBACKSOCKET_H

#include <QByteArray>

namespace korvex2_test {

/// Owns a socket's descriptor. All sockets are non-blocking, bound to or connected with 127.0.0.1 only.
class LoopbackSocket {
 public:
  LoopbackSocket() = default;
  explicit LoopbackSocket(int descriptor) : descriptor_(descriptor) {}
  LoopbackSocket(LoopbackSocket&& other) noexcept : descriptor_(other.release()) {}
  LoopbackSocket& operator=(LoopbackSocket&& other) noexcept;
  ~LoopbackSocket() { close(); }

  /// A listening socket; port 0 takes a free one.
  static LoopbackSocket listening(quint16 port);
  static LoopbackSocket connectedTo(quint16 port);
  static LoopbackSocket datagrams();
  /// The next waiting connection, or a closed socket.
  LoopbackSocket accepted() const;

  bool isOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }
  quint16 port() const;
  void close();
  /// Tells the other side that nothing more comes; what it sends can still be read.
  void endSending() const;

  /// What has arrived (or one datagram). `ended` is set when the other side is gone.
  QByteArray read(bool& ended) const;
  /// Writes everything, waiting at most some seconds for a reader that is slow; false when it did not go.
  bool write(const QByteArray& bytes) const;
  void sendDatagram(const QByteArray& datagram, quint16 port) const;

 private:
  int release();
  int descriptor_ = -1;
};

}  // namespace korvex2_test

#endif
