// What was acknowledged is on disk; what could not be written was not acknowledged and did not happen.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <vector>

#include <sys/resource.h>

#include "databasecopy.h"

namespace {

using korvex2_test::allFiles;
using korvex2_test::readBytes;
using korvex2_test::writeBytes;

class Persistence : public korvex2_test::DatabaseCopy {
 protected:
  std::string get(const std::string& query) { return ask("korvex2 get " + query); }

  /// What another program finds when it reads the folder now.
  std::string dumpOfAReader() {
    const QTemporaryDir other;
    QDir(other.path()).mkdir("bodies");
    const auto files = allFiles(folder());
    for (auto file = files.begin(); file != files.end(); ++file) {
      writeBytes(other.filePath(file.key()), file.value());
    }
    const auto read = korvex2::openDatabase(other.path());
    EXPECT_EQ("", read->problems().join('\n').toStdString());
    korvex2::Interpreter reader(*read);
    return korvex2_test::dumpOf(reader);
  }
};

const char* const changes[] = {
    "korvex2 body transform standard b07 10 20 30 0 1 0 -1 0 0 0 0 1",
    "korvex2 body delete_marker standard b07 m03",
    "korvex2 set body number_of_marker standard b07 6",
    "korvex2 set body marker standard b07 m01 1 2 3",
    "korvex2 set body marker_emission standard b07 m01 0 1 0 30",
    "korvex2 set body desc standard b07 \"Another cup\"",
    "korvex2 set body target_type standard b07 tt_5dof",
    "korvex2 set body calibrated standard b07 no",
    "korvex2 set wandgrip multiuser yes",
    "korvex2 set wandgrip output_6dw yes",
    "korvex2 set version 1.12.-1",
};

TEST_F(Persistence, EveryAcknowledgedChangeIsOnDiskAtOnce) {
  for (const char* line : changes) {
    const std::string before = dump();
    ASSERT_EQ("korvex2 ok", ask(line)) << line;
    EXPECT_NE(before, dump()) << line;
    EXPECT_EQ(dump(), dumpOfAReader()) << line;
  }
}

TEST_F(Persistence, EveryChangeIsHeldOverARestart) {
  for (const char* line : changes) {
    ASSERT_EQ("korvex2 ok", ask(line)) << line;
    const std::string before = dump();
    const korvex2::RigidTransform transform = database->find({"standard", 7})->transform;
    open();
    EXPECT_EQ("", problems());
    EXPECT_EQ(before, dump()) << line;
    EXPECT_TRUE(transform == database->find({"standard", 7})->transform) << line;
  }
}

TEST_F(Persistence, ShippedFilesAreNeverWrittenTo) {
  const auto shipped = allFiles(KORVEX2_SHIPPED_DATA);
  const auto before = allFiles(folder());
  for (const char* line : changes) {
    ask(line);
  }
  const auto after = allFiles(folder());
  for (auto file = before.begin(); file != before.end(); ++file) {
    if (file.key() != "catalogue.json") {
      EXPECT_EQ(file.value(), after[file.key()]) << qPrintable(file.key());
    }
  }
  EXPECT_EQ(shipped, allFiles(KORVEX2_SHIPPED_DATA));
}

TEST_F(Persistence, SupersededFilesAreTidiedAway) {
  const int before = allFiles(folder()).size();
  for (int n = 0; n < 10; ++n) {
    ASSERT_EQ("korvex2 ok", ask("korvex2 body transform standard b01 1 0 0 1 0 0 0 1 0 0 0 1"));
    ASSERT_EQ("korvex2 ok", ask("korvex2 body transform wandgrip b02 1 0 0 1 0 0 0 1 0 0 0 1"));
  }
  EXPECT_EQ(before + 2, allFiles(folder()).size());  // one file of its own for each of the two
}

TEST_F(Persistence, FreeTextAndLinesOfABodyFileAreKept) {
  writeBytes(path("bodies/cup.body"),
             "4\n1 2 3\n4 5 6\n7 8 9\n10 11 12  \n# measured by hand\n# Lines \n\n# Lines\n2\n0 1\n3 2\n# the end\n");
  writeBytes(path("catalogue.json"), R"({"types": [{"name": "standard"}], "bodies": [
    {"type": "standard", "number": 1, "calibrated": true, "file": "cup.body"}]})");
  open();
  ASSERT_EQ("", problems());
  ASSERT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m04 0.1 -2.5 1e-9"));
  const QString file = database->find({"standard", 1})->file;
  EXPECT_EQ(
      "4\n1 2 3\n4 5 6\n7 8 9\n0.1 -2.5 1e-09  \n# measured by hand\n# Lines \n\n# Lines\n2\n0 1\n3 2\n# the end\n",
      readBytes(path("bodies/" + file)).toStdString());
  ASSERT_EQ("korvex2 ok", ask("korvex2 body delete_marker standard b01 m02"));
  EXPECT_EQ("3\n1 2 3\n7 8 9\n0.1 -2.5 1e-09  \n# measured by hand\n# Lines \n\n# Lines\n1\n2 1\n# the end\n",
            readBytes(path("bodies/" + database->find({"standard", 1})->file)).toStdString());
}

