// The front end on the network: what the operator is told, and what modules keep, when backends come and go.
#include "frontend.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QUdpSocket>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "bodyfilestore.h"
#include "connectionstatuslabel.h"
#include "linerecorder.h"
#include "lineserver.h"
#include "logmodel.h"
#include "networkconnection.h"
#include "scriptedconnection.h"
#include "startpage.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

using Texts = std::vector<std::string>;

class NetworkFrontEnd : public testing::Test {
 protected:
  void SetUp() override {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    tellOf(server, "Cup", 5);
  }
  static void tellOf(LineServer& backend, const QByteArray& body, int markers) {
    backend.setAnswer("korvex2 get body number_of_types", "korvex2 set body number_of_types 1");
    backend.setAnswer("korvex2 get body type t01", "korvex2 set body type t01 standard");
    backend.setAnswer("korvex2 get body type_desc standard", "korvex2 set body type_desc standard \"Body\"");
    backend.setAnswer("korvex2 get body number_of_bodies standard", "korvex2 set body number_of_bodies standard 1");
    backend.setAnswer("korvex2 get body desc standard b01", "korvex2 set body desc standard b01 \"" + body + "\"");
    backend.setAnswer("korvex2 get body calibrated standard b01", "korvex2 set body calibrated standard b01 yes");
    backend.setAnswer("korvex2 get body number_of_marker standard b01",
                      "korvex2 set body number_of_marker standard b01 " + QByteArray::number(markers));
  }
  std::unique_ptr<NetworkConnection> connection() const { return connectionTo(server); }
  static std::unique_ptr<NetworkConnection> connectionTo(const LineServer& backend,
                                                         std::chrono::milliseconds stableAfter = 0ms,
                                                         std::chrono::milliseconds lostAfter = 250ms) {
    NetworkOptions options;
    options.commandTimeout = 300ms;
    options.heartbeat = 60000ms;
    options.retryDelays = {0ms, 20ms};
    options.stableAfter = stableAfter;
    options.lostAfter = lostAfter;
    options.lostDelay = 60000ms;
    return std::make_unique<NetworkConnection>(BackendAddress{QStringLiteral("127.0.0.1"), backend.port()}, options);
  }
  void start() { frontend = std::make_unique<Frontend>(connection()); }
  std::string place() const { return "127.0.0.1:" + std::to_string(server.port()); }
  Texts reports() const {
    Texts texts;
    const LogModel& log = frontend->window().reports();
    for (int row = 0; row < log.rowCount(); ++row) {
      const bool alert = !log.data(log.index(row, 0), Qt::DecorationRole).isNull();
      texts.push_back((alert ? "!" : "") + log.data(log.index(row, 2)).toString().toStdString());
    }
    return texts;
  }
  std::string label(const char* name) const {
    return frontend->window().findChild<QLabel*>(name)->text().toStdString();
  }
  QTreeWidget* bodies() const { return frontend->window().findChild<QTreeWidget*>("bodies"); }
  QAction* entry(const char* name) const { return frontend->window().findChild<QAction*>(name); }
  bool becomes(LinkState state) const {
    return QTest::qWaitFor([&] { return frontend->connection().linkStatus().state == state; }, 4000);
  }

  /// Ends the connection and waits for the next one. The time in between may be too short to be seen.
  bool cutAndReturn() {
    const int before = server.connections();
    server.cut();
    return QTest::qWaitFor(
        [&] {
          return server.connections() > before && frontend->connection().linkStatus().state == LinkState::connected;
        },
        4000);
  }
  QTemporaryDir settings;
  LineServer server;
  std::unique_ptr<Frontend> frontend;
};

}  // namespace

TEST_F(NetworkFrontEnd, ShowsWhatItIsConnectedTo) {
  start();
  EXPECT_EQ(label("connectionStatus"), "Connected to " + place());
  EXPECT_EQ(label("connection"), "Backend at " + place());
  EXPECT_EQ(label("connectionDetails"), "Version 1.20.3\nTime-out of commands: 0.3 s");
  ASSERT_EQ(bodies()->topLevelItemCount(), 1);
  EXPECT_EQ(bodies()->topLevelItem(0)->text(0), "Cup (Body 01)");
  EXPECT_FALSE(entry("connectAgain")->isEnabled());
  EXPECT_TRUE(entry("importBodyFile")->isEnabled());
  EXPECT_EQ(reports(), Texts{});
}

