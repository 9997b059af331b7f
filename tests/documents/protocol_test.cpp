// The protocol's document against the backend's tables and limits.
#include <gtest/gtest.h>

#include <QLocale>
#include <QRegularExpression>

#include <string>
#include <vector>

#include "backendport.h"
#include "commands.h"
#include "datagramsender.h"
#include "interpreter.h"
#include "livelines.h"
#include "livesource.h"
#include "markdown.h"
#include "serverlimits.h"
#include "trajectory.h"

namespace {

using namespace korvex2;

const QString document = QStringLiteral(SOURCE_FOLDER "/docs/backend-protocol.md");

/// The document without the marks that keep a table from taking "yes|no" apart.
QByteArray documentText() { return wholeFile(document).replace("\\|", "|"); }

/// A pattern of the vocabulary in the document's notation.
QByteArray documented(const QByteArray& phrase) {
  QByteArray text = phrase;
  const bool isText = phrase.contains(" desc ");
  for (const auto& [placeholder, notation] : std::vector<std::pair<QByteArray, QByteArray>>{
           {"%typenumber", "tNN"},
           {"%type", "TYPE"},
           {"%body", "bNN"},
           {"%marker", "mNN"},
           {"%count", "COUNT"},
           {"%flag", "yes|no"},
           {"%real %real %real %real %real %real %real %real %real %real %real %real",
            "X Y Z R11 R21 R31 R12 R22 R32 R13 R23 R33"},
           {"%real %real %real %real", "X Y Z ANGLE"},
           {"%real %real %real", "X Y Z"},
           {"%version", "MAJOR.MINOR.REVISION"},
           {"%channel", "CHANNEL"},
           {"%kind", "KIND"},
           {"%port", "PORT"},
           {"%state", "STATE"},
           {"%file", "BASE64"},
           {"%text", isText ? "\"TEXT\"" : "WORD"}}) {
    text.replace(placeholder, notation);
  }
  return text;
}

std::vector<QByteArray> sessionCommands() {
  std::vector<QByteArray> commands;
  for (const MarkdownBlock& block : markdownBlocks(document)) {
    if (!block.mark.startsWith("session")) {
      continue;
    }
    for (const QByteArray& line : block.text.split('\n')) {
      if (line.startsWith("> ")) {
        commands.push_back(line.mid(2));
      }
    }
  }
  return commands;
}

bool isExampleOf(const QByteArray& command, const QByteArray& phrase) {
  const QList<QByteArray> words = phrase.split(' ');
  const QList<QByteArray> fields = command.split(' ');
  if (fields.size() < words.size()) {
    return false;  // more are possible: a text in quotes
  }
  for (int i = 0; i < words.size(); ++i) {
    if (!words[i].startsWith('%') && words[i] != fields[i]) {
      return false;
    }
  }
  return true;
}

}  // namespace

TEST(ProtocolDocument, NamesEveryPhraseOfTheVocabulary) {
  const QByteArray text = documentText();
  EXPECT_GE(vocabulary().size(), 46u);
  for (const QByteArray& phrase : vocabulary()) {
    EXPECT_FALSE(documented(phrase).contains('%')) << phrase.toStdString();
    EXPECT_TRUE(text.contains('`' + documented(phrase) + '`')) << documented(phrase).toStdString();
  }
}

TEST(ProtocolDocument, NamesNoPhraseThatTheBackendDoesNotKnow) {
  std::vector<QByteArray> known;
  for (const QByteArray& phrase : vocabulary()) {
    known.push_back(documented(phrase));
  }
  int named = 0;
  for (const QString& line : QString::fromUtf8(wholeFile(document)).split('\n')) {
    if (!line.startsWith("| `korvex2 ")) {
      continue;
    }
    const QString cell = line.mid(2).section(" | ", 0, 0).remove('\\');
    static const QRegularExpression code("`([^`]*)`");
    for (auto each = code.globalMatch(cell); each.hasNext();) {
      const QByteArray phrase = each.next().captured(1).toUtf8();
      if (phrase.endsWith("...") || phrase.contains("NAME ")) {
        continue;  // the table of answers
      }
      EXPECT_NE(std::find(known.begin(), known.end(), phrase), known.end()) << phrase.toStdString();
      ++named;
    }
  }
  EXPECT_EQ(named, static_cast<int>(known.size())) << "each once";
}

TEST(ProtocolDocument, HasAnExampleOfEveryPhrase) {
  const std::vector<QByteArray> commands = sessionCommands();
  for (const QByteArray& phrase : vocabulary()) {
    EXPECT_TRUE(std::any_of(commands.begin(), commands.end(), [&phrase](const QByteArray& command) {
      return isExampleOf(command, phrase);
    })) << phrase.toStdString();
  }
}

TEST(ProtocolDocument, NamesEveryErrorNumberOnce) {
  const QString declarations = QString::fromUtf8(wholeFile(QStringLiteral(SOURCE_FOLDER "/backend/outcome.h")));
  const QByteArray text = wholeFile(document);
  int numbers = 0;
  static const QRegularExpression value(" = ([1-9][0-9]*),");
  for (auto match = value.globalMatch(declarations); match.hasNext(); ++numbers) {
    EXPECT_EQ(text.count("\n| " + match.next().captured(1).toUtf8() + " | "), 1);
  }
  EXPECT_EQ(numbers, static_cast<int>(ErrorNumber::Changed));
}

TEST(ProtocolDocument, NamesTheLimitsAsTheyAre) {
  const std::string text = documentText().toStdString();
  const auto says = [&text](const QString& words) {
    EXPECT_NE(text.find(words.toStdString()), std::string::npos) << words.toStdString();
  };
  const QLocale english(QLocale::English);
  const ServerLimits limits;
  says("TCP port " + QString::number(defaultBackendPort));
  says(english.toString(Interpreter::longestLine) + " bytes without its end");
  says(QStringLiteral("| clients | %1 |").arg(limits.mostClients));
  says(QStringLiteral("| %1 KiB |").arg(limits.mostWaitingBytes / 1024));
  says(QStringLiteral("| %1 s | it is dropped").arg(limits.stuckAfter.count() / 1000));
  says(QStringLiteral("| output channels of a client | %1 |").arg(ClientState::mostChannels));
  EXPECT_GE(ClientState::mostExpectations, 2 * BodyDatabase::highestBodyNumber) << "one for every body";
  says(QStringLiteral("| markers of a body | %1 to %2 |")
           .arg(BodyDatabase::fewestMarkers)
           .arg(BodyDatabase::mostMarkers));
  says(QStringLiteral("there are %1 clients already").arg(limits.mostClients));
  says(QStringLiteral("More than %1 of these").arg(limits.mostFarewells));
  EXPECT_EQ(BodyDatabase::largestCoordinate, 1e9);
  EXPECT_EQ(BodyDatabase::rotationTolerance, 1e-5);
  says(QStringLiteral("a gap of more than %1 s").arg(Trajectory::longestGap));
  says(QStringLiteral("at most %1 bytes").arg(english.toString(DatagramSender::longestDatagram)));
  says(QStringLiteral("at most %1 characters long").arg(english.toString(LiveLines::longestLine)));
  says(QStringLiteral("%1 a second").arg(LiveSource::defaultRate));
  says(QStringLiteral("a second (%1 to %2) | %3 |")
           .arg(LiveSource::lowestRate)
           .arg(LiveSource::highestRate)
           .arg(LiveSource::defaultRate));
}