TEST_F(Persistence, FieldsOfOthersInTheCatalogueAreKept) {
  QJsonObject catalogue = QJsonDocument::fromJson(readBytes(path("catalogue.json"))).object();
  catalogue["owner"] = "laboratory 3";
  QJsonArray bodies = catalogue["bodies"].toArray();
  QJsonObject cup = bodies[0].toObject();
  cup["colour"] = "white";
  bodies[0] = cup;
  bodies.append(QJsonObject{{"type", "foot"}, {"number", 1}});  // not understood, but somebody's
  catalogue["bodies"] = bodies;
  writeBytes(path("catalogue.json"), QJsonDocument(catalogue).toJson());
  open();
  ASSERT_EQ("korvex2 ok", ask("korvex2 set body desc standard b01 \"Mug\""));
  ASSERT_EQ("korvex2 ok", ask("korvex2 set wandgrip multiuser yes"));
  catalogue = QJsonDocument::fromJson(readBytes(path("catalogue.json"))).object();
  EXPECT_EQ("laboratory 3", catalogue["owner"].toString().toStdString());
  EXPECT_EQ("white", catalogue["bodies"].toArray()[0].toObject()["colour"].toString().toStdString());
  EXPECT_EQ("Mug", catalogue["bodies"].toArray()[0].toObject()["description"].toString().toStdString());
  EXPECT_EQ("foot", catalogue["bodies"].toArray()[9].toObject()["type"].toString().toStdString());
}

class FailingDisk : public Persistence {
 protected:
  const std::vector<const char*> all{std::begin(changes), std::end(changes)};

  /// A fault is laid and every change tried; the fault is taken away. Nothing may have happened by then, no file may
  /// have come or gone, and the changes work again.
  template <typename Lay, typename Take>
  void run(const std::vector<const char*>& lines, Lay lay, Take take) {
    const auto files = allFiles(folder());
    const std::string before = dump();
    lay();
    std::vector<std::string> answers;
    std::vector<std::string> states;
    for (const char* line : lines) {
      answers.push_back(ask(line));
      states.push_back(dump());
    }
    take();  // before any judgement, which may want to write a file itself
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(0U, answers[i].rfind("korvex2 err 10 \"the change was not saved", 0))
          << lines[i] << " -> " << answers[i];
      EXPECT_EQ(before, states[i]) << lines[i];
    }
    EXPECT_EQ(files, allFiles(folder()));
    for (const char* line : lines) {
      EXPECT_EQ("korvex2 ok", ask(line)) << line;
    }
    const std::string after = dump();
    open();
    EXPECT_EQ("", problems());
    EXPECT_EQ(after, dump());
  }
};

TEST_F(FailingDisk, CatalogueThatCannotBeReplacedLeavesEverythingAsItWas) {
  run(
      all,
      [this] {
        ASSERT_TRUE(QFile::rename(path("catalogue.json"), temporary.filePath("aside")));
        ASSERT_TRUE(QDir().mkpath(path("catalogue.json/in the way")));
      },
      [this] {
        ASSERT_TRUE(QDir(path("catalogue.json")).removeRecursively());
        ASSERT_TRUE(QFile::rename(temporary.filePath("aside"), path("catalogue.json")));
      });
}

