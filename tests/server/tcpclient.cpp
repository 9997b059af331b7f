// See tcpclient.h.
#include "tcpclient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>

#include "sockets.h"

namespace korvex2_test {

namespace {

constexpr std::chrono::milliseconds patience{10'000};

}  // namespace

TcpClient::TcpClient(std::uint16_t port, Family family, int buffers)
    : socket_(::socket(family == Family::V4 ? AF_INET : AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const int on = 1;
  ::setsockopt(socket_.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  if (buffers != 0) {
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &buffers, sizeof(buffers));
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_SNDBUF, &buffers, sizeof(buffers));
  }
  int result = -1;
  if (family == Family::V4) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    result = ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  } else {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(port);
    address.sin6_addr = in6addr_loopback;
    result = ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  }
  if (result != 0) {
    close();
  }
}

std::uint16_t TcpClient::ownPort() const { return korvex2::ownAddress(socket_).port(); }

bool TcpClient::send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    pollfd ready{socket_.get(), POLLOUT, 0};
    if (::poll(&ready, 1, static_cast<int>(patience.count())) != 1) {
      return false;
    }
    const ssize_t count = ::send(socket_.get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0) {
      return false;
    }
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

std::size_t TcpClient::sendSome(const std::string& bytes) {
  const ssize_t count = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  return count < 0 ? 0 : static_cast<std::size_t>(count);
}

bool TcpClient::canSend() const {
  pollfd ready{socket_.get(), POLLOUT, 0};
  ::poll(&ready, 1, 0);
  return (ready.revents & (POLLERR | POLLHUP)) == 0;
}

TcpClient::More TcpClient::receive(std::chrono::milliseconds time) {
  pollfd ready{socket_.get(), POLLIN, 0};
  if (::poll(&ready, 1, static_cast<int>(time.count())) != 1) {
    return More::TimedOut;
  }
  std::array<char, 65536> bytes;
  const ssize_t count = ::recv(socket_.get(), bytes.data(), bytes.size(), 0);
  if (count <= 0) {
    return More::Ended;
  }
  received_.append(bytes.data(), static_cast<std::size_t>(count));
  return More::Came;
}

std::string TcpClient::line(char end) {
  std::size_t scanned = 0;
  while (true) {
    const std::size_t at = received_.find(end, scanned);
    if (at != std::string::npos) {
      const std::string line = received_.substr(0, at);
      received_.erase(0, at + 1);
      return line;
    }
    scanned = received_.size();
    const More more = receive(patience);
    if (more != More::Came) {
      return received_ + (more == More::Ended ? "(ended)" : "(timed out)");
    }
  }
}

std::string TcpClient::rest() {
  while (true) {
    const More more = receive(patience);
    if (more != More::Came) {
      std::string all;
      all.swap(received_);
      return all + (more == More::Ended ? "" : "(open)");
    }
  }
}

bool TcpClient::isSilent(std::chrono::milliseconds moment) {
  return received_.empty() && receive(moment) == More::TimedOut;
}

void TcpClient::finish() { ::shutdown(socket_.get(), SHUT_WR); }

void TcpClient::reset() {
  const linger now{1, 0};
  ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &now, sizeof(now));
  close();
}

}  // namespace korvex2_test
