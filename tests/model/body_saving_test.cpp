// Saving a body: the file, what survives a load and a save, and the boxes that a failure shows.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "abcBody.h"
#include "bodies.h"
#include "modalwatch.h"

namespace {

using Signals = std::vector<std::string>;

/// While it lives, no file of this process grows beyond `bytes`: a disk that is full at a chosen place.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
    rlimit limit = before_;
    limit.rlim_cur = bytes;
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  void (*handler_)(int);
};

class BodySaving : public testing::Test {
 protected:
  void expectFailure(const QString& path, const QString& before, const char* after) {
    const std::size_t boxes = watch.boxes().size();
    watch.expectBox("Error saving body", before + path + after, QMessageBox::Ok);
    EXPECT_FALSE(body.save(path));
    ASSERT_EQ(watch.boxes().size(), boxes + 1);
    EXPECT_EQ(watch.boxes().back().icon, QMessageBox::Warning);
  }

  ModalWatch watch;
  Folder folder;
  abcBody body;
};

TEST_F(BodySaving, OfABodyWithoutTextWritesTheHeaderSoThatItCanBeReadAgain) {
  const std::vector<bsVector> positions{{1, 2, 3}, {4.5, -6, 1e-7}};
  ASSERT_TRUE(body.load(&positions));
  const QString path = folder.path("new.body");
  EXPECT_TRUE(body.save(path));
  EXPECT_EQ(contentOf(path), "2\n1 2 3\n4.5 -6 1e-07\n# Lines\n0\n");
  abcBody again;
  EXPECT_TRUE(again.load(path));
  EXPECT_TRUE(samePositions(again.give_old_data(), positions));
}

TEST_F(BodySaving, TakesTheFileNameAndClearsModified) {
  const std::vector<bsVector> positions = row(2);
  ASSERT_TRUE(body.load(&positions));
  setPending(body, bsVector(1, 0, 0));
  ASSERT_TRUE(body.store());
  SignalLog emitted(body);
  const QString path = folder.path("new.body");
  EXPECT_TRUE(body.save(path));
  EXPECT_EQ(emitted.take(), Signals{"modified 0"});
  EXPECT_EQ(body.getFileName(), path);
  EXPECT_FALSE(body.isModified());
  EXPECT_TRUE(body.isLoaded());
  EXPECT_TRUE(body.canUndo());
}

TEST_F(BodySaving, OfAFileWithoutTheHeaderWritesHeaderAndCountAndNothingMore) {
  ASSERT_TRUE(body.load(folder.file("plain.body", "2\n1 2 3\n4 5 6")));
  ASSERT_TRUE(body.save(folder.path("saved.body")));
  EXPECT_EQ(contentOf(folder.path("saved.body")), "2\n1 2 3\n4 5 6\n# Lines\n0\n");
}

TEST_F(BodySaving, KeepsTheTextBetweenMarkersAndLines) {
  const std::string content =
      "2\n1 2 3\n4 5 6\n\n% head tree of lab 2, 24\xB0 C\n\ttabs  and blanks \n# Lines \n# Lines\n1\n1 0\n";
  ASSERT_TRUE(body.load(folder.file("text.body", content)));
  ASSERT_TRUE(body.save(folder.path("saved.body")));
  EXPECT_EQ(contentOf(folder.path("saved.body")), content);
}

TEST_F(BodySaving, OntoItsOwnFileWorks) {
  const std::string content = "2\n1 2 3\n4 5 6\nnote\n# Lines\n1\n1 0\n";
  const QString path = folder.file("own.body", content);
  ASSERT_TRUE(body.load(path));
  ASSERT_TRUE(body.save(path));
  EXPECT_EQ(contentOf(path), content);
}

TEST_F(BodySaving, ReplacesALongerFileWhole) {
  const QString path = folder.file("long.body", std::string(10000, 'x'));
  const std::vector<bsVector> positions{{1, 2, 3}, {4, 5, 6}};
  ASSERT_TRUE(body.load(&positions));
  ASSERT_TRUE(body.save(path));
  EXPECT_EQ(contentOf(path), "2\n1 2 3\n4 5 6\n# Lines\n0\n");
}