TEST_F(NetworkFrontEnd, ALostConnectionIsToldOnceAndItsReturnOnce) {
  frontend = std::make_unique<Frontend>(connectionTo(server, 0ms, 60000ms));
  server.stopListening();
  ASSERT_TRUE(becomes(LinkState::reconnecting));
  EXPECT_EQ(label("connectionStatus"), "Reconnecting to " + place() + "...");
  EXPECT_FALSE(bodies()->isEnabled());
  EXPECT_EQ(bodies()->topLevelItemCount(), 1) << "what is known stays in sight";
  EXPECT_FALSE(entry("importBodyFile")->isEnabled());
  EXPECT_FALSE(entry("exportBodyFile")->isEnabled());
  EXPECT_TRUE(entry("connectAgain")->isEnabled());
  QTest::qWait(100);  // several attempts
  EXPECT_EQ(label("connectionDetails").substr(0, 38), "Not connected: no backend listens ther");
  tellOf(server, "Mug", 7);
  server.listenAgain();
  ASSERT_TRUE(becomes(LinkState::connected));
  EXPECT_EQ(label("connectionStatus"), "Connected to " + place());
  EXPECT_TRUE(QTest::qWaitFor([&] { return bodies()->topLevelItem(0)->text(0) == "Mug (Body 01)"; }, 3000));
  EXPECT_TRUE(bodies()->isEnabled());
  EXPECT_TRUE(entry("importBodyFile")->isEnabled());
  EXPECT_EQ(reports(), (Texts{"!The connection to the backend at " + place() +
                                  " was lost: the backend closed the connection. It is being made again.",
                              "Connected to the backend at " + place() + "."}));
}

TEST_F(NetworkFrontEnd, ABackendOutOfReachForLongIsToldOnce) {
  start();
  server.stopListening();
  ASSERT_TRUE(becomes(LinkState::lost));
  EXPECT_EQ(label("connectionStatus"), "Connection to " + place() + " lost");
  QTest::qWait(50);
  const Texts expected{"!The connection to the backend at " + place() +
                           " was lost: the backend closed the connection. It is being made again.",
                       "!The backend at " + place() +
                           " is out of reach: no backend listens there. It is tried again now and then; \"Connect "
                           "again\" in the File menu tries at once."};
  EXPECT_EQ(reports(), expected);
  server.listenAgain();
  entry("connectAgain")->trigger();
  ASSERT_TRUE(becomes(LinkState::connected));
}

TEST_F(NetworkFrontEnd, ABackendThatDropsEverybodyAtOnceIsToldOnceAndItsReturnWhenItLasts) {
  frontend = std::make_unique<Frontend>(connectionTo(server, 800ms, 600ms));
  server.react([this](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.close = line != "korvex2 get version";
    return reaction;
  });
  server.cut();
  ASSERT_TRUE(becomes(LinkState::lost));
  EXPECT_GE(server.connections(), 3);
  entry("connectAgain")->trigger();
  ASSERT_TRUE(becomes(LinkState::lost));
  const std::string outOfReach = "!The backend at " + place() +
                                 " is out of reach: the backend closed the connection. It is tried again now and "
                                 "then; \"Connect again\" in the File menu tries at once.";
  Texts expected{"!The connection to the backend at " + place() +
                     " was lost: the backend closed the connection. It is being made again.",
                 outOfReach, outOfReach};  // the operator tried again in between
  EXPECT_EQ(reports(), expected);
  server.react({});
  entry("connectAgain")->trigger();
  ASSERT_TRUE(becomes(LinkState::connected));
  EXPECT_EQ(label("connectionStatus"), "Connected to " + place());
  EXPECT_EQ(reports(), expected) << "it may break at once again";
  expected.push_back("Connected to the backend at " + place() + ".");
  EXPECT_TRUE(QTest::qWaitFor([&] { return reports() == expected; }, 3000));
}

