// See frontend.h.
#include "frontend.h"

#include <utility>

#include <QDir>
#include <QStatusBar>

#include "bodyfileactions.h"
#include "bodylisting.h"
#include "connectionactions.h"
#include "livestatuslabel.h"
#include "startpage.h"

#ifndef KORVEX2_VERSION_MAJOR
#error "the build defines the program's version"
#endif

namespace korvex2 {

namespace {

bool isKnown(const BackendVersionNumber& version) { return version.major != 0 || version.minor != 0; }

QString textOf(const BackendVersionNumber& version) {
  const QString revision = version.revision < 0 ? QString() : QStringLiteral(".%1").arg(version.revision);
  return QStringLiteral("%1.%2%3").arg(version.major).arg(version.minor).arg(revision);
}

}  // namespace

Frontend::Frontend(std::unique_ptr<BackendConnection> connection, QObject* parent)
    : QObject(parent), connection_(std::move(connection)) {
  versions_.frontend_major = KORVEX2_VERSION_MAJOR;
  versions_.frontend_minor = KORVEX2_VERSION_MINOR;
  versions_.frontend_revision = KORVEX2_VERSION_PATCH;

  channel_ = std::make_unique<HostChannel>(connection_.get());
  window_ = std::make_unique<MainWindow>(*channel_);
  modules_ = std::make_unique<ModuleSet>([this](const QString& text) { channel_->report(text); });
  // Several commands in a row make one refresh, and none falls between two commands of a module.
  refresh_.setSingleShot(true);
  refresh_.setInterval(200);
  connect(&refresh_, &QTimer::timeout, this, &Frontend::refreshBodies);
  connect(window_.get(), &MainWindow::backendTouched, &refresh_, QOverload<>::of(&QTimer::start));

  connections_ = new ConnectionActions(*this);  // the window's child, as is the next
  bodyFiles_ = new BodyFileActions(*window_);
  adoptConnection();
  window_->statusBar()->addPermanentWidget(
      new LiveStatusLabel([this] { return connection_->liveStatus(); }, window_->statusBar()));
}

void Frontend::connectTo(std::unique_ptr<BackendConnection> connection) {
  connection_->setLinkListener({});
  connection_->stopLiveLines();
  channel_->setConnection(connection.get());
  connection_.swap(connection);
  window_->startPage().setBodies({});
  adoptConnection();
  if (link_.state == LinkState::connected) {
    window_->showSuccess(tr("Connected: %1.").arg(connection_->description()));
  }
}

void Frontend::adoptConnection() {
  link_ = connection_->linkStatus();
  told_ = link_.state;
  versions_.backend_major = 0;
  versions_.backend_minor = 0;
  versions_.backend_revision = 0;
  adoptVersion();
  connection_->setLinkListener([this] { followLink(); });
  const QStringList problems = connection_->problems();
  for (const QString& problem : problems) {
    channel_->report(problem);
  }
  connection_->startLiveLines(channel_->distributor());
  showConnection();
  refreshBodies();
}

bool Frontend::adoptVersion() {
  const BackendVersionNumber before{versions_.backend_major, versions_.backend_minor, versions_.backend_revision};
  const BackendVersionNumber now = connection_->version();
  versions_.backend_major = now.major;
  versions_.backend_minor = now.minor;
  versions_.backend_revision = now.revision;
  return isKnown(before) && textOf(before) != textOf(now);
}

void Frontend::followLink() {
  const LinkStatus before = std::exchange(link_, connection_->linkStatus());
  const QString former = textOf({versions_.backend_major, versions_.backend_minor, versions_.backend_revision});
  if (adoptVersion()) {
    channel_->report(tr("The backend at %1 has version %2 now, no longer %3.")
                         .arg(link_.place, textOf(connection_->version()), former));
  }
  if (before.state != link_.state && link_.state == LinkState::connected) {
    refresh_.start();
  }
  if (link_.state != told_ && (link_.state != LinkState::connected || link_.lasts)) {
    tellOfLink();
  }
  showConnection();
}

void Frontend::tellOfLink() {
  const LinkState before = std::exchange(told_, link_.state);
  switch (link_.state) {
    case LinkState::connected:
      window_->showSuccess(tr("Connected to the backend at %1.").arg(link_.place));
      break;
    case LinkState::reconnecting:
      if (before == LinkState::connected) {
        channel_->report(tr("The connection to the backend at %1 was lost: %2. It is being made again.")
                             .arg(link_.place, link_.reason));
      }
      break;
    case LinkState::lost:
      channel_->report(tr("The backend at %1 is out of reach: %2. It is tried again now and then; "
                          "\"Connect again\" in the File menu tries at once.")
                           .arg(link_.place, link_.reason));
      break;
  }
}

void Frontend::showConnection() {
  const bool connected = link_.state == LinkState::connected;
  QStringList details;
  if (!connected) {
    details += link_.reason.isEmpty() ? tr("Not connected") : tr("Not connected: %1").arg(link_.reason);
  }
  const BackendVersionNumber version = connection_->version();
  if (isKnown(version) || link_.place.isEmpty()) {
    details += tr("Version %1").arg(textOf(version));
  }
  window_->startPage().setConnection(connection_->description(), details + connection_->details());
  window_->startPage().setReachable(connected);
  bodyFiles_->setConnection(*connection_);
  emit connectionChanged();
}

Frontend::~Frontend() { shutdown(); }

void Frontend::loadModules(const std::vector<ModuleFolder>& folders) {
  modules_->load(folders);
  modules_->handOver(channel_.get(), window_.get(), &versions_, false);
  window_->addModuleEntries(modules_->takeGuiElements());
  window_->setModules(modules_->records(), folders);
}

void Frontend::shutdown() {
  refresh_.stop();
  connection_->setLinkListener({});
  connection_->stopLiveLines();  // before the modules' subscribers go
  modules_->shutdown();
}

void Frontend::refreshBodies() {
  // While the backend is out of reach, what was known stays in sight.
  if (link_.state != LinkState::connected) {
    return;
  }
  const std::vector<BodySummary> bodies = listBodies(*connection_);
  if (link_.state == LinkState::connected) {  // still
    window_->startPage().setBodies(bodies);
  }
}

QString moduleListing(const std::vector<ModuleRecord>& records, const std::vector<ModuleFolder>& searched) {
  QString loaded;
  QString refused;
  QString skipped;
  for (const ModuleRecord& record : records) {
    const QString file = QDir::toNativeSeparators(record.file);
    switch (record.state) {
      case ModuleRecord::State::loaded:
        loaded += QStringLiteral("  %1 %2 (%3)\n").arg(record.name, record.version, file);
        break;
      case ModuleRecord::State::refused:
        refused += QStringLiteral("  %1: %2\n").arg(file, record.reason);
        break;
      case ModuleRecord::State::skipped:
        skipped += QStringLiteral("  %1: %2\n").arg(file, record.reason);
        break;
    }
  }
  QString text = loaded.isEmpty() ? Frontend::tr("No modules found.\n") : Frontend::tr("Modules:\n") + loaded;
  if (!refused.isEmpty()) {
    text += Frontend::tr("Refused:\n") + refused;
  }
  if (!skipped.isEmpty()) {
    text += Frontend::tr("Skipped:\n") + skipped;
  }
  text += Frontend::tr("Searched:\n");
  for (const ModuleFolder& folder : searched) {
    text += QStringLiteral("  %1\n").arg(QDir::toNativeSeparators(folder.path));
  }
  return text;
}

}  // namespace korvex2
