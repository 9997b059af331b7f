// What the module author's document says of the host, where no other test does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <memory>

#include "bodydatabase.h"
#include "embeddedconnection.h"
#include "frontend.h"
#include "logmodel.h"
#include "networkconnection.h"
#include "requester.h"

namespace {

using namespace korvex2;

class Counter : public Requester {
 public:
  int set_ascii_data(const char* tag, const char* /*line*/) override {
    (qstrcmp(tag, "fr") == 0 ? frameNumbers : others)++;
    return 0;
  }
  void set_mea_started() override { ++started; }
  void set_mea_stopped() override { ++stopped; }

  std::atomic<int> frameNumbers{0};
  std::atomic<int> others{0};
  std::atomic<int> started{0};
  std::atomic<int> stopped{0};
};

class AuthorsDocument : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(copyShippedDatabase(SOURCE_DATA_FOLDER, database.path()).toStdString(), "");
    for (const char* name : {"witness", "witnessDestroyed", "witnessObserver"}) {
      qApp->setProperty(name, QVariant());
    }
  }
  std::unique_ptr<Frontend> start() const {
    return std::make_unique<Frontend>(std::make_unique<EmbeddedConnection>(database.path(), QStringList()));
  }
  /// What became of the witness when it does this.
  static ModuleRecord recordOf(const char* behaviour, QStringList& reports) {
    qApp->setProperty("witness", QString(behaviour));
    ModuleSet modules([&reports](const QString& text) { reports += text; });
    modules.load({{WITNESS_FOLDER, true}});
    EXPECT_EQ(modules.records().size(), 1u);
    return modules.records().at(0);
  }

  QTemporaryDir database;
};

}  // namespace

TEST_F(AuthorsDocument, AConstructorThatThrowsIsARefusalAndTheExceptionIsReported) {
  QStringList reports;
  const ModuleRecord record = recordOf("constructor", reports);
  EXPECT_EQ(record.state, ModuleRecord::State::refused);
  EXPECT_EQ(record.reason, "it cannot be loaded (Unknown error)");
  EXPECT_TRUE(reports.value(0).contains("exception constructor")) << reports.join('\n').toStdString();
}

TEST_F(AuthorsDocument, AModuleWhoseNameThrowsIsLoadedUnderItsFilesName) {
  QStringList reports;
  const ModuleRecord record = recordOf("name", reports);
  EXPECT_EQ(record.state, ModuleRecord::State::loaded);
  EXPECT_EQ(record.name, "libwitness.so");
}

TEST_F(AuthorsDocument, TheOperatorIsNoObserver) {
  const auto frontend = start();
  frontend->loadModules({{WITNESS_FOLDER, true}});
  const QVariant observer = qApp->property("witnessObserver");
  EXPECT_EQ(observer.type(), QVariant::Bool);
  EXPECT_FALSE(observer.toBool());
}

TEST_F(AuthorsDocument, AWindowThatWasNotInTheRecordKeepsNoModuleAlive) {
  ModuleSet modules(nullptr);
  modules.load({{WITNESS_FOLDER, true}});
  _GuiElement* const entry = modules.takeGuiElements().at(0);
  entry->action->trigger();
  const std::unique_ptr<QWidget> window(entry->widget);
  ASSERT_NE(window, nullptr);
  modules.shutdown();
  EXPECT_TRUE(qApp->property("witnessDestroyed").toBool());
}

TEST_F(AuthorsDocument, ABackendThatWasNeverReachedHasTheVersionZero) {
  QTcpServer server;
  ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
  const std::optional<BackendAddress> address =
      BackendAddress::parse(QStringLiteral("127.0.0.1:%1").arg(server.serverPort()), nullptr);
  ASSERT_TRUE(address);
  server.close();
  const Frontend frontend(std::make_unique<NetworkConnection>(*address, NetworkOptions()));
  EXPECT_EQ(frontend.versions().backend_major, 0);
  EXPECT_EQ(frontend.versions().backend_minor, 0);
  EXPECT_EQ(frontend.versions().backend_revision, 0);
}

TEST_F(AuthorsDocument, AVersionThatWasSetIsKeptAndShowsAtTheNextStart) {
  auto frontend = start();
  EXPECT_EQ(frontend->channel().set_value("version 1.9.0"), 0);
  EXPECT_EQ(frontend->versions().backend_minor, 20);
  frontend.reset();
  EXPECT_EQ(start()->versions().backend_minor, 9);
}

