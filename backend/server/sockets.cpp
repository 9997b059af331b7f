// See sockets.h.
#include "sockets.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

#include <cerrno>
#include <cstring>

namespace korvex2 {

namespace {

/// Bytes that the system may hold for one client, each way: a bound for clients that never read.
constexpr int systemBuffer = 256 * 1024;

void setOption(int socket, int level, int option, int value) {
  // An option that the system does not have is no reason to turn a client away.
  static_cast<void>(::setsockopt(socket, level, option, &value, sizeof(value)));
}

QString systemReason() { return QString::fromLocal8Bit(std::strerror(errno)); }

}  // namespace

QByteArray SocketAddress::host() const {
  char text[NI_MAXHOST] = "";
  const int failed =
      ::getnameinfo(reinterpret_cast<const sockaddr*>(&storage), size, text, sizeof(text), nullptr, 0, NI_NUMERICHOST);
  return failed != 0 ? QByteArray("?") : QByteArray(text);
}

std::uint16_t SocketAddress::port() const {
  if (storage.ss_family == AF_INET6) {
    return ntohs(reinterpret_cast<const sockaddr_in6*>(&storage)->sin6_port);
  }
  return storage.ss_family == AF_INET ? ntohs(reinterpret_cast<const sockaddr_in*>(&storage)->sin_port)
                                      : std::uint16_t(0);
}

SocketAddress SocketAddress::withPort(std::uint16_t port) const {
  SocketAddress changed = *this;
  if (storage.ss_family == AF_INET6) {
    reinterpret_cast<sockaddr_in6*>(&changed.storage)->sin6_port = htons(port);
  } else if (storage.ss_family == AF_INET) {
    reinterpret_cast<sockaddr_in*>(&changed.storage)->sin_port = htons(port);
  }
  return changed;
}

FileDescriptor listenOn(const ListenAddress& address, QString& problem) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
  addrinfo* found = nullptr;
  const int failed =
      ::getaddrinfo(address.host.constData(), QByteArray::number(address.port).constData(), &hints, &found);
  if (failed != 0) {
    problem = QString::fromLocal8Bit(::gai_strerror(failed));
    return FileDescriptor();
  }
  FileDescriptor listener(::socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  bool listens = false;
  if (listener) {
    setOption(listener.get(), SOL_SOCKET, SO_REUSEADDR, 1);  // a restart need not wait for old connections to expire
    setOption(listener.get(), SOL_SOCKET, SO_RCVBUF, systemBuffer);  // clients inherit it
    listens = ::bind(listener.get(), found->ai_addr, found->ai_addrlen) == 0 && ::listen(listener.get(), 64) == 0;
  }
  if (!listens) {
    problem = systemReason();
  }
  ::freeaddrinfo(found);
  return listens ? std::move(listener) : FileDescriptor();
}

FileDescriptor acceptClient(const FileDescriptor& listener, bool& exhausted) {
  FileDescriptor client(::accept4(listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  exhausted = !client && (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM);
  if (client) {
    setOption(client.get(), IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(client.get(), SOL_SOCKET, SO_SNDBUF, systemBuffer);
    setOption(client.get(), SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(client.get(), IPPROTO_TCP, TCP_KEEPIDLE, 60);
    setOption(client.get(), IPPROTO_TCP, TCP_KEEPINTVL, 15);
    setOption(client.get(), IPPROTO_TCP, TCP_KEEPCNT, 4);
  }
  return client;
}

SocketAddress ownAddress(const FileDescriptor& socket) {
  SocketAddress address;
  address.size = sizeof(address.storage);
  if (::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address.storage), &address.size) != 0) {
    return SocketAddress();
  }
  return address;
}

SocketAddress peerAddress(const FileDescriptor& socket) {
  SocketAddress address;
  address.size = sizeof(address.storage);
  if (::getpeername(socket.get(), reinterpret_cast<sockaddr*>(&address.storage), &address.size) != 0) {
    return SocketAddress();
  }
  return address;
}

FileDescriptor datagramSocket(const SocketAddress& own) {
  FileDescriptor socket(::socket(own.storage.ss_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  const SocketAddress from = own.withPort(0);
  const bool bound = socket && ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&from.storage), from.size) == 0;
  return bound ? std::move(socket) : FileDescriptor();
}

}  // namespace korvex2
