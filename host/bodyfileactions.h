// The entries of the File menu that take body files into the backend's database and give them out.
#ifndef KORVEX2_HOST_BODYFILEACTIONS_H
#define KORVEX2_HOST_BODYFILEACTIONS_H

#include <QObject>

class QAction;

namespace korvex2 {

class BackendConnection;
class BodyFileDialog;
class MainWindow;

/// Puts "&Import body file..." and "&Export body file..." (object names "importBodyFile" and "exportBodyFile") into the
/// window's File menu. They are disabled for a connection without body files, and while it is not connected. Failures
/// stand in a box and among the reports, successes in the status bar and among the reports.
class BodyFileActions : public QObject {
  Q_OBJECT

 public:
  /// Belongs to the window. Nothing is offered before setConnection().
  explicit BodyFileActions(MainWindow& window);

  /// To be called for another connection, and when its link has changed. The connection must outlive the entries, or
  /// the next one's setting.
  void setConnection(BackendConnection& connection);

 private:
  void importFile();
  void exportFile();
  void run(BodyFileDialog& dialog);

  BackendConnection* connection_ = nullptr;
  MainWindow& window_;
  QAction* import_;
  QAction* export_;
};

}  // namespace korvex2

#endif
