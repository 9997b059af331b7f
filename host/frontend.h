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

/// Lives from the start to the end of the program. Modules are shut down before the window they have their dialogs
/// in, the window before the channel, the channel before the connection.
class Frontend : public QObject {
  Q_OBJECT

 public:
  explicit Frontend(std::unique_ptr<BackendConnection> connection, QObject* parent = nullptr);
  ~Frontend() override;

  /// Loads the modules of these folders, hands the host's objects over and puts the menu entries in place.
  void loadModules(const std::vector<ModuleFolder>& folders);
  /// Takes the modules down; nothing happens the second time.
  void shutdown();

  MainWindow& window() { return *window_; }
  HostChannel& channel() { return *channel_; }
  BackendConnection& connection() { return *connection_; }
  const BackendVersions& versions() const { return versions_; }
  const ModuleSet& modules() const { return *modules_; }

 public slots:
  /// Reads the backend's bodies anew for the start page.
  void refreshBodies();

 private:
  std::unique_ptr<BackendConnection> connection_;
  BackendVersions versions_;
  std::unique_ptr<HostChannel> channel_;
  std::unique_ptr<MainWindow> window_;
  std::unique_ptr<ModuleSet> modules_;
  QTimer refresh_;
};

/// What --list-modules prints: loaded modules with name, version and file, refused files with the reason, skipped
/// files, and the folders that were searched.
QString moduleListing(const std::vector<ModuleRecord>& records, const std::vector<ModuleFolder>& searched);

}  // namespace korvex2

#endif
