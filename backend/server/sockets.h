// The socket calls that the server needs, each with its options.
#ifndef KORVEX2_BACKEND_SOCKETS_H
#define KORVEX2_BACKEND_SOCKETS_H

#include <QByteArray>
#include <QString>

#include <sys/socket.h>

#include <cstdint>

#include "filedescriptor.h"
#include "listenaddress.h"

namespace korvex2 {

/// An address of a socket, as the system has it.
struct SocketAddress {
  sockaddr_storage storage{};
  socklen_t size = 0;

  /// Numeric; IPv6 addresses without brackets.
  QByteArray host() const;
  std::uint16_t port() const;
  /// The same host with another port.
  SocketAddress withPort(std::uint16_t port) const;
};

/// A socket that listens, or nothing and the reason in `problem`. It does not block.
FileDescriptor listenOn(const ListenAddress& address, QString& problem);

/// Takes the next client that waits: a socket that does not block, sends small answers at once, buffers no more than
/// some hundred kilobytes, and notices a machine that is gone within minutes. Nothing when nobody waits;
/// `exhausted` tells that somebody does, but no descriptor is left for him.
FileDescriptor acceptClient(const FileDescriptor& listener, bool& exhausted);

SocketAddress ownAddress(const FileDescriptor& socket);
SocketAddress peerAddress(const FileDescriptor& socket);

/// A socket to send datagrams from this address (its port does not matter); nothing when the system has none left.
FileDescriptor datagramSocket(const SocketAddress& own);

}  // namespace korvex2

#endif