TEST_F(AuthorsDocument, ShowsCallsThatSucceed) {
  const auto frontend = start();
  HostChannel& host = frontend->channel();
  IOManager* const channel = &host;
  char text[200] = "";
  double position[3] = {};
  EXPECT_EQ(channel->get_reals(position, 3, "body marker standard b%2.2d m%2.2d", 1, 1), 0);
  EXPECT_EQ(position[0], -16.4095);
  EXPECT_EQ(channel->get_string(text, "status active"), 0);
  EXPECT_STREQ(text, "idle");
  EXPECT_EQ(channel->get_string(text, "version"), 0);
  EXPECT_STREQ(text, "1.20.0");
  EXPECT_EQ(channel->send_raw_command(text, "korvex2 tracking start"), 0);
  EXPECT_EQ(channel->get_string(text, "status active"), 0);
  EXPECT_STREQ(text, "mea");
  EXPECT_EQ(channel->send_raw_command(text, "korvex2 tracking stop"), 0);
}

TEST_F(AuthorsDocument, ADescriptionInAnyLanguageCanBeReadButNotWritten) {
  const auto frontend = start();
  HostChannel& channel = frontend->channel();
  QByteArray answer;
  ASSERT_TRUE(
      frontend->connection().exchange("korvex2 set body desc standard b01 \"Gr\xc3\xb6\xc3\x9f"
                                      "e\"",
                                      answer));
  ASSERT_EQ(answer.trimmed(), "korvex2 ok");
  char text[200] = "";
  EXPECT_EQ(channel.get_string(text, "body desc standard b01"), 0);
  EXPECT_STREQ(text,
               "\"Gr\xc3\xb6\xc3\x9f"
               "e\"");
  EXPECT_NE(channel.set_value("body desc standard b01 %s", text), 0);
}

TEST_F(AuthorsDocument, WhoSubscribesDuringAMeasurementGetsLinesAndIsToldOnceOfItsEnd) {
  const auto frontend = start();
  HostChannel& channel = frontend->channel();
  Counter first;
  Counter late;
  channel.register_requester("fr", &first);
  char answer[200] = "";
  ASSERT_EQ(channel.send_raw_command(answer, "korvex2 tracking start"), 0);
  ASSERT_TRUE(QTest::qWaitFor([&] { return first.frameNumbers > 0; }, 5000));
  for (const char* tag : {"fr", "6d", "anything", "6d"}) {
    EXPECT_EQ(channel.register_requester(tag, &late), 0) << tag;
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return late.frameNumbers > 3 && late.others > 3; }, 5000));
  ASSERT_EQ(channel.send_raw_command(answer, "korvex2 tracking stop"), 0);
  EXPECT_TRUE(QTest::qWaitFor([&] { return first.stopped > 0 && late.stopped > 0; }, 5000));
  for (const char* tag : {"fr", "6d", "anything"}) {
    EXPECT_EQ(channel.unregister_requester(tag, &late), 0) << tag;
  }
  EXPECT_NE(channel.unregister_requester("6d", &late), 0) << "twice was once";
  EXPECT_EQ(channel.unregister_requester("fr", &first), 0);
  EXPECT_EQ(first.started, 1);
  EXPECT_EQ(late.started, 0);
  EXPECT_EQ(late.stopped, 1);
  EXPECT_LE(std::abs(late.frameNumbers - late.others), 1) << "each kind at the backend's rate";
}

TEST_F(AuthorsDocument, ReportsOfAnyKindLookTheSameInAnyLanguage) {
  const auto frontend = start();
  const LogModel& reports = frontend->window().reports();
  const int before = reports.rowCount();
  for (const int kind : {1, 7}) {
    EXPECT_EQ(frontend->channel().send_message("standard", "BodyList", kind, "Error: \xc3\xa4"), 0);
  }
  ASSERT_EQ(reports.rowCount(), before + 2);
  for (const int role : {Qt::DisplayRole, Qt::ForegroundRole, Qt::DecorationRole}) {
    EXPECT_EQ(reports.index(before, 2).data(role), reports.index(before + 1, 2).data(role)) << role;
  }
  EXPECT_EQ(reports.index(before, 2).data().toString(), QString::fromUtf8("Error: \xc3\xa4"));
}
