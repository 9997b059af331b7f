// Loading a body from a file: what the body is afterwards, and the boxes that a failure shows.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "abcBody.h"
#include "bodies.h"
#include "modalwatch.h"

namespace {

using Signals = std::vector<std::string>;

class BodyLoading : public testing::Test {
 protected:
  /// Loading `path` must fail with this text ("%" standing for the path) and leave no trace of a body.
  void expectFailure(const QString& path, const char* before, const char* after) {
    const std::size_t boxes = watch.boxes().size();
    watch.expectBox("Error loading body", before + path + after, QMessageBox::Ok);
    EXPECT_FALSE(body.load(path));
    ASSERT_EQ(watch.boxes().size(), boxes + 1);
    EXPECT_EQ(watch.boxes().back().icon, QMessageBox::Warning);
    EXPECT_FALSE(body.isLoaded());
    EXPECT_TRUE(body.getFileName().isEmpty());
    EXPECT_EQ(body.getNumMarker(), 0u);
    EXPECT_TRUE(body.getLines().empty());
  }

  ModalWatch watch;
  Folder folder;
  abcBody body;
};

TEST_F(BodyLoading, TakesMarkersLinesNameAndColours) {
  const QString path = folder.file("three.body", "3\n0 0 0\n30 0 0\n0 60 9\n# Lines\n2\n0 1\n2 1\n");
  SignalLog emitted(body);
  EXPECT_TRUE(body.load(path));
  EXPECT_EQ(emitted.take(), Signals{"loaded 1"});
  EXPECT_TRUE(body.isLoaded());
  EXPECT_FALSE(body.isModified());
  EXPECT_EQ(body.getFileName(), path);
  EXPECT_TRUE(samePositions(body.give_old_data(), {{0, 0, 0}, {30, 0, 0}, {0, 60, 9}}));
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(10, 20, 3));
  ASSERT_EQ(body.getNumMarker(), 3u);
  const std::vector<abcMarker*>& markers = body.getMarkers();
  EXPECT_EQ(markers[2]->getId(), 2u);
  EXPECT_EQ(markers[0]->getColor(), QColor(255, 0, 0));
  EXPECT_EQ(markers[2]->getColor(), QColor(0, 0, 255));
  ASSERT_EQ(body.getLines().size(), 2u);
  EXPECT_EQ(body.getLines()[0]->getFirst(), markers[0]);
  EXPECT_EQ(body.getLines()[0]->getSecond(), markers[1]);
  EXPECT_EQ(body.getLines()[1]->getFirst(), markers[2]);
  EXPECT_EQ(body.getLines()[1]->getColor(), QColor(100, 100, 100));
}

TEST_F(BodyLoading, ColoursTheEighthMarkerLikeTheFirst) {
  std::string content = "8\n";
  for (int i = 0; i < 8; ++i) {
    content += std::to_string(i) + " 0 0\n";
  }
  ASSERT_TRUE(body.load(folder.file("eight.body", content)));
  EXPECT_EQ(body.getMarkers()[6]->getColor(), QColor(255, 255, 255));
  EXPECT_EQ(body.getMarkers()[7]->getColor(), QColor(255, 0, 0));
}

TEST_F(BodyLoading, ForgetsTheBodyBefore) {
  const std::vector<bsVector> before = row(4);
  ASSERT_TRUE(body.load(&before));
  setPending(body, bsVector(1, 2, 3));
  ASSERT_TRUE(body.store());
  SignalLog emitted(body);
  ASSERT_TRUE(body.load(folder.file("two.body", "2\n1 2 3\n4 5 6\n")));
  EXPECT_EQ(emitted.take(), (Signals{"loaded 0", "modified 0", "loaded 1"}));
  EXPECT_TRUE(samePositions(body.give_new_data(), {{1, 2, 3}, {4, 5, 6}}));
  EXPECT_FALSE(body.canUndo());
}

TEST_F(BodyLoading, OfNoMarkersGivesALoadedBodyWithItsCentreAtTheOrigin) {
  ASSERT_TRUE(body.load(folder.file("none.body", "0\n# Lines\n0\n")));
  EXPECT_TRUE(body.isLoaded());
  EXPECT_EQ(body.getNumMarker(), 0u);
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(0, 0, 0));
}

