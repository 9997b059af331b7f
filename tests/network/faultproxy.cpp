// See faultproxy.h.
#include "faultproxy.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "faultlink.h"
#include "loopbacksocket.h"

namespace korvex2_test {

Fate Fate::drop() {
  Fate fate;
  fate.dropped = true;
  return fate;
}
Fate Fate::hold() {
  Fate fate;
  fate.held = true;
  return fate;
}
Fate Fate::late(std::chrono::milliseconds delay) {
  Fate fate;
  fate.delay = delay;
  return fate;
}
Fate Fate::inPieces(int bytes) {
  Fate fate;
  fate.segment = bytes;
  return fate;
}
Fate Fate::joinNext() {
  Fate fate;
  fate.withNext = true;
  return fate;
}
Fate Fate::cutBefore() {
  Fate fate;
  fate.cut = true;
  fate.dropped = true;
  return fate;
}
Fate Fate::cutAfter() {
  Fate fate;
  fate.cut = true;
  return fate;
}
Fate Fate::cutInside() {
  Fate fate = cutAfter();
  fate.onlyHalf = true;
  return fate;
}
Fate Fate::cutBeforeEnd() {
  Fate fate = cutAfter();
  fate.withoutEnd = true;
  return fate;
}
Fate Fate::andThen(std::function<void()> call) const {
  Fate fate = *this;
  fate.then = std::move(call);
  return fate;
}

/// What lives on the relay's thread.
class FaultProxy::Relay {
 public:
  FaultLink::Callbacks callbacks;
  LoopbackSocket listener;
  quint16 backendPort = 0;
  std::vector<std::unique_ptr<FaultLink>> links;
};

FaultProxy::FaultProxy(quint16 backendPort) : relay_(std::make_unique<Relay>()) {
  relay_->listener = LoopbackSocket::listening(0);
  relay_->backendPort = backendPort;
  port_ = relay_->listener.port();
  relay_->callbacks.line = [this](const PassingLine& line) {
    const std::lock_guard<std::recursive_mutex> lock(ruleMutex_);
    const LineRule rule = lineRule_;  // a rule may replace itself
    return rule ? rule(line) : Fate::pass();
  };
  relay_->callbacks.passed = [this](const PassingLine& line) { note(line.toBackend, line.text); };
  relay_->callbacks.datagram = [this](const QByteArray& datagram) {
    const int number = datagramsIn_++;
    const std::lock_guard<std::recursive_mutex> lock(ruleMutex_);
    const DatagramRule rule = datagramRule_;
    return rule ? rule(datagram, number) : std::vector<QByteArray>{datagram};
  };
  relay_->callbacks.datagramSent = [this] { ++datagramsOut_; };
  if (::pipe2(wake_, O_NONBLOCK | O_CLOEXEC) != 0) {
    port_ = 0;
    return;
  }
  thread_ = std::thread(&FaultProxy::run, this);
}

FaultProxy::~FaultProxy() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  if (thread_.joinable()) {
    wake();
    thread_.join();
  }
  ::close(wake_[0]);
  ::close(wake_[1]);
}

void FaultProxy::wake() {
  // A full pipe wakes as well.
  while (::write(wake_[1], "", 1) < 0 && errno == EINTR) {
  }
}

void FaultProxy::inRelay(std::function<void(Relay&)> work) {
  std::unique_lock<std::mutex> lock(mutex_);
  work_.push_back(std::move(work));
  const std::uint64_t mine = ++workGiven_;
  wake();
  if (std::this_thread::get_id() != thread_.get_id()) {  // a rule cannot wait for its own thread
    changed_.wait(lock, [&] { return workDone_ >= mine || stopping_; });
  }
}

void FaultProxy::run() {
  for (;;) {
    std::vector<std::function<void(Relay&)>> work;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (stopping_) {
        return;
      }
      work.swap(work_);
    }
    for (const auto& each : work) {
      each(*relay_);
    }
    if (!work.empty()) {
      const std::lock_guard<std::mutex> lock(mutex_);
      workDone_ += work.size();
      changed_.notify_all();
    }
    auto& links = relay_->links;
    for (;;) {
      LoopbackSocket host = relay_->listener.isOpen() ? relay_->listener.accepted() : LoopbackSocket();
      if (!host.isOpen()) {
        break;
      }
      const int number = connections_++;
      LoopbackSocket backend = LoopbackSocket::connectedTo(relay_->backendPort);
      if (backend.isOpen()) {
        links.push_back(std::make_unique<FaultLink>(std::move(host), std::move(backend), number, relay_->callbacks));
      }
    }
    for (const auto& link : links) {
      link->work();
    }
    links.erase(std::remove_if(links.begin(), links.end(), [](const auto& link) { return link->hasEnded(); }),
                links.end());
    open_ = static_cast<int>(std::count_if(links.begin(), links.end(), [](const auto& l) { return l->hasHost(); }));
    noteHeld();
    waitForEvent();
  }
}