TEST_F(BodySaving, ThroughALinkReplacesTheFileAndKeepsTheLink) {
  const QString target = folder.file("target.body", "old content");
  const QString link = folder.path("link.body");
  ASSERT_TRUE(QFile::link(target, link));
  const std::vector<bsVector> positions{{1, 2, 3}, {4, 5, 6}};
  ASSERT_TRUE(body.load(&positions));
  ASSERT_TRUE(body.save(link));
  EXPECT_TRUE(QFileInfo(link).isSymLink());
  EXPECT_EQ(contentOf(target), "2\n1 2 3\n4 5 6\n# Lines\n0\n");
}

TEST_F(BodySaving, WritesLinesAsMarkerIndices) {
  const std::vector<bsVector> positions = row(3);
  ASSERT_TRUE(body.load(&positions));
  body.addLine(new abcLine(body.getMarkers()[2], body.getMarkers()[0]));
  body.addLine(new abcLine(body.getMarkers()[0], body.getMarkers()[1]));
  auto* dropped = new abcLine(body.getMarkers()[1], body.getMarkers()[2]);
  body.addLine(dropped);
  body.removeLine(dropped);
  ASSERT_TRUE(body.save(folder.path("lines.body")));
  EXPECT_EQ(contentOf(folder.path("lines.body")), "3\n0 0 0\n10 0 0\n20 0 0\n# Lines\n2\n2 0\n0 1\n");
}

TEST_F(BodySaving, AfterAChangeOfTheCoordinateSystemWritesTheNewPositions) {
  const std::vector<bsVector> positions{{10, 0, 0}, {10, 5, 0}, {10, 0, 7}};
  ASSERT_TRUE(body.load(&positions));
  setPending(body, bsVector(10, 0, 0), 90.0);
  ASSERT_TRUE(body.store());
  setPending(body, bsVector(1000, 0, 0));  // not committed, so not saved
  const QString path = folder.path("turned.body");
  ASSERT_TRUE(body.save(path));
  abcBody again;
  ASSERT_TRUE(again.load(path));
  // New x is loaded y, new y is loaded -x.
  EXPECT_TRUE(samePositions(again.give_old_data(), {{0, 0, 0}, {5, 0, 0}, {0, 0, 7}}));
  EXPECT_TRUE(again.give_my_transformation() == bsMatrix::getIdentityMatrix());
  EXPECT_TRUE(samePositions(again.give_old_data(), body.give_new_data()));
}

TEST_F(BodySaving, AfterALoadFromPositionsKeepsNoTextOfAFileBefore) {
  ASSERT_TRUE(body.load(folder.file("text.body", "2\n1 2 3\n4 5 6\nnote\n# Lines\n0\n")));
  const std::vector<bsVector> positions{{1, 2, 3}, {4, 5, 6}};
  ASSERT_TRUE(body.load(&positions));
  ASSERT_TRUE(body.save(folder.path("saved.body")));
  EXPECT_EQ(contentOf(folder.path("saved.body")), "2\n1 2 3\n4 5 6\n# Lines\n0\n");
}

TEST_F(BodySaving, WorksUnderPathsOfAnyName) {
  const std::vector<bsVector> positions{{1, 2, 3}, {4, 5, 6}};
  ASSERT_TRUE(body.load(&positions));
  for (const QString& name : {QString("with blank.body"), QString::fromUtf8("Körper°.body"), QString("100%1%2.body")}) {
    ASSERT_TRUE(body.save(folder.path(name))) << qPrintable(name);
    EXPECT_EQ(contentOf(folder.path(name)), "2\n1 2 3\n4 5 6\n# Lines\n0\n");
  }
}

TEST_F(BodySaving, OfEverySampleBodyGivesTheSameFile) {
  const QFileInfoList samples = QDir(SAMPLE_BODIES).entryInfoList({"*.body"});
  ASSERT_EQ(samples.size(), 6);
  for (const QFileInfo& sample : samples) {
    ASSERT_TRUE(body.load(sample.filePath())) << qPrintable(sample.fileName());
    EXPECT_GE(body.getNumMarker(), 4u);
    const QString path = folder.path(sample.fileName());
    ASSERT_TRUE(body.save(path));
    EXPECT_EQ(contentOf(path), contentOf(sample.filePath())) << qPrintable(sample.fileName());
    abcBody again;
    ASSERT_TRUE(again.load(path));
    EXPECT_TRUE(samePositions(again.give_old_data(), body.give_old_data()));
    EXPECT_EQ(again.getLines().size(), body.getLines().size());
  }
}

