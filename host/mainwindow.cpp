// See mainwindow.h.
#include "mainwindow.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDockWidget>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QScrollArea>
#include <QSettings>
#include <QStatusBar>
#include <QTextDocument>
#include <QTime>
#include <QTimer>

#include "elidedlabel.h"
#include "hostchannel.h"
#include "logmodel.h"
#include "logpane.h"
#include "menuplan.h"
#include "startpage.h"

namespace korvex2 {

namespace {

/// Milliseconds tell apart what a program does in a row.
QString clockText(const QTime& time) { return time.toString(QStringLiteral("HH:mm:ss.zzz")); }

QSettings settings() { return QSettings(QStringLiteral("korvex2"), QStringLiteral("frontend")); }

}  // namespace

MainWindow::MainWindow(HostChannel& channel, QWidget* parent)
    : QMainWindow(parent),
      channel_(channel),
      startPage_(new StartPage(this)),
      reports_(new LogModel({tr("Time"), tr("Sender"), tr("Report")}, reportLimit, this)),
      traffic_(new LogModel({tr("Time"), tr("Command"), tr("Answer")}, trafficLimit, this)) {
  setObjectName(QStringLiteral("mainWindow"));
  setWindowTitle(tr("Korvex2 front end"));
  auto* scroller = new QScrollArea(this);  // small or much magnified screens
  scroller->setFrameShape(QFrame::NoFrame);
  scroller->setWidgetResizable(true);
  scroller->setWidget(startPage_);
  setCentralWidget(scroller);
  buildDocks();
  buildMenus();
  buildStatusBar();
  takeFirstSize();
  firstLayout_ = saveState();

  connect(&channel_, &HostChannel::reported, this, &MainWindow::showReport);
  pendingTimer_.setSingleShot(true);
  pendingTimer_.setInterval(20);
  connect(&pendingTimer_, &QTimer::timeout, this, &MainWindow::showPendingTraffic);
  connect(&channel_, &HostChannel::exchanged, this, &MainWindow::showExchange);
}

void MainWindow::buildDocks() {
  setDockOptions(AnimatedDocks | AllowNestedDocks | AllowTabbedDocks);
  auto* reports = new LogPane(reports_, tr("No reports"));
  reports->setColumnWidth(0, 18);
  reports->setColumnWidth(1, 14);
  reportsDock_ = new QDockWidget(tr("Reports"), this);
  reportsDock_->setObjectName(QStringLiteral("reportsDock"));
  reportsDock_->setWidget(reports);
  addDockWidget(Qt::BottomDockWidgetArea, reportsDock_);

  auto* traffic = new LogPane(traffic_, tr("Nothing was exchanged with the backend yet"));
  traffic->setColumnWidth(0, 18);
  traffic->setColumnWidth(1, 38);
  trafficDock_ = new QDockWidget(tr("Backend traffic"), this);
  trafficDock_->setObjectName(QStringLiteral("trafficDock"));
  trafficDock_->setWidget(traffic);
  addDockWidget(Qt::BottomDockWidgetArea, trafficDock_);
}

void MainWindow::takeFirstSize() {
  const QRect room = screen()->availableGeometry();
  resize(QSize(1180, 740).boundedTo(room.size() * 0.94));
  move(room.center() - rect().center());
  resizeDocks({reportsDock_, trafficDock_}, {width() * 2 / 5, width() * 3 / 5}, Qt::Horizontal);
  const int dockHeight = height() * 3 / 10;
  resizeDocks({reportsDock_, trafficDock_}, {dockHeight, dockHeight}, Qt::Vertical);
}

void MainWindow::buildMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  quit_ = file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence(tr("Ctrl+Q")));
  quit_->setMenuRole(QAction::QuitRole);
  quit_->setStatusTip(tr("End the front end"));

  QMenu* view = menuBar()->addMenu(tr("&View"));
  QAction* showReports = reportsDock_->toggleViewAction();
  showReports->setShortcut(QKeySequence(tr("Ctrl+1")));
  showReports->setStatusTip(tr("Show or hide the reports of the modules"));
  view->addAction(showReports);
  QAction* showTraffic = trafficDock_->toggleViewAction();
  showTraffic->setShortcut(QKeySequence(tr("Ctrl+2")));
  showTraffic->setStatusTip(tr("Show or hide the commands to the backend and its answers"));
  view->addAction(showTraffic);
  view->addSeparator();
  QAction* reset = view->addAction(tr("&Reset layout"), this, &MainWindow::resetLayout);
  reset->setStatusTip(tr("Put the docks back to where they were at the first start"));

  helpMenu_ = menuBar()->addMenu(tr("&Help"));
  QAction* about = helpMenu_->addAction(tr("&About"), this, &MainWindow::showAbout);
  about->setMenuRole(QAction::AboutRole);
  about->setStatusTip(tr("Show the versions of the front end and its modules"));
}

