// See linesocket.h.
#include "linesocket.h"

#include <array>
#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>

namespace korvex2 {

namespace {

timeval timevalOf(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  const auto rest = std::chrono::duration_cast<std::chrono::microseconds>(time - seconds);
  return {static_cast<time_t>(seconds.count()), static_cast<suseconds_t>(rest.count())};
}

bool wouldWait(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

}  // namespace

LineSocket::LineSocket(int descriptor, std::chrono::milliseconds patience)
    : descriptor_(descriptor), patience_(patience) {
  buffer_.reserve(16 * 1024);  // kept between lines
  // Whoever made the socket may have made it one that never waits.
  const int flags = ::fcntl(descriptor_, F_GETFL);
  ::fcntl(descriptor_, F_SETFL, flags & ~O_NONBLOCK);
  const timeval limit = timevalOf(patience);
  ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

LineSocket::~LineSocket() { ::close(descriptor_); }

void LineSocket::abort() {
  const linger atOnce{1, 0};
  ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

LineSocket::Result LineSocket::awaitReadiness(short events, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
      return Result::late;
    }
    pollfd asked{descriptor_, events, 0};
    const int ready = ::poll(&asked, 1, static_cast<int>(std::min<long long>(left, INT_MAX)));
    if (ready > 0) {
      return Result::done;
    }
    if (ready < 0 && errno != EINTR) {
      problem_ = qt_error_string(errno);
      return Result::broken;
    }
  }
}

LineSocket::Result LineSocket::write(const QByteArray& bytes, Clock::time_point deadline) {
  int sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = ::send(descriptor_, bytes.constData() + sent, static_cast<std::size_t>(bytes.size() - sent),
                                 MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
      sent += static_cast<int>(count);
    } else if (wouldWait(errno)) {
      const Result ready = awaitReadiness(POLLOUT, deadline);
      if (ready != Result::done) {
        return ready;
      }
    } else if (errno == EPIPE || errno == ECONNRESET) {
      return Result::closed;
    } else if (errno != EINTR) {
      problem_ = qt_error_string(errno);
      return Result::broken;
    }
  }
  return Result::done;
}

LineSocket::Result LineSocket::receive(int flags) {
  std::array<char, 16 * 1024> piece;  // not initialized: only what was received is looked at
  const ssize_t count = ::recv(descriptor_, piece.data(), piece.size(), flags);
  if (count > 0) {
    if (begin_ > 0) {
      buffer_.remove(0, begin_);
      scanned_ -= begin_;
      begin_ = 0;
    }
    buffer_.append(piece.data(), static_cast<int>(count));
    return Result::done;
  }
  if (count == 0 || errno == ECONNRESET) {
    return Result::closed;
  }
  if (wouldWait(errno) || errno == EINTR) {
    return Result::notYet;
  }
  problem_ = qt_error_string(errno);
  return Result::broken;
}

bool LineSocket::takeBuffered(QByteArray& line) {
  const int end = buffer_.indexOf('\n', scanned_);
  if (end < 0) {
    scanned_ = buffer_.size();
    return false;
  }
  const bool carriageReturn = end > begin_ && buffer_.at(end - 1) == '\r';
  line = buffer_.mid(begin_, end - begin_ - (carriageReturn ? 1 : 0));
  begin_ = end + 1;
  scanned_ = begin_;
  if (begin_ == buffer_.size()) {
    buffer_.resize(0);
    begin_ = 0;
    scanned_ = 0;
  }
  return true;
}

LineSocket::Result LineSocket::takeLine(QByteArray& line) {
  while (!takeBuffered(line)) {
    if (buffer_.size() - begin_ > longestLine) {
      return Result::endless;
    }
    const Result received = receive(MSG_DONTWAIT);
    if (received != Result::done) {
      return received;
    }
  }
  return line.size() > longestLine ? Result::endless : Result::done;
}

LineSocket::Result LineSocket::readLine(QByteArray& line, Clock::time_point deadline) {
  constexpr std::chrono::milliseconds unnoticed(5);
  if (!hasRest() && deadline - Clock::now() > patience_ - unnoticed) {
    // The usual case: the socket itself waits, as long as it was told to, and the whole answer comes at once.
    const Result received = receive(0);
    if (received != Result::done && received != Result::notYet) {
      return received;
    }
  }
  for (;;) {
    const Result taken = takeLine(line);
    if (taken != Result::notYet) {
      return taken;
    }
    const Result ready = awaitReadiness(POLLIN, deadline);
    if (ready != Result::done) {
      return ready;
    }
  }
}

}  // namespace korvex2