void FaultProxy::noteHeld() {
  int held = 0;
  for (const auto& link : relay_->links) {
    held += link->held();
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  if (held != held_) {
    held_ = held;
    changed_.notify_all();
  }
}

void FaultProxy::waitForEvent() {
  std::vector<pollfd> entries = {{wake_[0], POLLIN, 0}};
  if (relay_->listener.isOpen()) {
    entries.push_back({relay_->listener.descriptor(), POLLIN, 0});
  }
  int limitMs = 1000;
  for (const auto& link : relay_->links) {
    for (const int descriptor : link->descriptors()) {
      entries.push_back({descriptor, POLLIN, 0});
    }
    if (const auto due = link->due()) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*due - FaultLink::Clock::now());
      limitMs = std::clamp(static_cast<int>(left.count()) + 1, 0, limitMs);
    }
  }
  ::poll(entries.data(), entries.size(), limitMs);
  char drained[64];
  while (::read(wake_[0], drained, sizeof drained) > 0) {
  }
}

void FaultProxy::note(bool toBackend, const QByteArray& text) {
  const std::lock_guard<std::mutex> lock(mutex_);
  passed_.push_back((toBackend ? "> " : "< ") + text.toStdString());
  changed_.notify_all();
}

void FaultProxy::setBackendPort(quint16 port) {
  inRelay([port](Relay& relay) { relay.backendPort = port; });
}

void FaultProxy::setListening(bool listening) {
  inRelay([this, listening](Relay& relay) {
    if (listening != relay.listener.isOpen()) {
      relay.listener = listening ? LoopbackSocket::listening(port_) : LoopbackSocket();
    }
  });
}

void FaultProxy::onLine(LineRule rule) {
  const std::lock_guard<std::recursive_mutex> lock(ruleMutex_);
  lineRule_ = std::move(rule);
}

void FaultProxy::onDatagram(DatagramRule rule) {
  const std::lock_guard<std::recursive_mutex> lock(ruleMutex_);
  datagramRule_ = std::move(rule);
}

void FaultProxy::passEverything() {
  onLine(nullptr);
  onDatagram(nullptr);
}

void FaultProxy::release() {
  inRelay([](Relay& relay) {
    for (const auto& link : relay.links) {
      link->release();
    }
  });
}

void FaultProxy::cut() {
  inRelay([](Relay& relay) {
    for (const auto& link : relay.links) {
      link->cut();
    }
  });
}

void FaultProxy::sendToHosts(const QByteArray& bytes) {
  inRelay([bytes](Relay& relay) {
    for (const auto& link : relay.links) {
      link->sendToHost(bytes);
    }
  });
}

void FaultProxy::sendDatagram(const QByteArray& datagram) {
  inRelay([datagram](Relay& relay) {
    for (const auto& link : relay.links) {
      link->sendDatagram(datagram);
    }
  });
}

bool FaultProxy::waitForHeld(std::chrono::milliseconds limit) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, limit, [this] { return held_ > 0; });
}

std::vector<std::string> FaultProxy::passed() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return passed_;
}

int FaultProxy::commands(const std::string& beginning) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  const std::string wanted = "> " + beginning;
  return static_cast<int>(std::count_if(passed_.begin(), passed_.end(), [&wanted](const std::string& line) {
    return line.compare(0, wanted.size(), wanted) == 0;
  }));
}

void FaultProxy::forgetPassed() {
  const std::lock_guard<std::mutex> lock(mutex_);
  passed_.clear();
}

bool FaultProxy::waitForCommand(const std::string& beginning, std::chrono::milliseconds limit) const {
  std::unique_lock<std::mutex> lock(mutex_);
  const std::string wanted = "> " + beginning;
  return changed_.wait_for(lock, limit, [&] {
    return std::any_of(passed_.begin(), passed_.end(),
                       [&wanted](const std::string& line) { return line.compare(0, wanted.size(), wanted) == 0; });
  });
}

}  // namespace korvex2_test
