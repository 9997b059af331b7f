// See loopbacksocket.h.
#include "loopbacksocket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace korvex2_test {

namespace {

constexpr int longestWaitMs = 3000;

sockaddr_in loopback(quint16 port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

LoopbackSocket prepared(int descriptor) {
  if (descriptor >= 0) {
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    const int yes = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);  // one write, one segment
  }
  return LoopbackSocket(descriptor);
}

template <class Call>
bool worked(Call call, const sockaddr_in& address) {
  return call(reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool waitFor(int descriptor, short event) {
  pollfd entry{descriptor, event, 0};
  return ::poll(&entry, 1, longestWaitMs) == 1;
}

}  // namespace

LoopbackSocket& LoopbackSocket::operator=(LoopbackSocket&& other) noexcept {
  if (this != &other) {
    close();
    descriptor_ = other.release();
  }
  return *this;
}

int LoopbackSocket::release() { return std::exchange(descriptor_, -1); }

LoopbackSocket LoopbackSocket::listening(quint16 port) {
  LoopbackSocket made = prepared(::socket(AF_INET, SOCK_STREAM, 0));
  const int yes = 1;
  ::setsockopt(made.descriptor_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  const auto bind = [&made](const sockaddr* address, socklen_t size) {
    return ::bind(made.descriptor_, address, size);
  };
  if (!worked(bind, loopback(port)) || ::listen(made.descriptor_, 16) != 0) {
    made.close();
  }
  return made;
}

LoopbackSocket LoopbackSocket::connectedTo(quint16 port) {
  LoopbackSocket made = prepared(::socket(AF_INET, SOCK_STREAM, 0));
  const auto connect = [&made](const sockaddr* address, socklen_t size) {
    return ::connect(made.descriptor_, address, size);
  };
  if (worked(connect, loopback(port))) {
    return made;
  }
  int error = errno;
  if (error == EINPROGRESS && waitFor(made.descriptor_, POLLOUT)) {
    socklen_t size = sizeof error;
    ::getsockopt(made.descriptor_, SOL_SOCKET, SO_ERROR, &error, &size);
  }
  if (error != 0) {
    made.close();
  }
  return made;
}

LoopbackSocket LoopbackSocket::datagrams() {
  LoopbackSocket made = prepared(::socket(AF_INET, SOCK_DGRAM, 0));
  const auto bind = [&made](const sockaddr* address, socklen_t size) {
    return ::bind(made.descriptor_, address, size);
  };
  if (!worked(bind, loopback(0))) {
    made.close();
  }
  return made;
}

LoopbackSocket LoopbackSocket::accepted() const { return prepared(::accept(descriptor_, nullptr, nullptr)); }

quint16 LoopbackSocket::port() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  return ::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size) == 0 ? ntohs(address.sin_port)
                                                                                       : quint16(0);
}

void LoopbackSocket::close() {
  if (descriptor_ >= 0) {
    ::close(release());
  }
}

void LoopbackSocket::endSending() const { ::shutdown(descriptor_, SHUT_WR); }

QByteArray LoopbackSocket::read(bool& ended) const {
  QByteArray bytes(65536, Qt::Uninitialized);
  const ssize_t count = ::recv(descriptor_, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
  ended = ended || count == 0 || (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR);
  bytes.truncate(count > 0 ? static_cast<int>(count) : 0);
  return bytes;
}

bool LoopbackSocket::write(const QByteArray& bytes) const {
  int written = 0;
  while (written < bytes.size()) {
    const ssize_t count = ::send(descriptor_, bytes.constData() + written,
                                 static_cast<std::size_t>(bytes.size() - written), MSG_NOSIGNAL);
    if (count > 0) {
      written += static_cast<int>(count);
    } else if ((errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) || !waitFor(descriptor_, POLLOUT)) {
      return false;
    }
  }
  return true;
}

void LoopbackSocket::sendDatagram(const QByteArray& datagram, quint16 port) const {
  const sockaddr_in address = loopback(port);
  ::sendto(descriptor_, datagram.constData(), static_cast<std::size_t>(datagram.size()), MSG_NOSIGNAL,
           reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

}  // namespace korvex2_test
