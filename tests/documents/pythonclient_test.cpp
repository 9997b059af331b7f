// The document's client in Python, run as it is printed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>
#include <QTcpSocket>

#include <string>

#include "backendprogram.h"
#include "markdown.h"

namespace {

class PythonClient : public testing::Test {
 protected:
  void SetUp() override {
    QFile file(folder.filePath("follow.py"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(fileFromBlocks(markdownBlocks(QStringLiteral(SOURCE_FOLDER "/docs/backend-protocol.md")), "follow.py"));
  }
  std::string printed(const QString& body, int exitCode) {
    QProcess python;
    python.start(PYTHON_PROGRAM, {folder.filePath("follow.py"), "127.0.0.1", QString::number(backend.port()), body});
    EXPECT_TRUE(python.waitForFinished(15000));
    EXPECT_EQ(python.exitCode(), exitCode) << python.readAllStandardError().toStdString();
    return python.readAllStandardOutput().toStdString();
  }
  std::string answer(const QByteArray& command) {
    QTcpSocket socket;
    socket.connectToHost("127.0.0.1", backend.port());
    EXPECT_TRUE(socket.waitForConnected(5000));
    socket.write(command + '\n');
    while (!socket.canReadLine() && socket.waitForReadyRead(5000)) {
    }
    return socket.readLine().trimmed().toStdString();
  }

  QTemporaryDir folder;
  BackendProgram backend;
};

}  // namespace

TEST_F(PythonClient, FollowsABodyAndStopsTheMeasurementThatItStarted) {
  EXPECT_THAT(printed("2", 0), testing::MatchesRegex("\"Table\"\n([0-9]+ -400.0000 1200.0000 735.0000\n){5}"));
  EXPECT_EQ(answer("korvex2 get status active"), "korvex2 set status active idle");
}

TEST_F(PythonClient, PrintsWhatTheDocumentShowsWithOtherFrameNumbers) {
  std::string shown;
  for (const MarkdownBlock& block : markdownBlocks(QStringLiteral(SOURCE_FOLDER "/docs/backend-protocol.md"))) {
    shown = block.mark == "follow.py prints, with other frame numbers" ? block.text.toStdString() : shown;
  }
  const auto withoutFrameNumbers = [](const std::string& text) {
    return QString::fromStdString(text)
        .replace(QRegularExpression("^[0-9]+ ", QRegularExpression::MultilineOption), "N ")
        .toStdString();
  };
  EXPECT_EQ(withoutFrameNumbers(printed("2", 0)), withoutFrameNumbers(shown));
}

TEST_F(PythonClient, LeavesAMeasurementAloneThatRanBeforeAndCountsBehindTheHead) {
  EXPECT_EQ(answer("korvex2 tracking start"), "korvex2 ok");
  EXPECT_EQ(answer("korvex2 set wandgrip multiuser_with_head yes"), "korvex2 ok");
  EXPECT_THAT(printed("2", 0), testing::MatchesRegex("\"Table\"\n([0-9]+ -400.0000 1200.0000 735.0000\n){5}"));
  EXPECT_EQ(answer("korvex2 get status active"), "korvex2 set status active mea");
}

TEST_F(PythonClient, TellsABodyThatIsNotTracked) {
  EXPECT_THAT(printed("6", 0), testing::MatchesRegex("\"Phone\"\n([0-9]+ not tracked\n){5}"));
}

TEST_F(PythonClient, EndsWithTheBackendsErrorForABodyThatIsNotThere) { EXPECT_EQ(printed("50", 1), ""); }
