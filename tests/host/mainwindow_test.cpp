// The main window: menus, docks, status bar, stored layout.
#include "mainwindow.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

#include "hostchannel.h"
#include "logmodel.h"
#include "modalwatch.h"
#include "scriptedconnection.h"

using namespace korvex2;

namespace {

class Window : public testing::Test {
 protected:
  void SetUp() override {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    window = std::make_unique<MainWindow>(channel);
  }
  void TearDown() override { window.reset(); }

  void show() {
    window->show();
    QApplication::setActiveWindow(window.get());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
  }
  _GuiElement* add(const QString& text, const QString& menu, int inMenu, int ofMenu) {
    actions.push_back(std::make_unique<QAction>(text));
    records.push_back(std::make_unique<_GuiElement>());
    records.back()->action = actions.back().get();
    records.back()->menu_title = menu;
    records.back()->placement_in_menu = inMenu;
    records.back()->placement_of_menu = ofMenu;
    elements += records.back().get();
    return records.back().get();
  }
  std::vector<std::string> titles() const {
    std::vector<std::string> found;
    for (const QAction* action : window->menuBar()->actions()) {
      found.push_back(action->text().toStdString());
    }
    return found;
  }
  std::vector<std::string> entries(const QString& title) const {
    std::vector<std::string> found;
    for (const QAction* action : window->menuBar()->actions()) {
      if (action->text() == title) {
        for (const QAction* entry : action->menu()->actions()) {
          found.push_back(entry->isSeparator() ? "-" : entry->text().toStdString());
        }
      }
    }
    return found;
  }
  QDockWidget* dock(const char* name) const { return window->findChild<QDockWidget*>(name); }
  static std::string cell(const LogModel& model, int row, int column) {
    return model.data(model.index(row, column)).toString().toStdString();
  }

  QTemporaryDir settings;
  ScriptedConnection backend;
  HostChannel channel{&backend};
  std::unique_ptr<MainWindow> window;
  QList<_GuiElement*> elements;
  std::vector<std::unique_ptr<QAction>> actions;
  std::vector<std::unique_ptr<_GuiElement>> records;
};

}  // namespace

TEST_F(Window, HasItsOwnMenusWithoutModules) {
  window->addModuleEntries({});
  EXPECT_EQ(titles(), (std::vector<std::string>{"&File", "&View", "&Help"}));
  EXPECT_EQ(entries("&File"), (std::vector<std::string>{"&Quit"}));
  EXPECT_EQ(entries("&Help"), (std::vector<std::string>{"&About"}));
}

TEST_F(Window, PutsTheModulesMenusBetweenItsOwnInOrder) {
  add("Body &adjustment", "&Calibration", 680, 300);
  add("Tool", "&Tools", 1, 900);
  add("&Room", "&Calibration", 100, 300);
  add("Start", "&Measurement", 1, 100);
  window->addModuleEntries(elements);
  EXPECT_EQ(titles(), (std::vector<std::string>{"&File", "&View", "&Measurement", "&Calibration", "&Tools", "&Help"}));
  EXPECT_EQ(entries("&Calibration"), (std::vector<std::string>{"&Room", "Body &adjustment"}));
}

TEST_F(Window, AModulesEntryInAMenuOfTheHostStandsBeforeTheHostsOwn) {
  add("&Manual", "&Help", 1, 9999);
  add("&Export", "File", 2, 0);
  add("&Import", "File", 1, 0);
  window->addModuleEntries(elements);
  EXPECT_EQ(titles(), (std::vector<std::string>{"&File", "&View", "&Help"}));
  EXPECT_EQ(entries("&File"), (std::vector<std::string>{"&Import", "&Export", "-", "&Quit"}));
  EXPECT_EQ(entries("&Help"), (std::vector<std::string>{"&Manual", "-", "&About"}));
}

TEST_F(Window, AModulesShortcutTriggersItsAction) {
  add("Body &adjustment", "&Calibration", 680, 300)->action->setShortcut(QKeySequence("Shift+F6"));
  window->addModuleEntries(elements);
  QSignalSpy triggered(actions[0].get(), &QAction::triggered);
  show();
  QTest::keyClick(window.get(), Qt::Key_F6, Qt::ShiftModifier);
  EXPECT_EQ(triggered.size(), 1);
}

