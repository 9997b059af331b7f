// The program korvex2-frontend as it is started from a shell.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <string>

#include "lineserver.h"
#include "modulefiles.h"

namespace {

struct Ended {
  int exitCode = -1;
  std::string out;
  std::string err;
};

class Program : public testing::Test {
 protected:
  QProcessEnvironment environmentOfTheProgram() const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_DATA_HOME", home.filePath("data"));
    environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
    environment.remove("KORVEX2_MODULE_PATH");
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
      environment.remove(display);
    }
    return environment;
  }
  /// Runs the program with a window on a screen that nobody sees, until `file` exists or ten seconds are over.
  bool startWindowUntil(const QString& file, const QStringList& arguments) const {
    QProcess process;
    QProcessEnvironment environment = environmentOfTheProgram();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    process.setProcessEnvironment(environment);
    process.start(FRONTEND_PROGRAM, QStringList{"--plugin-dir", files.path()} + arguments);
    QElapsedTimer clock;
    clock.start();
    while (!QFile::exists(file) && clock.elapsed() < 10000 && !process.waitForFinished(20)) {
    }
    EXPECT_EQ(process.state(), QProcess::Running) << process.readAllStandardError().toStdString();
    process.kill();
    process.waitForFinished();
    return QFile::exists(file);
  }
  Ended run(const QStringList& arguments, const QProcessEnvironment& extra = {}) const {
    QProcess process;
    QProcessEnvironment environment = environmentOfTheProgram();
    for (const QString& name : extra.keys()) {
      environment.insert(name, extra.value(name));
    }
    process.setProcessEnvironment(environment);
    process.start(FRONTEND_PROGRAM, arguments);
    Ended result;
    if (!process.waitForFinished(30000)) {
      ADD_FAILURE() << "the program did not end: " << process.errorString().toStdString();
      process.kill();
      process.waitForFinished();
      return result;
    }
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput().toStdString();
    result.err = process.readAllStandardError().toStdString();
    return result;
  }
  static bool says(const std::string& text, const std::string& words) { return text.find(words) != std::string::npos; }

  QTemporaryDir home;
  ModuleFiles files;
};

}  // namespace

TEST_F(Program, PrintsItsVersionWithoutADisplay) {
  const Ended version = run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  EXPECT_EQ(version.out.substr(0, 17), "korvex2-frontend ");
  EXPECT_EQ(std::count(version.out.begin(), version.out.end(), '.'), 2);
}

