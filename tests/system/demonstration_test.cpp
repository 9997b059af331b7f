// The demonstration as a program: it ends well with the module, on the embedded backend and on one over sockets, and
// says what went wrong without the module or without the backend.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include "backendprocess.h"

namespace {

constexpr int limitMs = 100000;

struct Ended {
  int exitCode = -1;
  QString errors;
};

Ended run(const QTemporaryDir& home, const QStringList& arguments) {
  QProcess program;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("HOME", home.path());
  environment.insert("XDG_DATA_HOME", home.filePath("data"));
  environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
  environment.remove("KORVEX2_MODULE_PATH");
  program.setProcessEnvironment(environment);
  program.start(FRONTEND_PROGRAM, arguments);
  EXPECT_TRUE(program.waitForFinished(limitMs)) << "the program did not end";
  return {program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1,
          QString::fromUtf8(program.readAllStandardError())};
}

QString contents(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
  return QString::fromUtf8(file.readAll());
}

void expectGoodDemonstration(const QTemporaryDir& home, const Ended& ended) {
  EXPECT_EQ(ended.exitCode, 0) << qPrintable(ended.errors);
  const QString report = contents(home.filePath("out/report.txt"));
  EXPECT_EQ(report.count("agrees: largest difference"), 3) << qPrintable(report);
  EXPECT_FALSE(report.contains("DIFFERS")) << qPrintable(report);
  EXPECT_TRUE(report.contains("Steps that went wrong: 0")) << qPrintable(report);
  const QStringList pictures = QDir(home.filePath("out")).entryList({"*.png"});
  EXPECT_GE(pictures.size(), 30);
  for (const QString& picture : pictures) {
    EXPECT_FALSE(QImage(home.filePath("out/" + picture)).isNull()) << qPrintable(picture);
  }
  EXPECT_FALSE(QDir(home.filePath("data")).exists()) << "the user's own database was touched";
}

TEST(Demonstration, EndsWithABackendThatAgreesWithPlainArithmetic) {
  const QTemporaryDir home;
  expectGoodDemonstration(home, run(home, {"--demo", home.filePath("out")}));
}

TEST(Demonstration, OverSocketsEndsWithABackendThatAgreesWithPlainArithmetic) {
  const QTemporaryDir home;
  korvex2_test::BackendProcess backend;
  backend.options = QStringList{"--trajectory", QStringLiteral(SOURCE_DATA_FOLDER "/trajectories/handheld_xyz.tum")};
  const std::vector<korvex2_test::Position> cup = backend.stored("standard", 1).markers;
  ASSERT_TRUE(backend.start());
  const QString address = QStringLiteral("127.0.0.1:%1").arg(backend.port());
  expectGoodDemonstration(home, run(home, {"--demo", home.filePath("out"), "--backend", address}));
  EXPECT_FALSE(QDir(home.filePath("out/database")).exists()) << "no backend but that over sockets had a part in it";
  EXPECT_NE(backend.stored("standard", 1).markers, cup);
  EXPECT_EQ(backend.terminate(), 0);
  EXPECT_EQ(backend.problems().join('\n').toStdString(), "");
}

TEST(Demonstration, WithoutTheBackendSaysSoAndFails) {
  const QTemporaryDir home;
  korvex2_test::BackendProcess backend;
  ASSERT_TRUE(backend.start());
  const QString address = QStringLiteral("127.0.0.1:%1").arg(backend.port());
  backend.kill();
  const Ended ended = run(home, {"--demo", home.filePath("out"), "--backend", address});
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_TRUE(ended.errors.contains(address)) << qPrintable(ended.errors);
  EXPECT_TRUE(ended.errors.contains("no backend listens there")) << qPrintable(ended.errors);
}

TEST(Demonstration, WithoutTheModuleSaysSoAndFails) {
  const QTemporaryDir home;
  QDir().mkpath(home.filePath("empty"));
  const Ended ended = run(home, {"--demo", home.filePath("out"), "--plugin-dir", home.filePath("empty")});
  EXPECT_EQ(ended.exitCode, 1);
  EXPECT_TRUE(ended.errors.contains("there is no menu entry \"Body adjustment\"")) << qPrintable(ended.errors);
}

}  // namespace