TEST_F(Window, AnEntrysStatusTipIsShownWhileItIsChosen) {
  add("Body &adjustment", "&Calibration", 680, 300)->action->setStatusTip("Perform the body adjustment");
  window->addModuleEntries(elements);
  show();
  channel.send_message("standard", "Korvex2", 1, "a report");
  QAction* calibration = window->menuBar()->actions().at(2);
  ASSERT_EQ(calibration->text(), "&Calibration");
  window->menuBar()->setActiveAction(calibration);
  calibration->menu()->setActiveAction(actions[0].get());
  EXPECT_EQ(window->statusBar()->currentMessage(), "Perform the body adjustment");
  calibration->menu()->close();
  // Afterwards the report is there again, where a message of the status bar itself would be gone.
  EXPECT_TRUE(QTest::qWaitFor([&] { return window->statusBar()->currentMessage().isEmpty(); }, 2000));
  EXPECT_TRUE(window->statusBar()->findChild<QLabel*>("lastReport")->isVisible());
}

TEST_F(Window, AShortcutTakenTwiceIsReported) {
  add("First", "&Tools", 1, 900)->action->setShortcut(QKeySequence("Ctrl+T"));
  add("Second", "&Tools", 2, 900)->action->setShortcut(QKeySequence("Ctrl+T"));
  add("&Quick", "&File", 2, 0)->action->setShortcut(QKeySequence("Ctrl+Q"));
  add("Third", "&Tools", 3, 900)->action->setShortcut(QKeySequence("Ctrl+U"));
  window->addModuleEntries(elements);
  ASSERT_EQ(window->reports().rowCount(), 2);
  for (const char* words : {"Ctrl+T", "First", "Second"}) {
    EXPECT_NE(cell(window->reports(), 0, 2).find(words), std::string::npos) << words;
  }
  for (const char* words : {"Ctrl+Q", "Quit", "Quick"}) {
    EXPECT_NE(cell(window->reports(), 1, 2).find(words), std::string::npos) << words;
  }
}

TEST_F(Window, QuitsWithCtrlQ) {
  show();
  QTest::keyClick(window.get(), Qt::Key_Q, Qt::ControlModifier);
  EXPECT_FALSE(window->isVisible());
}

TEST_F(Window, AReportStandsInTheDockAndInTheStatusBar) {
  show();
  const QTime before = QTime::currentTime();
  channel.send_message("standard", "Korvex2", 1, "Error: Unable to check <b>body</b> type");
  ASSERT_EQ(window->reports().rowCount(), 1);
  const QTime at = QTime::fromString(QString::fromStdString(cell(window->reports(), 0, 0)), "HH:mm:ss.zzz");
  ASSERT_TRUE(at.isValid());
  EXPECT_LT(qAbs(before.secsTo(at)), 5);
  EXPECT_EQ(cell(window->reports(), 0, 1), "Korvex2");
  EXPECT_EQ(cell(window->reports(), 0, 2), "Error: Unable to check <b>body</b> type");
  const auto* label = window->statusBar()->findChild<QLabel*>("lastReport");
  EXPECT_EQ(label->text(), "Korvex2: Error: Unable to check <b>body</b> type");
  EXPECT_EQ(label->textFormat(), Qt::PlainText);
  EXPECT_TRUE(label->isVisible());
}

TEST_F(Window, ReportsAreBounded) {
  for (int i = 0; i < MainWindow::reportLimit + 10; ++i) {
    channel.send_message("standard", "Korvex2", 1, QByteArray::number(i).constData());
  }
  EXPECT_EQ(window->reports().rowCount(), MainWindow::reportLimit);
  EXPECT_EQ(cell(window->reports(), MainWindow::reportLimit - 1, 2), std::to_string(MainWindow::reportLimit + 9));
}

