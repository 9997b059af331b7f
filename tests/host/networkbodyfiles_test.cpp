// Body files between this machine and a backend over the network, and what the operator is told when it fails.
#include "networkbodyfiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <string>

#include "scriptedconnection.h"

using namespace korvex2;

namespace {

const QByteArray content = "3\n1 2 3\n4 5 6.5\n7 8 -9\nfree text\n# Lines\n1\n0 2\n";
const BodyId cup{QStringLiteral("standard"), 3};

class UnreachableConnection : public ScriptedConnection {
 public:
  LinkStatus linkStatus() const override {
    return {LinkState::reconnecting, QStringLiteral("host:1"), QStringLiteral("no backend listens there")};
  }
};

class NetworkFiles : public testing::Test {
 protected:
  QString path(const QString& name) const { return place.filePath(name); }
  QString written(const QString& name, const QByteArray& bytes) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return file.fileName();
  }
  static std::string bytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "(none)";
  }

  QTemporaryDir place;
  ScriptedConnection backend;
  NetworkBodyFiles files{backend};
};

}  // namespace

TEST_F(NetworkFiles, AFileGoesToTheBackendAsItIs) {
  const QByteArray line = "korvex2 set body file standard b03 " + content.toBase64();
  backend.answers[line] = "korvex2 ok";
  EXPECT_EQ(files.importBody(cup, written("cup.body", content)).problem.toStdString(), "");
  EXPECT_EQ(backend.sent, std::vector<QByteArray>{line});
}

TEST_F(NetworkFiles, AFileIsCheckedBeforeItTravels) {
  const QString file = written("bad.body", "3\n1 2 3\n4 five 6\n");
  const std::string problem = files.importBody(cup, file).problem.toStdString();
  EXPECT_EQ(problem.rfind(QDir::toNativeSeparators(file).toStdString() + ", line 3: ", 0), 0u) << problem;
  EXPECT_EQ(files.summaryOf(file).problem.toStdString(), problem);
  EXPECT_TRUE(backend.sent.empty());
  EXPECT_NE(files.importBody(cup, path("missing.body")).problem.toStdString(), "");
  EXPECT_NE(files.importBody(cup, place.path()).problem.toStdString(), "");
  EXPECT_TRUE(backend.sent.empty());
}

TEST_F(NetworkFiles, ASummaryNeedsNoBackend) {
  const BodyFileSummary summary = files.summaryOf(written("cup.body", content));
  EXPECT_EQ(summary.markers, 3);
  EXPECT_EQ(summary.lines, 1);
  EXPECT_EQ(summary.problem.toStdString(), "");
  EXPECT_TRUE(backend.sent.empty());
}

TEST_F(NetworkFiles, AFileThatFitsNoLineIsNotSent) {
  // A line has room for 131072 characters: 35 for the command, the rest for the file, four for three bytes of it.
  const QByteArray head = "3\n1 2 3\n4 5 6\n7 8 9\n";
  const int room = (131072 - 35) / 4 * 3;
  const QByteArray tail = "\n# Lines\n0\n";
  const QByteArray fits = head + QByteArray(room - head.size() - tail.size(), 'x') + tail;
  const QString file = written("large.body", fits);
  backend.respond = [](const QByteArray&, QByteArray& answer) {
    answer = "korvex2 ok";
    return true;
  };
  EXPECT_EQ(files.importBody(cup, file).problem.toStdString(), "");
  ASSERT_EQ(backend.sent.size(), 1u);
  EXPECT_LE(backend.sent[0].size(), 131072);
  EXPECT_EQ(files.importBody(cup, written("large.body", fits + "   ")).problem.toStdString(),
            QDir::toNativeSeparators(file).toStdString() + " is too large to be sent to the backend");
  EXPECT_EQ(backend.sent.size(), 1u);
}

TEST_F(NetworkFiles, WhatTheBackendRefusesIsToldInItsWords) {
  backend.respond = [](const QByteArray&, QByteArray& answer) {
    answer = "korvex2 err 7 \"the configuration is locked\"";
    return true;
  };
  EXPECT_EQ(files.importBody(cup, written("cup.body", content)).problem.toStdString(), "the configuration is locked");
  EXPECT_EQ(files.exportBody(cup, path("out.body")).toStdString(), "the configuration is locked");
  EXPECT_FALSE(QFile::exists(path("out.body")));
}

