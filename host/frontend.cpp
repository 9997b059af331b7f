// See frontend.h.
#include "frontend.h"

#include <QDir>
#include <QStatusBar>

#include "bodyfileactions.h"
#include "bodylisting.h"
#include "livestatuslabel.h"
#include "startpage.h"

#ifndef KORVEX2_VERSION_MAJOR
#error "the build defines the program's version"
#endif

namespace korvex2 {

Frontend::Frontend(std::unique_ptr<BackendConnection> connection, QObject* parent)
    : QObject(parent), connection_(std::move(connection)) {
  versions_.frontend_major = KORVEX2_VERSION_MAJOR;
  versions_.frontend_minor = KORVEX2_VERSION_MINOR;
  versions_.frontend_revision = KORVEX2_VERSION_PATCH;
  const BackendVersionNumber backend = connection_->version();
  versions_.backend_major = backend.major;
  versions_.backend_minor = backend.minor;
  versions_.backend_revision = backend.revision;

  channel_ = std::make_unique<HostChannel>(connection_.get());
  window_ = std::make_unique<MainWindow>(*channel_);
  modules_ = std::make_unique<ModuleSet>([this](const QString& text) { channel_->report(text); });

  const QString revision = backend.revision < 0 ? QString() : QStringLiteral(".%1").arg(backend.revision);
  window_->startPage().setConnection(
      connection_->description(),
      QStringList(tr("Version %1.%2%3").arg(backend.major).arg(backend.minor).arg(revision)) + connection_->details());
  const QStringList problems = connection_->problems();
  for (const QString& problem : problems) {
    channel_->report(problem);
  }
  refreshBodies();
  // Several commands in a row make one refresh, and none falls between two commands of a module.
  refresh_.setSingleShot(true);
  refresh_.setInterval(200);
  connect(&refresh_, &QTimer::timeout, this, &Frontend::refreshBodies);
  connect(window_.get(), &MainWindow::backendTouched, &refresh_, QOverload<>::of(&QTimer::start));

  new BodyFileActions(*connection_, *window_);  // the window's child

  window_->statusBar()->addPermanentWidget(
      new LiveStatusLabel([this] { return connection_->liveStatus(); }, window_->statusBar()));
  connection_->startLiveLines(channel_->distributor());
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
  connection_->stopLiveLines();  // before the modules' subscribers go
  modules_->shutdown();
}

void Frontend::refreshBodies() { window_->startPage().setBodies(listBodies(*connection_)); }

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
