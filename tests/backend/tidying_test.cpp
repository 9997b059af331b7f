// What a program that was killed in the middle of a change left behind goes when the folder is opened; nothing else
// does.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <cstdio>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "databasecopy.h"

namespace {

using korvex2_test::allFiles;
using korvex2_test::readBytes;
using korvex2_test::writeBytes;

// A geometry exactly as the database writes it, and one that it would write otherwise.
const char ownBytes[] = "3\n1 2 3\n4 5 6\n7 8 9.5\n# Lines\n0\n";
const char foreignBytes[] = "3\n1 2 3\n4 5 6\n7 8 9.50\n# Lines\n0\n";

class Tidying : public korvex2_test::DatabaseCopy {
 protected:
  void change(const char* body = "b01") {
    ASSERT_EQ("korvex2 ok", ask(std::string("korvex2 body transform standard ") + body + " 1 0 0 1 0 0 0 1 0 0 0 1"));
  }

  QString file(int number = 1) const { return database->find({"standard", number})->file; }
  bool exists(const QString& name) const { return QFileInfo(path(name)).isSymLink() || QFileInfo::exists(path(name)); }

  /// Puts a file there as a killed program leaves it: after the catalogue.
  void leave(const QString& name, const QByteArray& bytes = ownBytes) { writeBytes(path(name), bytes); }

  /// A catalogue that comes to its place after every file that is there now.
  void placeCatalogue(const QByteArray& bytes) {
    const QDateTime before = QDateTime::currentDateTime();
    const QDeadlineTimer limit(5000);
    do {
      ASSERT_FALSE(limit.hasExpired());
      writeBytes(path("catalogue.json"), bytes);
    } while (QFileInfo(path("catalogue.json")).metadataChangeTime() <= before);
  }

  /// Opens the folder; of all its files the named ones go and the rest stays as it is.
  void openLosing(const QStringList& names) {
    close();
    auto files = allFiles(folder());
    for (const QString& name : names) {
      EXPECT_EQ(1, files.remove(name)) << qPrintable(name);
    }
    open();
    const auto left = allFiles(folder());
    EXPECT_EQ(QStringList(files.keys()).join('|').toStdString(), QStringList(left.keys()).join('|').toStdString());
    EXPECT_TRUE(files == left) << "a content has changed";
  }

  void openLosingNothing() { openLosing({}); }

  /// One of everything that goes from a folder without problems.
  QStringList leaveEverything() {
    const QStringList names{"bodies/standard_b01-1.body", "bodies/standard_b01-2.body.WvfbZg", "catalogue.json.WvfbZg"};
    for (const QString& name : names) {
      leave(name);
    }
    return names;
  }
};

TEST_F(Tidying, FilesOfEarlierGeometriesGo) {
  for (int n = 0; n < 3; ++n) {
    change();
  }
  ASSERT_EQ("standard_b01-3.body", file().toStdString());
  leave("bodies/standard_b01-1.body");
  leave("bodies/standard_b01-2.body");
  placeCatalogue(readBytes(path("catalogue.json")));  // whenever it came
  openLosing({"bodies/standard_b01-1.body", "bodies/standard_b01-2.body"});
  EXPECT_EQ("", problems());
  EXPECT_EQ("standard_b01-3.body", file().toStdString());
}

TEST_F(Tidying, GeometriesThatNeverBecameValidGo) {
  change();
  ASSERT_EQ("standard_b01-1.body", file().toStdString());
  leave("bodies/standard_b01-2.body");
  leave("bodies/standard_b01-3.body");  // of a second program that was killed
  leave("bodies/wandgrip_b02-1.body");  // this body has a shipped file
  openLosing({"bodies/standard_b01-2.body", "bodies/standard_b01-3.body", "bodies/wandgrip_b02-1.body"});
  change();
  EXPECT_EQ("standard_b01-2.body", file().toStdString());
}

TEST_F(Tidying, EverythingThatTheDatabaseWritesIsRecognised) {
  writeBytes(path("bodies/mug.body"),
             "4\n1 2 3\n4 5 6\n7 8 9\n10 11 12  \n# measured\n# Lines \n\n# Lines\n1\n0 1\n# end\n");
  QByteArray catalogue = readBytes(path("catalogue.json"));
  const int first = catalogue.indexOf("cup.body");
  writeBytes(path("catalogue.json"), catalogue.replace(first, 8, "mug.body"));
  open();
  ASSERT_EQ("", problems());
  const std::vector<const char*> changes{
      "korvex2 body transform standard b01 0.1 0.2 0.3 0 1 0 -1 0 0 0 0 1",
      "korvex2 set body marker standard b01 m01 0.1 -2.5 1e-9",
      "korvex2 body delete_marker standard b01 m01",
      "korvex2 set body number_of_marker standard b01 12",
  };
  for (const char* line : changes) {
    ASSERT_EQ("korvex2 ok", ask(line)) << line;
    const QByteArray geometry = readBytes(path("bodies/" + file()));
    change();
    leave("bodies/standard_b01-1.body", geometry);
    openLosing({"bodies/standard_b01-1.body"});
  }
}

TEST_F(Tidying, LaterGeometriesThanAnOlderCatalogueNamesStay) {
  const QByteArray older = readBytes(path("catalogue.json"));
  change();
  close();
  placeCatalogue(older);  // somebody begins again with the catalogue of before
  openLosingNothing();
  EXPECT_EQ("", problems());
  EXPECT_EQ("cup.body", file().toStdString());
  EXPECT_TRUE(exists("bodies/standard_b01-1.body"));

  ASSERT_TRUE(QFile::remove(path("catalogue.json")));  // or with the shipped one
  ASSERT_EQ("", korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, folder()).toStdString());
  placeCatalogue(readBytes(path("catalogue.json")));
  openLosingNothing();
}