TEST_F(Program, PrintsItsOptionsWithoutADisplay) {
  const Ended help = run({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  for (const char* option : {"--plugin-dir", "--database", "--trajectory", "--rate", "--backend", "--timeout",
                             "--list-modules", "--demo", "--version", "--help"}) {
    EXPECT_TRUE(says(help.out, option)) << option;
  }
}

TEST_F(Program, RefusesWhatItDoesNotUnderstandWithExitCodeOne) {
  Ended refused = run({"--nonsense"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_TRUE(says(refused.err, "nonsense")) << refused.err;
  EXPECT_EQ(refused.out, "");
  refused = run({"stray"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_TRUE(says(refused.err, "stray"));
  refused = run({"--plugin-dir"});
  EXPECT_EQ(refused.exitCode, 1);
  refused = run({"--plugin-dir", "", "--list-modules"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_TRUE(says(refused.err, "plugin-dir"));
}

TEST_F(Program, RefusesARateThatIsNoneAndATrajectoryWithoutAName) {
  for (const char* rate : {"0", "1001", "-5", "60.5", "60,5", "fast", "", "99999999999"}) {
    const Ended refused = run({"--list-modules", "--rate", rate});
    EXPECT_EQ(refused.exitCode, 1) << rate;
    EXPECT_TRUE(says(refused.err, "--rate needs a whole number from 1 to 1000")) << refused.err;
  }
  for (const char* rate : {"1", "60", "1000"}) {
    EXPECT_EQ(run({"--list-modules", "--rate", rate}).exitCode, 0) << rate;
  }
  const Ended refused = run({"--list-modules", "--trajectory", ""});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_TRUE(says(refused.err, "--trajectory needs a file")) << refused.err;
}

TEST_F(Program, ABackendThatIsSlowToAnswerIsConnectedToWithALongTimeOut) {
  LineServer backend;
  backend.react([&backend](const QByteArray& line) {
    Reaction reaction = backend.usual(line);
    reaction.delay = line == "korvex2 get version" ? 2200 : 0;  // longer than a connection has without --timeout
    return reaction;
  });
  QProcess process;
  QProcessEnvironment environment = environmentOfTheProgram();
  environment.insert("QT_QPA_PLATFORM", "offscreen");
  process.setProcessEnvironment(environment);
  process.start(FRONTEND_PROGRAM, {"--plugin-dir", files.path(), "--timeout", "20000", "--backend",
                                   "127.0.0.1:" + QString::number(backend.port())});
  QElapsedTimer clock;
  clock.start();
  // It is asked for more as soon as it is connected; a second connection would be another attempt.
  while (backend.heartbeats() == 0 && backend.connections() < 2 && clock.elapsed() < 20000 &&
         !process.waitForFinished(20)) {
  }
  EXPECT_GT(backend.heartbeats(), 0);
  EXPECT_EQ(backend.connections(), 1);
  process.kill();
  process.waitForFinished();
}

TEST_F(Program, RefusesAnAddressThatIsNone) {
  for (const char* address : {"", "host:0", "host:port", "two words", "[::1"}) {
    const Ended refused = run({"--list-modules", "--backend", address});
    EXPECT_EQ(refused.exitCode, 1) << address;
    EXPECT_TRUE(says(refused.err, "--backend needs HOST or HOST:PORT")) << refused.err;
  }
  for (const char* address : {"host", "host:1", "127.0.0.1:65535", "[::1]:80"}) {
    EXPECT_EQ(run({"--list-modules", "--backend", address}).exitCode, 0) << address;
  }
}

TEST_F(Program, RefusesATimeOutThatIsNone) {
  for (const char* timeout : {"0", "99", "60001", "-100", "1.5", "2s", ""}) {
    const Ended refused = run({"--list-modules", "--timeout", timeout});
    EXPECT_EQ(refused.exitCode, 1) << timeout;
    EXPECT_TRUE(says(refused.err, "--timeout needs a whole number from 100 to 60000")) << refused.err;
  }
  for (const char* timeout : {"100", "60000"}) {
    EXPECT_EQ(run({"--list-modules", "--timeout", timeout}).exitCode, 0) << timeout;
  }
}

TEST_F(Program, RefusesOptionsOfTheSimulatedBackendTogetherWithOneOnTheNetwork) {
  for (const auto& [option, value] :
       {std::pair<const char*, const char*>{"--database", "x"}, std::pair<const char*, const char*>{"--rate", "60"},
        std::pair<const char*, const char*>{"--trajectory", "x"}}) {
    const Ended refused = run({"--list-modules", "--backend", "host", option, value});
    EXPECT_EQ(refused.exitCode, 1) << option;
    EXPECT_TRUE(says(refused.err, std::string("the option ") + option +
                                      " is for the simulated backend in this program and does not go together with "
                                      "--backend"))
        << refused.err;
  }
}

TEST_F(Program, ADemonstrationWithoutItsBackendEndsWithExitCodeOne) {
  const QTemporaryDir place;
  // Nobody listens on the first port: only the system's own programs may.
  const Ended ended = run({"--demo", place.filePath("pictures"), "--backend", "127.0.0.1:1"});
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_TRUE(says(ended.err, "The backend at 127.0.0.1:1 could not be reached: no backend listens there."))
      << ended.err;
}

TEST_F(Program, SaysSoWhenThereIsNoDisplayForItsWindow) {
  const Ended noDisplay = run({});
  EXPECT_EQ(noDisplay.exitCode, 1);
  EXPECT_TRUE(says(noDisplay.err, "display")) << noDisplay.err;
}

TEST_F(Program, ListsModulesWithNameVersionAndFile) {
  const std::string file = files.copy("alphamodule").toStdString();
  const Ended list = run({"--list-modules", "--plugin-dir", files.path()});
  EXPECT_EQ(list.exitCode, 0);
  EXPECT_EQ(list.out, "Modules:\n  Alpha v1.2.3 (" + file + ")\nSearched:\n  " + files.path().toStdString() + "\n");
}

TEST_F(Program, ListsRefusedModulesWithTheReasonAndStillSucceeds) {
  const std::string foreign = files.copy("foreignmodule").toStdString();
  const std::string text = files.write("libtext.so", "text").toStdString();
  files.truncated("alphamodule", 0.4, "libcut.so");
  const Ended list = run({"--list-modules", "--plugin-dir", files.path()});
  EXPECT_EQ(list.exitCode, 0);
  EXPECT_TRUE(says(list.out, "No modules found.\nRefused:\n")) << list.out;
  EXPECT_TRUE(says(list.out, "  " + foreign + ": it is a plug-in of another program")) << list.out;
  EXPECT_TRUE(says(list.out, "  " + text + ": it is no plug-in")) << list.out;
  EXPECT_TRUE(says(list.out, "libcut.so: it is no plug-in")) << list.out;
}

TEST_F(Program, ListsAMissingFolderThatWasAskedFor) {
  const Ended list = run({"--list-modules", "--plugin-dir", "/nowhere/at/all"});
  EXPECT_EQ(list.exitCode, 0);
  EXPECT_TRUE(says(list.out, "/nowhere/at/all: the folder does not exist")) << list.out;
}

TEST_F(Program, SearchesTheUsualFoldersInOrder) {
  files.copy("alphamodule", "variable/libm.so");
  ASSERT_TRUE(QDir().mkpath(home.filePath("data/korvex2/frontend/modules")));
  ASSERT_TRUE(
      QFile::copy(TEST_MODULES_FOLDER "/libbetamodule.so", home.filePath("data/korvex2/frontend/modules/libb.so")));
  ASSERT_TRUE(
      QFile::copy(TEST_MODULES_FOLDER "/libbetamodule.so", home.filePath("data/korvex2/frontend/modules/libm.so")));
  QProcessEnvironment environment;
  environment.insert("KORVEX2_MODULE_PATH", files.path("variable"));
  const Ended list = run({"--list-modules"}, environment);
  EXPECT_EQ(list.exitCode, 0);
  const std::size_t alpha = list.out.find("Alpha v1.2.3");
  const std::size_t beta = list.out.find("Beta v1.2.3");
  ASSERT_NE(alpha, std::string::npos) << list.out;
  ASSERT_NE(beta, std::string::npos) << list.out;
  EXPECT_LT(alpha, beta);
  const std::size_t skipped = list.out.find("Skipped:\n");
  ASSERT_NE(skipped, std::string::npos) << list.out;
  EXPECT_TRUE(says(list.out.substr(skipped), "frontend/modules/libm.so: ")) << list.out;
  const std::size_t searched = list.out.find("Searched:\n");
  const std::string folders = list.out.substr(searched);
  const std::size_t variable = folders.find(files.path("variable").toStdString());
  const std::size_t tree =
      folders.find(QDir::cleanPath(QFileInfo(FRONTEND_PROGRAM).path() + "/../modules").toStdString());
  const std::size_t user = folders.find("/data/korvex2/frontend/modules");
  const std::size_t installed = folders.find("/korvex2/modules\n", user + 40);
  EXPECT_LT(variable, tree) << folders;
  EXPECT_LT(tree, user) << folders;
  EXPECT_LT(user, installed) << folders;
  EXPECT_NE(installed, std::string::npos) << folders;
}

TEST_F(Program, TheFirstStartMakesTheUsersDatabase) {
  const QString database = home.filePath("data/korvex2/frontend/database");
  EXPECT_TRUE(startWindowUntil(database + "/catalogue.json", {}));
  EXPECT_FALSE(QDir(database + "/bodies").isEmpty());
}

TEST_F(Program, ADatabaseThatIsGivenIsUsedInPlaceOfTheUsersOwn) {
  const QString mine = home.filePath("mine");
  ASSERT_TRUE(QDir().mkpath(mine + "/bodies"));
  ASSERT_TRUE(QFile::copy(SOURCE_DATA_FOLDER "/catalogue.json", mine + "/catalogue.json"));
  // The lock tells that the program has opened it.
  EXPECT_TRUE(startWindowUntil(mine + "/catalogue.json.lock", {"--database", mine}));
  EXPECT_FALSE(QFile::exists(home.filePath("data/korvex2/frontend/database")));
}
