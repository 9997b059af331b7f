// See backendprocess.h.
#include "backendprocess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include "bodydatabase.h"
#include "plainclient.h"

namespace korvex2_test {

namespace {

constexpr int limitMs = 10000;

/// Each change is flushed to its disk before it is acknowledged; memory spares the tests the waiting.
QString temporaryTemplate() {
  const QString memory = QStringLiteral("/dev/shm");
  return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/korvex2-network-XXXXXX");
}

/// Ends with the program that started it, also when that one is killed or crashes.
class BoundProcess : public QProcess {
 protected:
  void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

/// Opens a copy of the folder: the folder's lock, and whatever opening may write, stay out of the program's way.
template <class Look>
void lookInto(const QString& folder, Look look) {
  QTemporaryDir copy(temporaryTemplate());
  ASSERT_TRUE(copy.isValid());
  ASSERT_TRUE(QDir(copy.path()).mkpath(QStringLiteral("bodies")));
  ASSERT_TRUE(QFile::copy(folder + "/catalogue.json", copy.filePath("catalogue.json")));
  for (const QString& file : QDir(folder + "/bodies").entryList(QDir::Files)) {
    ASSERT_TRUE(QFile::copy(folder + "/bodies/" + file, copy.filePath("bodies/" + file)));
  }
  look(*korvex2::openDatabase(copy.path()));
}

}  // namespace

BackendProcess::BackendProcess() : folder_(temporaryTemplate()) {
  EXPECT_EQ(korvex2::copyShippedDatabase(QStringLiteral(SOURCE_DATA_FOLDER), folder()).toStdString(), "");
}

BackendProcess::~BackendProcess() { stop(); }

bool BackendProcess::start(quint16 port) {
  stop();
  program_ = std::make_unique<BoundProcess>();
  program_->start(QStringLiteral(BACKEND_PROGRAM),
                  QStringList{"--listen", QStringLiteral("127.0.0.1:%1").arg(port), "--database", folder()} + options);
  static const QRegularExpression ready(QStringLiteral("^korvex2-backend: listening on 127\\.0\\.0\\.1:(\\d+)\\n$"));
  QByteArray line;
  QDeadlineTimer deadline(limitMs);
  while (!line.endsWith('\n') && !deadline.hasExpired() &&
         (program_->waitForReadyRead(static_cast<int>(deadline.remainingTime())) || isRunning())) {
    line += program_->readAllStandardOutput();
  }
  const QRegularExpressionMatch match = ready.match(QString::fromUtf8(line));
  if (!match.hasMatch()) {
    ADD_FAILURE() << "the backend did not come up: " << line.toStdString() << errors().toStdString();
    return false;
  }
  pid_ = program_->processId();
  port_ = match.captured(1).toUShort();
  return true;
}

void BackendProcess::kill() {
  killNow();
  if (program_ != nullptr) {
    program_->waitForFinished(limitMs);
    errors();
    program_.reset();
  }
}

void BackendProcess::killNow() {
  const qint64 pid = pid_.exchange(0);
  if (pid > 0) {
    ::kill(static_cast<pid_t>(pid), SIGKILL);
  }
}

int BackendProcess::terminate() {
  if (!isRunning()) {
    return -1;
  }
  pid_ = 0;
  program_->terminate();
  const bool ended = program_->waitForFinished(limitMs);
  errors();
  return ended && program_->exitStatus() == QProcess::NormalExit ? program_->exitCode() : -1;
}

void BackendProcess::stop() {
  if (isRunning()) {
    kill();
  }
  program_.reset();
  pid_ = 0;
}

QString BackendProcess::errors() {
  if (program_ != nullptr) {
    errors_ += QString::fromUtf8(program_->readAllStandardError());
  }
  return errors_;
}

void BackendProcess::editCatalogue(const std::function<void(QJsonObject&)>& edit) const {
  ASSERT_FALSE(isRunning()) << "the catalogue is the program's while it runs";
  QFile file(folder() + "/catalogue.json");
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  QJsonObject catalogue = QJsonDocument::fromJson(file.readAll()).object();
  edit(catalogue);
  file.resize(0);
  file.write(QJsonDocument(catalogue).toJson());
}

void BackendProcess::setVersion(int major, int minor, int revision) const {
  editCatalogue([&](QJsonObject& catalogue) {
    catalogue.insert(QStringLiteral("version"), QJsonArray{major, minor, revision});
  });
}

StoredBody BackendProcess::stored(const QByteArray& type, int number) const {
  StoredBody stored;
  lookInto(folder(), [&](const korvex2::BodyDatabase& database) {
    stored.problem = database.problems().join(QLatin1Char('\n'));
    const korvex2::Body* const body = database.find({type, number});
    if (body == nullptr) {
      stored.problem += QStringLiteral("there is no such body");
      return;
    }
    for (const korvex2::BodyMarker& marker : body->markers) {
      const auto& direction = marker.emission.direction;
      stored.markers.push_back({marker.position[0], marker.position[1], marker.position[2]});
      stored.emissions.push_back({direction[0], direction[1], direction[2], marker.emission.openingAngle});
    }
  });
  return stored;
}

QStringList BackendProcess::problems() const {
  QStringList problems;
  lookInto(folder(), [&problems](const korvex2::BodyDatabase& database) { problems = database.problems(); });
  return problems;
}

QByteArray BackendProcess::ask(const QByteArray& line) const { return PlainClient(port_).ask(line); }

}  // namespace korvex2_test
