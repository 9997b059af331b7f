// The example sessions of the protocol's document, replayed against the real backend; and its client for the shell.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QHostAddress>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QUdpSocket>

#include <memory>
#include <string>
#include <vector>

#include "backendprogram.h"
#include "interpreter.h"
#include "livelines.h"
#include "livestate.h"
#include "markdown.h"
#include "motion.h"

namespace {

using namespace korvex2;

const QString document = QStringLiteral(SOURCE_FOLDER "/docs/backend-protocol.md");
const QByteArray shownPort = "udp 50123";

/// A client of a fresh backend, and beside it the same commands on an interpreter of the test's own, which tells what
/// the live lines must be.
class Session {
 public:
  Session() : ownDatabase_(openOwn(ownFolder_.path())), own_(*ownDatabase_), ownClient_(true) {
    socket_.connectToHost(QHostAddress::LocalHost, backend_.port());
    EXPECT_TRUE(socket_.waitForConnected(5000));
    EXPECT_TRUE(datagrams_.bind(QHostAddress(QHostAddress::LocalHost), 0));
  }

  std::string answer(const QByteArray& command) {
    own_.answer(command, ownClient_);
    const QByteArray port = "udp " + QByteArray::number(datagrams_.localPort());
    socket_.write((command.endsWith(shownPort) ? command.left(command.size() - shownPort.size()) + port : command) +
                  '\n');
    while (!socket_.canReadLine() && socket_.waitForReadyRead(5000)) {
    }
    return socket_.readLine().trimmed().replace(port, shownPort).toStdString();
  }
  std::vector<std::string> datagram() {
    EXPECT_TRUE(datagrams_.waitForReadyRead(5000));
    QByteArray bytes(65507, '\0');
    bytes.truncate(static_cast<int>(datagrams_.readDatagram(bytes.data(), bytes.size())));
    EXPECT_TRUE(bytes.endsWith('\n'));
    std::vector<std::string> lines;
    for (const QByteArray& line : bytes.left(bytes.size() - 1).split('\n')) {
      lines.push_back(line.toStdString());
    }
    return lines;
  }
  /// What frame `number` of a backend with these bodies says, at the default rate.
  std::vector<std::string> expectedFrame(int number) {
    QStringList problems;
    const LiveLines lines(motionWith(QStringLiteral(SOURCE_FOLDER "/data/trajectories/handheld_xyz.tum"), problems));
    EXPECT_TRUE(problems.isEmpty());
    std::vector<std::string> texts;
    for (const QByteArray& line : lines.frame(liveStateOf(own_, {"6d"}), number, number / 60.0)) {
      texts.push_back(line.toStdString());
    }
    return texts;
  }

 private:
  static std::unique_ptr<BodyDatabase> openOwn(const QString& folder) {
    EXPECT_EQ(copyShippedDatabase(SOURCE_FOLDER "/data", folder).toStdString(), "");
    return openDatabase(folder);
  }

  QTemporaryDir ownFolder_;
  std::unique_ptr<BodyDatabase> ownDatabase_;
  Interpreter own_;
  ClientState ownClient_;
  BackendProgram backend_;
  QTcpSocket socket_;
  QUdpSocket datagrams_;
};

/// N of "fr N".
int frameNumber(const std::string& line) {
  EXPECT_EQ(line.substr(0, 3), "fr ");
  return QByteArray::fromStdString(line).mid(3).toInt();
}

}  // namespace

TEST(ProtocolSessions, AreAnsweredAsTheDocumentShows) {
  auto session = std::make_unique<Session>();
  int commands = 0;
  int datagrams = 0;
  for (const MarkdownBlock& block : markdownBlocks(document)) {
    if (block.mark == "session on a new backend") {
      session.reset();
      session = std::make_unique<Session>();
    } else if (block.mark != "session") {
      continue;
    }
    std::string answer = "none asked for";
    std::vector<std::string> shown;
    for (const QByteArray& line : (block.text + "end").split('\n')) {
      if (line.startsWith("| ")) {
        shown.push_back(line.mid(2).toStdString());
        continue;
      }
      if (!shown.empty()) {
        EXPECT_EQ(shown, session->expectedFrame(frameNumber(shown[0])));
        const std::vector<std::string> received = session->datagram();
        EXPECT_EQ(received, session->expectedFrame(frameNumber(received[0])));
        shown.clear();
        ++datagrams;
      }
      if (line.startsWith("> ")) {
        answer = session->answer(line.mid(2));
        ++commands;
      } else if (line.startsWith("< ")) {
        EXPECT_EQ(answer, line.mid(2).toStdString()) << "after " << commands << " commands";
        answer = "answered already";
      } else {
        EXPECT_EQ(line.toStdString(), "end") << "neither command nor answer nor datagram";
      }
    }
    EXPECT_EQ(answer, "answered already") << "a command without its answer";
  }
  EXPECT_GE(commands, 90);
  EXPECT_EQ(datagrams, 1);
}

TEST(ProtocolOptions, AreThoseOfTheProgram) {
  QProcess program;
  program.start(BACKEND_PROGRAM, {"--help"});
  ASSERT_TRUE(program.waitForFinished(10000));
  const QString help = QString::fromUtf8(program.readAllStandardOutput());
  const QString text = QString::fromUtf8(wholeFile(document));
  const auto optionsIn = [](const QString& lines, const QString& pattern) {
    QStringList options;
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    for (auto match = expression.globalMatch(lines); match.hasNext();) {
      options += match.next().captured(1);
    }
    options.removeAll("help-all");  // the toolkit's own, the same as --help here
    options.sort();
    return options;
  };
  const QString section = text.section("\n## ", 1, 1);
  EXPECT_EQ(section.section('\n', 0, 0), "Starting and ending");
  const QStringList documented = optionsIn(section, "[|,] `--([a-z-]+)`");
  EXPECT_EQ(documented, QStringList({"database", "help", "listen", "rate", "trajectory", "version"}));
  EXPECT_EQ(documented, optionsIn(help, "^ .*--([a-z-]+)"));
}

TEST(ProtocolClients, TheOneForTheShellRunsAsPrintedAndPrintsWhatIsShown) {
  const BackendProgram backend;
  QByteArray program;
  QByteArray shown;
  for (const MarkdownBlock& block : markdownBlocks(document)) {
    program = block.mark == "run" ? block.text : program;
    shown = block.mark == "prints" ? block.text : shown;
  }
  ASSERT_EQ(program.count("27410"), 1);
  program.replace("27410", QByteArray::number(backend.port()));
  QProcess shell;
  shell.start("bash", {"-c", QString::fromUtf8(program)});
  ASSERT_TRUE(shell.waitForFinished(10000));
  EXPECT_EQ(shell.exitCode(), 0) << shell.readAllStandardError().toStdString();
  EXPECT_EQ(shell.readAllStandardOutput().toStdString(), shown.toStdString());
}