TEST_F(Tidying, CatalogueThatIsRenamedToItsPlaceCountsFromThen) {
  QFile catalogue(path("catalogue.json"));
  ASSERT_TRUE(catalogue.open(QIODevice::ReadWrite));
  ASSERT_TRUE(catalogue.setFileTime(QDateTime::currentDateTime().addDays(-30), QFileDevice::FileModificationTime));
  catalogue.close();
  leave("bodies/standard_b01-1.body");
  const QDateTime before = QDateTime::currentDateTime();
  const QDeadlineTimer limit(5000);
  do {
    ASSERT_FALSE(limit.hasExpired());
    ASSERT_TRUE(QFile::rename(path("catalogue.json"), path("aside")));
    ASSERT_TRUE(QFile::rename(path("aside"), path("catalogue.json")));
  } while (QFileInfo(path("catalogue.json")).metadataChangeTime() <= before);
  openLosingNothing();
}

TEST_F(Tidying, LaterGeometriesBehindAGapStay) {
  change();
  leave("bodies/standard_b01-3.body");
  leave("bodies/wandgrip_b02-191.body");
  openLosingNothing();
}

TEST_F(Tidying, FilesThatTheCatalogueNamesStay) {
  leave("bodies/standard_b01-1.body");
  leave("bodies/standard_b01-2.body");
  leave("bodies/standard_b01-3.body");
  leave("bodies/standard_b01-4.body");
  QJsonObject catalogue = QJsonDocument::fromJson(readBytes(path("catalogue.json"))).object();
  QJsonArray bodies = catalogue["bodies"].toArray();
  QJsonObject cup = bodies[0].toObject();
  cup["file"] = "standard_b01-4.body";
  cup.remove("emissions");
  cup["before"] = "standard_b01-2.body";  // a field of others
  QJsonObject table = bodies[1].toObject();
  table["file"] = "standard_b01-1.body";
  table.remove("emissions");
  bodies[0] = cup;
  bodies[1] = table;
  catalogue["bodies"] = bodies;
  catalogue["kept"] = "STANDARD_B01-3.BODY";
  writeBytes(path("catalogue.json"), QJsonDocument(catalogue).toJson());
  openLosingNothing();
  EXPECT_EQ("", problems());
}