TEST_F(NetworkFiles, WhetherTheBodyHasTakenAFileIsNotKnownWhenTheAnswerIsLostOrMakesNoSense) {
  const QString file = written("cup.body", content);
  EXPECT_TRUE(files.importBody(cup, file).mayHaveTaken) << "no answer";
  ASSERT_EQ(backend.sent.size(), 1u);
  for (const char* answer : {"korvex2 set a 7", ""}) {
    backend.respond = [answer](const QByteArray&, QByteArray& said) {
      said = answer;
      return true;
    };
    const ImportOutcome outcome = files.importBody(cup, file);
    EXPECT_EQ(outcome.problem.toStdString(), "the backend gave an answer that makes no sense");
    EXPECT_TRUE(outcome.mayHaveTaken);
  }
  backend.respond = [](const QByteArray&, QByteArray& said) {
    said = "korvex2 err 7 \"the configuration is locked\"";
    return true;
  };
  EXPECT_FALSE(files.importBody(cup, file).mayHaveTaken);
}

TEST_F(NetworkFiles, ALockedConfigurationIsKnownBeforeAFileIsLookedFor) {
  backend.answers["korvex2 get config is_changeable"] = "korvex2 set config is_changeable yes";
  EXPECT_EQ(files.importObstacle().toStdString(), "");
  backend.answers["korvex2 get config is_changeable"] = "korvex2 set config is_changeable no";
  EXPECT_EQ(files.importObstacle().toStdString(), "the configuration is locked");
  backend.answers["korvex2 get config is_changeable"] = "korvex2 err 2 \"there is no such query\"";
  EXPECT_EQ(files.importObstacle().toStdString(), "") << "an old backend";
}

TEST_F(NetworkFiles, ABodyComesAsTheBytesThatTheBackendSent) {
  backend.answers["korvex2 get body file standard b03"] = "korvex2 set body file standard b03 " + content.toBase64();
  EXPECT_EQ(files.exportBody(cup, path("out.body")).toStdString(), "");
  EXPECT_EQ(bytes(path("out.body")), content.toStdString());
}

TEST_F(NetworkFiles, ABrokenAnswerLeavesTheFileAsItIs) {
  const QString file = written("out.body", "before");
  for (const char* answer : {"korvex2 set body file standard b03", "korvex2 set body file standard b03 ???",
                             "korvex2 set body file standard b03 AAA", "korvex2 set body file standard b03 AAAA",
                             "korvex2 set body file standard b04 AAAA", "korvex2 ok", ""}) {
    backend.answers["korvex2 get body file standard b03"] = answer;
    EXPECT_EQ(files.exportBody(cup, file).toStdString(), "the backend gave an answer that makes no sense") << answer;
    EXPECT_EQ(bytes(file), "before");
  }
}

TEST_F(NetworkFiles, AFileThatCannotBeWrittenIsTold) {
  backend.answers["korvex2 get body file standard b03"] = "korvex2 set body file standard b03 " + content.toBase64();
  EXPECT_EQ(files.exportBody(cup, place.path()).toStdString(),
            QDir::toNativeSeparators(place.path()).toStdString() + " is no file");
  EXPECT_NE(files.exportBody(cup, path("missing/out.body")).toStdString(), "");
}

TEST(NetworkFilesOffline, TellWhyNothingGoes) {
  UnreachableConnection nowhere;
  NetworkBodyFiles files(nowhere);
  const QTemporaryDir place;
  QFile file(place.filePath("cup.body"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
  file.close();
  const std::string text = "the backend is not connected: no backend listens there";
  EXPECT_EQ(files.importObstacle().toStdString(), text);
  EXPECT_EQ(files.importBody(cup, file.fileName()).problem.toStdString(), text);
  EXPECT_FALSE(files.importBody(cup, file.fileName()).mayHaveTaken);
  EXPECT_EQ(files.exportBody(cup, place.filePath("out.body")).toStdString(), text);
}
