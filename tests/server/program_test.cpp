// The program korvex2-backend as it is started from a shell.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <csignal>
#include <memory>
#include <string>

#include "databasecopy.h"
#include "tcpclient.h"
#include "udpreceiver.h"

namespace {

using korvex2_test::TcpClient;
using korvex2_test::UdpReceiver;

struct Ended {
  int exitCode = -1;
  std::string out;
  std::string err;
};

class BackendProgram : public testing::Test {
 protected:
  void TearDown() override {
    if (process.state() != QProcess::NotRunning) {
      process.kill();
      process.waitForFinished();
    }
  }
  QProcessEnvironment environment() const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_DATA_HOME", home.filePath("data"));
    environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_LOGGING_RULES"}) {
      environment.remove(display);
    }
    return environment;
  }
  QString folder() const { return home.filePath("database"); }

  /// Starts it, waits for the line that tells the address, and keeps the port.
  bool start(const QStringList& options = {}, const QProcessEnvironment& extra = {}) {
    QProcessEnvironment all = environment();
    for (const QString& name : extra.keys()) {
      all.insert(name, extra.value(name));
    }
    process.setProcessEnvironment(all);
    QStringList arguments = options;
    if (!options.contains("--listen")) {
      arguments << "--listen"
                << "127.0.0.1:0";
    }
    if (!options.contains("--database")) {
      arguments << "--database" << folder();
    }
    process.start(BACKEND_PROGRAM, arguments);
    QElapsedTimer clock;
    clock.start();
    while (!process.canReadLine() && clock.elapsed() < 10'000 && process.state() != QProcess::NotRunning) {
      process.waitForReadyRead(100);
    }
    told = process.readLine().toStdString();
    const std::size_t colon = told.rfind(':');
    port = static_cast<std::uint16_t>(colon == std::string::npos ? 0 : std::atoi(told.c_str() + colon + 1));
    return port != 0;
  }
  /// Ends it by a signal.
  Ended end(int signal = SIGTERM) {
    ::kill(static_cast<pid_t>(process.processId()), signal);
    return ended();
  }
  Ended ended() {
    Ended result;
    if (!process.waitForFinished(10'000)) {
      ADD_FAILURE() << "the program did not end";
      process.kill();
      process.waitForFinished();
      return result;
    }
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    result = {process.exitCode(), process.readAllStandardOutput().toStdString(),
              process.readAllStandardError().toStdString()};
    return result;
  }
  /// Runs it to its end.
  Ended run(const QStringList& arguments) {
    process.setProcessEnvironment(environment());
    process.start(BACKEND_PROGRAM, arguments);
    return ended();
  }
  static bool says(const std::string& text, const std::string& words) { return text.find(words) != std::string::npos; }

  QTemporaryDir home{korvex2_test::temporaryTemplate()};
  QProcess process;
  std::string told;
  std::uint16_t port = 0;
};

}  // namespace

TEST_F(BackendProgram, PrintsItsVersion) {
  const Ended version = run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_EQ(version.out.substr(0, 16), "korvex2-backend ");
  EXPECT_EQ(std::count(version.out.begin(), version.out.end(), '.'), 2);
  EXPECT_EQ(std::count(version.out.begin(), version.out.end(), '\n'), 1);
}

