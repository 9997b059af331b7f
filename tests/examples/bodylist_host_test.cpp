// The example module in the host, beside the body adjustment, on the simulated backend; and in the host's program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "bodydatabase.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "logmodel.h"
#include "modalwatch.h"
#include "requester.h"

namespace {

using namespace korvex2;
using testing::ElementsAre;

/// Another module that follows the measurement.
class Follower : public Requester {
 public:
  int set_ascii_data(const char* /*tag*/, const char* /*line*/) override { return 0; }
  void set_mea_started() override {}
  void set_mea_stopped() override { ++stopped; }

  std::atomic<int> stopped{0};
};

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
  /// Null while it is closed.
  QTreeWidget* list() {
    for (QTreeWidget* tree : frontend->window().findChildren<QTreeWidget*>()) {
      if (tree->isWindow()) {
        return tree;
      }
    }
    return nullptr;
  }
  std::vector<std::string> column(int number) {
    std::vector<std::string> texts;
    for (int row = 0; row < list()->topLevelItemCount(); ++row) {
      texts.push_back(list()->topLevelItem(row)->text(number).toStdString());
    }
    return texts;
  }
  bool qualityBecomes(int row, const QString& text) {
    return QTest::qWaitFor([&] { return list()->topLevelItem(row)->text(2) == text; }, 5000);
  }
  void doubleClick(int row) {
    const QPoint place = list()->visualItemRect(list()->topLevelItem(row)).center();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
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

TEST_F(BodyListInHost, ShowsTheBackendsBodiesAndFollowsThem) {
  start({EXAMPLE_FOLDER});
  press("Body &list");
  ASSERT_NE(list(), nullptr);
  EXPECT_THAT(column(0), ElementsAre("Cup", "Table", "Quadrotor", "Quadrotor, five degrees",
                                     "Quadrotor, cylinder markers", "Phone", "Cup, active markers"));
  EXPECT_THAT(column(1), ElementsAre("5", "4", "4", "4", "4", "4", "5"));
  EXPECT_TRUE(qualityBecomes(0, "1"));
  EXPECT_THAT(column(2), ElementsAre("1", "1", "1", "1", "1", "not tracked", "1")) << "the phone is not calibrated";
  EXPECT_TRUE(frontend->connection().liveStatus().measuring);
  list()->close();
  EXPECT_TRUE(QTest::qWaitFor([this] { return list() == nullptr; }, 3000));
}

TEST_F(BodyListInHost, OpensTheAdjustmentOnABodyAndShowsItselfAgainAfterwards) {
  start({EXAMPLE_FOLDER, MODULE_FOLDER});
  press("Body &list");
  ASSERT_NE(list(), nullptr);
  Follower follower;
  frontend->channel().register_requester("6d", &follower);
  ModalWatch watch;
  std::string chosen;
  watch.expectWindow([&](QWidget* dialog) {
    EXPECT_EQ(list(), nullptr);
    chosen = dialog->findChild<QComboBox*>("body_name")->currentText().toStdString();
    QTest::mouseClick(dialog->findChild<QPushButton*>("cancel_button"), Qt::LeftButton);
  });
  doubleClick(1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !chosen.empty() && list() != nullptr; }, 5000));
  EXPECT_EQ(chosen, "Table (Standard body 02)");
  EXPECT_TRUE(list()->isVisible());
  EXPECT_TRUE(qualityBecomes(1, "1")) << "the measurement runs again";
  frontend->channel().unregister_requester("6d", &follower);
  EXPECT_EQ(follower.stopped, 1) << "the adjustment stops the measurement for all when it closes";
}

TEST_F(BodyListInHost, LetsTheHostTellThatThereIsNoAdjustment) {
  start({EXAMPLE_FOLDER});
  press("Body &list");
  ASSERT_NE(list(), nullptr);
  const int before = frontend->window().reports().rowCount();
  doubleClick(0);
  EXPECT_TRUE(QTest::qWaitFor([this] { return list() == nullptr; }, 3000));
  EXPECT_EQ(frontend->window().reports().rowCount(), before + 1);
}

TEST_F(BodyListInHost, IsTakenDownWithItsWindowOpen) {
  start({EXAMPLE_FOLDER, MODULE_FOLDER});
  press("Body &list");
  EXPECT_TRUE(qualityBecomes(0, "1"));
  frontend->shutdown();
  EXPECT_EQ(list(), nullptr);
}

class BodyListInTheProgram : public testing::Test {
 protected:
  /// Standard output of `korvex2-frontend --list-modules` with these options.
  static QString listing(const QStringList& options, QString* errors = nullptr) {
    const QTemporaryDir home;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_DATA_HOME", home.path());
    environment.remove("KORVEX2_MODULE_PATH");
    program.setProcessEnvironment(environment);
    program.start(FRONTEND_PROGRAM, QStringList("--list-modules") + options);
    EXPECT_TRUE(program.waitForFinished(30000));
    EXPECT_EQ(program.exitCode(), 0);
    if (errors != nullptr) {
      *errors = QString::fromLocal8Bit(program.readAllStandardError());
    }
    return QString::fromLocal8Bit(program.readAllStandardOutput());
  }
};

TEST_F(BodyListInTheProgram, IsListedWhenItsFolderIsNamed) {
  EXPECT_EQ(listing({"--plugin-dir", EXAMPLE_FOLDER}),
            "Modules:\n  Body List v1.0.0 (" EXAMPLE_FOLDER "/libbodylist.so)\nSearched:\n  " EXAMPLE_FOLDER "\n");
}

TEST_F(BodyListInTheProgram, OfSeveralFoldersTheLastOneCounts) {
  EXPECT_EQ(listing({"--plugin-dir", "/nowhere", "--plugin-dir", EXAMPLE_FOLDER}),
            listing({"--plugin-dir", EXAMPLE_FOLDER}));
}

TEST_F(BodyListInTheProgram, ARefusalStandsOnStandardErrorToo) {
  const QTemporaryDir folder;
  QFile file(folder.filePath("libtext.so"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("text") == 4);
  file.close();
  QString errors;
  EXPECT_TRUE(listing({"--plugin-dir", folder.path()}, &errors).startsWith("No modules found.\n"));
  EXPECT_TRUE(errors.contains("refused " + file.fileName())) << errors.toStdString();
}

TEST_F(BodyListInTheProgram, IsNotFoundUnasked) { EXPECT_FALSE(listing({}).contains("bodylist")); }

}  // namespace
