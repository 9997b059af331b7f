// See faultlink.h.
#include "faultlink.h"

#include <QList>

#include <algorithm>
#include <thread>
#include <utility>

namespace korvex2_test {

namespace {

/// Between two pieces of a line, so that the reader has a chance to wake up for each.
constexpr std::chrono::microseconds pieceGap{30};

void writeInPieces(const LoopbackSocket& to, const QByteArray& bytes, int piece) {
  for (int begin = 0; begin < bytes.size(); begin += piece) {
    to.write(bytes.mid(begin, piece));
    std::this_thread::sleep_for(pieceGap);
  }
}

}  // namespace

FaultLink::FaultLink(LoopbackSocket host, LoopbackSocket backend, int number, const Callbacks& callbacks)
    : host_(std::move(host)), backend_(std::move(backend)), number_(number), callbacks_(callbacks) {}

std::vector<int> FaultLink::descriptors() const {
  std::vector<int> all;
  if (host_.isOpen()) {
    all.push_back(host_.descriptor());
  }
  if (backend_.isOpen() && !answers_.ended) {
    all.push_back(backend_.descriptor());
  }
  for (const Channel& channel : channels_) {
    all.push_back(channel.socket.descriptor());
  }
  return all;
}

std::optional<FaultLink::Clock::time_point> FaultLink::due() const {
  std::optional<Clock::time_point> first;
  for (const Stream* stream : {&commands_, &answers_}) {
    if (!stream->waiting.empty() && !stream->waiting.front().fate.held) {
      const Clock::time_point due = stream->waiting.front().due;
      first = first ? std::min(*first, due) : due;
    }
  }
  return first;
}

int FaultLink::held() const {
  int count = 0;
  for (const Stream* stream : {&commands_, &answers_}) {
    for (const Waiting& waiting : stream->waiting) {
      count += waiting.fate.held ? 1 : 0;
    }
  }
  return count;
}

void FaultLink::work() {
  if (host_.isOpen() && !commands_.ended) {
    read(host_, commands_, true);
    if (commands_.ended) {
      host_.close();
    }
  }
  if (backend_.isOpen() && !answers_.ended) {
    read(backend_, answers_, false);
  }
  passOn(commands_, backend_);
  passOn(answers_, host_);
  closeWhatEnded();
  relayDatagrams();
}

void FaultLink::read(const LoopbackSocket& from, Stream& stream, bool toBackend) {
  QByteArray bytes;
  do {
    bytes = from.read(stream.ended);
    for (const char byte : std::as_const(bytes)) {
      stream.received += byte;
      if (byte == '\n' || byte == '\0') {
        arrived(stream, toBackend, std::exchange(stream.received, QByteArray()));
      }
    }
  } while (!bytes.isEmpty() && !stream.ended);
}

void FaultLink::arrived(Stream& stream, bool toBackend, const QByteArray& bytes) {
  PassingLine line{toBackend, bytes.chopped(1), QByteArray(), number_};
  if (!toBackend && !asked_.empty()) {
    line.command = asked_.front();
    asked_.pop_front();
  }
  Fate fate = callbacks_.line(line);
  stream.waiting.push_back({line, bytes, fate, Clock::now() + fate.delay});
}

// "korvex2 set output net CHANNEL udp PORT" names a port of the relay on one side and the host's on the other.
QByteArray FaultLink::outgoing(const Waiting& next) {
  const QList<QByteArray> words = next.line.text.trimmed().split(' ');
  if (words.size() < 6 || !next.line.text.startsWith("korvex2 set output net ")) {
    return next.bytes;
  }
  const QByteArray& name = words[4];
  const auto channel =
      std::find_if(channels_.begin(), channels_.end(), [&name](const Channel& each) { return each.name == name; });
  const auto with = [&next, &words](quint16 port) {
    QByteArray bytes = next.bytes;
    return bytes.replace(" udp " + words[6], " udp " + QByteArray::number(port));
  };
  if (!next.line.toBackend) {
    return channel != channels_.end() && words.size() == 7 && words[6].toUShort() == channel->socket.port()
               ? with(channel->hostPort)
               : next.bytes;
  }
  if (channel != channels_.end()) {
    channels_.erase(channel);
  }
  if (words.size() != 7 || words[6].toUShort() == 0) {
    return next.bytes;
  }
  channels_.push_back({name, LoopbackSocket::datagrams(), words[6].toUShort()});
  return with(channels_.back().socket.port());
}

void FaultLink::passOn(Stream& stream, LoopbackSocket& to) {
  const bool toBackend = &stream == &commands_;
  while (!stream.waiting.empty() && !stream.waiting.front().fate.held && stream.waiting.front().due <= Clock::now()) {
    const Waiting next = std::move(stream.waiting.front());
    stream.waiting.pop_front();
    if (!next.fate.dropped && to.isOpen()) {
      QByteArray bytes = outgoing(next);
      bytes.truncate(next.fate.onlyHalf ? bytes.size() / 2 : next.fate.withoutEnd ? bytes.size() - 1 : bytes.size());
      bytes.prepend(std::exchange(stream.joined, QByteArray()));
      if (!next.fate.onlyHalf && !next.fate.withoutEnd) {
        if (toBackend) {
          asked_.push_back(next.line.text);
        }
        callbacks_.passed(next.line);
      }
      if (next.fate.withNext) {
        stream.joined = bytes;
      } else if (next.fate.segment > 0) {
        writeInPieces(to, bytes, next.fate.segment);
      } else {
        to.write(bytes);
      }
    }
    if (next.fate.cut) {
      if (toBackend) {
        stream.waiting.clear();
        stream.received.clear();
      }
      closeHost();
    }
    if (next.fate.then) {
      next.fate.then();
    }
  }
}

void FaultLink::closeHost() {
  host_.close();
  commands_.ended = true;
}

void FaultLink::closeWhatEnded() {
  if (answers_.ended && answers_.waiting.empty()) {  // the backend is gone and all it said was passed on
    if (host_.isOpen()) {
      host_.write(answers_.joined + answers_.received);
    }
    closeHost();
    commands_ = Stream();
    commands_.ended = true;
    backend_.close();
    channels_.clear();
  }
  if (!host_.isOpen()) {
    answers_.waiting.clear();
    if (backend_.isOpen() && commands_.waiting.empty()) {
      backend_.write(commands_.joined + commands_.received);
      commands_.joined.clear();
      commands_.received.clear();
      backend_.endSending();  // and wait until it closes its side
    }
  }
}

void FaultLink::relayDatagrams() {
  for (const Channel& channel : channels_) {
    for (;;) {
      bool ended = false;
      const QByteArray datagram = channel.socket.read(ended);
      if (datagram.isEmpty()) {
        break;
      }
      for (const QByteArray& passed : callbacks_.datagram(datagram)) {
        channel.socket.sendDatagram(passed, channel.hostPort);
        callbacks_.datagramSent();
      }
    }
  }
}

void FaultLink::release() {
  for (Stream* stream : {&commands_, &answers_}) {
    for (Waiting& waiting : stream->waiting) {
      waiting.fate.held = false;
    }
  }
}

void FaultLink::cut() {
  commands_.waiting.clear();
  commands_.received.clear();
  commands_.joined.clear();
  closeHost();
}

void FaultLink::sendToHost(const QByteArray& bytes) {
  if (host_.isOpen()) {
    host_.write(bytes);
  }
}

void FaultLink::sendDatagram(const QByteArray& datagram) {
  for (const Channel& channel : channels_) {
    channel.socket.sendDatagram(datagram, channel.hostPort);
    callbacks_.datagramSent();
  }
}

}  // namespace korvex2_test
