// See bodyfileactions.h.
#include "bodyfileactions.h"

#include <QAction>

#include "backendconnection.h"
#include "bodyfiledialog.h"
#include "hostchannel.h"
#include "mainwindow.h"
#include "startpage.h"

namespace korvex2 {

BodyFileActions::BodyFileActions(BackendConnection& connection, MainWindow& window)
    : QObject(&window), connection_(connection), window_(window) {
  auto* fromFile = new QAction(tr("&Import body file..."), this);
  fromFile->setObjectName(QStringLiteral("importBodyFile"));
  fromFile->setStatusTip(tr("Replace the markers of a body by those of a file"));
  connect(fromFile, &QAction::triggered, this, &BodyFileActions::importFile);
  auto* toFile = new QAction(tr("&Export body file..."), this);
  toFile->setObjectName(QStringLiteral("exportBodyFile"));
  toFile->setStatusTip(tr("Write the markers of a body to a file"));
  connect(toFile, &QAction::triggered, this, &BodyFileActions::exportFile);
  const bool offered = connection_.bodyFiles() != nullptr;
  fromFile->setEnabled(offered);
  toFile->setEnabled(offered);
  window_.addFileEntries({fromFile, toFile});
}

void BodyFileActions::importFile() {
  BodyFileStore& store = *connection_.bodyFiles();
  const QString obstacle = store.importObstacle();
  if (!obstacle.isEmpty()) {  // told before the operator looks for a file in vain
    const QString text = BodyImportDialog::failureText(obstacle);
    window_.channel().report(text);
    BodyFileDialog::showFailure(BodyImportDialog::title(), text, &window_);
    return;
  }
  BodyImportDialog dialog(store, listBodies(connection_), window_.startPage().selectedBody(), &window_);
  run(dialog);
}

void BodyFileActions::exportFile() {
  BodyExportDialog dialog(*connection_.bodyFiles(), listBodies(connection_), window_.startPage().selectedBody(),
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