void MainWindow::buildStatusBar() {
  lastReport_ = new ElidedLabel(this);
  lastReport_->setObjectName(QStringLiteral("lastReport"));
  lastReport_->setText(tr("Ready"));
  lastReport_->installEventFilter(this);
  statusBar()->addWidget(lastReport_, 1);
}

QMenu* MainWindow::menuTitled(const QString& title) const {
  const QList<QAction*> actions = menuBar()->actions();
  for (QAction* action : actions) {
    if (action->menu() != nullptr && plainTitle(action->text()) == plainTitle(title)) {
      return action->menu();
    }
  }
  return nullptr;
}

void MainWindow::addModuleEntries(const QList<_GuiElement*>& elements) {
  const std::vector<PlannedMenu> menus = planMenus(elements, tr("&Modules"));
  QList<QAction*> all;
  for (const PlannedMenu& planned : menus) {
    QMenu* menu = menuTitled(planned.title);
    QAction* before = nullptr;
    if (menu == nullptr) {
      menu = new QMenu(planned.title, this);
      menuBar()->insertMenu(helpMenu_->menuAction(), menu);
    } else if (!menu->isEmpty()) {
      before = menu->insertSeparator(menu->actions().constFirst());
    }
    for (QAction* action : planned.actions) {
      menu->insertAction(before, action);
      all += action;
    }
  }
  startPage_->setActions(all);
  warnOfSharedShortcuts(elements);
}

void MainWindow::warnOfSharedShortcuts(const QList<_GuiElement*>& elements) {
  std::map<QString, QString> users;  // by shortcut
  const auto claim = [this, &users](const QAction* action) {
    const QList<QKeySequence> shortcuts = action->shortcuts();
    for (const QKeySequence& shortcut : shortcuts) {
      const QString text = shortcut.toString(QKeySequence::NativeText);
      const auto [user, first] = users.emplace(text, plainTitle(action->text()));
      if (!first && !text.isEmpty()) {
        channel_.report(tr("The shortcut %1 belongs to both \"%2\" and \"%3\" and therefore triggers neither")
                            .arg(text, user->second, plainTitle(action->text())));
      }
    }
  };
  for (const char* name : {"&File", "&View", "&Help"}) {
    const QMenu* menu = menuTitled(tr(name));
    const QList<QAction*> actions = menu == nullptr ? QList<QAction*>() : menu->actions();
    for (const QAction* action : actions) {
      const bool contributed = std::any_of(elements.cbegin(), elements.cend(), [action](const _GuiElement* element) {
        return element != nullptr && element->action == action;
      });
      if (!contributed) {
        claim(action);
      }
    }
  }
  for (const _GuiElement* element : elements) {
    if (element != nullptr && element->action != nullptr) {
      claim(element->action);
    }
  }
}

void MainWindow::addFileEntries(const QList<QAction*>& entries) {
  QMenu* file = menuTitled(tr("&File"));
  file->insertActions(quit_, entries);
  file->insertSeparator(quit_);
}

