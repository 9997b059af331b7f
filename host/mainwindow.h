// The host's main window: menus of the modules, start page, reports and traffic.
#ifndef KORVEX2_HOST_MAINWINDOW_H
#define KORVEX2_HOST_MAINWINDOW_H

#include <deque>

#include <QByteArray>
#include <QMainWindow>
#include <QTimer>

#include "guielement.h"
#include "moduleset.h"

class QAction;
class QDockWidget;
class QLabel;
class QMenu;

namespace korvex2 {

class HostChannel;
class LogModel;
class LogPane;
class StartPage;

/// Menus: "&File" and "&View" first, then those of the modules, "&Help" last. Docks: "Reports" (object name
/// "reportsDock") and "Backend traffic" (object name "trafficDock"). The latest report also stands in the status bar
/// (label "lastReport"); a click on it shows the Reports dock.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  static constexpr int reportLimit = 1000;
  static constexpr int trafficLimit = 5000;

  /// The channel stays the caller's and must outlive the window.
  explicit MainWindow(HostChannel& channel, QWidget* parent = nullptr);

  /// Puts the entries in place, see planMenus(). A title equal to one of the host's menus puts the entry there, before
  /// the host's own entries. Actions that are destroyed later leave their menus by themselves.
  void addModuleEntries(const QList<_GuiElement*>& elements);
  /// Puts entries of the host's own into the File menu, above "&Quit".
  void addFileEntries(const QList<QAction*>& entries);
  /// Modules for the start page and the about box.
  void setModules(const std::vector<ModuleRecord>& records, const std::vector<ModuleFolder>& searched);

  StartPage& startPage() { return *startPage_; }
  HostChannel& channel() { return channel_; }
  LogModel& reports() { return *reports_; }
  /// Brought up to date first: what is exchanged is shown a moment later, so that showing it does not slow it down.
  LogModel& traffic();

  /// Geometry and docks as the operator left them, from and to QSettings("korvex2", "frontend").
  void restoreLayout();
  void saveLayout() const;

 signals:
  /// Something may have changed in the backend: a setting or a command was answered, a moment ago.
  void backendTouched();

 public slots:
  void showReport(const QString& sender, int kind, const QString& text);
  /// Something the operator ordered was done: like a report of the host, but nothing to worry about.
  void showSuccess(const QString& text);
  void showExchange(const QByteArray& command, const QByteArray& answer, bool answered);
  void showAbout();
  /// Docks back to where they are at the first start.
  void resetLayout();

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void buildDocks();
  void buildMenus();
  void buildStatusBar();
  void showPendingTraffic();
  void addReport(const QString& sender, const QString& text, bool alert);
  /// As large as the work needs, and never larger than the screen.
  void takeFirstSize();
  void warnOfSharedShortcuts(const QList<_GuiElement*>& elements);
  QMenu* menuTitled(const QString& title) const;

  HostChannel& channel_;
  StartPage* startPage_;
  LogModel* reports_;
  LogModel* traffic_;
  struct Exchange {
    qint64 time = 0;  // milliseconds since the epoch
    QByteArray command;
    QByteArray answer;
    bool answered = false;
  };
  std::deque<Exchange> pendingTraffic_;  // no more than are shown
  QTimer pendingTimer_;
  QDockWidget* reportsDock_ = nullptr;
  QDockWidget* trafficDock_ = nullptr;
  QAction* quit_ = nullptr;
  QMenu* helpMenu_ = nullptr;
  QLabel* lastReport_ = nullptr;
  QByteArray firstLayout_;
  QString moduleList_;
};

}  // namespace korvex2

#endif
