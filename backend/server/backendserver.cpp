// See backendserver.h.
#include "backendserver.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "livestate.h"
#include "serverlogging.h"

namespace korvex2 {

namespace {

// Keys of what is watched; a client's is its descriptor, which is smaller.
constexpr std::uint64_t stopKey = UINT64_MAX;
constexpr std::uint64_t listenerKey = UINT64_MAX - 1;

static_assert(EPOLLIN == POLLIN && EPOLLOUT == POLLOUT && EPOLLERR == POLLERR && EPOLLHUP == POLLHUP,
              "the bits of both calls are the same");

// How many clients are let in before the present ones have their turn again.
constexpr int mostWelcomesATurn = 16;

constexpr std::chrono::milliseconds acceptPause{100};

}  // namespace

BackendServer::BackendServer(BodyDatabase& database, LiveLines lines, int rate, const ServerLimits& limits)
    : interpreter_(database), limits_(limits), epoll_(::epoll_create1(EPOLL_CLOEXEC)), live_(std::move(lines), rate) {
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
    stopReader_ = FileDescriptor(ends[0]);
    stopWriter_ = FileDescriptor(ends[1]);
  }
  if (!stopReader_ || !watch(EPOLL_CTL_ADD, stopReader_.get(), POLLIN, stopKey)) {
    epoll_ = FileDescriptor();  // listen() tells
  }
}

BackendServer::~BackendServer() { live_.stop(); }

QString BackendServer::listen(const ListenAddress& address) {
  if (!epoll_) {
    return QStringLiteral("there are too many open files");
  }
  QString problem;
  listener_ = listenOn(address, problem);
  if (listener_) {
    address_ = address;
    address_.port = ownAddress(listener_).port();
  }
  return problem;
}

void BackendServer::stop() {
  const char byte = 0;
  // A pipe that is full has been told.
  static_cast<void>(::write(stopWriter_.get(), &byte, 1) == 1);
}

void BackendServer::run() {
  live_.start(sender_);
  while (waitForEvents() && !stopSeen_) {
    const Clock::time_point now = Clock::now();
    const std::size_t count = clients_.size();
    firstTurn_ = count == 0 ? 0 : (firstTurn_ + 1) % count;
    for (std::size_t i = 0; i < count; ++i) {
      Client& client = clients_[(firstTurn_ + i) % count];
      serve(*client.connection, std::exchange(client.events, short(0)), now);
    }
    if (std::exchange(listenerSeen_, false)) {
      acceptClients(now);
    }
    removeGone();
  }
  live_.stop();
  sender_.setDestinations({});
  listener_ = FileDescriptor();
  clients_.clear();
}

// Returns false only when it makes no sense to go on.
bool BackendServer::waitForEvents() {
  const Clock::time_point now = Clock::now();
  if (acceptNotBefore_ && now >= *acceptNotBefore_) {
    acceptNotBefore_.reset();
  }
  watchClients();
  const int count = ::epoll_wait(epoll_.get(), seen_.data(), static_cast<int>(seen_.size()), timeoutOf(now));
  if (count < 0) {
    return errno == EINTR;
  }
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = seen_[static_cast<std::size_t>(i)];
    if (event.data.u64 == stopKey) {
      stopSeen_ = true;
    } else if (event.data.u64 == listenerKey) {
      listenerSeen_ = true;
    } else {
      const auto client = std::find_if(clients_.begin(), clients_.end(), [&event](const Client& c) {
        return static_cast<std::uint64_t>(c.connection->descriptor()) == event.data.u64;
      });
      if (client != clients_.end()) {
        client->events = static_cast<short>(event.events);
      }
    }
  }
  return true;
}

// What is watched seldom changes from one turn to the next; most turns tell the system nothing.
void BackendServer::watchClients() {
  const bool listens = !acceptNotBefore_;
  if (listens != listenerWatched_ &&
      watch(listens ? EPOLL_CTL_ADD : EPOLL_CTL_DEL, listener_.get(), POLLIN, listenerKey)) {
    listenerWatched_ = listens;
  }
  for (Client& client : clients_) {
    const short wanted = client.connection->events();
    const int descriptor = client.connection->descriptor();
    if (wanted != client.watched && watch(EPOLL_CTL_MOD, descriptor, wanted, static_cast<std::uint64_t>(descriptor))) {
      client.watched = wanted;
    }
  }
}