TEST_F(NetworkFrontEnd, AClickOnTheStatusTriesAtOnce) {
  start();
  frontend->window().show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&frontend->window()));
  server.stopListening();
  ASSERT_TRUE(becomes(LinkState::lost));
  server.listenAgain();
  QTest::mouseClick(frontend->window().findChild<ConnectionStatusLabel*>("connectionStatus"), Qt::LeftButton);
  ASSERT_TRUE(becomes(LinkState::connected));
}

TEST_F(NetworkFrontEnd, ABackendThatIsNotThereAtFirstIsTold) {
  server.stopListening();
  frontend = std::make_unique<Frontend>(connectionTo(server, 0ms, 60000ms));
  EXPECT_EQ(label("connectionStatus"), "Reconnecting to " + place() + "...");
  EXPECT_EQ(reports(), Texts{"!The backend at " + place() +
                             " could not be reached: no backend listens there. It is tried again and again."});
  EXPECT_EQ(label("noBodies"), "The bodies are shown when it is connected.");
  EXPECT_EQ(frontend->versions().backend_major, 0);
  server.listenAgain();
  ASSERT_TRUE(becomes(LinkState::connected));
  EXPECT_EQ(frontend->versions().backend_minor, 20);
  EXPECT_EQ(reports().size(), 2u) << "its first version is nothing to report";
}

TEST_F(NetworkFrontEnd, AnotherVersionIsWrittenToTheSameRecordAndTold) {
  start();
  const BackendVersions* const record = &frontend->versions();
  server.setAnswer("korvex2 get version", "korvex2 set version 1.9.-1");
  ASSERT_TRUE(cutAndReturn());
  EXPECT_EQ(record->backend_major, 1);
  EXPECT_EQ(record->backend_minor, 9);
  EXPECT_EQ(record->backend_revision, -1);
  const Texts told = reports();
  ASSERT_EQ(told.size(), 3u);
  EXPECT_EQ(told[1], "!The backend at " + place() + " has version 1.9 now, no longer 1.20.3.");
  EXPECT_EQ(label("connectionDetails").substr(0, 11), "Version 1.9");
}

TEST_F(NetworkFrontEnd, TheSameVersionIsNotTold) {
  start();
  ASSERT_TRUE(cutAndReturn());
  EXPECT_EQ(reports().size(), 2u);
}

TEST_F(NetworkFrontEnd, ACommandThatFindsTheConnectionBrokenIsToldBeforeTheModulesOwnReport) {
  start();
  server.react([this](const QByteArray& line) {
    Reaction reaction = server.usual(line);
    reaction.close = line == "korvex2 tracking stop";
    return reaction.close ? Reaction{"", 0, false, true} : reaction;
  });
  char answer[200];
  EXPECT_EQ(frontend->channel().send_raw_command(answer, "korvex2 tracking stop"), HostChannel::notAnswered);
  frontend->channel().send_message("standard", "Korvex2", 1, "Error: Unable to set body transformation");
  const Texts told = reports();
  ASSERT_EQ(told.size(), 2u);
  EXPECT_EQ(told[0].substr(0, 33), "!The connection to the backend at");
  EXPECT_EQ(told[1], "!Error: Unable to set body transformation");
}

TEST_F(NetworkFrontEnd, ChangesOverToAnotherBackend) {
  start();
  const BackendVersions* const record = &frontend->versions();
  LineServer other;
  tellOf(other, "Table", 4);
  other.setAnswer("korvex2 get version", "korvex2 set version 2.1.0");
  frontend->connectTo(connectionTo(other));
  const std::string otherPlace = "127.0.0.1:" + std::to_string(other.port());
  EXPECT_EQ(label("connectionStatus"), "Connected to " + otherPlace);
  EXPECT_EQ(label("connection"), "Backend at " + otherPlace);
  EXPECT_EQ(bodies()->topLevelItem(0)->text(0), "Table (Body 01)");
  EXPECT_EQ(record->backend_major, 2);
  EXPECT_EQ(reports(), Texts{"Connected: Backend at " + otherPlace + "."});
  char answer[200] = "";
  EXPECT_EQ(frontend->channel().get_string(answer, "body desc standard b01"), 0);
  EXPECT_STREQ(answer, "\"Table\"");
  // The one before is left alone and says nothing any more.
  server.takeLines();
  server.stopListening();
  QTest::qWait(50);
  EXPECT_EQ(reports().size(), 1u);
  EXPECT_TRUE(server.lines().empty());
}

