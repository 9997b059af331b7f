// The front end put together: versions, modules, start page, and the end.
#include "frontend.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

#include "databasefolder.h"
#include "embeddedconnection.h"
#include "logmodel.h"
#include "modulefiles.h"
#include "scriptedconnection.h"
#include "startpage.h"

using namespace korvex2;

namespace {

class FrontEnd : public testing::Test {
 protected:
  void SetUp() override {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    qApp->setProperty("moduleCalls", QStringList());
  }
  static std::unique_ptr<ScriptedConnection> scripted() { return std::make_unique<ScriptedConnection>(); }
  static QTreeWidget* bodies(Frontend& frontend) { return frontend.window().findChild<QTreeWidget*>("bodies"); }
  static std::string report(Frontend& frontend, int row) {
    const LogModel& reports = frontend.window().reports();
    return reports.data(reports.index(row, 2)).toString().toStdString();
  }
  QTemporaryDir settings;
  ModuleFiles files;
};

}  // namespace

TEST_F(FrontEnd, FillsTheVersionsFromTheBackend) {
  auto connection = scripted();
  connection->number = {2, 7, -1};
  const Frontend frontend(std::move(connection));
  EXPECT_EQ(frontend.versions().backend_major, 2);
  EXPECT_EQ(frontend.versions().backend_minor, 7);
  EXPECT_EQ(frontend.versions().backend_revision, -1);
  EXPECT_GT(frontend.versions().frontend_major, 0);
}

TEST_F(FrontEnd, ShowsTheBackendsVersionAndLeavesAnUnknownRevisionOut) {
  auto connection = scripted();
  connection->number = {2, 7, -1};
  Frontend frontend(std::move(connection));
  EXPECT_EQ(frontend.window().findChild<QLabel*>("connection")->text(), "Scripted backend");
  EXPECT_EQ(frontend.window().findChild<QLabel*>("connectionDetails")->text(), "Version 2.7");
}

TEST_F(FrontEnd, ReportsWhatWentWrongWithTheConnection) {
  auto connection = scripted();
  connection->troubles = QStringList{"bodies/a.body, line 3: no number", "second"};
  Frontend frontend(std::move(connection));
  ASSERT_EQ(frontend.window().reports().rowCount(), 2);
  EXPECT_EQ(report(frontend, 0), "bodies/a.body, line 3: no number");
  EXPECT_EQ(report(frontend, 1), "second");
}

TEST_F(FrontEnd, LoadsModulesAndReportsTheRefusedOnes) {
  files.copy("alphamodule");
  files.copy("betamodule");
  files.copy("foreignmodule");
  Frontend frontend(scripted());
  frontend.loadModules(files.folders());
  QStringList titles;
  for (const QAction* action : frontend.window().menuBar()->actions()) {
    titles += action->text();
  }
  EXPECT_EQ(titles, (QStringList{"&File", "&View", "&Calibration", "&Help"}));
  EXPECT_EQ(frontend.window().findChildren<QPushButton*>().size(), 2);
  EXPECT_EQ(frontend.window().findChild<QTreeWidget*>("modules")->topLevelItemCount(), 3);
  ASSERT_EQ(frontend.window().reports().rowCount(), 1);
  EXPECT_NE(report(frontend, 0).find("libforeignmodule.so"), std::string::npos);
}

TEST_F(FrontEnd, WithoutModulesTheStartPageSaysWhereTheyWereLookedFor) {
  Frontend frontend(scripted());
  frontend.loadModules(files.folders());
  frontend.window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&frontend.window()));
  const auto* label = frontend.window().findChild<QLabel*>("noModules");
  EXPECT_TRUE(label->text().contains(files.path()));
  EXPECT_TRUE(label->isVisible());
  // The text is really painted: not all pixels of the label are the card's background.
  const QImage picture =
      frontend.window().grab(QRect(label->mapTo(&frontend.window(), QPoint()), label->size())).toImage();
  const QRgb background = picture.pixel(picture.width() - 1, picture.height() - 1);
  int painted = 0;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) {
      painted += picture.pixel(x, y) != background ? 1 : 0;
    }
  }
  EXPECT_GT(painted, 200);
}