TEST_F(Tidying, FilesOfOtherNamesStay) {
  for (int n = 0; n < 9; ++n) {
    change();
  }
  for (const char* name : {"standard_b01-0.body",
                           "standard_b01-01.body",
                           "standard_b01-+1.body",
                           "standard_b01- 1.body",
                           "standard_b01--1.body",
                           "standard_b01-1 .body",
                           "standard_b01-.body",
                           "standard_b1-1.body",
                           "standard_b001-1.body",
                           "standard_b00-1.body",
                           "Standard_b01-1.body",
                           "standard_B01-1.body",
                           "standard-b01-1.body",
                           "standard_b01_1.body",
                           "_standard_b01-1.body",
                           " standard_b01-1.body",
                           "my standard_b01-1.body",
                           "standard_b01-1.BODY",
                           "standard_b01-1.body~",
                           "standard_b01-1.body.old",
                           "standard_b01-1.body\n",
                           "standard_b01-1.txt",
                           "standard_b01-1",
                           "standard_b01-1 (copy).body",
                           "standard_b01-1a.body",
                           "standard_b01-1000000000.body",
                           "standard_b01-99999999999999999999.body",
                           "standard_b01.body",
                           ".standard_b01-1.body",
                           "mug.body"}) {
    leave(QStringLiteral("bodies/") + name);
  }
  leave("standard_b01-1.body");  // not where the bodies are
  openLosingNothing();
  EXPECT_EQ("", problems());
}

TEST_F(Tidying, FilesThatTheDatabaseWouldHaveWrittenOtherwiseStay) {
  change();
  change();
  ASSERT_EQ("standard_b01-2.body", file().toStdString());
  for (const QByteArray& bytes : {QByteArray("half of"), QByteArray(), QByteArray(foreignBytes),
                                  QByteArray(ownBytes).replace("\n", "\r\n"), QByteArray(5 * 1024 * 1024, '#')}) {
    leave("bodies/standard_b01-1.body", bytes);
    openLosingNothing();
  }
}

TEST_F(Tidying, FilesOfBodiesThatTheCatalogueDoesNotListStay) {
  for (const char* name : {"standard_b50-1.body", "foot_b01-1.body", "wandgrip_b03-1.body",
                           "standard_b50-1.body.WvfbZg", "foot_b01-1.body.WvfbZg"}) {
    leave(QStringLiteral("bodies/") + name);
  }
  openLosingNothing();
}

TEST_F(Tidying, TemporaryFilesGo) {
  change();
  const QStringList names{"catalogue.json.WvfbZg",
                          "catalogue.json.abcdeF",
                          "catalogue.json.ABCDEf",
                          "bodies/standard_b01-1.body.WvfbZg",  // even of the valid one
                          "bodies/standard_b01-2.body.aBcdef",
                          "bodies/wandgrip_b02-77.body.xYZxyz"};
  for (const QString& name : names) {
    leave(name, "half of");
  }
  leave("catalogue.json.QwErTy", "");
  openLosing(names + QStringList{"catalogue.json.QwErTy"});
  EXPECT_EQ("standard_b01-1.body", file().toStdString());
}

TEST_F(Tidying, FilesThatAreNoTemporariesOfTheDatabaseStay) {
  for (const char* name : {"catalogue.json.backup",
                           "catalogue.json.Backup",
                           "catalogue.json.BACKUP",
                           "catalogue.json.WvfbZ",
                           "catalogue.json.WvfbZgg",
                           "catalogue.json.Wvfb2g",
                           "catalogue.json.Wvfb-g",
                           "catalogue.json.WvfbZg.old",
                           "catalogue.json.WvfbZg\n",
                           "catalogue.jsonWvfbZg",
                           "catalogue.json.Wvfb\xc3\xa4Z",
                           "catalogue.JSON.WvfbZg",
                           "my catalogue.json.WvfbZg",
                           "catalogue.json.lock.WvfbZg",
                           "notes.txt.WvfbZg",
                           ".WvfbZg",
                           "standard_b01-1.body.WvfbZg",
                           "bodies/catalogue.json.WvfbZg",
                           "bodies/cup.body.WvfbZg",
                           "bodies/standard_b01-1.body.backup",
                           "bodies/standard_b01-1.body.WvfbZ",
                           "bodies/standard_b01-01.body.WvfbZg",
                           "bodies/standard_b01-1.body.WvfbZg.WvfbZg"}) {
    leave(QString::fromUtf8(name), "half of");
  }
  openLosingNothing();
}

