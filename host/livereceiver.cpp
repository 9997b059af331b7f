// See livereceiver.h.
#include "livereceiver.h"

#include <array>
#include <cerrno>
#include <utility>

#include <QUdpSocket>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include "hostlogging.h"
#include "livedatagram.h"
#include "livedistributor.h"

namespace korvex2 {

namespace {

/// No datagram is longer.
constexpr std::size_t longestDatagram = 65536;
/// Datagrams taken before the thread looks for news again.
constexpr int mostInARow = 64;
/// Frames on their way when a measurement ends are here by then.
constexpr std::chrono::milliseconds afterglow(200);

}  // namespace

LiveReceiver::LiveReceiver() : wake_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), buffer_(longestDatagram) {}

LiveReceiver::~LiveReceiver() { stop(); }

bool LiveReceiver::start(LiveDistributor& distributor) {
  if (!wake_) {  // a thread that cannot be woken could not be ended either
    qCWarning(logChannel) << "no live lines: there are too many open files";
    return false;
  }
  if (!isRunning()) {
    stopping_ = false;
    thread_ = std::thread([this, &distributor] { run(distributor); });
  }
  return true;
}

void LiveReceiver::stop() {
  if (isRunning()) {
    stopping_ = true;
    ::eventfd_write(wake_.get(), 1);
    thread_.join();
    socket_ = FileDescriptor();
  }
}

std::uint16_t LiveReceiver::open(const QHostAddress& own, const QHostAddress& backend) {
  QUdpSocket socket;
  if (!socket.bind(own, 0, QAbstractSocket::DontShareAddress)) {
    qCWarning(logChannel).noquote() << "no port for live lines:" << socket.errorString();
    return 0;
  }
  // Some seconds of lines find room while the thread does not come to run.
  socket.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4 * 1024 * 1024);
  FileDescriptor descriptor(::fcntl(static_cast<int>(socket.socketDescriptor()), F_DUPFD_CLOEXEC, 0));
  if (!descriptor) {
    return 0;
  }
  measuring_ = false;
  tell({News::Kind::opened, std::move(descriptor), backend, Clock::now()});
  return socket.localPort();
}

void LiveReceiver::close() {
  measuring_ = false;
  tell({News::Kind::closed, FileDescriptor(), QHostAddress(), Clock::now()});
}

void LiveReceiver::setMeasuring(bool measuring, Clock::time_point asked) {
  // Said again after every command or question that tells it: what a frame announced may have been an error.
  if (isRunning() && (measuring || measuring_ || isMeasuring())) {
    measuring_ = measuring;
    tell({measuring ? News::Kind::started : News::Kind::stopped, FileDescriptor(), QHostAddress(), asked});
  }
}

void LiveReceiver::tell(News news) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (news.kind == News::Kind::opened || news.kind == News::Kind::closed) {
      news_.clear();  // of the connection before
    }
    news_.push_back(std::move(news));
  }
  ::eventfd_write(wake_.get(), 1);
}

void LiveReceiver::run(LiveDistributor& distributor) {
  while (!stopping_) {
    std::vector<News> news;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      news.swap(news_);
    }
    for (News& item : news) {
      take(item, distributor);
    }
    std::array<pollfd, 2> awaited{{{wake_.get(), POLLIN, 0}, {socket_.get(), POLLIN, 0}}};  // -1 is left out
    if (::poll(awaited.data(), awaited.size(), -1) < 0) {
      continue;  // a signal
    }
    if (awaited[0].revents != 0) {
      eventfd_t count = 0;
      ::eventfd_read(wake_.get(), &count);
    } else if (awaited[1].revents != 0) {
      receive(distributor);
    }
  }
  setTold(false, distributor);  // nobody else will tell of this measurement's end
}

void LiveReceiver::take(News& news, LiveDistributor& distributor) {
  switch (news.kind) {
    case News::Kind::opened:
    case News::Kind::closed:
      setTold(false, distributor);
      lastFrame_.reset();
      stoppedAt_.reset();
      announcedAt_.reset();
      socket_ = std::move(news.socket);
      backend_ = news.backend;
      break;
    case News::Kind::started:
      setTold(true, distributor);
      break;
    case News::Kind::stopped:
      if (announcedAt_ && news.asked < *announcedAt_) {
        break;  // out of date: a measurement began since
      }
      announcedAt_.reset();
      setTold(false, distributor);
      stoppedAt_ = Clock::now();
      break;
  }
}

void LiveReceiver::setTold(bool measuring, LiveDistributor& distributor) {
  if (told_.load(std::memory_order_relaxed) == measuring) {
    return;
  }
  told_ = measuring;
  measuring ? distributor.measurementStarted() : distributor.measurementStopped();
}

void LiveReceiver::receive(LiveDistributor& distributor) {
  for (int i = 0; i < mostInARow && !stopping_; ++i) {
    sockaddr_storage from{};
    socklen_t length = sizeof from;
    const ssize_t size = ::recvfrom(socket_.get(), buffer_.data(), buffer_.size(), MSG_DONTWAIT,
                                    reinterpret_cast<sockaddr*>(&from), &length);
    if (size < 0) {
      return;  // none is there, or an error of an earlier one: there is nothing to be done about it
    }
    const bool foreign =
        !QHostAddress(reinterpret_cast<const sockaddr*>(&from)).isEqual(backend_, QHostAddress::TolerantConversion);
    if (foreign) {
      droppedDatagrams_.fetch_add(1, std::memory_order_relaxed);
    } else {
      takeDatagram(static_cast<int>(size), distributor);
    }
  }
}

void LiveReceiver::takeDatagram(int size, LiveDistributor& distributor) {
  const LiveDatagram datagram = parseLiveDatagram(buffer_.data(), size);
  if (!datagram.frame || (lastFrame_ && *datagram.frame <= *lastFrame_)) {
    droppedDatagrams_.fetch_add(1, std::memory_order_relaxed);
    return;
  }
  lastFrame_ = datagram.frame;
  if (!told_.load(std::memory_order_relaxed) && stoppedAt_ && Clock::now() - *stoppedAt_ < afterglow) {
    return;
  }
  if (!told_.load(std::memory_order_relaxed)) {
    announcedAt_ = Clock::now();
    setTold(true, distributor);
  }
  droppedLines_.fetch_add(static_cast<std::uint64_t>(datagram.dropped), std::memory_order_relaxed);
  for (const QByteArray& line : datagram.lines) {
    const QByteArray tag = line.left(line.indexOf(' '));
    if (distributor.hasSubscriber(tag)) {
      delivered_.fetch_add(1, std::memory_order_relaxed);
      distributor.deliver(tag, line);
    }
  }
}

}  // namespace korvex2