TEST_F(FrontEnd, EndsWithoutALooseEnd) {
  files.copy("alphamodule");
  QPointer<MainWindow> window;
  {
    Frontend frontend(scripted());
    window = &frontend.window();
    frontend.loadModules(files.folders());
    frontend.window().show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&frontend.window()));
  }
  EXPECT_TRUE(window.isNull());
  const QStringList calls = qApp->property("moduleCalls").toStringList();
  EXPECT_EQ(calls.mid(calls.size() - 4), (QStringList{"Alpha about_to_exit_module", "Alpha exit_module",
                                                      "Alpha dialog destroyed", "Alpha destroyed"}));
}

TEST_F(FrontEnd, ShowsTheBodiesAnewAfterAChange) {
  auto connection = scripted();
  ScriptedConnection& backend = *connection;
  backend.answers["korvex2 get body number_of_types"] = "korvex2 set body number_of_types 1";
  backend.answers["korvex2 get body type t01"] = "korvex2 set body type t01 standard";
  backend.answers["korvex2 get body type_desc standard"] = "korvex2 set body type_desc standard \"Standard body\"";
  backend.answers["korvex2 get body number_of_bodies standard"] = "korvex2 set body number_of_bodies standard 1";
  backend.answers["korvex2 get body desc standard b01"] = "korvex2 set body desc standard b01 \"Head\"";
  backend.answers["korvex2 get body calibrated standard b01"] = "korvex2 set body calibrated standard b01 yes";
  backend.answers["korvex2 get body number_of_marker standard b01"] =
      "korvex2 set body number_of_marker standard b01 5";
  backend.answers["korvex2 body delete_marker standard b01 m01"] = "korvex2 ok";
  Frontend frontend(std::move(connection));
  ASSERT_EQ(bodies(frontend)->topLevelItemCount(), 1);
  EXPECT_EQ(bodies(frontend)->topLevelItem(0)->text(1), "5");
  EXPECT_EQ(frontend.window().traffic().rowCount(), 0) << "the host's own questions are no traffic";
  backend.answers["korvex2 get body number_of_marker standard b01"] =
      "korvex2 set body number_of_marker standard b01 4";
  char answer[200];
  frontend.channel().send_raw_command(answer, "korvex2 body delete_marker standard b01 m01");
  EXPECT_TRUE(QTest::qWaitFor([&] { return bodies(frontend)->topLevelItem(0)->text(1) == "4"; }, 3000));
}

TEST_F(FrontEnd, TalksWithTheSimulatedBackendOfTheShippedData) {
  const QTemporaryDir place;
  const QString folder = place.filePath("database");
  ASSERT_EQ(prepareDatabaseFolder(folder, SOURCE_DATA_FOLDER).toStdString(), "");
  Frontend frontend(std::make_unique<EmbeddedConnection>(folder, QStringList()));
  EXPECT_EQ(frontend.window().reports().rowCount(), 0) << report(frontend, 0);
  EXPECT_TRUE(frontend.window().findChild<QLabel*>("connectionDetails")->text().contains(folder));
  EXPECT_GE(bodies(frontend)->topLevelItemCount(), 1);
  int types = 0;
  EXPECT_EQ(frontend.channel().get_int(&types, "body number_of_types"), 0);
  EXPECT_GE(types, 2);
  char answer[200] = "";
  EXPECT_EQ(frontend.channel().get_string(answer, "body type t%2.2d", 1), 0);
  double position[3] = {};
  EXPECT_EQ(frontend.channel().get_reals(position, 3, "body marker %s b%2.2d m%2.2d", answer, 1, 1), 0);
  EXPECT_EQ(frontend.channel().get_string(answer, "nothing of the kind"), HostChannel::refused);
}

TEST_F(FrontEnd, AnEmptyDatabaseIsReportedAndNotFatal) {
  const QTemporaryDir empty;
  Frontend frontend(std::make_unique<EmbeddedConnection>(empty.path(), QStringList()));
  EXPECT_GE(frontend.window().reports().rowCount(), 1);
  EXPECT_EQ(bodies(frontend)->topLevelItemCount(), 0);
}
