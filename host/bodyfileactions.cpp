// See bodyfileactions.h.
#include "bodyfileactions.h"

#include <QAction>

#include "backendconnection.h"
#include "bodyfiledialog.h"
#include "hostchannel.h"
#include "mainwindow.h"
#include "startpage.h"

namespace korvex2 {

BodyFileActions::BodyFileActions(MainWindow& window)
    : QObject(&window),
      window_(window),
      import_(new QAction(tr("&Import body file..."), this)),
      export_(new QAction(tr("&Export body file..."), this)) {
  import_->setObjectName(QStringLiteral("importBodyFile"));
  import_->setStatusTip(tr("Replace the markers of a body by those of a file"));
  connect(import_, &QAction::triggered, this, &BodyFileActions::importFile);
  export_->setObjectName(QStringLiteral("exportBodyFile"));
  export_->setStatusTip(tr("Write the markers of a body to a file"));
  connect(export_, &QAction::triggered, this, &BodyFileActions::exportFile);
  import_->setEnabled(false);
  export_->setEnabled(false);
  window_.addFileEntries({import_, export_});
}

void BodyFileActions::setConnection(BackendConnection& connection) {
  connection_ = &connection;
  const bool offered = connection.bodyFiles() != nullptr && connection.linkStatus().state == LinkState::connected;
  import_->setEnabled(offered);
  export_->setEnabled(offered);
}

void BodyFileActions::importFile() {
  BodyFileStore& store = *connection_->bodyFiles();
  const QString obstacle = store.importObstacle();
  if (!obstacle.isEmpty()) {  // told before the operator looks for a file in vain
    const QString text = BodyImportDialog::failureText(obstacle);
    window_.channel().report(text);
    BodyFileDialog::showFailure(BodyImportDialog::title(), text, &window_);
    return;
  }
  BodyImportDialog dialog(store, listBodies(*connection_), window_.startPage().selectedBody(), &window_);
  run(dialog);
}

void BodyFileActions::exportFile() {
  BodyExportDialog dialog(*connection_->bodyFiles(), listBodies(*connection_), window_.startPage().selectedBody(),
                          &window_);
  run(dialog);
}

void BodyFileActions::run(BodyFileDialog& dialog) {
  connect(&dialog, &BodyFileDialog::failed, this, [this](const QString& text) { window_.channel().report(text); });
  connect(&dialog, &BodyFileDialog::succeeded, &window_, &MainWindow::showSuccess);
  if (dialog.exec() == QDialog::Accepted) {
    emit window_.backendTouched();
  }
}

}  // namespace korvex2