bool BackendServer::watch(int operation, int descriptor, short events, std::uint64_t key) {
  epoll_event event{};
  event.events = static_cast<std::uint32_t>(events);
  event.data.u64 = key;
  return ::epoll_ctl(epoll_.get(), operation, descriptor, &event) == 0;
}

// Milliseconds to wait, rounded up: -1 when only bytes can bring something to do.
int BackendServer::timeoutOf(Clock::time_point now) {
  std::optional<Clock::time_point> next = acceptNotBefore_;
  for (const Client& client : clients_) {
    if (client.connection->hasWork()) {
      return 0;
    }
    const std::optional<Clock::time_point> deadline = client.connection->deadline();
    next = deadline && (!next || *deadline < *next) ? deadline : next;
  }
  if (!next) {
    return -1;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - now).count();
  return static_cast<int>(std::clamp<decltype(left)>(left, 0, 60'000));
}

void BackendServer::serve(ClientConnection& client, short events, Clock::time_point now) {
  client.receive(events);
  if (client.isGone()) {
    return;
  }
  const std::uint64_t channels = client.state().channelsVersion();
  if (client.answerLines(interpreter_)) {
    if (client.state().channelsVersion() != channels) {
      publishOutputs();
    }
    publish();  // before the answer: what is sent after it shows the change
  }
  client.send(now);
  client.check(now);
  const QString dropped = client.takeDropReason();
  if (!dropped.isEmpty()) {
    qCWarning(logBackend).noquote() << client.name() << "was dropped:" << dropped;
  }
}

void BackendServer::acceptClients(Clock::time_point now) {
  for (int i = 0; i < mostWelcomesATurn; ++i) {
    bool exhausted = false;
    FileDescriptor socket = acceptClient(listener_, exhausted);
    if (socket) {
      welcome(std::move(socket));
      continue;
    }
    if (exhausted) {
      qCWarning(logBackend) << "a client waits, but there are too many open files";
      acceptNotBefore_ = now + acceptPause;
    }
    return;
  }
}

void BackendServer::welcome(FileDescriptor socket) {
  if (clients_.size() >= limits_.mostClients + limits_.mostFarewells) {
    return;  // closed without a word
  }
  auto client = std::make_unique<ClientConnection>(std::move(socket), limits_);
  const auto talking =
      std::count_if(clients_.begin(), clients_.end(), [](const Client& c) { return !c.connection->isTurnedAway(); });
  if (static_cast<std::size_t>(talking) >= limits_.mostClients) {
    if (!full_) {
      qCWarning(logBackend).noquote() << "too many clients:" << client->name() << "was turned away";
    }
    full_ = true;  // told once, not for each of a flood
    client->turnAway(QByteArrayLiteral("korvex2 err 8 \"too many clients\""));
    client->send(Clock::now());
  } else {
    full_ = false;
    qCInfo(logBackend).noquote() << client->name() << "came";
  }
  const short wanted = client->events();
  const int descriptor = client->descriptor();
  if (watch(EPOLL_CTL_ADD, descriptor, wanted, static_cast<std::uint64_t>(descriptor))) {
    clients_.push_back({std::move(client), wanted, 0});
  }  // else the system has no room to watch it: closed
}

void BackendServer::removeGone() {
  bool hadOutputs = false;
  const auto isGone = [&](const Client& entry) {
    const ClientConnection* const client = entry.connection.get();
    if (!client->isGone()) {
      return false;
    }
    hadOutputs = hadOutputs || client->state().channelsVersion() != 0;
    if (!client->wasDropped() && !client->isTurnedAway()) {
      qCInfo(logBackend).noquote() << client->name() << "went";
    }
    return true;
  };
  clients_.erase(std::remove_if(clients_.begin(), clients_.end(), isGone), clients_.end());
  if (hadOutputs) {
    publishOutputs();
    publish();
  }
}

void BackendServer::publishOutputs() {
  std::vector<Destination> destinations;
  for (const Client& client : clients_) {
    client.connection->appendDestinations(destinations);
  }
  wantedKinds_ = 0;
  for (const Destination& destination : destinations) {
    wantedKinds_ |= destination.kinds;
  }
  sender_.setDestinations(std::move(destinations));
}

void BackendServer::publish() {
  const bool measuring = interpreter_.isMeasuring();
  if (measuring || publishedMeasuring_) {  // while nothing is measured the lines depend on nothing
    live_.publish(liveStateOf(interpreter_, kindNames(wantedKinds_)));
    live_.settle();
    publishedMeasuring_ = measuring;
  }
}

}  // namespace korvex2
