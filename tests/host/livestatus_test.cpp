// The measurement in the status bar, and live lines from the start of the front end to its end.
#include "livestatuslabel.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

#include "databasefolder.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "linerecorder.h"
#include "logmodel.h"
#include "modulefiles.h"
#include "scriptedconnection.h"

using namespace korvex2;

namespace {

class LiveFrontEnd : public testing::Test {
 protected:
  void SetUp() override {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, place.filePath("settings"));
    ASSERT_EQ(prepareDatabaseFolder(place.filePath("database"), SOURCE_DATA_FOLDER).toStdString(), "");
  }
  std::unique_ptr<EmbeddedConnection> embedded(const QString& trajectory = QString()) const {
    LiveOptions options;
    options.rate = 1000;
    options.trajectory = trajectory;
    return std::make_unique<EmbeddedConnection>(place.filePath("database"), QStringList(), options);
  }
  static QLabel* status(Frontend& frontend) { return frontend.window().findChild<QLabel*>("liveStatus"); }

  QTemporaryDir place;
};

/// A connection that only tells how its live lines are started and ended.
class WatchedConnection : public ScriptedConnection {
 public:
  explicit WatchedConnection(QStringList& log) : log_(log) {}
  void startLiveLines(LiveDistributor&) override { log_ += "start"; }
  void stopLiveLines() override { log_ += "stop, calls of modules: " + QString::number(calls().size()); }
  static QStringList calls() { return qApp->property("moduleCalls").toStringList(); }

 private:
  QStringList& log_;
};

}  // namespace

TEST(LiveStatusLabel, TellsWhetherItMeasuresAndHowManyLinesCome) {
  LiveStatus status{true, false, 5000};
  QWidget parent;
  LiveStatusLabel label([&] { return status; }, &parent);
  EXPECT_EQ(label.text(), "Not measuring");
  EXPECT_FALSE(label.isHidden());
  label.showStatus({true, true, 5120}, 1.0);
  EXPECT_EQ(label.text(), "Measuring, 120 lines/s");
  label.showStatus({true, true, 5120 + 3000}, 1.5);
  EXPECT_EQ(label.text(), "Measuring, 2000 lines/s");
  label.showStatus({true, true, 5120 + 3000}, 1.0);
  EXPECT_EQ(label.text(), "Measuring, 0 lines/s");
  label.showStatus({true, true, 9000}, 0.0);
  EXPECT_EQ(label.text(), "Measuring, 0 lines/s") << "no time to divide by";
  label.showStatus({true, false, 9000}, 1.0);
  EXPECT_EQ(label.text(), "Not measuring");
}

TEST(LiveStatusLabel, IsBroughtUpToDateByItself) {
  LiveStatus status{true, false, 0};
  QWidget parent;
  LiveStatusLabel label([&] { return status; }, &parent);
  status.measuring = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return label.text() == "Measuring, 0 lines/s"; }, 5000));
}

TEST(LiveStatusLabel, HidesWhereThereAreNoLiveLines) {
  QWidget parent;
  const LiveStatusLabel label([] { return LiveStatus(); }, &parent);
  EXPECT_TRUE(label.isHidden());
}

TEST_F(LiveFrontEnd, ShowsTheMeasurementInItsStatusBar) {
  Frontend frontend(embedded());
  frontend.window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&frontend.window()));
  ASSERT_NE(status(frontend), nullptr);
  EXPECT_TRUE(status(frontend)->isVisible());
  EXPECT_TRUE(frontend.window().statusBar()->isAncestorOf(status(frontend)));
  EXPECT_EQ(status(frontend)->text(), "Not measuring");
}

TEST_F(LiveFrontEnd, HasNoSuchThingWithoutLiveLines) {
  Frontend frontend(std::make_unique<ScriptedConnection>());
  frontend.window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&frontend.window()));
  ASSERT_NE(status(frontend), nullptr);
  EXPECT_FALSE(status(frontend)->isVisible());
}

TEST_F(LiveFrontEnd, DeliversWhatAModuleSubscribesToOverTheChannel) {
  LineRecorder listener;
  Frontend frontend(embedded());
  HostChannel& channel = frontend.channel();
  EXPECT_EQ(channel.register_requester("6d", &listener), 0);
  EXPECT_EQ(channel.register_requester("6dw2", &listener), 0);
  EXPECT_EQ(channel.set_value("output active %s %s yes", "chmon", "6dw2"), 0);
  char answer[200] = "";
  EXPECT_EQ(channel.send_raw_command(answer, "korvex2 tracking start"), 0);
  EXPECT_STREQ(answer, "korvex2 ok");
  EXPECT_EQ(channel.get_string(answer, "status active"), 0);
  EXPECT_STREQ(answer, "mea");
  EXPECT_TRUE(holdsInTime([&] { return listener.calls().size() > 10; }));
  const std::vector<std::string> calls = listener.calls();
  EXPECT_EQ(calls[0], "started");
  EXPECT_EQ(calls[1].substr(0, 3), "6d ");
  EXPECT_EQ(calls[2].substr(0, 9), "6dw2 2 2 ");
  EXPECT_EQ(listener.wrongTags(), 0);
  frontend.shutdown();
  const std::size_t count = listener.calls().size();
  EXPECT_EQ(channel.send_raw_command(answer, "korvex2 tracking start"), 0) << "the channel answers to the last";
  EXPECT_EQ(listener.calls().size(), count);
}

TEST_F(LiveFrontEnd, EndsTheDeliveryBeforeTheModulesAreTakenDown) {
  const ModuleFiles files;
  files.copy("alphamodule");
  qApp->setProperty("moduleCalls", QStringList());
  QStringList log;
  int callsAtTheEnd = 0;
  {
    Frontend frontend(std::make_unique<WatchedConnection>(log));
    frontend.loadModules(files.folders());
    EXPECT_EQ(log, QStringList{"start"});
    callsAtTheEnd = WatchedConnection::calls().size();
    frontend.shutdown();
    EXPECT_GT(WatchedConnection::calls().size(), callsAtTheEnd);
  }
  EXPECT_EQ(log.value(1), "stop, calls of modules: " + QString::number(callsAtTheEnd));
}

TEST_F(LiveFrontEnd, ReportsARecordedMotionThatCannotBeRead) {
  Frontend frontend(embedded(place.filePath("none.tum")));
  const LogModel& reports = frontend.window().reports();
  ASSERT_EQ(reports.rowCount(), 1);
  EXPECT_EQ(reports.data(reports.index(0, 2)).toString(), place.filePath("none.tum") + ", line 1: the file is missing");
}