TEST_F(BackendProgram, PrintsItsOptions) {
  const Ended help = run({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  for (const char* option : {"--listen", "--database", "--rate", "--trajectory", "--version", "--help", "27410"}) {
    EXPECT_TRUE(says(help.out, option)) << option;
  }
}

TEST_F(BackendProgram, RefusesWhatItDoesNotUnderstandWithExitCodeOne) {
  struct Case {
    QStringList arguments;
    const char* message;
  };
  const Case cases[] = {
      {{"--nonsense"}, "nonsense"},
      {{"stray"}, "unexpected argument \"stray\""},
      {{"--listen"}, "listen"},
      {{"--listen", ""}, "--listen needs an address and a port such as 127.0.0.1:27410 or [::1]:27410, not \"\""},
      {{"--listen", "nowhere:1"}, "--listen needs an address and a port"},
      {{"--listen", "127.0.0.1:65536"}, "--listen needs an address and a port"},
      {{"--listen", "27410"}, "--listen needs an address and a port"},
      {{"--rate", "0"}, "--rate needs a whole number from 1 to 1000, not \"0\""},
      {{"--rate", "1001"}, "--rate needs a whole number from 1 to 1000"},
      {{"--rate", "60,5"}, "--rate needs a whole number from 1 to 1000"},
      {{"--rate", "fast"}, "--rate needs a whole number from 1 to 1000"},
      {{"--database", ""}, "--database needs a folder"},
      {{"--trajectory", ""}, "--trajectory needs a file"},
      {{"--trajectory", "/nowhere/at.tum"}, "/nowhere/at.tum"},
  };
  for (const Case& wrong : cases) {
    const Ended refused = run(QStringList{"--database", folder()} + wrong.arguments);
    EXPECT_EQ(refused.exitCode, 1) << wrong.message;
    EXPECT_TRUE(says(refused.err, wrong.message)) << refused.err;
    EXPECT_EQ(refused.out, "") << wrong.message;
  }
}

TEST_F(BackendProgram, TellsWhereItListensWhenItIsReady) {
  ASSERT_TRUE(start());
  EXPECT_EQ(told, "korvex2-backend: listening on 127.0.0.1:" + std::to_string(port) + "\n");
  TcpClient client(port);
  EXPECT_EQ(client.ask("korvex2 get version"), "korvex2 set version 1.20.0");
  const Ended done = end();
  EXPECT_EQ(done.exitCode, 0);
  EXPECT_EQ(done.out, "");
  EXPECT_EQ(done.err, "");
}

TEST_F(BackendProgram, ListensOnIpv6WhenAsked) {
  ASSERT_TRUE(start({"--listen", "[::1]:0"}));
  EXPECT_EQ(told, "korvex2-backend: listening on [::1]:" + std::to_string(port) + "\n");
  TcpClient client(port, TcpClient::Family::V6);
  EXPECT_EQ(client.ask("korvex2 get version"), "korvex2 set version 1.20.0");
}

TEST_F(BackendProgram, ListensOnlyWhereItWasTold) {
  ASSERT_TRUE(start());
  EXPECT_FALSE(TcpClient(port, TcpClient::Family::V6).isConnected());
  // The sockets that listen, as the system lists them: 0100007F is 127.0.0.1, state 0A listens.
  QFile sockets("/proc/net/tcp");
  ASSERT_TRUE(sockets.open(QIODevice::ReadOnly));
  const QByteArray table = sockets.readAll();
  const QByteArray hexPort = ':' + QByteArray::number(port, 16).toUpper().rightJustified(4, '0') + ' ';
  EXPECT_TRUE(table.contains("0100007F" + hexPort));
  EXPECT_FALSE(table.contains("00000000" + hexPort));
}

TEST_F(BackendProgram, EndsCleanlyOnEitherSignalWithTheDatabaseSaved) {
  for (const int signal : {SIGTERM, SIGINT}) {
    ASSERT_TRUE(start());
    TcpClient client(port);
    const std::string name = "Mug " + std::to_string(signal);
    EXPECT_EQ(client.ask("korvex2 set body desc standard b01 \"" + name + '"'), "korvex2 ok");
    EXPECT_EQ(client.ask("korvex2 body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 1"), "korvex2 ok");
    const std::string marker = client.ask("korvex2 get body marker standard b01 m01");
    EXPECT_TRUE(QFile::exists(folder() + "/catalogue.json.lock"));
    EXPECT_EQ(end(signal).exitCode, 0);
    EXPECT_EQ(client.rest(), "") << "closed";
    EXPECT_FALSE(QFile::exists(folder() + "/catalogue.json.lock"));
    const auto database = korvex2::openDatabase(folder());
    EXPECT_EQ(database->problems(), QStringList());
    EXPECT_EQ(database->find({"standard", 1})->description.toStdString(), name);
    korvex2::Interpreter interpreter(*database);
    EXPECT_EQ(interpreter.answer("korvex2 get body marker standard b01 m01").toStdString(), marker);
  }
}

TEST_F(BackendProgram, EndsCleanlyAlsoWhenItIsToldSoAgainAndAgain) {
  for (int i = 0; i < 5; ++i) {
    ASSERT_TRUE(start());
    const auto pid = static_cast<pid_t>(process.processId());
    for (int n = 0; n < 100 && ::kill(pid, n % 2 == 0 ? SIGTERM : SIGINT) == 0; ++n) {
    }
    EXPECT_EQ(ended().exitCode, 0);
    EXPECT_FALSE(QFile::exists(folder() + "/catalogue.json.lock"));
  }
}

TEST_F(BackendProgram, EndsInTheMiddleOfWorkWithEverythingThatWasAcknowledged) {
  ASSERT_TRUE(start({"--rate", "1000"}));
  TcpClient client(port);
  UdpReceiver receiver;
  ASSERT_EQ(client.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
  ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
  ASSERT_EQ(client.ask("korvex2 set body marker standard b01 m01 0 0 0"), "korvex2 ok");
  ASSERT_NE(receiver.datagram(), "(none)");
  std::string many;
  for (int i = 0; i < 500; ++i) {
    many += "korvex2 body transform standard b01 1 0 0 1 0 0 0 1 0 0 0 1\n";
  }
  ASSERT_TRUE(client.send(many));
  ASSERT_EQ(client.line(), "korvex2 ok");
  ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
  const std::string answers = client.rest();
  EXPECT_EQ(ended().exitCode, 0);
  const auto acknowledged = 1 + std::count(answers.begin(), answers.end(), '\n');
  const auto database = korvex2::openDatabase(folder());
  EXPECT_EQ(database->problems(), QStringList());
  const double x = database->find({"standard", 1})->markers[0].position[0];
  EXPECT_GE(x, static_cast<double>(acknowledged));
  EXPECT_EQ(x, std::round(x)) << "whole changes only";
}

TEST_F(BackendProgram, ComesBackAfterItWasKilled) {
  ASSERT_TRUE(start());
  {
    TcpClient client(port);
    ASSERT_EQ(client.ask("korvex2 set body desc standard b01 Mug"), "korvex2 ok");
  }
  process.kill();
  process.waitForFinished();
  ASSERT_TRUE(start()) << "the lock of a program that is gone holds nobody up";
  EXPECT_EQ(TcpClient(port).ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Mug\"");
}

TEST_F(BackendProgram, CanBeStartedAtOnceOnTheSamePort) {
  ASSERT_TRUE(start());
  TcpClient client(port);
  ASSERT_EQ(client.ask("korvex2 get version"), "korvex2 set version 1.20.0");
  const std::string before = told;
  EXPECT_EQ(end().exitCode, 0);  // the server's end closed first: its port is still remembered by the system
  ASSERT_TRUE(start({"--listen", "127.0.0.1:" + QString::number(port)}));
  EXPECT_EQ(told, before);
}

TEST_F(BackendProgram, ASecondOneOnTheSameDatabaseIsRefused) {
  ASSERT_TRUE(start());
  QProcess second;
  second.setProcessEnvironment(environment());
  second.start(BACKEND_PROGRAM, {"--listen", "127.0.0.1:0", "--database", folder()});
  ASSERT_TRUE(second.waitForFinished(10'000));
  EXPECT_EQ(second.exitCode(), 1);
  EXPECT_EQ(second.readAllStandardOutput().toStdString(), "");
  EXPECT_EQ(second.readAllStandardError().toStdString(),
            "korvex2-backend: the body database in " + folder().toStdString() + " is in use by another program\n");
  EXPECT_EQ(TcpClient(port).ask("korvex2 get version"), "korvex2 set version 1.20.0");
}

TEST_F(BackendProgram, ASecondOneOnTheSamePortIsRefused) {
  ASSERT_TRUE(start());
  QProcess second;
  second.setProcessEnvironment(environment());
  const QString address = "127.0.0.1:" + QString::number(port);
  second.start(BACKEND_PROGRAM, {"--listen", address, "--database", home.filePath("other")});
  ASSERT_TRUE(second.waitForFinished(10'000));
  EXPECT_EQ(second.exitCode(), 1);
  EXPECT_EQ(second.readAllStandardOutput().toStdString(), "");
  const std::string err = second.readAllStandardError().toStdString();
  EXPECT_EQ(err.rfind("korvex2-backend: cannot listen on " + address.toStdString() + ": ", 0), 0U) << err;
  EXPECT_FALSE(QFile::exists(home.filePath("other/catalogue.json.lock")));
}

TEST_F(BackendProgram, AnAddressThatThisMachineDoesNotHaveIsRefused) {
  const Ended refused = run({"--listen", "192.0.2.1:0", "--database", folder()});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_TRUE(says(refused.err, "cannot listen on 192.0.2.1:0: ")) << refused.err;
}

TEST_F(BackendProgram, TheFirstStartMakesTheUsersDatabase) {
  process.setProcessEnvironment(environment());
  process.start(BACKEND_PROGRAM, {"--listen", "127.0.0.1:0"});
  ASSERT_TRUE(process.waitForReadyRead(10'000));
  EXPECT_TRUE(QFile::exists(home.filePath("data/korvex2/backend/database/catalogue.json")));
  EXPECT_FALSE(QDir(home.filePath("data/korvex2/backend/database/bodies")).isEmpty());
  EXPECT_EQ(end().exitCode, 0);
}

TEST_F(BackendProgram, AFolderWithoutADatabaseGetsTheShippedBodiesAndOneWithIsLeftAlone) {
  ASSERT_TRUE(start({"--database", home.filePath("new")}));
  EXPECT_EQ(TcpClient(port).ask("korvex2 set body desc standard b01 Mug"), "korvex2 ok");
  EXPECT_EQ(end().exitCode, 0);
  ASSERT_TRUE(start({"--database", home.filePath("new")}));
  EXPECT_EQ(TcpClient(port).ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Mug\"");
  EXPECT_FALSE(QFile::exists(home.filePath("data/korvex2"))) << "the user's own was not needed";
}

TEST_F(BackendProgram, AFolderThatCannotBeMadeIsRefused) {
  korvex2_test::writeBytes(home.filePath("file"), "no folder");
  const Ended refused = run({"--listen", "127.0.0.1:0", "--database", home.filePath("file/database")});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.out, "");
  EXPECT_TRUE(says(refused.err, "korvex2-backend: ") && says(refused.err, "file/database")) << refused.err;
}

TEST_F(BackendProgram, WhatIsWrongWithTheDatabaseIsToldAndTheRestServed) {
  ASSERT_EQ(korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, folder()), "");
  QByteArray catalogue = korvex2_test::readBytes(folder() + "/catalogue.json");
  const int at = catalogue.indexOf("cup.body");
  ASSERT_GT(at, 0);
  catalogue.replace(at, 3, "cap");
  korvex2_test::writeBytes(folder() + "/catalogue.json", catalogue);
  ASSERT_TRUE(start());
  TcpClient client(port);
  EXPECT_EQ(client.ask("korvex2 get body desc standard b02"), "korvex2 set body desc standard b02 \"Table\"");
  const Ended done = end();
  EXPECT_EQ(done.exitCode, 0);
  EXPECT_TRUE(says(done.err, "korvex2-backend: ") && says(done.err, "cap.body")) << done.err;
}

TEST_F(BackendProgram, AFileThatMayNotGrowIsAChangeThatIsNotSaved) {
  ASSERT_EQ(korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, folder()), "");
  process.setProcessEnvironment(environment());
  // 1 is 512 or 1024 bytes: the body's file finds room, the catalogue does not.
  process.start("sh", {"-c", "ulimit -S -f 1; exec \"$0\" \"$@\"", BACKEND_PROGRAM, "--listen", "127.0.0.1:0",
                       "--database", folder()});
  ASSERT_TRUE(process.waitForReadyRead(10'000));
  const QByteArray line = process.readLine().trimmed();
  TcpClient client(line.mid(line.lastIndexOf(':') + 1).toUShort());
  for (const char* change : {"set body desc standard b01 Mug", "body delete_marker standard b01 m05",
                             "set wandgrip multiuser yes", "set config is_changeable no"}) {
    EXPECT_EQ(client.ask(std::string("korvex2 ") + change).substr(0, 15), "korvex2 err 10 ") << change;
  }
  EXPECT_EQ(client.ask("korvex2 get body desc standard b01"), "korvex2 set body desc standard b01 \"Cup\"");
  EXPECT_EQ(client.ask("korvex2 get body number_of_marker standard b01"),
            "korvex2 set body number_of_marker standard b01 5");
  EXPECT_EQ(client.ask("korvex2 get wandgrip multiuser"), "korvex2 set wandgrip multiuser no");
  EXPECT_EQ(end().exitCode, 0);
  EXPECT_EQ(korvex2::openDatabase(folder())->problems(), QStringList());
}

TEST_F(BackendProgram, CountsFramesFromItsStartAlsoWhileNothingIsMeasured) {
  ASSERT_TRUE(start({"--rate", "1000"}));
  TcpClient client(port);
  UdpReceiver receiver;
  ASSERT_EQ(client.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
  QElapsedTimer sinceStart;
  sinceStart.start();
  EXPECT_EQ(receiver.datagram(std::chrono::milliseconds(100)), "(none)");
  const qint64 idle = sinceStart.elapsed();
  ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
  const long first = korvex2_test::frameOf(receiver.datagram());
  EXPECT_GT(first, idle / 2) << "not from the beginning of the measurement";
  ASSERT_EQ(client.ask("korvex2 tracking stop"), "korvex2 ok");
  receiver.drain();
  EXPECT_EQ(receiver.datagram(std::chrono::milliseconds(100)), "(none)");
  ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
  EXPECT_GE(korvex2_test::frameOf(receiver.datagram()), first + 100);
}

TEST_F(BackendProgram, SendsFramesAtTheRateAskedFor) {
  ASSERT_TRUE(start({"--rate", "50"}));
  TcpClient client(port);
  UdpReceiver receiver;
  ASSERT_EQ(client.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
  ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
  for (int i = 0; i < 5; ++i) {
    const auto lines = korvex2_test::linesOf(receiver.datagram());
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_NEAR(std::stod(lines[1].substr(3)), std::stod(lines[0].substr(3)) / 50.0, 1e-9);
  }
}

TEST_F(BackendProgram, TheTrajectoryMovesTheFirstBody) {
  const QString path = home.filePath("still.tum");
  korvex2_test::writeBytes(path, "0 1 2 3 0 0 0 1\n10 1 2 3 0 0 0 1\n");
  for (const bool given : {true, false}) {
    ASSERT_TRUE(start(given ? QStringList{"--trajectory", path} : QStringList()));
    TcpClient client(port);
    UdpReceiver receiver;
    ASSERT_EQ(client.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
    ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
    const auto lines = korvex2_test::linesOf(receiver.datagram());
    ASSERT_EQ(lines.size(), 3U);
    // Without the option the shipped recording, whose first pose is at 1356.3 mm.
    EXPECT_TRUE(says(lines[2], given ? "[0 1] [1000.0000 2000.0000 3000.0000]" : "[0 1] [135")) << lines[2];
    EXPECT_EQ(end().exitCode, 0);
  }
}

TEST_F(BackendProgram, TellsOfDroppedClientsAndOnRequestOfAllOthers) {
  ASSERT_TRUE(start());
  {
    TcpClient client(port);
    ASSERT_TRUE(client.send(std::string(140'000, 'x')));
    EXPECT_EQ(client.rest(), "korvex2 err 1 \"the line is too long\"\n");
  }
  Ended done = end();
  EXPECT_TRUE(says(done.err, "was dropped: it sent a line that is too long")) << done.err;
  EXPECT_TRUE(says(done.err, "korvex2.backend")) << done.err;
  QProcessEnvironment talkative;
  talkative.insert("QT_LOGGING_RULES", "korvex2.backend.info=true");
  ASSERT_TRUE(start({}, talkative));
  std::string name;
  {
    TcpClient client(port);
    name = "127.0.0.1:" + std::to_string(client.ownPort());
    ASSERT_EQ(client.ask("korvex2 get version"), "korvex2 set version 1.20.0");
    client.finish();
    EXPECT_EQ(client.rest(), "");
  }
  done = end();
  EXPECT_TRUE(says(done.err, name + " came")) << done.err;
  EXPECT_TRUE(says(done.err, name + " went")) << done.err;
}

TEST_F(BackendProgram, WritesNumbersWithADecimalPointInEveryLocale) {
  QTemporaryDir locales;
  korvex2_test::writeBytes(
      locales.filePath("source"),
      "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"<U002E>\"\ngrouping 3;3\nEND LC_NUMERIC\n");
  QProcess::execute("localedef",
                    {"-c", "-i", locales.filePath("source"), "-f", "ANSI_X3.4-1968", locales.filePath("comma")});
  ASSERT_TRUE(QFile::exists(locales.filePath("comma/LC_NUMERIC")));
  QProcessEnvironment comma;
  comma.insert("LOCPATH", locales.path());
  comma.insert("LC_NUMERIC", "comma");
  comma.insert("LC_ALL", "");
  ASSERT_TRUE(start({}, comma));
  TcpClient client(port);
  UdpReceiver receiver;
  EXPECT_EQ(client.ask("korvex2 set body marker standard b01 m01 1.5 2.25 3"), "korvex2 ok");
  EXPECT_EQ(client.ask("korvex2 get body marker standard b01 m01"),
            "korvex2 set body marker standard b01 m01 1.5 2.25 3");
  ASSERT_EQ(client.ask("korvex2 set output net chmon udp " + receiver.port()), "korvex2 ok");
  ASSERT_EQ(client.ask("korvex2 tracking start"), "korvex2 ok");
  const std::string datagram = receiver.datagram();
  EXPECT_EQ(datagram.find(','), std::string::npos) << datagram;
  EXPECT_NE(datagram.find('.'), std::string::npos);
  EXPECT_EQ(end().exitCode, 0);
}