// --- failures ---

TEST_F(BodySaving, IntoAFolderThatIsNotThereSaysThatTheFileCannotBeOpened) {
  const std::vector<bsVector> positions = row(2);
  ASSERT_TRUE(body.load(&positions));
  setPending(body, bsVector(1, 0, 0));
  ASSERT_TRUE(body.store());
  SignalLog emitted(body);
  expectFailure(folder.path("no/such/folder.body"), "Error while opening ", " for writing.\nBody not saved.");
  EXPECT_TRUE(body.isModified());
  EXPECT_TRUE(body.getFileName().isEmpty());
  EXPECT_EQ(emitted.take(), Signals{});
}

TEST_F(BodySaving, OntoAFolderSaysThatTheFileCannotBeOpened) {
  const std::vector<bsVector> positions = row(2);
  ASSERT_TRUE(body.load(&positions));
  ASSERT_TRUE(QDir(folder.path("")).mkdir("sub"));
  expectFailure(folder.path("sub"), "Error while opening ", " for writing.\nBody not saved.");
  EXPECT_TRUE(QFileInfo(folder.path("sub")).isDir());
}

TEST_F(BodySaving, OntoSomethingThatIsNoFileWritesToItAndDoesNotReplaceIt) {
  const std::vector<bsVector> positions = row(2);
  ASSERT_TRUE(body.load(&positions));
  // A pipe first, of our own: were it replaced by a file, the device below would be, too.
  const QString pipe = folder.path("pipe");
  const QByteArray pipeName = QFile::encodeName(pipe);
  ASSERT_EQ(mkfifo(pipeName.constData(), 0600), 0);
  const int reader = open(pipeName.constData(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  EXPECT_TRUE(body.save(pipe));
  char bytes[100];
  const ssize_t count = read(reader, bytes, sizeof bytes);
  close(reader);
  ASSERT_FALSE(QFileInfo(pipe).isFile()) << "the pipe was replaced by a file";
  ASSERT_GE(count, 0);
  EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(count)), "2\n0 0 0\n10 0 0\n# Lines\n0\n");

  ASSERT_TRUE(QFileInfo::exists("/dev/full"));
  expectFailure("/dev/full", "Error while writing number of markers in ", ".\nBody not saved.");
}

TEST_F(BodySaving, OntoADiskThatFillsUpNamesThePartAndLeavesTheOldFile) {
  ASSERT_TRUE(body.load(folder.file("two.body", "2\n1 2 3\n4 5 6\n# Lines\n2\n0 1\n1 0\n")));
  const QString path = folder.file("old.body", "old content");
  // Bytes at the end of each part: count 2, markers 7 and 13, text and number of lines 24, lines 28 and 32.
  const struct {
    rlim_t room;
    const char* text;
  } cases[] = {
      {1, "Error while writing number of markers in "},
      {6, "Error while writing position of marker n°1 in "},
      {12, "Error while writing position of marker n°2 in "},
      {13, "Error while writing end of the file in "},
      {21, "Error while writing end of the file in "},
      {23, "Error while writing end of the file in "},
      {24, "Error while writing line n°1 in "},
      {31, "Error while writing line n°2 in "},
  };
  for (const auto& one : cases) {
    {
      const FileSizeLimit limit(one.room);
      expectFailure(path, QString::fromUtf8(one.text), ".\nBody not saved.");
    }
    EXPECT_EQ(contentOf(path), "old content") << one.room;
    EXPECT_EQ(body.getFileName(), folder.path("two.body"));
  }
  EXPECT_EQ(QDir(folder.path("")).entryList(QDir::Files), (QStringList{"old.body", "two.body"}))
      << "a failed save leaves a file behind";
  const FileSizeLimit limit(32);
  EXPECT_TRUE(body.save(path));
  EXPECT_EQ(contentOf(path).size(), 32u);
}

TEST_F(BodySaving, FillsInPathsThatLookLikePlaceholders) {
  const std::vector<bsVector> positions = row(2);
  ASSERT_TRUE(body.load(&positions));
  const FileSizeLimit limit(2);
  expectFailure(folder.path("%1%2.body"), QString::fromUtf8("Error while writing position of marker n°1 in "),
                ".\nBody not saved.");
}

}  // namespace
