// The operator's ways to another backend: entries of the File menu and the item of the status bar.
#ifndef KORVEX2_HOST_CONNECTIONACTIONS_H
#define KORVEX2_HOST_CONNECTIONACTIONS_H

#include <functional>
#include <memory>
#include <utility>

#include <QObject>

class QAction;

namespace korvex2 {

class BackendConnection;
class ConnectionStatusLabel;
class Frontend;

/// Puts "&Connect..." and "Connect &again" (object names "connectBackend" and "connectAgain") into the File menu and a
/// ConnectionStatusLabel into the status bar. "Connect again", and a click on the item, try at once instead of waiting
/// for the next attempt's time.
class ConnectionActions : public QObject {
  Q_OBJECT

 public:
  using SimulatedMaker = std::function<std::unique_ptr<BackendConnection>()>;

  /// Belongs to the front end's window.
  explicit ConnectionActions(Frontend& frontend);

  /// How the simulated backend in this program is made when the operator changes over to it. Without it, that is only
  /// offered while it is the present one.
  void offerSimulated(SimulatedMaker maker) { simulated_ = std::move(maker); }
  /// Time-out of commands in place of the remembered one, until the operator chooses another; milliseconds.
  void setTimeout(int timeout) { timeout_ = timeout; }

 private:
  void choose();
  void tryAgain();
  void show();

  Frontend& frontend_;
  QAction* connect_;
  QAction* again_;
  ConnectionStatusLabel* status_;
  SimulatedMaker simulated_;
  int timeout_ = 0;  // 0: the remembered one
};

}  // namespace korvex2

#endif