TEST_F(BodyLoading, WorksUnderPathsOfAnyName) {
  for (const QString& name : {QString("with blank.body"), QString::fromUtf8("Körper°.body"), QString("100%1%2.body")}) {
    const QString path = folder.file(name, "2\n1 2 3\n4 5 6\n# Lines\n1\n0 1\n");
    EXPECT_TRUE(body.load(path)) << qPrintable(name);
    EXPECT_EQ(body.getFileName(), path);
    EXPECT_EQ(body.getLines().size(), 1u);
  }
}

TEST_F(BodyLoading, OfAMissingFileSaysThatItCannotBeOpened) {
  expectFailure(folder.path("missing.body"), "Error while opening ", " for reading.\nBody not loaded.");
}

TEST_F(BodyLoading, OfAFolderSaysThatItCannotBeOpened) {
  ASSERT_TRUE(QDir(folder.path("")).mkdir("sub"));
  expectFailure(folder.path("sub"), "Error while opening ", " for reading.\nBody not loaded.");
}

TEST_F(BodyLoading, OfSomethingElseSaysThatTheNumberOfMarkersIsMissing) {
  expectFailure(folder.file("picture.png", "\x89PNG\r\n"), "Error while reading number of markers in ",
                ".\nBody not loaded.");
}

TEST_F(BodyLoading, OfANegativeNumberOfMarkersSaysSoAtOnce) {
  expectFailure(folder.file("negative.body", "-3\n1 2 3\n4 5 6\n7 8 9\n"), "Error while reading number of markers in ",
                ".\nBody not loaded.");
}

TEST_F(BodyLoading, OfOneMarkerAsksWhetherItIsABodyFile) {
  expectFailure(folder.file("one.body", "1\n1 2 3\n"), "Error : Number of markers = 1 in ",
                " (is it a body file ?).\nBody not loaded.");
}

TEST_F(BodyLoading, OfAMalformedPositionNamesTheMarkerFrom1) {
  expectFailure(folder.file("short.body", "3\n1 2 3\n4 5 6\n7 8\n"), "Error while reading position of marker n°3 in ",
                ".\nBody not loaded.");
}

TEST_F(BodyLoading, OfAMalformedNumberOfLinesSaysSo) {
  expectFailure(folder.file("count.body", "2\n1 2 3\n4 5 6\n# Lines\nmany\n"),
                "Error while reading number of lines in ", ".\nBody not loaded.");
}

TEST_F(BodyLoading, OfAMalformedLineNamesItFrom1) {
  expectFailure(folder.file("line.body", "2\n1 2 3\n4 5 6\n# Lines\n2\n0 1\n1 one\n"),
                "Error while reading line n°2 in ", ".\nBody not loaded.");
}

TEST_F(BodyLoading, OfALineToAMarkerThatIsNotThereNamesIt) {
  expectFailure(folder.file("range.body", "2\n1 2 3\n4 5 6\n# Lines\n1\n0 2\n"), "Error while reading line n°1 in ",
                ".\nBody not loaded.");
}

TEST_F(BodyLoading, FillsInPathsThatLookLikePlaceholders) {
  expectFailure(folder.file("%1%2%3.body", "2\n1 2 3\n"), "Error while reading position of marker n°2 in ",
                ".\nBody not loaded.");
  expectFailure(folder.path("%1.body"), "Error while opening ", " for reading.\nBody not loaded.");
}

TEST_F(BodyLoading, ThatFailsStillUnloadsTheBodyBefore) {
  ASSERT_TRUE(body.load(folder.file("good.body", "2\n1 2 3\n4 5 6\nnote\n# Lines\n1\n0 1\n")));
  const QString bad = folder.file("bad.body", "3\n1 2 3\n4 5 6\n");
  SignalLog emitted(body);
  expectFailure(bad, "Error while reading position of marker n°3 in ", ".\nBody not loaded.");
  EXPECT_EQ(emitted.take(), (Signals{"loaded 0", "modified 0"}));
  EXPECT_EQ(body.getCenterOfGravity(), bsVector(0, 0, 0));
  // And the body can be used again.
  const std::vector<bsVector> positions = row(2);
  EXPECT_TRUE(body.load(&positions));
  EXPECT_TRUE(samePositions(body.give_new_data(), positions));
}

TEST_F(BodyLoading, ShowsAPathAsPlainText) {
  bool plain = false;
  watch.expectWindow([&plain](QWidget* window) {
    auto* box = qobject_cast<QMessageBox*>(window);
    ASSERT_NE(box, nullptr);
    plain = box->textFormat() == Qt::PlainText;
    box->accept();
  });
  EXPECT_FALSE(body.load(folder.path("<b>bold</b>.body")));
  EXPECT_TRUE(plain);
}

}  // namespace