TEST_F(FailingDisk, BodiesFolderThatCannotBeWrittenLeavesEverythingAsItWas) {
  run(
      {changes[0], changes[1], changes[2], changes[3]},
      [this] {
        ASSERT_TRUE(QFile::rename(path("bodies"), temporary.filePath("aside")));
        writeBytes(path("bodies"), "in the way");
      },
      [this] {
        ASSERT_TRUE(QFile::remove(path("bodies")));
        ASSERT_TRUE(QFile::rename(temporary.filePath("aside"), path("bodies")));
      });
}

// A full disk, told by the limit on the size of a file: writing fails in the middle.
TEST_F(FailingDisk, FileThatEndsInTheMiddleLeavesEverythingAsItWas) {
  rlimit usual{};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &usual));
  const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  for (const rlim_t room : {rlim_t(0), rlim_t(20), rlim_t(1000)}) {  // 1000: a body fits, the catalogue does not
    run(
        all,
        [&] {
          rlimit small = usual;
          small.rlim_cur = room;
          ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
        },
        [&] { ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &usual)); });
    copyAgain();
  }
  std::signal(SIGXFSZ, previous);
}

TEST_F(Persistence, FilesLeftOverByACrashAreNeitherReadNorOverwritten) {
  // The new body file was written, the catalogue not yet: the old state holds.
  writeBytes(path("bodies/standard_b01-1.body"), "half of");
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ("korvex2 set body marker standard b01 m02 41.2376 9.39587 -14.9949", get("body marker standard b01 m02"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m02 1 2 3"));
  EXPECT_EQ("half of", readBytes(path("bodies/standard_b01-1.body")).toStdString());
  open();
  EXPECT_EQ("korvex2 set body marker standard b01 m02 1 2 3", get("body marker standard b01 m02"));
}

TEST_F(Persistence, BodiesThatShareAFileTheDatabaseNamedDoNotLoseIt) {
  ASSERT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m02 1 2 3"));
  const QString shared = database->find({"standard", 1})->file;
  QByteArray catalogue = readBytes(path("catalogue.json"));
  catalogue.replace("table.body", shared.toUtf8());  // somebody made another body from it
  writeBytes(path("catalogue.json"), catalogue);
  open();
  ASSERT_EQ("korvex2 ok", ask("korvex2 set body marker standard b01 m02 4 5 6"));
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ("korvex2 set body marker standard b01 m02 4 5 6", get("body marker standard b01 m02"));
  EXPECT_EQ("korvex2 set body marker standard b02 m02 1 2 3", get("body marker standard b02 m02"));
}

TEST_F(Persistence, SecondProgramReadsOnly) {
  const auto second = korvex2::openDatabase(folder());
  ASSERT_EQ(1, second->problems().size());
  EXPECT_NE(std::string::npos, second->problems()[0].toStdString().find("catalogue.json.lock"));
  EXPECT_EQ(5U, second->find({"standard", 1})->markers.size());
  const auto files = allFiles(folder());
  EXPECT_EQ(korvex2::ErrorNumber::NotSaved, second->deleteMarker({"standard", 1}, 1).number);
  EXPECT_EQ(korvex2::ErrorNumber::NotSaved, second->setMultiuser(true).number);
  EXPECT_EQ(5U, second->find({"standard", 1})->markers.size());
  EXPECT_FALSE(second->settings().multiuser);
  EXPECT_EQ(files, allFiles(folder()));
  EXPECT_EQ("korvex2 ok", ask("korvex2 set wandgrip multiuser yes"));  // the first one may still write
}

TEST_F(Persistence, ProgramThatRunsForWeeksKeepsItsLock) {
  QFile lock(path("catalogue.json.lock"));
  ASSERT_TRUE(lock.open(QIODevice::ReadWrite));
  ASSERT_TRUE(lock.setFileTime(QDateTime::currentDateTime().addDays(-30), QFileDevice::FileModificationTime));
  lock.close();
  const auto second = korvex2::openDatabase(folder());
  EXPECT_EQ(1, second->problems().size());
  EXPECT_EQ(korvex2::ErrorNumber::NotSaved, second->setMultiuser(true).number);
}

TEST_F(Persistence, LockOfAProgramThatIsGoneDoesNotMatter) {
  close();
  // Process numbers end below this one, so no such program can run.
  writeBytes(path("catalogue.json.lock"),
             "2147483646\nkorvex2-frontend\n" + QSysInfo::machineHostName().toUtf8() + "\n");
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ("korvex2 ok", ask("korvex2 set wandgrip multiuser yes"));
}

TEST(ShippedDatabase, IsCopiedOnceAndNotAgain) {
  QTemporaryDir temporary;
  const QString folder = temporary.filePath("a/b/database");
  ASSERT_EQ("", korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, folder).toStdString());
  auto files = allFiles(folder);
  EXPECT_EQ(7, files.size());
  EXPECT_EQ(readBytes(KORVEX2_SHIPPED_DATA "/catalogue.json"), files["catalogue.json"]);
  EXPECT_EQ(readBytes(KORVEX2_SHIPPED_DATA "/bodies/cup.body"), files["bodies/cup.body"]);
  writeBytes(folder + "/catalogue.json", "{}");
  QFile::remove(folder + "/bodies/cup.body");
  ASSERT_EQ("", korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, folder).toStdString());
  EXPECT_EQ("{}", readBytes(folder + "/catalogue.json"));
  EXPECT_FALSE(QFile::exists(folder + "/bodies/cup.body"));
}

