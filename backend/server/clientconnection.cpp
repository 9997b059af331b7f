// See clientconnection.h.
#include "clientconnection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "interpreter.h"

namespace korvex2 {

namespace {

bool isTransient(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

QByteArray nameOf(const SocketAddress& address) { return ListenAddress{address.host(), address.port()}.text(); }

}  // namespace

ClientConnection::ClientConnection(FileDescriptor socket, const ServerLimits& limits)
    : socket_(std::move(socket)), limits_(limits), peer_(peerAddress(socket_)), name_(nameOf(peer_)) {}

short ClientConnection::events() const {
  const bool reads = phase_ == Phase::Farewell || (phase_ == Phase::Talking && !inputEnded_ && input_.room() > 0 &&
                                                   output_.size() - sent_ < limits_.mostWaitingBytes);
  return static_cast<short>((reads ? POLLIN : 0) | (output_.empty() ? 0 : POLLOUT));
}

bool ClientConnection::hasWork() {
  return phase_ == Phase::Talking && output_.size() - sent_ < limits_.mostWaitingBytes &&
         (input_.hasLine() || input_.isTooLong());
}

std::optional<ClientConnection::Clock::time_point> ClientConnection::deadline() const {
  if (farewellEnd_) {
    return farewellEnd_;
  }
  return waitingSince_ ? std::optional<Clock::time_point>(*waitingSince_ + limits_.stuckAfter) : std::nullopt;
}

void ClientConnection::receive(short events) {
  if ((events & POLLIN) == 0) {
    if ((events & (POLLERR | POLLHUP | POLLNVAL)) != 0) {
      phase_ = Phase::Gone;  // closed both ways; nobody is there to read an answer
    }
    return;
  }
  std::array<char, 64 * 1024> bytes;
  const std::size_t room = phase_ == Phase::Farewell ? bytes.size() : std::min(bytes.size(), input_.room());
  const ssize_t count = ::recv(socket_.get(), bytes.data(), room, 0);
  if (count < 0) {
    phase_ = isTransient(errno) ? phase_ : Phase::Gone;
  } else if (count == 0) {
    inputEnded_ = true;
    phase_ = phase_ == Phase::Farewell ? Phase::Gone : phase_;
  } else if (phase_ == Phase::Talking) {
    input_.append(bytes.data(), static_cast<std::size_t>(count));
  }
}

bool ClientConnection::answerLines(Interpreter& interpreter) {
  bool changed = false;
  for (int lines = 0; lines < limits_.mostLinesATurn && hasWork(); ++lines) {
    if (input_.isTooLong()) {
      turnAway(QByteArrayLiteral("korvex2 err 1 \"the line is too long\""));
      drop(QStringLiteral("it sent a line that is too long"));
      break;
    }
    const std::optional<ReceivedLine> line = input_.take();
    if (!line->text.isEmpty()) {
      const QByteArray answer = interpreter.answer(line->text, state_);
      output_.append(answer.constData(), static_cast<std::size_t>(answer.size()));
      output_ += line->end;
      changed = changed || !Interpreter::isQuery(line->text);
    }
  }
  if (phase_ == Phase::Talking && inputEnded_ && !input_.hasLine()) {
    phase_ = Phase::Ending;
  }
  return changed;
}

void ClientConnection::drop(const QString& reason) {
  dropped_ = true;
  dropReason_ = reason;
}

void ClientConnection::turnAway(const QByteArray& answer) {
  output_.append(answer.constData(), static_cast<std::size_t>(answer.size()));
  output_ += '\n';
  turnedAway_ = true;
  phase_ = Phase::Ending;
}

void ClientConnection::send(Clock::time_point now) {
  if (phase_ != Phase::Talking && phase_ != Phase::Ending) {
    return;
  }
  if (!output_.empty()) {
    const ssize_t count =
        ::send(socket_.get(), output_.data() + sent_, output_.size() - sent_, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0 && !isTransient(errno)) {
      phase_ = Phase::Gone;
      return;
    }
    sent_ += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    if (sent_ == output_.size()) {
      output_.clear();
      sent_ = 0;
      waitingSince_.reset();
    } else if (count > 0 || !waitingSince_) {
      waitingSince_ = now;
      output_.erase(0, sent_);
      sent_ = 0;
    }
  }
  if (phase_ == Phase::Ending && output_.empty()) {
    endWhenSent(now);
  }
}

void ClientConnection::endWhenSent(Clock::time_point now) {
  if (!turnedAway_ || inputEnded_) {
    phase_ = Phase::Gone;
    return;
  }
  // Closing with input unread would make the system throw away the answer that is on its way.
  ::shutdown(socket_.get(), SHUT_WR);
  phase_ = Phase::Farewell;
  farewellEnd_ = now + limits_.farewell;
}

void ClientConnection::check(Clock::time_point now) {
  if (farewellEnd_ && now >= *farewellEnd_) {
    phase_ = Phase::Gone;
  } else if (!farewellEnd_ && waitingSince_ && now - *waitingSince_ >= limits_.stuckAfter) {
    phase_ = Phase::Gone;
    drop(QStringLiteral("it did not read its answers"));
  }
}

void ClientConnection::appendDestinations(std::vector<Destination>& destinations) {
  if (turnedAway_ || phase_ == Phase::Gone) {
    return;
  }
  for (const auto& [name, channel] : state_.channels()) {
    if (channel.udpPort == 0) {
      continue;
    }
    if (datagrams_ == nullptr) {
      FileDescriptor socket = datagramSocket(ownAddress(socket_));
      if (!socket) {
        return;  // the system has none left just now
      }
      datagrams_ = std::make_shared<const FileDescriptor>(std::move(socket));
    }
    destinations.push_back({datagrams_, peer_.withPort(channel.udpPort), kindsOf(channel.kinds)});
  }
}

}  // namespace korvex2
