// See embeddedconnection.h.
#include "embeddedconnection.h"

#include <QCoreApplication>
#include <QDir>

#include <utility>

#include "bodydatabase.h"
#include "bodyexchange.h"
#include "interpreter.h"
#include "livedelivery.h"
#include "livesource.h"
#include "livestate.h"
#include "motion.h"

namespace korvex2 {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("EmbeddedConnection", text); }

BodyKey keyOf(const BodyId& body) { return {body.type.toUtf8(), body.number}; }

}  // namespace

EmbeddedConnection::EmbeddedConnection(const QString& folder, const QStringList& problems, const LiveOptions& live)
    : database_(openDatabase(folder)),
      interpreter_(std::make_unique<Interpreter>(*database_)),
      problems_(problems + database_->problems()),
      live_(std::make_unique<LiveSource>(LiveLines(motionWith(live.trajectory, problems_)), live.rate)) {
  live_->publish(liveStateOf(*interpreter_));
}

EmbeddedConnection::~EmbeddedConnection() = default;

bool EmbeddedConnection::exchange(const QByteArray& line, QByteArray& answer) {
  answer = interpreter_->answer(line);
  if (!Interpreter::isQuery(line)) {
    live_->publish(liveStateOf(*interpreter_));
  }
  return true;
}

BackendVersionNumber EmbeddedConnection::version() const {
  const BackendVersion& version = database_->settings().version;
  return {version.majorNumber, version.minorNumber, version.revision};
}

QString EmbeddedConnection::description() const { return tr("Simulated backend in this program"); }

QStringList EmbeddedConnection::details() const {
  return {tr("Body database: %1").arg(QDir::toNativeSeparators(database_->folder()))};
}

QStringList EmbeddedConnection::problems() const { return problems_; }

void EmbeddedConnection::startLiveLines(LiveDistributor& distributor) {
  if (delivery_ == nullptr) {
    delivery_ = std::make_unique<LiveDelivery>(distributor);
    live_->start(*delivery_);
  }
}

void EmbeddedConnection::stopLiveLines() {
  live_->stop();
  if (delivery_ != nullptr) {
    deliveredBefore_ += delivery_->delivered();
    delivery_.reset();
  }
}

LiveStatus EmbeddedConnection::liveStatus() const {
  return {true, live_->isMeasuring(), deliveredBefore_ + (delivery_ == nullptr ? 0 : delivery_->delivered())};
}

QString EmbeddedConnection::importObstacle() const {
  return database_->settings().configChangeable ? QString() : tr("the configuration is locked");
}

BodyFileSummary EmbeddedConnection::summaryOf(const QString& path) const {
  const ImportableBody file = readImportableBody(path);
  return {static_cast<int>(file.geometry.positions.size()), static_cast<int>(file.geometry.lines.size()), file.problem};
}

ImportOutcome EmbeddedConnection::importBody(const BodyId& body, const QString& path) {
  const ImportableBody file = readImportableBody(path);
  if (!file.problem.isEmpty()) {
    return {file.problem};
  }
  const Outcome outcome = database_->setGeometry(keyOf(body), file.geometry);
  live_->publish(liveStateOf(*interpreter_));  // the live lines follow as after a command
  return {outcome.text};
}

QString EmbeddedConnection::exportBody(const BodyId& body, const QString& path) const {
  return korvex2::exportBody(*database_, keyOf(body), path);
}

}  // namespace korvex2
