// See backendlink.h.
#include "backendlink.h"

#include <algorithm>

#include <QEventLoop>
#include <QLocale>
#include <QNetworkProxy>
#include <QSocketNotifier>
#include <QTcpSocket>

#include <fcntl.h>

#include "hostlogging.h"

namespace korvex2 {

namespace {

const QByteArray heartbeatLine = QByteArrayLiteral("korvex2 get status active");

QString inSeconds(std::chrono::milliseconds time) {
  return QLocale::c().toString(static_cast<double>(time.count()) / 1000.0, 'g', 3);
}

}  // namespace

BackendLink::BackendLink(BackendLinkOwner& owner, const BackendAddress& address, const NetworkOptions& options)
    : owner_(owner), address_(address), options_(options) {
  status_.state = LinkState::reconnecting;
  status_.place = address_.text();
  for (QTimer* timer : {&retry_, &limit_, &heartbeat_, &patience_, &lasting_, &lost_}) {
    timer->setSingleShot(true);
  }
  connect(&retry_, &QTimer::timeout, this, &BackendLink::attempt);
  connect(&limit_, &QTimer::timeout, this,
          [this] { fail(tr("no connection came about within %1 s").arg(inSeconds(options_.connectTimeout))); });
  connect(&heartbeat_, &QTimer::timeout, this, &BackendLink::beat);
  connect(&patience_, &QTimer::timeout, this, &BackendLink::postedTooLongAgo);
  connect(&lasting_, &QTimer::timeout, this, &BackendLink::lasts);
  connect(&lost_, &QTimer::timeout, this, [this] {
    if (stage_ != Stage::connected) {  // a connection has its chance to last
      setStatus(LinkState::lost, status_.reason);
    }
  });
}

BackendLink::~BackendLink() {
  notifier_.reset();  // at once: there may be no event loop any more
  connector_.reset();
}

void BackendLink::start() {
  lost_.start(options_.lostAfter);
  retries_ = 1;  // this is the first one
  attempt();
}

void BackendLink::awaitFirstAttempt() {
  if (stage_ != Stage::connecting && stage_ != Stage::opening) {
    return;  // it has failed at once
  }
  QEventLoop loop;
  connect(this, &BackendLink::attemptEnded, &loop, &QEventLoop::quit);
  loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void BackendLink::tryAgain() {
  if (stage_ == Stage::connected) {
    return;
  }
  if (status_.state == LinkState::lost) {
    retries_ = 0;
    lost_.start(options_.lostAfter);
    setStatus(LinkState::reconnecting, status_.reason);
  status_.lasts = false;
  }
  if (stage_ == Stage::waiting) {
    retry_.stop();
    ++retries_;
    attempt();
  }
}

void BackendLink::attempt() {
  stage_ = Stage::connecting;
  limit_.start(options_.connectTimeout);
  connector_ = std::make_unique<QTcpSocket>();
  connector_->setProxy(QNetworkProxy::NoProxy);
  connect(connector_.get(), &QTcpSocket::connected, this, &BackendLink::takeOver);
  connect(connector_.get(), &QTcpSocket::errorOccurred, this, &BackendLink::attemptFailed);
  connector_->connectToHost(address_.host, address_.port);
}

void BackendLink::attemptFailed() {
  switch (connector_->error()) {
    case QAbstractSocket::ConnectionRefusedError:
      return fail(tr("no backend listens there"));
    case QAbstractSocket::HostNotFoundError:
      return fail(tr("the host is not known"));
    default:
      return fail(connector_->errorString());
  }
}

void BackendLink::takeOver() {
  connector_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
  connector_->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
  const QHostAddress own = connector_->localAddress();
  const QHostAddress backend = connector_->peerAddress();
  // The toolkit's socket looks up names and makes connections; for one small line after the other it does too much.
  const int descriptor = ::fcntl(static_cast<int>(connector_->socketDescriptor()), F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) {
    return fail(qt_error_string());
  }
  connector_->disconnect(this);
  connector_.release()->deleteLater();  // it is just calling

  socket_ = std::make_unique<LineSocket>(descriptor, options_.commandTimeout);
  notifier_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
  connect(notifier_.get(), &QSocketNotifier::activated, this, [this] { read(); });
  stage_ = Stage::opening;
  opening_ = owner_.openingLines(own, backend);
  opening_.isEmpty() ? opened() : sendOpeningLine();
}

void BackendLink::sendOpeningLine() {
  goesOn(socket_->write(opening_.constFirst() + '\n', Clock::now() + options_.commandTimeout));
}

void BackendLink::opened() {
  limit_.stop();
  stage_ = Stage::connected;
  ++connections_;
  connectedSince_ = Clock::now();
  lastTraffic_ = connectedSince_;
  heartbeat_.start(options_.heartbeat);
  if (options_.stableAfter.count() <= 0) {
    lasts();
  } else {
    lasting_.start(options_.stableAfter);
    setStatus(LinkState::connected, QString());
  }
  post(heartbeatLine);  // whether a measurement runs
  emit attemptEnded();
    case QAbstractSocket::RemoteHostClosedError:
      return fail(tr("the backend closed the connection"));
}

bool BackendLink::exchange(const QByteArray& line, QByteArray& answer) {
  if (stage_ != Stage::connected || line.contains('\n') || line.contains('\0')) {
    case QAbstractSocket::RemoteHostClosedError:
      return fail(tr("the backend closed the connection"));
    return false;
  }
  const Clock::time_point deadline = Clock::now() + options_.commandTimeout;
  read();  // what has come unasked must not be taken for the answer
  if (stage_ != Stage::connected || !goesOn(socket_->write(line + '\n', deadline))) {
    return false;
  }
  while (!posted_.empty()) {
    QByteArray earlier;
    if (!goesOn(socket_->readLine(earlier, deadline)) || !accept(earlier)) {
  connector_->abort();                  // closes its own descriptor only; it would read what comes for the other one
      return false;
    }
  }
  if (!goesOn(socket_->readLine(answer, deadline))) {
    return false;
  }
  connector_->abort();                  // closes its own descriptor only; it would read what comes for the other one
  lastTraffic_ = Clock::now();
  if (socket_->hasRest()) {
    fail(tr("the backend sent more than was asked for"));  // the answer is good all the same: it came first
  }
  return true;
}

void BackendLink::post(const QByteArray& line) {
  if (stage_ != Stage::connected) {
    return;
  }
  if (posted_.empty()) {
    patience_.start(options_.commandTimeout);
  }
  posted_.push_back({line, Clock::now()});
  goesOn(socket_->write(line + '\n', Clock::now() + options_.commandTimeout));
}

void BackendLink::read() {
  QByteArray line;
  while (socket_ != nullptr) {
    const Result taken = socket_->takeLine(line);
    if (taken == Result::notYet) {
      break;
void BackendLink::lasts() {
  lost_.stop();
  retries_ = 0;
  setStatus(LinkState::connected, QString(), true);
}

    }
    if (!goesOn(taken) || !accept(line)) {
      return;
    }
  }
  if (stage_ == Stage::connected && posted_.empty() && socket_->hasRest()) {
    fail(tr("the backend sent more than was asked for"));
  }
}

bool BackendLink::accept(const QByteArray& line) {
  if (stage_ == Stage::opening) {
    const QString problem = owner_.takeOpeningAnswer(opening_.takeFirst(), line);
    if (!problem.isEmpty()) {
      fail(problem);
    } else if (opening_.isEmpty()) {
      opened();
    } else {
      sendOpeningLine();
    }
    return socket_ != nullptr;
  }
  if (posted_.empty()) {
    fail(tr("the backend sent more than was asked for"));
    return false;
  }
  lastTraffic_ = Clock::now();
  const Posted asked = posted_.front();
  posted_.pop_front();
  posted_.empty() ? patience_.stop() : patience_.start(options_.commandTimeout);
  if (!owner_.takePostedAnswer(asked.line, line, asked.asked)) {
    fail(tr("the backend sent more than was asked for"));
    return false;
  }
  return true;
}

void BackendLink::beat() {
  if (stage_ != Stage::connected) {
    return;
  }
  const auto silence = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lastTraffic_);
  if (silence < options_.heartbeat) {
    heartbeat_.start(options_.heartbeat - silence);
    return;
  }
  heartbeat_.start(options_.heartbeat);
  if (posted_.empty()) {
    post(heartbeatLine);
  }
}

void BackendLink::postedTooLongAgo() {
  read();  // the program may have been busy while the answer came
  if (stage_ == Stage::connected && !posted_.empty() && !patience_.isActive()) {
    fail(reasonOf(Result::late));
  }
}

bool BackendLink::goesOn(Result result) {
  if (result != Result::done) {
    fail(reasonOf(result));
    return false;
  }
  return true;
}

QString BackendLink::reasonOf(Result result) const {
  switch (result) {
    case Result::closed:
      return tr("the backend closed the connection");
    case Result::endless:
      return tr("the backend sent a line without an end");
    case Result::broken:
      return socket_->problem();
    default:
      return tr("the backend did not answer within %1 s").arg(inSeconds(options_.commandTimeout));
  }
}

void BackendLink::giveUpSocket() {
  if (notifier_) {
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater();  // it may be just calling
  }
  socket_.reset();
  if (connector_) {
    connector_->disconnect(this);
    connector_.release()->deleteLater();
  }
  posted_.clear();
  opening_.clear();
  for (QTimer* timer : {&limit_, &heartbeat_, &patience_, &lasting_}) {
    timer->stop();
  }
}

void BackendLink::fail(const QString& reason) {
  const bool wasConnected = stage_ == Stage::connected;
  if (socket_) {
    socket_->abort();
  }
  giveUpSocket();
  stage_ = Stage::waiting;
  qCInfo(logChannel).noquote() << status_.place << "is not connected:" << reason;
  if (lasted) {
    retries_ = 0;
    lost_.start(options_.lostAfter);
  }
  const auto& delays = options_.retryDelays;
  const bool seldom = delays.empty() || state == LinkState::lost;
  retry_.start(seldom ? options_.lostDelay : delays[std::min(retries_, delays.size() - 1)]);
  ++retries_;
  setStatus(state, reason);
  if (!wasConnected) {
    emit attemptEnded();
  }
}

void BackendLink::setStatus(LinkState state, const QString& reason, bool lasts) {
  if (status_.state != state || status_.reason != reason || status_.lasts != lasts) {
    status_.state = state;
    status_.reason = reason;
    owner_.linkChanged();
  }
}

}  // namespace korvex2
  // The program may have been too busy to hear of the time.
  const bool lasted = wasConnected && (status_.lasts || Clock::now() - connectedSince_ >= options_.stableAfter);
  // Connections that do not last are no success: the time until the backend counts as lost goes on.
  const LinkState broken = lost_.isActive() ? LinkState::reconnecting : LinkState::lost;
  const LinkState state = wasConnected ? broken : status_.state;
    status_.lasts = lasts;