TEST_F(NetworkFrontEnd, ChangesOverToTheSimulatedBackend) {
  start();
  frontend->connectTo(std::make_unique<ScriptedConnection>());
  EXPECT_EQ(label("connectionStatus"), "Simulated backend");
  EXPECT_FALSE(entry("importBodyFile")->isEnabled()) << "this one has no body files";
  EXPECT_FALSE(entry("connectAgain")->isEnabled());
  EXPECT_EQ(bodies()->topLevelItemCount(), 0);
  server.stopListening();
  QTest::qWait(50);
  EXPECT_EQ(label("connectionStatus"), "Simulated backend");
}

TEST_F(NetworkFrontEnd, SubscribersFollowToTheOtherBackendsLines) {
  start();
  LineRecorder recorder;
  frontend->channel().register_requester("6d", &recorder);
  LineServer other;
  std::atomic<quint16> port{0};
  other.setAnswer("korvex2 get status active", "korvex2 set status active mea");
  other.react([&](const QByteArray& line) {
    static const QByteArray head = "korvex2 set output net chmon udp ";
    if (line.startsWith(head)) {
      port = static_cast<quint16>(line.mid(head.size()).toUShort());
    }
    return other.usual(line);
  });
  frontend->connectTo(connectionTo(other));
  ASSERT_TRUE(QTest::qWaitFor([&] { return recorder.calls().size() == 1; }, 3000));
  QUdpSocket sender;
  ASSERT_TRUE(sender.bind(QHostAddress(QHostAddress::LocalHost)));
  sender.writeDatagram("fr 1\n6d 0\n", QHostAddress(QHostAddress::LocalHost), port);
  EXPECT_TRUE(QTest::qWaitFor([&] { return recorder.calls().size() == 2; }, 3000));
  EXPECT_EQ(recorder.calls(), (Texts{"started", "6d 0"}));
  sender.writeDatagram("fr 1\n6d 0\n", QHostAddress(QHostAddress::LocalHost), port);
  auto* status = frontend->window().findChild<QLabel*>("liveStatus");
  EXPECT_TRUE(QTest::qWaitFor([&] { return status->toolTip().contains("1 frames that came twice"); }, 3000))
      << status->toolTip().toStdString();
  frontend->channel().unregister_requester("6d", &recorder);
}

TEST_F(NetworkFrontEnd, SubscribersAreToldThatAMeasurementEndsWithItsConnection) {
  /// Knows on which threads it was called.
  class ThreadRecorder : public LineRecorder {
   public:
    void set_mea_started() override {
      startedOn = std::this_thread::get_id();
      LineRecorder::set_mea_started();
    }
    void set_mea_stopped() override {
      stoppedOn = std::this_thread::get_id();
      LineRecorder::set_mea_stopped();
    }
    std::atomic<std::thread::id> startedOn{};
    std::atomic<std::thread::id> stoppedOn{};
  };
  server.setAnswer("korvex2 get status active", "korvex2 set status active mea");
  start();
  ThreadRecorder recorder;
  for (const char* tag : {"6d", "6dw"}) {
    frontend->channel().register_requester(tag, &recorder);
  }
  ASSERT_TRUE(QTest::qWaitFor([&] { return frontend->connection().liveStatus().measuring; }, 3000));
  recorder.takeCalls();  // perhaps it subscribed before it was told
  LineServer other;
  tellOf(other, "Table", 4);
  frontend->connectTo(connectionTo(other));
  EXPECT_EQ(recorder.calls(), Texts{"stopped"});
  EXPECT_NE(recorder.stoppedOn.load(), std::this_thread::get_id());
  EXPECT_FALSE(frontend->connection().liveStatus().measuring);
  other.setAnswer("korvex2 get status active", "korvex2 set status active mea");
  char answer[200];
  EXPECT_EQ(frontend->channel().get_string(answer, "status active"), 0);
  ASSERT_TRUE(QTest::qWaitFor([&] { return recorder.calls().size() == 2; }, 3000));
  frontend->shutdown();
  EXPECT_EQ(recorder.calls(), (Texts{"stopped", "started", "stopped"}));
  EXPECT_EQ(recorder.startedOn.load(), recorder.stoppedOn.load()) << "the delivery thread";
  for (const char* tag : {"6d", "6dw"}) {
    frontend->channel().unregister_requester(tag, &recorder);
  }
}