TEST_F(Tidying, AnyProblemKeepsEverything) {
  const QByteArray sound = readBytes(path("catalogue.json"));
  QJsonObject wrongSetting = QJsonDocument::fromJson(sound).object();
  wrongSetting["tracking_available"] = "perhaps";
  QJsonObject unknownType = QJsonDocument::fromJson(sound).object();
  QJsonArray bodies = unknownType["bodies"].toArray();
  bodies.append(QJsonObject{{"type", "foot"}, {"number", 1}});
  unknownType["bodies"] = bodies;
  const QStringList names = leaveEverything();
  for (const QByteArray& catalogue :
       {QByteArray("{"), QByteArray("[]"), QByteArray(), QJsonDocument(wrongSetting).toJson(),
        QJsonDocument(unknownType).toJson(), QByteArray(sound).replace("cup.body", "mug.body")}) {
    close();
    writeBytes(path("catalogue.json"), catalogue);
    openLosingNothing();
    EXPECT_NE("", problems());
  }
  close();
  ASSERT_TRUE(QFile::remove(path("catalogue.json")));
  openLosingNothing();
  writeBytes(path("catalogue.json"), sound);
  const QByteArray table = readBytes(path("bodies/table.body"));
  writeBytes(path("bodies/table.body"), "1\n0 0 0\n");
  openLosingNothing();
  EXPECT_NE("", problems());

  writeBytes(path("bodies/table.body"), table);  // once all is well again, they go
  for (const QString& name : names) {
    leave(name);
  }
  openLosing(names);
}

TEST_F(Tidying, ProgramWithoutTheLockKeepsEverything) {
  leaveEverything();
  const auto files = allFiles(folder());
  const auto second = korvex2::openDatabase(folder());
  EXPECT_TRUE(second->isHeldByAnother());
  EXPECT_EQ(files, allFiles(folder()));
}

// No room for a lock file: nobody holds the lock, and removing would still be possible.
TEST_F(Tidying, LockThatCannotBeMadeKeepsEverything) {
  leaveEverything();
  close();
  const auto files = allFiles(folder());
  rlimit usual{};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &usual));
  const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  rlimit none = usual;
  none.rlim_cur = 0;
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &none));
  open();
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &usual));
  std::signal(SIGXFSZ, previous);
  EXPECT_FALSE(QFile::exists(path("catalogue.json.lock")));
  EXPECT_EQ("", problems());
  EXPECT_EQ(files, allFiles(folder()));
}

TEST_F(Tidying, LinksFoldersAndPipesStay) {
  change();
  change();
  writeBytes(temporary.filePath("elsewhere"), ownBytes);
  ASSERT_TRUE(QFile::link(temporary.filePath("elsewhere"), path("bodies/standard_b01-1.body")));
  ASSERT_TRUE(QFile::link(temporary.filePath("elsewhere"), path("bodies/standard_b01-3.body.WvfbZg")));
  ASSERT_TRUE(QFile::link(temporary.filePath("elsewhere"), path("catalogue.json.WvfbZg")));
  ASSERT_TRUE(QFile::link(temporary.filePath("nowhere"), path("catalogue.json.AbCdEf")));
  ASSERT_TRUE(QDir().mkpath(path("bodies/standard_b01-4.body.WvfbZg")));
  ASSERT_TRUE(QDir().mkpath(path("catalogue.json.FoLdEr")));
  ASSERT_EQ(0, mkfifo(QFile::encodeName(path("bodies/wandgrip_b01-1.body")).constData(), 0600));
  ASSERT_EQ(0, mkfifo(QFile::encodeName(path("catalogue.json.PiPePi")).constData(), 0600));
  ASSERT_TRUE(QDir().mkpath(path("bodies/more")));
  leave("bodies/more/standard_b01-1.body");
  openLosingNothing();
  EXPECT_EQ(ownBytes, readBytes(temporary.filePath("elsewhere")).toStdString());
  for (const char* name : {"bodies/standard_b01-1.body", "bodies/standard_b01-3.body.WvfbZg", "catalogue.json.WvfbZg",
                           "catalogue.json.AbCdEf", "bodies/standard_b01-4.body.WvfbZg", "catalogue.json.FoLdEr",
                           "bodies/wandgrip_b01-1.body", "catalogue.json.PiPePi", "bodies/more/standard_b01-1.body"}) {
    EXPECT_TRUE(exists(name)) << name;
  }
}

