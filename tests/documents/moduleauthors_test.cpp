// The module author's document against the files it speaks of.
#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>

#include <string>

#include "markdown.h"

namespace {

const QString source = QStringLiteral(SOURCE_FOLDER "/");
const QString document = source + QStringLiteral("docs/module-authors.md");

QByteArrayList captured(const QString& file, const QString& pattern) {
  QByteArrayList found;
  const QString text = QString::fromUtf8(wholeFile(source + file));
  const QRegularExpression expression(pattern);
  for (auto match = expression.globalMatch(text); match.hasNext();) {
    found += match.next().captured(1).toUtf8();
  }
  return found;
}

}  // namespace

TEST(ModuleAuthorsDocument, ShowsEveryLineOfTheExampleInOrder) {
  const std::vector<MarkdownBlock> blocks = markdownBlocks(document);
  const QStringList files = QDir(source + "examples/bodylist").entryList(QDir::Files, QDir::Name);
  EXPECT_EQ(files, QStringList({"CMakeLists.txt", "bodylist.cpp"}));
  for (const QString& file : files) {
    EXPECT_EQ(withoutBlankLines(fileFromBlocks(blocks, file.toUtf8())).toStdString(),
              withoutBlankLines(wholeFile(source + "examples/bodylist/" + file)).toStdString())
        << file.toStdString();
  }
}

TEST(ModuleAuthorsDocument, NamesEveryReasonForWhichTheHostRefusesAModule) {
  const QString text = QString::fromUtf8(wholeFile(document)).remove(QLatin1Char('\\'));
  QByteArrayList reasons = captured("host/modulesearch.cpp", R"re(return [^;"]*\btr\("((?:[^"\\]|\\.)*)")re");
  reasons += captured("host/modulesearch.cpp", R"re(: tr\("((?:[^"\\]|\\.)*)")re");
  reasons += captured("host/moduleset.cpp", R"re(refuse\([^"]*tr\("((?:[^"\\]|\\.)*)")re");
  reasons += captured("host/moduleset.cpp", R"re(reason = tr\("((?:[^"\\]|\\.)*)")re");
  EXPECT_GE(reasons.size(), 12);
  for (const QByteArray& reason : reasons) {
    QString shown = QString::fromUtf8(reason).remove(QLatin1Char('\\'));
    shown.replace(QRegularExpression("%[0-9](\\.%[0-9])?"), QStringLiteral("..."));
    EXPECT_TRUE(text.contains(shown)) << shown.toStdString();
  }
}

TEST(ModuleAuthorsDocument, NamesEveryInterfaceOperationParameterAndField) {
  const QByteArray text = wholeFile(document);
  QByteArrayList names = captured("interfaces/iomanager.h", R"(virtual int (?!reserved_slot)(\w+)\()");
  EXPECT_EQ(names.size(), 10);
  names += captured("interfaces/moduleinterface.h", R"(virtual \w\S* (\w+)\()");
  EXPECT_EQ(names.size(), 16);
  names += captured("interfaces/requester.h", R"(virtual \w+ (\w+)\()");
  names += captured("interfaces/messagereceiver.h", R"(virtual \w+ (\w+)\()");
  names += captured("interfaces/guielement.h", R"((\w+)(?: = \w+)?;\s+// field)");
  EXPECT_EQ(names.size(), 26);
  names += captured("host/moduleset.cpp", R"re(set_param\(QStringLiteral\("(\w+)")re");
  EXPECT_EQ(names.size(), 30);
  names += captured("host/hostlogging.cpp", R"re(Q_LOGGING_CATEGORY\(\w+, "([\w.]+)")re");
  EXPECT_EQ(names.size(), 32);
  for (const QByteArray& name : names) {
    EXPECT_TRUE(text.contains(name)) << name.toStdString();
  }
  for (const QString& header : QDir(source + "interfaces").entryList({"*.h"})) {
    EXPECT_TRUE(text.contains('`' + header.toUtf8() + '`')) << header.toStdString();
  }
}

TEST(ModuleAuthorsDocument, NamesTheInterfacesIdentifierAndTheProjectsVersion) {
  const QByteArray text = wholeFile(document);
  const QByteArray iid = captured("interfaces/moduleinterface.h", R"re(_IID "([^"]+)")re").value(0);
  EXPECT_TRUE(text.contains('`' + iid + '`'));
  EXPECT_TRUE(text.contains("(" + iid.mid(iid.lastIndexOf('/') + 1) + ")"));
  const QByteArray version = captured("CMakeLists.txt", R"(project\(Korvex2 VERSION (\d+\.\d+)\.)").value(0);
  EXPECT_TRUE(text.contains("find_package(Korvex2 " + version + " REQUIRED)"));
}