TEST_F(Window, EveryCommandAndItsAnswerStandInTheTraffic) {
  backend.answers["korvex2 tracking start"] = "korvex2 ok";
  backend.answers["korvex2 set x yes"] = "korvex2 err 2 \"unknown\"";
  char answer[200];
  channel.send_raw_command(answer, "korvex2 tracking start");
  channel.set_value("x yes");
  channel.set_value("y yes");
  const LogModel& traffic = window->traffic();
  ASSERT_EQ(traffic.rowCount(), 3);
  EXPECT_EQ(cell(traffic, 0, 1), "korvex2 tracking start");
  EXPECT_EQ(cell(traffic, 0, 2), "korvex2 ok");
  EXPECT_EQ(cell(traffic, 1, 2), "korvex2 err 2 \"unknown\"");
  EXPECT_EQ(cell(traffic, 2, 2), "(no answer)");
  const auto alert = [&](int row) { return !traffic.data(traffic.index(row, 0), Qt::DecorationRole).isNull(); };
  EXPECT_FALSE(alert(0));
  EXPECT_TRUE(alert(1));
  EXPECT_TRUE(alert(2));
}

TEST_F(Window, TrafficIsBoundedToFiveThousandRows) {
  backend.answers["korvex2 set x yes"] = "korvex2 ok";
  for (int i = 0; i < 5001; ++i) {
    channel.set_value("x yes");
  }
  EXPECT_EQ(window->traffic().rowCount(), 5000);
}

TEST_F(Window, OnlyCommandsThatMayChangeSomethingTouchTheBackend) {
  QSignalSpy touched(window.get(), &MainWindow::backendTouched);
  backend.answers["korvex2 get x"] = "korvex2 set x yes";
  backend.answers["korvex2 set x no"] = "korvex2 ok";
  char answer[200];
  channel.get_string(answer, "x");
  channel.set_value("y no");
  EXPECT_EQ(touched.size(), 0);
  channel.set_value("x no");
  EXPECT_EQ(touched.size(), 1);
}

TEST_F(Window, DocksAreShownAndHiddenByTheirShortcuts) {
  show();
  EXPECT_TRUE(dock("reportsDock")->isVisible());
  EXPECT_TRUE(dock("trafficDock")->isVisible());
  QTest::keyClick(window.get(), Qt::Key_1, Qt::ControlModifier);
  EXPECT_FALSE(dock("reportsDock")->isVisible());
  QTest::keyClick(window.get(), Qt::Key_2, Qt::ControlModifier);
  EXPECT_FALSE(dock("trafficDock")->isVisible());
  QTest::keyClick(window.get(), Qt::Key_1, Qt::ControlModifier);
  EXPECT_TRUE(dock("reportsDock")->isVisible());
}

TEST_F(Window, AClickOnTheLastReportShowsTheReports) {
  show();
  dock("reportsDock")->hide();
  QTest::mouseClick(window->statusBar()->findChild<QLabel*>("lastReport"), Qt::LeftButton);
  EXPECT_TRUE(dock("reportsDock")->isVisible());
}

TEST_F(Window, RemembersItsLayout) {
  show();
  window->resize(1000, 650);
  dock("trafficDock")->hide();
  QApplication::processEvents();
  window->close();
  window = std::make_unique<MainWindow>(channel);
  window->restoreLayout();
  show();
  EXPECT_FALSE(dock("trafficDock")->isVisible());
  EXPECT_TRUE(dock("reportsDock")->isVisible());
  EXPECT_EQ(window->size(), QSize(1000, 650));
  window->resetLayout();
  EXPECT_TRUE(dock("trafficDock")->isVisible());
}

TEST_F(Window, AStoredLayoutThatIsBrokenIsIgnored) {
  {
    QSettings stored("korvex2", "frontend");
    stored.setValue("window/geometry", QByteArray("rubbish"));
    stored.setValue("window/state", "more of it");
  }
  window->restoreLayout();
  show();
  EXPECT_TRUE(dock("reportsDock")->isVisible());
  EXPECT_TRUE(dock("trafficDock")->isVisible());
}

TEST_F(Window, AboutNamesTheModulesAndTheirVersions) {
  window->setModules({{ModuleRecord::State::loaded, "/m/a.so", "Alpha <1>", "v1.2.3", {}},
                      {ModuleRecord::State::refused, "/m/b.so", {}, {}, "bad"}},
                     {});
  show();
  ModalWatch watch;
  QString text;
  watch.expectWindow([&](QWidget* box) {
    text = qobject_cast<QMessageBox*>(box)->text();
    box->close();
  });
  window->showAbout();
  EXPECT_TRUE(text.contains("Alpha &lt;1&gt; v1.2.3")) << text.toStdString();
  EXPECT_FALSE(text.contains("b.so"));
}
