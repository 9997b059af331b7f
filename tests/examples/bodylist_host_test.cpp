// The example module in the host, beside the body adjustment, on the simulated backend; and in the host's program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <string>
#include <vector>

#include "bodydatabase.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "logmodel.h"
#include "modalwatch.h"

namespace {

using namespace korvex2;
using testing::ElementsAre;

class BodyListInHost : public testing::Test {
 protected:
  void start(const std::vector<QString>& folders) {
    ASSERT_EQ(copyShippedDatabase(SOURCE_DATA_FOLDER, database.path()).toStdString(), "");
    LiveOptions live;
    live.rate = 100;
    frontend = std::make_unique<Frontend>(std::make_unique<EmbeddedConnection>(database.path(), QStringList(), live));
    std::vector<ModuleFolder> searched;
    for (const QString& folder : folders) {
      searched.push_back({folder, true});
    }
    frontend->loadModules(searched);
    frontend->window().show();
  }

  /// Presses the entry in the opened menu with the mouse.
  void press(const QString& text) {
    for (QAction* action : frontend->window().menuBar()->actions()) {
      QMenu* const menu = action->menu();
      for (QAction* entry : menu != nullptr ? menu->actions() : QList<QAction*>()) {
        if (entry->text() == text) {
          menu->popup(frontend->window().mapToGlobal(QPoint(0, 0)));
          QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(entry).center());
          return;
        }
      }
    }
    FAIL() << "there is no entry " << text.toStdString();
  }
  QDialog* list() {
    for (QDialog* dialog : frontend->window().findChildren<QDialog*>()) {
      if (dialog->windowTitle() == QLatin1String("Bodies")) {
        return dialog;
      }
    }
    return nullptr;
  }
  static bool becomes(QWidget* window, const QString& text) {
    return QTest::qWaitFor([&] { return window->findChild<QLabel*>()->text() == text; }, 5000);
  }
  std::vector<std::string> menuEntries(const QString& title) {
    std::vector<std::string> texts;
    for (QAction* action : frontend->window().menuBar()->actions()) {
      for (QAction* entry : action->text() == title ? action->menu()->actions() : QList<QAction*>()) {
        texts.push_back(entry->text().toStdString());
      }
    }
    return texts;
  }

  QTemporaryDir database;
  std::unique_ptr<Frontend> frontend;
};

TEST_F(BodyListInHost, StandsBehindTheAdjustmentInTheMenuThatBothShare) {
  start({EXAMPLE_FOLDER, MODULE_FOLDER});
  EXPECT_THAT(menuEntries("&Calibration"), ElementsAre("Body &adjustment", "Body &list"));
}

TEST_F(BodyListInHost, ShowsTheBackendsBodiesAndFollowsOneOfThem) {
  start({EXAMPLE_FOLDER});
  press("Body &list");
  QDialog* const window = list();
  ASSERT_NE(window, nullptr);
  EXPECT_TRUE(window->isVisible());
  std::vector<std::string> rows;
  for (int row = 0; row < window->findChild<QListWidget*>()->count(); ++row) {
    rows.push_back(window->findChild<QListWidget*>()->item(row)->text().toStdString());
  }
  EXPECT_THAT(rows, ElementsAre("1: Cup (5 markers)", "2: Table (4 markers)", "3: Quadrotor (4 markers)",
                                "4: Quadrotor, five degrees (4 markers)", "5: Quadrotor, cylinder markers (4 markers)",
                                "6: Phone (4 markers)", "7: Cup, active markers (5 markers)"));
  EXPECT_TRUE(becomes(window, "Tracked, quality 1"));
  EXPECT_TRUE(frontend->connection().liveStatus().measuring);
  window->findChild<QListWidget*>()->setCurrentRow(5);  // the phone is not calibrated
  EXPECT_TRUE(becomes(window, "Not tracked"));
  QTest::keyClick(window, Qt::Key_Escape);
  EXPECT_FALSE(window->isVisible());
  EXPECT_FALSE(frontend->connection().liveStatus().measuring);
}

TEST_F(BodyListInHost, OpensTheAdjustmentOnTheChosenBodyAndShowsItselfAgainAfterwards) {
  start({EXAMPLE_FOLDER, MODULE_FOLDER});
  press("Body &list");
  QDialog* const window = list();
  ASSERT_NE(window, nullptr);
  window->findChild<QListWidget*>()->setCurrentRow(1);
  ModalWatch watch;
  std::string chosen;
  watch.expectWindow([&](QWidget* dialog) {
    EXPECT_FALSE(window->isVisible());
    chosen = dialog->findChild<QComboBox*>("body_name")->currentText().toStdString();
    QTest::mouseClick(dialog->findChild<QPushButton*>("cancel_button"), Qt::LeftButton);
  });
  QTest::mouseClick(window->findChild<QPushButton*>(), Qt::LeftButton);
  EXPECT_EQ(chosen, "Table (Standard body 02)");
  EXPECT_TRUE(window->isVisible());
  EXPECT_TRUE(becomes(window, "Tracked, quality 1")) << "its own measurement runs again";
}

TEST_F(BodyListInHost, StaysWhenThereIsNoAdjustmentAndTheHostSaysSo) {
  start({EXAMPLE_FOLDER});
  press("Body &list");
  QDialog* const window = list();
  ASSERT_NE(window, nullptr);
  const int before = frontend->window().reports().rowCount();
  QTest::mouseClick(window->findChild<QPushButton*>(), Qt::LeftButton);
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(frontend->window().reports().rowCount(), before + 1);
}

TEST_F(BodyListInHost, IsTakenDownWithTheWindowOpen) {
  start({EXAMPLE_FOLDER, MODULE_FOLDER});
  press("Body &list");
  EXPECT_TRUE(becomes(list(), "Tracked, quality 1"));
  frontend->shutdown();
  EXPECT_EQ(list(), nullptr);
}

class BodyListInTheProgram : public testing::Test {
 protected:
  /// Standard output of `korvex2-frontend --list-modules` with these options.
  static QString listing(const QStringList& options) {
    QProcess program;
    program.start(FRONTEND_PROGRAM, QStringList("--list-modules") + options);
    EXPECT_TRUE(program.waitForFinished(30000));
    EXPECT_EQ(program.exitCode(), 0);
    return QString::fromLocal8Bit(program.readAllStandardOutput());
  }
};

TEST_F(BodyListInTheProgram, IsListedWhenItsFolderIsNamed) {
  EXPECT_EQ(listing({"--plugin-dir", EXAMPLE_FOLDER}),
            "Modules:\n  Body List v1.0.0 (" EXAMPLE_FOLDER "/libbodylist.so)\nSearched:\n  " EXAMPLE_FOLDER "\n");
}

TEST_F(BodyListInTheProgram, IsNotFoundUnasked) { EXPECT_FALSE(listing({}).contains("bodylist")); }

}  // namespace
