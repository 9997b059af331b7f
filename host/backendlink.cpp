// See backendlink.h.
#include "backendlink.h"

#include <algorithm>
#include <string_view>

#include <QEventLoop>
#include <QLocale>
#include <QNetworkProxy>
#include <QSocketNotifier>
#include <QTcpSocket>

#include <fcntl.h>

#include "channeltext.h"
#include "hostlogging.h"

namespace korvex2 {

namespace {

const QByteArray heartbeatLine = QByteArrayLiteral("korvex2 get status active");

/// A query that follows the answer to another one so soon belongs to the same burst: looking first whether something
/// came unasked in between would cost a tenth of its time. Its answer tells what was asked; "korvex2 ok" does not, so
/// before any other line the look is taken.
constexpr std::chrono::microseconds sameBreath(200);

bool isOneLine(const QByteArray& line) { return !line.contains('\n') && !line.contains('\0'); }

constexpr int headLength = 12;  // of the two that follow

bool isQuery(const QByteArray& line) { return line.startsWith("korvex2 get "); }

bool isValue(const QByteArray& answer) { return answer.startsWith("korvex2 set "); }

/// Takes the next word off the front of a text; empty when there is none.
std::string_view takeWord(std::string_view& text) {
  constexpr std::string_view blanks(" \t");
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(blanks));
  text.remove_prefix(word.size());
  return word;
}

/// Whether an answer repeats the query that it is for. The backend puts one blank where there are several.
bool belongsTo(const QByteArray& query, const QByteArray& answer) {
  if (!isValue(answer)) {
    return false;
  }
  const auto behindHead = [](const QByteArray& line) {
    return std::string_view(line.constData() + headLength, static_cast<std::size_t>(line.size() - headLength));
  };
  std::string_view asked = behindHead(query);
  std::string_view told = behindHead(answer);
  if (told.size() >= asked.size() && told.compare(0, asked.size(), asked) == 0) {
    return told.size() == asked.size() || told[asked.size()] == ' ' || asked.empty() || asked.back() == ' ';
  }
  for (std::string_view word = takeWord(asked); !word.empty(); word = takeWord(asked)) {
    if (word != takeWord(told)) {
      return false;
    }
  }
  return true;
}

QString inSeconds(std::chrono::milliseconds time) {
  return QLocale::c().toString(static_cast<double>(time.count()) / 1000.0, 'g', 3);
}

}  // namespace

BackendLink::BackendLink(BackendLinkOwner& owner, const BackendAddress& address, const NetworkOptions& options)
    : owner_(owner), address_(address), options_(options) {
  status_.state = LinkState::reconnecting;
  status_.lasts = false;
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
    case QAbstractSocket::RemoteHostClosedError:
      return fail(tr("the backend closed the connection"));
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
  connector_->abort();                  // closes its own descriptor only; it would read what comes for the other one
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
}

void BackendLink::lasts() {
  lost_.stop();
  retries_ = 0;
  setStatus(LinkState::connected, QString(), true);
}

bool BackendLink::exchange(const QByteArray& line, QByteArray& answer) {
  if (stage_ != Stage::connected || !isOneLine(line)) {
    return false;
  }
  const Clock::time_point now = Clock::now();
  const Clock::time_point deadline = now + options_.commandTimeout;
  if (!beginExchange(line + '\n', isQuery(line), now, deadline) || !takeAnswer(line, answer, deadline)) {
    return false;
  }
  endExchange();
  return true;
}

QByteArrayList BackendLink::exchangeTogether(const QByteArrayList& lines) {
  QByteArrayList answers;
  if (stage_ != Stage::connected || lines.isEmpty() || !std::all_of(lines.begin(), lines.end(), isOneLine)) {
    return answers;
  }
  const bool onlyQueries = std::all_of(lines.begin(), lines.end(), isQuery);
  const Clock::time_point now = Clock::now();
  const Clock::time_point deadline = now + options_.commandTimeout;
  if (!beginExchange(lines.join('\n') + '\n', onlyQueries, now, deadline)) {
    return answers;
  }
  answers.reserve(lines.size());
  for (const QByteArray& line : lines) {
    QByteArray answer;
    if (!takeAnswer(line, answer, deadline)) {
      return answers;
    }
    answers += answer;
  }
  endExchange();
  return answers;
}

bool BackendLink::beginExchange(const QByteArray& bytes, bool onlyQueries, Clock::time_point now,
                                Clock::time_point deadline) {
  if (!onlyQueries || now - lastTraffic_ > sameBreath) {
    read();  // what has come unasked must not be taken for the answer
  }
  if (stage_ != Stage::connected || !goesOn(socket_->write(bytes, deadline))) {
    return false;
  }
  while (!posted_.empty()) {
    QByteArray earlier;
    if (!goesOn(socket_->readLine(earlier, deadline)) || !accept(earlier)) {
      return false;
    }
  }
  return true;
}

bool BackendLink::takeAnswer(const QByteArray& line, QByteArray& answer, Clock::time_point deadline) {
  if (!goesOn(socket_->readLine(answer, deadline))) {
    return false;
  }
  if (isQuery(line) && !belongsTo(line, answer) && !isRefusal(answer)) {
    fail(tr("the backend answered another question"));
    return false;
  }
  return true;
}

void BackendLink::endExchange() {
  lastTraffic_ = Clock::now();
  if (socket_->hasRest()) {
    fail(tr("the backend sent more than was asked for"));  // the answers are good all the same: they came first
  }
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
  // The program may have been too busy to hear of the time.
  const bool lasted = wasConnected && (status_.lasts || Clock::now() - connectedSince_ >= options_.stableAfter);
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
  // Connections that do not last are no success: the time until the backend counts as lost goes on.
  const LinkState broken = lost_.isActive() ? LinkState::reconnecting : LinkState::lost;
  const LinkState state = wasConnected ? broken : status_.state;
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
    status_.lasts = lasts;
    owner_.linkChanged();
  }
}

}  // namespace korvex2