void MainWindow::setModules(const std::vector<ModuleRecord>& records, const std::vector<ModuleFolder>& searched) {
  startPage_->setModules(records, searched);
  moduleList_.clear();
  for (const ModuleRecord& record : records) {
    if (record.state == ModuleRecord::State::loaded) {
      moduleList_ += QStringLiteral("<br>%1 %2").arg(record.name.toHtmlEscaped(), record.version.toHtmlEscaped());
    }
  }
}

void MainWindow::showReport(const QString& sender, int kind, const QString& text) {
  Q_UNUSED(kind)
  addReport(sender, text, true);
}

void MainWindow::showSuccess(const QString& text) { addReport(HostChannel::tr(HostChannel::hostName), text, false); }

void MainWindow::addReport(const QString& sender, const QString& text, bool alert) {
  reports_->append(
      {clockText(QTime::currentTime()), sender, QString(text).replace(QLatin1Char('\n'), QLatin1Char(' '))}, alert);
  const QString line = tr("%1: %2").arg(sender, text);
  lastReport_->setText(line);
  lastReport_->setToolTip(Qt::convertFromPlainText(line));
}

void MainWindow::showExchange(const QByteArray& command, const QByteArray& answer, bool answered) {
  pendingTraffic_.push_back({QDateTime::currentMSecsSinceEpoch(), command, answer, answered});
  if (pendingTraffic_.size() > trafficLimit) {
    pendingTraffic_.pop_front();  // it would be pushed out at once
  }
  if (!pendingTimer_.isActive()) {
    pendingTimer_.start();
  }
  if (answered && !command.startsWith("korvex2 get ")) {
    emit backendTouched();
  }
}

void MainWindow::showPendingTraffic() {
  constexpr int longestShown = 2000;
  std::vector<LogModel::Row> rows;
  rows.reserve(pendingTraffic_.size());
  for (const Exchange& exchange : std::exchange(pendingTraffic_, {})) {
    const QString shown =
        exchange.answered ? QString::fromLatin1(exchange.answer.left(longestShown)) : tr("(no answer)");
    const bool alert = !exchange.answered || exchange.answer.startsWith("korvex2 err");
    rows.push_back({{clockText(QDateTime::fromMSecsSinceEpoch(exchange.time).time()),
                     QString::fromLatin1(exchange.command), shown},
                    alert});
  }
  traffic_->appendRows(std::move(rows));
}

LogModel& MainWindow::traffic() {
  showPendingTraffic();
  return *traffic_;
}

void MainWindow::showAbout() {
  const QString modules = moduleList_.isEmpty() ? tr("<br>none") : moduleList_;
  QMessageBox::about(
      this, tr("About Korvex2 front end"),
      tr("<h3>Korvex2 front end %1</h3><p>Reference host for modules of the tracking system.</p>"
         "<p><b>Modules</b>%2</p><p>Qt %3</p>")
          .arg(QApplication::applicationVersion().toHtmlEscaped(), modules, QString::fromLatin1(qVersion())));
}

void MainWindow::resetLayout() {
  restoreState(firstLayout_);
  for (QDockWidget* dock : {reportsDock_, trafficDock_}) {
    dock->show();
  }
}

void MainWindow::restoreLayout() {
  const QSettings stored = settings();
  restoreGeometry(stored.value(QStringLiteral("window/geometry")).toByteArray());
  restoreState(stored.value(QStringLiteral("window/state")).toByteArray());
}

void MainWindow::saveLayout() const {
  QSettings stored = settings();
  stored.setValue(QStringLiteral("window/geometry"), saveGeometry());
  stored.setValue(QStringLiteral("window/state"), saveState());
}

void MainWindow::closeEvent(QCloseEvent* event) {
  saveLayout();
  event->accept();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == lastReport_ && event->type() == QEvent::MouseButtonRelease) {
    reportsDock_->show();
    reportsDock_->raise();
    return true;
  }
  return QMainWindow::eventFilter(watched, event);
}

}  // namespace korvex2