TEST(ShippedDatabase, CopyThatWasCutShortIsCompleted) {
  QTemporaryDir temporary;
  ASSERT_TRUE(QDir().mkpath(temporary.filePath("bodies")));
  writeBytes(temporary.filePath("bodies/cup.body"), "mine");
  ASSERT_EQ("", korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, temporary.path()).toStdString());
  EXPECT_EQ("mine", readBytes(temporary.filePath("bodies/cup.body")));
  EXPECT_TRUE(QFile::exists(temporary.filePath("catalogue.json")));
  EXPECT_TRUE(QFile::exists(temporary.filePath("bodies/table.body")));
}

TEST(ShippedDatabase, FailedCopySaysWhichFile) {
  QTemporaryDir temporary;
  EXPECT_NE(std::string::npos, korvex2::copyShippedDatabase(temporary.filePath("nowhere"), temporary.filePath("to"))
                                   .toStdString()
                                   .find("nowhere/catalogue.json"));
  EXPECT_FALSE(QFile::exists(temporary.filePath("to/catalogue.json")));
  writeBytes(temporary.filePath("file"), "x");
  EXPECT_NE(std::string::npos, korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, temporary.filePath("file/database"))
                                   .toStdString()
                                   .find("file/database"));
}

TEST(ShippedDatabase, HoldsWhatEveryDemonstrationNeeds) {
  QTemporaryDir temporary;
  ASSERT_EQ("", korvex2::copyShippedDatabase(KORVEX2_SHIPPED_DATA, temporary.path()).toStdString());
  const auto database = korvex2::openDatabase(temporary.path());
  EXPECT_TRUE(database->problems().isEmpty());
  EXPECT_GE(database->settings().version.minorNumber, 17);
  const auto& bodies = database->bodies("standard");
  const auto has = [&bodies](auto test) { return std::any_of(bodies.begin(), bodies.end(), test); };
  using korvex2::Body;
  EXPECT_TRUE(has([](const Body& b) { return b.calibrated && b.targetType == "tt_std" && b.markers.size() > 4; }));
  EXPECT_TRUE(has([](const Body& b) { return b.calibrated && b.targetType == "tt_5dof"; }));
  EXPECT_TRUE(has([](const Body& b) { return b.calibrated && b.targetType.endsWith("_cyl"); }));
  EXPECT_TRUE(has([](const Body& b) { return !b.calibrated; }));
  EXPECT_TRUE(has([](const Body& b) { return !b.markers.empty() && b.markers[0].emission.openingAngle != 0.0; }));
  EXPECT_EQ(2, database->numberOfDevices());
}

}  // namespace