TEST_F(Tidying, BodiesFolderThatIsALinkIsLeftAlone) {
  const QStringList names = leaveEverything();
  close();
  ASSERT_TRUE(QFile::rename(path("bodies"), temporary.filePath("shared")));
  ASSERT_TRUE(QFile::link(temporary.filePath("shared"), path("bodies")));
  openLosing({"catalogue.json.WvfbZg"});
  EXPECT_EQ("", problems());
  ASSERT_TRUE(QFile::remove(path("bodies")));
  ASSERT_TRUE(QFile::rename(temporary.filePath("shared"), path("bodies")));
  openLosing({names[0], names[1]});
}

TEST_F(Tidying, FolderWhoseCatalogueIsALinkIsLeftAlone) {
  leaveEverything();
  close();
  ASSERT_TRUE(QFile::rename(path("catalogue.json"), temporary.filePath("shared.json")));
  ASSERT_TRUE(QFile::link(temporary.filePath("shared.json"), path("catalogue.json")));
  leave("bodies/standard_b01-1.body");  // after the catalogue
  openLosingNothing();
  EXPECT_EQ("", problems());
}

TEST_F(Tidying, FileThatOnlyResemblesOneOfTheDatabaseIsKeptWhenItsBodyChanges) {
  writeBytes(path("bodies/standard_b01-007.body"), readBytes(path("bodies/cup.body")));
  writeBytes(path("catalogue.json"),
             readBytes(path("catalogue.json")).replace("\"cup.body\"", "\"standard_b01-007.body\""));
  open();
  ASSERT_EQ("standard_b01-007.body", file().toStdString());
  change();
  EXPECT_EQ("standard_b01-1.body", file().toStdString());
  EXPECT_TRUE(exists("bodies/standard_b01-007.body"));
}

// A program that is killed while it makes its lock file.
TEST_F(Tidying, LockFileWithoutANameHoldsNobodyUp) {
  for (const char* bytes : {"", "what"}) {
    close();
    leave("catalogue.json.lock", bytes);
    openLosing(leaveEverything());
    EXPECT_EQ("", problems());
    EXPECT_EQ("korvex2 ok", ask("korvex2 set body target_type standard b01 tt_5dof"));
    copyAgain();
  }
}

TEST_F(Tidying, LockFileThatAnotherProgramIsAboutToSignIsRespected) {
  close();
  leaveEverything();
  leave("catalogue.json.lock", "");
  const int another = ::open(QFile::encodeName(path("catalogue.json.lock")).constData(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(another, 0);
  ASSERT_EQ(0, flock(another, LOCK_EX | LOCK_NB));
  openLosingNothing();
  EXPECT_TRUE(database->isHeldByAnother());
  EXPECT_TRUE(exists("catalogue.json.lock"));
  ASSERT_EQ(0, ::close(another));
}

/// What programs left that were killed again and again in the middle of their changes.
TEST_F(Tidying, KilledProgramsLeaveOneFileABody) {
  const QStringList before = allFiles(folder()).keys();
  close();
  int leftSomething = 0;
  for (int round = 0; round < 60; ++round) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      const auto mine = korvex2::openDatabase(folder());
      korvex2::RigidTransform step;
      step.position[0] = 1;
      while (mine->transform({"standard", 1}, step) && mine->transform({"standard", 2}, step)) {
      }
      _exit(1);
    }
    usleep(static_cast<useconds_t>(3000 + round * 97));
    ASSERT_EQ(0, kill(child, SIGKILL));
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    ASSERT_TRUE(WIFSIGNALED(status));
    const int left = allFiles(folder()).size();
    open();
    EXPECT_EQ("", problems());
    QStringList expected = before;
    for (const int number : {1, 2}) {
      if (file(number) != (number == 1 ? "cup.body" : "table.body")) {
        expected.append("bodies/" + file(number));
      }
    }
    QStringList now = allFiles(folder()).keys();
    leftSomething += now.size() < left ? 1 : 0;
    for (const QString& name : now) {
      if (!expected.contains(name)) {  // six random letters may happen to look like a word
        const QString letters = name.right(6);
        EXPECT_TRUE(letters.mid(1) == letters.mid(1).toLower() || letters == letters.toUpper()) << qPrintable(name);
        EXPECT_TRUE(QFile::remove(path(name)));
      }
    }
    close();
  }
  std::printf("[ KILLED   ] %d of 60 left something\n", leftSomething);
}

}  // namespace
