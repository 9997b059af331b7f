// Receives datagrams on a port of this machine.
#ifndef KORVEX2_TESTS_UDPRECEIVER_H
#define KORVEX2_TESTS_UDPRECEIVER_H

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "filedescriptor.h"
#include "sockets.h"

namespace korvex2_test {

class UdpReceiver {
 public:
  /// @param lastByte  of the address 127.0.0.x that it receives at; 0: the IPv6 loopback address
  explicit UdpReceiver(std::uint8_t lastByte = 1)
      : socket_(::socket(lastByte == 0 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    if (lastByte == 0) {
      sockaddr_in6 address{};
      address.sin6_family = AF_INET6;
      address.sin6_addr = in6addr_loopback;
      bound_ = ::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    } else {
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_addr.s_addr = htonl(0x7f000000U | lastByte);
      bound_ = ::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
  }

  bool isBound() const { return bound_; }
  std::string port() const { return std::to_string(korvex2::ownAddress(socket_).port()); }

  /// The next datagram, "(none)" when none comes in time.
  std::string datagram(std::chrono::milliseconds time = std::chrono::milliseconds(10'000)) {
    pollfd ready{socket_.get(), POLLIN, 0};
    if (::poll(&ready, 1, static_cast<int>(time.count())) != 1) {
      return "(none)";
    }
    std::array<char, 66'000> bytes;
    sockaddr_storage from{};
    socklen_t size = sizeof(from);
    const ssize_t count =
        ::recvfrom(socket_.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&from), &size);
    sender_.storage = from;
    sender_.size = size;
    return count < 0 ? "(none)" : std::string(bytes.data(), static_cast<std::size_t>(count));
  }
  /// Throws away what has come so far; the number of datagrams.
  int drain() {
    int count = 0;
    while (datagram(std::chrono::milliseconds(0)) != "(none)") {
      ++count;
    }
    return count;
  }
  /// Address that the last datagram came from.
  std::string sender() const { return sender_.host().toStdString(); }

 private:
  korvex2::FileDescriptor socket_;
  bool bound_ = false;
  korvex2::SocketAddress sender_;
};

/// The lines of a datagram, each of which must have its end; nothing when one has none.
inline std::vector<std::string> linesOf(const std::string& datagram) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  while (begin < datagram.size()) {
    const std::size_t end = datagram.find('\n', begin);
    if (end == std::string::npos) {
      return {};
    }
    lines.push_back(datagram.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

/// First words of the lines, joined by blanks.
inline std::string kindsIn(const std::string& datagram) {
  std::string kinds;
  for (const std::string& line : linesOf(datagram)) {
    kinds += (kinds.empty() ? "" : " ") + line.substr(0, line.find(' '));
  }
  return kinds;
}

/// Number of the frame; -1 when the datagram does not begin with one.
inline long frameOf(const std::string& datagram) {
  return datagram.rfind("fr ", 0) == 0 ? std::stol(datagram.substr(3)) : -1;
}

}  // namespace korvex2_test

#endif
