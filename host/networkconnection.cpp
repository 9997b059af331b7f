// See networkconnection.h.
#include "networkconnection.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <QCoreApplication>
#include <QRegularExpression>

#include "backendlink.h"
#include "channeltext.h"
#include "livereceiver.h"
#include "networkbodyfiles.h"

namespace korvex2 {

namespace {

using Clock = LiveReceiver::Clock;

QString tr(const char* text) { return QCoreApplication::translate("NetworkConnection", text); }

/// The host's output channel at the backend.
const QByteArray netLine = QByteArrayLiteral("korvex2 set output net chmon ");
const QByteArray kindLine = QByteArrayLiteral("korvex2 set output active chmon ");
const QByteArray versionLine = QByteArrayLiteral("korvex2 get version");
const QByteArray statusLine = QByteArrayLiteral("korvex2 get status active");
const QByteArray answeredOk = QByteArrayLiteral("korvex2 ok");
/// There are three; a module that makes others up is not followed for ever.
constexpr std::size_t mostKinds = 16;

/// "1.20.3", "1.20.-1" or "1.20".
std::optional<BackendVersionNumber> versionIn(const QByteArray& answer) {
  static const QRegularExpression pattern(
      QStringLiteral("^korvex2 set version ([0-9]{1,4})\\.([0-9]{1,4})(?:\\.(-?[0-9]{1,4}))?$"));
  const QRegularExpressionMatch match = pattern.match(QString::fromLatin1(answer));
  if (!match.hasMatch()) {
    return std::nullopt;
  }
  const QString revision = match.captured(3);
  return BackendVersionNumber{match.captured(1).toInt(), match.captured(2).toInt(),
                              revision.isEmpty() ? -1 : revision.toInt()};
}

}  // namespace

NetworkOptions NetworkOptions::answeredWithin(Milliseconds timeout) {
  NetworkOptions options;
  options.commandTimeout = timeout;
  options.connectTimeout = std::max(options.connectTimeout, timeout);
  return options;
}

class NetworkConnection::Link : public BackendLinkOwner {
 public:
  Link(NetworkConnection& connection, const BackendAddress& where, const NetworkOptions& times)
      : address(where), options(times), files(connection), link(*this, where, times) {}

  /// A record kind that modules switched on or off.
  struct Kind {
    QByteArray name;
    bool active = false;
  };

  QList<QByteArray> openingLines(const QHostAddress& own, const QHostAddress& backend) override {
    QList<QByteArray> lines{versionLine};
    ownAddress = own;
    backendAddress = backend;
    if (receiver.isRunning()) {
      const std::uint16_t port = receiver.open(own, backend);
      offered = port != 0;
      if (offered) {
        lines += netLine + "udp " + QByteArray::number(port);
      }
    }
    for (const Kind& kind : kinds) {
      lines += kindLine + kind.name + (kind.active ? " yes" : " no");
    }
    return lines;
  }

  QString takeOpeningAnswer(const QByteArray& line, const QByteArray& answer) override {
    const QByteArray said = withoutLineEnd(answer);
    if (line == versionLine) {
      const std::optional<BackendVersionNumber> told = versionIn(said);
      if (told) {
        version = *told;
        return {};
      }
      return isRefusal(said) ? tr("it refused the connection (%1)").arg(QString::fromUtf8(said.left(200)))
                             : tr("what listens there is no tracking backend");
    }
    if (said != answeredOk && !isRefusal(said)) {
      return tr("what listens there is no tracking backend");
    }
    if (said != answeredOk && line.startsWith(netLine)) {
      offered = false;
    }
    return {};  // a kind that is refused is asked for again next time: by then another version may be there
  }

  bool takePostedAnswer(const QByteArray& line, const QByteArray& answer, Clock::time_point asked) override {
    const QByteArray said = withoutLineEnd(answer);
    if (line == statusLine) {
      return isRefusal(said) || (valueAfter("korvex2 set status active", said) && (watch(line, said, asked), true));
    }
    return isRefusal(said) || said == answeredOk;
  }

  void linkChanged() override {
    if (!link.isConnected() && wasConnected) {
      receiver.close();
    }
    wasConnected = link.isConnected();
    if (listener) {
      listener();
    }
  }

  void learn(const QByteArray& line, const QByteArray& answer, Clock::time_point asked) {
    if (!line.startsWith("korvex2 get ") || line == statusLine) {
      watch(line, answer, asked);
    }
  }
  void learnNothing(const QByteArray& line) {
    if (line.startsWith(kindLine)) {
      remember(line);
    }
  }

  /// Learns from a command and its answer.
  void watch(const QByteArray& line, const QByteArray& said, Clock::time_point asked) {
    if (line == statusLine) {
      if (const auto state = valueAfter("korvex2 set status active", said)) {
        receiver.setMeasuring(*state == "mea", asked);
      }
    } else if (said == answeredOk && line == "korvex2 tracking start") {
      receiver.setMeasuring(true);
    } else if (said == answeredOk && line == "korvex2 tracking stop") {
      receiver.setMeasuring(false);
    } else if (said == answeredOk && line.startsWith(kindLine)) {
      remember(line);
    }
  }

