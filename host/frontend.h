// The front end as a whole: connection, channel, window and modules, put together and taken apart in order.
#ifndef KORVEX2_HOST_FRONTEND_H
#define KORVEX2_HOST_FRONTEND_H

#include <memory>

#include <QObject>
#include <QTimer>

#include "backendconnection.h"
#include "backendversions.h"
#include "hostchannel.h"
#include "mainwindow.h"
#include "moduleset.h"

namespace korvex2 {

class BodyFileActions;
class ConnectionActions;

/// Lives from the start to the end of the program. The backend may be exchanged meanwhile: modules keep their channel
/// and their record of versions, which tells the new ones. Modules are shut down before the window they have their
/// dialogs in, the window before the channel, the channel before the connection.
class Frontend : public QObject {
  Q_OBJECT

 public:
  explicit Frontend(std::unique_ptr<BackendConnection> connection, QObject* parent = nullptr);
  ~Frontend() override;

  /// Loads the modules of these folders, hands the host's objects over and puts the menu entries in place.
  void loadModules(const std::vector<ModuleFolder>& folders);
  /// Takes another connection in place of the present one, and shows its backend.
  void connectTo(std::unique_ptr<BackendConnection> connection);
  /// Takes the modules down; nothing happens the second time.
  void shutdown();

  MainWindow& window() { return *window_; }
  HostChannel& channel() { return *channel_; }
  BackendConnection& connection() { return *connection_; }
  const BackendConnection& connection() const { return *connection_; }
  /// What the operator may connect to.
  ConnectionActions& connections() { return *connections_; }
  const BackendVersions& versions() const { return versions_; }
  const ModuleSet& modules() const { return *modules_; }

 public slots:
  /// Reads the backend's bodies anew for the start page.
  void refreshBodies();

 signals:
  /// Another connection, or the state of its link or the backend's version changed.
  void connectionChanged();

 private:
  /// Begins with the connection that was just set.
  void adoptConnection();
  void followLink();
  void tellOfLink();
  /// Brings the versions up to date; returns whether they were others and known.
  bool adoptVersion();
  void showConnection();

  std::unique_ptr<BackendConnection> connection_;
  LinkStatus link_;                        // as last shown
  LinkState told_ = LinkState::connected;  // to the operator, in the messages
  BackendVersions versions_;
  std::unique_ptr<HostChannel> channel_;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<ModuleSet> modules_;
  ConnectionActions* connections_ = nullptr;  // the window's, as is the next
  BodyFileActions* bodyFiles_ = nullptr;
  QTimer refresh_;
};

/// What --list-modules prints: loaded modules with name, version and file, refused files with the reason, skipped
/// files, and the folders that were searched.
QString moduleListing(const std::vector<ModuleRecord>& records, const std::vector<ModuleFolder>& searched);

}  // namespace korvex2

#endif