TEST_F(NetworkFrontEnd, ALostAnswerToAnImportIsNotToldAsAFailure) {
  start();
  server.setAnswer("korvex2 get config is_changeable", "korvex2 set config is_changeable yes");
  const QString path = settings.filePath("cup.body");
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("3\n0 0 0\n100 0 0\n0 50 0\n") > 0);
  file.close();
  server.react([this](const QByteArray& line) {
    return line.startsWith("korvex2 set body file ") ? Reaction{"", 0, false, true} : server.usual(line);
  });
  BodyFileStore* store = frontend->connection().bodyFiles();
  ASSERT_NE(store, nullptr);
  const ImportOutcome outcome = store->importBody({"standard", 1}, path);
  EXPECT_TRUE(outcome.mayHaveTaken);
  EXPECT_EQ(outcome.problem.toStdString(), "the backend closed the connection");
}

TEST_F(NetworkFrontEnd, EndsWhileItIsNotConnected) {
  start();
  server.stopListening();
  ASSERT_TRUE(becomes(LinkState::reconnecting));
  frontend.reset();
  QTest::qWait(50);
}

TEST(ConnectionStatusLabel, HasASignOfItsOwnForEachState) {
  std::vector<QImage> pictures;
  const auto take = [&](LinkState state, const QString& place) {
    ConnectionStatusLabel label;
    label.showStatus({state, place, QString()}, {});
    label.resize(label.sizeHint());
    // Shapes, not colours: only how dark it is.
    const QImage picture = label.grab().toImage().convertToFormat(QImage::Format_Grayscale8);
    const int side = picture.height();
    pictures.push_back(picture.copy(0, 0, side, side));
  };
  take(LinkState::connected, QString());
  take(LinkState::connected, "a:1");
  take(LinkState::reconnecting, "a:1");
  take(LinkState::lost, "a:1");
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      int different = 0;
      for (int y = 0; y < pictures[i].height(); ++y) {
        for (int x = 0; x < pictures[i].width(); ++x) {
          different += std::abs(qGray(pictures[i].pixel(x, y)) - qGray(pictures[j].pixel(x, y))) > 60 ? 1 : 0;
        }
      }
      EXPECT_GT(different, 8) << i << " and " << j;
    }
  }
}

TEST(ConnectionStatusLabel, TellsTheReasonInItsToolTip) {
  ConnectionStatusLabel label;
  EXPECT_EQ(label.text(), "Simulated backend");
  label.showStatus({LinkState::reconnecting, "host:1", QString()}, {"Not connected: <nobody> there"});
  EXPECT_EQ(label.text(), "Reconnecting to host:1...");
  EXPECT_TRUE(label.toolTip().contains("Not connected: &lt;nobody&gt; there")) << label.toolTip().toStdString();
  EXPECT_TRUE(label.toolTip().contains("Click to try at once"));
  label.showStatus({LinkState::connected, "host:1", QString()}, {});
  EXPECT_FALSE(label.toolTip().contains("Click"));
}

TEST(ConnectionStatusLabel, ALongHostLeavesRoomForTheRest) {
  ConnectionStatusLabel label;
  label.showStatus({LinkState::connected, QString(250, 'a') + ":27410", QString()}, {});
  EXPECT_LT(label.sizeHint().width(), label.fontMetrics().averageCharWidth() * 62);
  EXPECT_EQ(label.text(), "Connected to " + QString(250, 'a') + ":27410");
}