  /// What a module wants is set again after a reconnection, also when there was none to be told just now.
  void remember(const QByteArray& line) {
    const QList<QByteArray> words = line.mid(kindLine.size()).split(' ');
    if (words.size() != 2 || words[0].isEmpty() || (words[1] != "yes" && words[1] != "no")) {
      return;
    }
    const auto known = find(words[0]);
    if (known != kinds.end()) {
      known->active = words[1] == "yes";
    } else if (kinds.size() < mostKinds) {
      kinds.push_back({words[0], words[1] == "yes"});
    }
  }
  std::vector<Kind>::iterator find(const QByteArray& kind) {
    return std::find_if(kinds.begin(), kinds.end(), [&kind](const Kind& k) { return k.name == kind; });
  }

  const BackendAddress address;
  const NetworkOptions options;
  std::function<void()> listener;
  BackendVersionNumber version;
  std::vector<Kind> kinds;
  NetworkBodyFiles files;
  LiveReceiver receiver;
  QHostAddress ownAddress;
  QHostAddress backendAddress;
  bool offered = false;  // live lines by the backend
  bool wasConnected = false;
  BackendLink link;
};

NetworkConnection::NetworkConnection(const BackendAddress& address, const NetworkOptions& options)
    : link_(std::make_unique<Link>(*this, address, options)) {
  link_->link.start();
  if (options.waitAtFirst) {
    link_->link.awaitFirstAttempt();
  }
}

NetworkConnection::~NetworkConnection() { link_->receiver.stop(); }

const BackendAddress& NetworkConnection::address() const { return link_->address; }

const NetworkOptions& NetworkConnection::options() const { return link_->options; }

bool NetworkConnection::exchange(const QByteArray& line, QByteArray& answer) {
  const Clock::time_point asked = Clock::now();
  const bool answered = link_->link.exchange(line, answer);
  answered ? link_->learn(line, answer, asked) : link_->learnNothing(line);
  return answered;
}

QByteArrayList NetworkConnection::exchangeTogether(const QByteArrayList& lines) {
  const Clock::time_point asked = Clock::now();
  const QByteArrayList answers = link_->link.exchangeTogether(lines);
  for (int i = 0; i < lines.size(); ++i) {
    i < answers.size() ? link_->learn(lines[i], answers[i], asked) : link_->learnNothing(lines[i]);
  }
  return answers;
}

LinkStatus NetworkConnection::linkStatus() const { return link_->link.status(); }

void NetworkConnection::setLinkListener(std::function<void()> listener) { link_->listener = std::move(listener); }

void NetworkConnection::tryAgain() { link_->link.tryAgain(); }

BackendVersionNumber NetworkConnection::version() const { return link_->version; }

QString NetworkConnection::description() const { return tr("Backend at %1").arg(link_->address.text()); }

QStringList NetworkConnection::details() const {
  const auto seconds = static_cast<double>(link_->options.commandTimeout.count()) / 1000.0;
  return {tr("Time-out of commands: %1 s").arg(seconds)};
}

QStringList NetworkConnection::problems() const {
  const LinkStatus status = linkStatus();
  if (status.state == LinkState::connected) {
    return {};
  }
  return {tr("The backend at %1 could not be reached: %2. It is tried again and again.")
              .arg(status.place, status.reason.isEmpty() ? tr("no connection yet") : status.reason)};
}

void NetworkConnection::startLiveLines(LiveDistributor& distributor) {
  Link& link = *link_;
  if (link.receiver.isRunning()) {
    return;
  }
  const bool connected = link.link.isConnected();  // otherwise a port comes with the next connection
  const std::uint16_t port = connected ? link.receiver.open(link.ownAddress, link.backendAddress) : 0;
  if (!link.receiver.start(distributor)) {
    link.receiver.close();
    return;
  }
  QByteArray answer;
  if (port != 0 && exchange(netLine + "udp " + QByteArray::number(port), answer)) {
    link.offered = withoutLineEnd(answer) == answeredOk;
  }
  link.link.post(statusLine);
}

void NetworkConnection::stopLiveLines() {
  if (link_->receiver.isRunning()) {
    link_->receiver.stop();
    if (link_->offered) {
      link_->link.post(netLine + "none");
    }
  }
}

LiveStatus NetworkConnection::liveStatus() const {
  const LiveReceiver& receiver = link_->receiver;
  LiveStatus status;
  status.offered = link_->offered && link_->link.isConnected();
  status.measuring = receiver.isMeasuring();
  status.lines = receiver.delivered();
  status.droppedDatagrams = receiver.droppedDatagrams();
  status.droppedLines = receiver.droppedLines();
  return status;
}

BodyFileStore* NetworkConnection::bodyFiles() { return &link_->files; }

}  // namespace korvex2
