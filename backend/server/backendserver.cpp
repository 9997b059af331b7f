// See backendserver.h.
#include "backendserver.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "livestate.h"
#include "serverlogging.h"

namespace korvex2 {

namespace {

constexpr std::size_t stopPlace = 0;
constexpr std::size_t listenerPlace = 1;
constexpr std::size_t firstClientPlace = 2;

// How many clients are let in before the present ones have their turn again.
constexpr int mostWelcomesATurn = 16;

constexpr std::chrono::milliseconds acceptPause{100};

}  // namespace

BackendServer::BackendServer(BodyDatabase& database, LiveLines lines, int rate, const ServerLimits& limits)
    : interpreter_(database), limits_(limits), live_(std::move(lines), rate) {
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
    stopReader_ = FileDescriptor(ends[0]);
    stopWriter_ = FileDescriptor(ends[1]);
  }
}

BackendServer::~BackendServer() { live_.stop(); }

QString BackendServer::listen(const ListenAddress& address) {
  if (!stopReader_) {
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
  while (waitForEvents() >= 0 && polled_[stopPlace].revents == 0) {
    const Clock::time_point now = Clock::now();
    const std::size_t count = clients_.size();
    firstTurn_ = count == 0 ? 0 : (firstTurn_ + 1) % count;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t index = (firstTurn_ + i) % count;
      serve(*clients_[index], polled_[firstClientPlace + index].revents, now);
    }
    if (polled_[listenerPlace].revents != 0) {
      acceptClients(now);
    }
    removeGone();
  }
  live_.stop();
  sender_.setDestinations({});
  listener_ = FileDescriptor();
  clients_.clear();
}

// Returns a negative number only when it makes no sense to go on.
int BackendServer::waitForEvents() {
  const Clock::time_point now = Clock::now();
  if (acceptNotBefore_ && now >= *acceptNotBefore_) {
    acceptNotBefore_.reset();
  }
  polled_.clear();
  polled_.push_back({stopReader_.get(), POLLIN, 0});
  polled_.push_back({acceptNotBefore_ ? -1 : listener_.get(), POLLIN, 0});
  for (const auto& client : clients_) {
    polled_.push_back({client->descriptor(), client->events(), 0});
  }
  const int result = ::poll(polled_.data(), static_cast<nfds_t>(polled_.size()), timeoutOf(now));
  if (result < 0) {
    std::for_each(polled_.begin(), polled_.end(), [](pollfd& entry) { entry.revents = 0; });
    return errno == EINTR || errno == EAGAIN || errno == ENOMEM ? 0 : -1;
  }
  return result;
}

// Milliseconds for poll(), rounded up: -1 when only bytes can bring something to do.
int BackendServer::timeoutOf(Clock::time_point now) {
  std::optional<Clock::time_point> next = acceptNotBefore_;
  for (const auto& client : clients_) {
    if (client->hasWork()) {
      return 0;
    }
    const std::optional<Clock::time_point> deadline = client->deadline();
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
      std::count_if(clients_.begin(), clients_.end(), [](const auto& c) { return !c->isTurnedAway(); });
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
  clients_.push_back(std::move(client));
}

void BackendServer::removeGone() {
  bool hadOutputs = false;
  const auto isGone = [&](const std::unique_ptr<ClientConnection>& client) {
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
  for (const auto& client : clients_) {
    client->appendDestinations(destinations);
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
