// See connectionactions.h.
#include "connectionactions.h"

#include <chrono>

#include <QAction>
#include <QStatusBar>

#include "connectdialog.h"
#include "connectionsettings.h"
#include "connectionstatuslabel.h"
#include "frontend.h"
#include "networkconnection.h"

namespace korvex2 {

namespace {

std::unique_ptr<BackendConnection> connectionTo(const BackendAddress& address, int timeout) {
  NetworkOptions options = NetworkOptions::answeredWithin(std::chrono::milliseconds(timeout));
  options.waitAtFirst = false;  // the dialog shows how it goes
  return std::make_unique<NetworkConnection>(address, options);
}

}  // namespace

ConnectionActions::ConnectionActions(Frontend& frontend)
    : QObject(&frontend.window()),
      frontend_(frontend),
      connect_(new QAction(tr("&Connect..."), this)),
      again_(new QAction(tr("Connect &again"), this)),
      status_(new ConnectionStatusLabel(frontend.window().statusBar())) {
  connect_->setObjectName(QStringLiteral("connectBackend"));
  connect_->setStatusTip(tr("Choose the backend to work with"));
  connect(connect_, &QAction::triggered, this, &ConnectionActions::choose);
  again_->setObjectName(QStringLiteral("connectAgain"));
  again_->setStatusTip(tr("Try at once to reach the backend again"));
  connect(again_, &QAction::triggered, this, &ConnectionActions::tryAgain);
  frontend.window().addFileEntries({connect_, again_});
  frontend.window().statusBar()->addPermanentWidget(status_);
  connect(status_, &ConnectionStatusLabel::clicked, this, &ConnectionActions::tryAgain);
  connect(&frontend, &Frontend::connectionChanged, this, &ConnectionActions::show);
}

void ConnectionActions::tryAgain() { frontend_.connection().tryAgain(); }

void ConnectionActions::show() {
  const BackendConnection& connection = frontend_.connection();
  const LinkStatus status = connection.linkStatus();
  QStringList details = connection.details();
  if (!status.reason.isEmpty()) {
    details.prepend(tr("Not connected: %1").arg(status.reason));
  }
  status_->showStatus(status, details);
  again_->setEnabled(status.state != LinkState::connected);
}

void ConnectionActions::choose() {
  const LinkStatus present = frontend_.connection().linkStatus();
  ConnectDialog::Start start;
  start.simulated = present.place.isEmpty();
  start.simulatedOffered = start.simulated || simulated_;
  start.address = present.place;
  start.recent = ConnectionSettings::recent();
  start.timeout = timeout_ > 0 ? timeout_ : ConnectionSettings::timeout();
  ConnectDialog dialog(start, &connectionTo, &frontend_.window());
  if (dialog.exec() != QDialog::Accepted) {
    return;
  }
  if (dialog.isSimulated()) {
    if (!start.simulated) {
      frontend_.connectTo(simulated_());
    }
    return;
  }
  ConnectionSettings::remember(dialog.address());
  ConnectionSettings::setTimeout(dialog.timeout());
  timeout_ = dialog.timeout();
  frontend_.connectTo(dialog.takeConnection());
}

}  // namespace korvex2
