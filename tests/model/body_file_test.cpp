// Body files as text: what is read from which bytes, what is written, and what a failure says.
#include <gtest/gtest.h>

#include <QBuffer>

#include <chrono>
#include <limits>
#include <locale>
#include <sstream>

#include "bodies.h"
#include "bodyfile.h"

namespace {

using korvex2::BodyFileData;
using korvex2::BodyFileError;
using korvex2::BodyFileResult;

using Lines = std::vector<std::pair<unsigned int, unsigned int>>;

struct Read {
  BodyFileResult result;
  BodyFileData content;
};

Read read(const std::string& bytes) {
  std::istringstream in(bytes);
  Read done;
  done.result = korvex2::readBody(in, done.content);
  return done;
}

std::string written(const BodyFileData& content) {
  QBuffer buffer;
  EXPECT_TRUE(buffer.open(QIODevice::WriteOnly));
  EXPECT_TRUE(korvex2::writeBody(buffer, content));
  return buffer.data().toStdString();
}

/// Text of the failure: its kind and, where it has one, its number.
std::string failure(const BodyFileResult& result) {
  static const char* const kinds[] = {"none",     "open",       "marker count", "single marker",
                                      "position", "line count", "line",         "end"};
  std::string text = kinds[static_cast<std::size_t>(result.error)];
  return result.number == 0 ? text : text + " " + std::to_string(result.number);
}

std::string failureOf(const std::string& bytes) { return failure(read(bytes).result); }

/// Puts a comma locale in place for the streams of the program, as a host under a German locale might.
class CommaLocale {
 public:
  CommaLocale() : before_(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
  ~CommaLocale() { std::locale::global(before_); }

 private:
  struct Punctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::locale before_;
};

// --- reading ---

TEST(BodyFileReading, TakesMarkersTextAndLines) {
  const Read done = read("3\n1 2 3\n-4.5 5e2 .25\n7 8 9\nmade by hand\n# Lines\n2\n0 1\n2 0\n");
  ASSERT_TRUE(done.result);
  EXPECT_TRUE(samePositions(done.content.positions, {{1, 2, 3}, {-4.5, 500, 0.25}, {7, 8, 9}}));
  EXPECT_EQ(done.content.text, "\nmade by hand\n# Lines\n");
  EXPECT_EQ(done.content.lines, (Lines{{0, 1}, {2, 0}}));
}

TEST(BodyFileReading, TakesAnyWhiteSpaceBetweenNumbers) {
  const Read done = read("  2\t1\n2   3\n\n4\r\n5\t6\n# Lines\n1 0\n1");
  ASSERT_TRUE(done.result);
  EXPECT_TRUE(samePositions(done.content.positions, {{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(done.content.lines, (Lines{{0, 1}}));
}

TEST(BodyFileReading, WithoutTheHeaderHasNoLinesAndATextThatEndsWithIt) {
  EXPECT_EQ(read("2\n1 2 3\n4 5 6").content.text, "\n# Lines\n");
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\n").content.text, "\n\n# Lines\n");
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\nnote\n").content.text, "\nnote\n\n# Lines\n");
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\nnote").content.text, "\nnote\n\n# Lines\n");
  EXPECT_TRUE(read("2\n1 2 3\n4 5 6\nnote\n").result);
  EXPECT_TRUE(read("2\n1 2 3\n4 5 6\n1\n0 1\n").content.lines.empty());
}

TEST(BodyFileReading, TakesTheHeaderOnlyAsAWholeLineInItsOwnCase) {
  for (const char* line : {"# Lines ", " # Lines", "# lines", "#Lines", "# Lines:", "# LINES", "# Lines\t"}) {
    const std::string text = std::string("\n") + line + "\n";
    const Read done = read("2\n1 2 3\n4 5 6" + text + "# Lines\n1\n0 1\n");
    ASSERT_TRUE(done.result) << line;
    EXPECT_EQ(done.content.text, text + "# Lines\n");
    EXPECT_EQ(done.content.lines, (Lines{{0, 1}}));
  }
}

TEST(BodyFileReading, TakesTextRightAfterTheLastCoordinate) {
  const Read done = read("2\n1 2 3\n4 5 6 millimetres\n# Lines\n0\n");
  ASSERT_TRUE(done.result);
  EXPECT_EQ(done.content.text, " millimetres\n# Lines\n");
}

TEST(BodyFileReading, KeepsEveryByteOfTheText) {
  std::string text = "\n";
  for (int byte = 0; byte < 256; ++byte) {
    text.push_back(static_cast<char>(byte));
  }
  text += "\n# Lines\n";
  const Read done = read("2\n1 2 3\n4 5 6" + text + "0\n");
  ASSERT_TRUE(done.result);
  EXPECT_EQ(done.content.text, text);
}

TEST(BodyFileReading, TakesALineOf255CharactersAsOnePiece) {
  const std::string line(255, 'x');
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\n" + line + "\nend\n# Lines\n0\n").content.text, "\n" + line + "\nend\n# Lines\n");
}

TEST(BodyFileReading, TakesALongerLineInPiecesOf255) {
  const std::string piece(255, 'x');
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\n" + piece + "y\n# Lines\n0\n").content.text, "\n" + piece + "\ny\n# Lines\n");
  const Read twice = read("2\n1 2 3\n4 5 6\n" + piece + piece + "\n# Lines\n1\n1 0\n");
  EXPECT_EQ(twice.content.text, "\n" + piece + "\n" + piece + "\n# Lines\n");
  EXPECT_EQ(twice.content.lines, (Lines{{1, 0}}));
}

TEST(BodyFileReading, TakesAnyAmountOfTextInReasonableTime) {
  const auto start = std::chrono::steady_clock::now();
  std::string text;
  for (int i = 0; i < 20000; ++i) {
    text += "line " + std::to_string(i) + "\n";
  }
  const std::string endless(1000000, 'x');
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\n" + text + "# Lines\n0\n").content.text, "\n" + text + "# Lines\n");
  // 3921 whole pieces and one of 145, a newline after each, then the header that the file lacks.
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\n" + endless).content.text.size(), 1u + 1000000u + 3922u + 9u);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(BodyFileReading, UnderstandsFilesOfAnotherSystem) {
  const Read done = read("2\r\n1 2 3\r\n4 5 6\r\nnote\r\n# Lines\r\n1\r\n0 1\r\n");
  ASSERT_TRUE(done.result);
  EXPECT_EQ(done.content.text, "\r\nnote\r\n# Lines\r\n");
  EXPECT_EQ(done.content.lines, (Lines{{0, 1}}));
  const Read again = read(written(done.content));
  EXPECT_EQ(again.content.text, done.content.text);
  EXPECT_EQ(again.content.lines, done.content.lines);
}

TEST(BodyFileReading, AcceptsNoMarkers) {
  for (const char* bytes : {"0", "0\n", "0\n# Lines\n0\n", "0\n\n# Lines\n0\n"}) {
    const Read done = read(bytes);
    EXPECT_TRUE(done.result) << bytes;
    EXPECT_TRUE(done.content.positions.empty());
  }
}

TEST(BodyFileReading, OfAMarkerCountThatIsNoneFails) {
  for (const char* bytes : {"", "\n", "x", "-3\n1 2 3\n", "-1", "4294967296\n", "99999999999999999999999\n",
                            "2.5\n1 2 3\n", "2x\n1 2 3\n", "# Lines\n0\n", "nan"}) {
    EXPECT_EQ(failureOf(bytes), "marker count") << bytes;
  }
}

TEST(BodyFileReading, OfExactlyOneMarkerIsRefused) {
  EXPECT_EQ(failureOf("1\n1 2 3\n# Lines\n0\n"), "single marker");
  EXPECT_EQ(failureOf("1"), "single marker");
}

TEST(BodyFileReading, OfAPositionThatIsNoneFailsWithItsNumberFrom1) {
  EXPECT_EQ(failureOf("2\n"), "position 1");
  EXPECT_EQ(failureOf("2\n1 2\n"), "position 1");
  EXPECT_EQ(failureOf("2\n1 2 3\n"), "position 2");
  EXPECT_EQ(failureOf("3\n1 2 3\n4 5 6\n7 x 9\n"), "position 3");
  EXPECT_EQ(failureOf("3\n1 2 3\n4 5 6\n# Lines\n0\n"), "position 3");
  EXPECT_EQ(failureOf("2\n1,5 2 3\n4 5 6\n"), "position 1");
  EXPECT_EQ(failureOf("2\n1.2.3 4 5\n6 7 8\n"), "position 1");
  EXPECT_EQ(failureOf("2\n1-2-3\n4 5 6\n"), "position 1");
}

TEST(BodyFileReading, OfAPositionThatIsNotFiniteFails) {
  for (const char* value : {"nan", "NaN", "inf", "-inf", "infinity", "1e999", "-1e999"}) {
    EXPECT_EQ(failureOf(std::string("2\n1 2 3\n4 5 ") + value + "\n"), "position 2") << value;
  }
}

TEST(BodyFileReading, TakesNoMemoryForACountThatTheFileDoesNotKeep) {
  EXPECT_EQ(failureOf("4294967295\n1 2 3\n4 5 6\n"), "position 3");
  EXPECT_EQ(failureOf("2\n1 2 3\n4 5 6\n# Lines\n4294967295\n0 1\n"), "line 2");
}

TEST(BodyFileReading, OfALineCountThatIsNoneFails) {
  for (const char* count : {"", "\n", "x\n", "-1\n0 1\n", "1.5\n0 1\n", "4294967296\n"}) {
    EXPECT_EQ(failureOf(std::string("2\n1 2 3\n4 5 6\n# Lines\n") + count), "line count") << count;
  }
  EXPECT_EQ(failureOf("2\n1 2 3\n4 5 6\n# Lines"), "line count");
}

TEST(BodyFileReading, OfALineThatIsNoneFailsWithItsNumberFrom1) {
  const std::string markers = "3\n1 2 3\n4 5 6\n7 8 9\n# Lines\n";
  EXPECT_EQ(failureOf(markers + "1\n"), "line 1");
  EXPECT_EQ(failureOf(markers + "1\n0\n"), "line 1");
  EXPECT_EQ(failureOf(markers + "2\n0 1\n1 x\n"), "line 2");
  EXPECT_EQ(failureOf(markers + "2\n0 1\n"), "line 2");
}

TEST(BodyFileReading, OfALineBetweenMarkersThatAreNotThereFails) {
  const std::string markers = "3\n1 2 3\n4 5 6\n7 8 9\n# Lines\n";
  EXPECT_EQ(failureOf(markers + "2\n0 1\n2 3\n"), "line 2");
  EXPECT_EQ(failureOf(markers + "1\n3 0\n"), "line 1");
  EXPECT_EQ(failureOf(markers + "1\n-1 0\n"), "line 1");
  EXPECT_EQ(failureOf(markers + "1\n0 4294967296\n"), "line 1");
  EXPECT_EQ(failureOf("0\n# Lines\n1\n0 0\n"), "line 1");
}

TEST(BodyFileReading, TakesALineFromAMarkerToItself) {
  EXPECT_EQ(read("2\n1 2 3\n4 5 6\n# Lines\n1\n1 1\n").content.lines, (Lines{{1, 1}}));
}

TEST(BodyFileReading, LeavesWhatFollowsTheLines) {
  const Read done = read("2\n1 2 3\n4 5 6\n# Lines\n1\n0 1\nand more\n");
  ASSERT_TRUE(done.result);
  EXPECT_EQ(done.content.lines.size(), 1u);
  EXPECT_EQ(done.content.text, "\n# Lines\n");
}

TEST(BodyFileReading, OfAFileThatCannotBeOpenedFails) {
  const Folder folder;
  BodyFileData content;
  EXPECT_EQ(failure(korvex2::readBodyFile(folder.path("missing.body"), content)), "open");
  EXPECT_EQ(failure(korvex2::readBodyFile(folder.path(""), content)), "open") << "a folder";
  EXPECT_EQ(failure(korvex2::readBodyFile("", content)), "open");
}

// --- writing ---

TEST(BodyFileWriting, PutsThePartsTogetherWithNothingInBetween) {
  BodyFileData content;
  content.positions = {{1, 2, 3}, {-4.5, 0.25, 1e-5}};
  content.text = "\nnote\n# Lines\n";
  content.lines = {{0, 1}, {1, 0}};
  EXPECT_EQ(written(content), "2\n1 2 3\n-4.5 0.25 1e-05\nnote\n# Lines\n2\n0 1\n1 0\n");
  content.text.clear();
  content.lines.clear();
  EXPECT_EQ(written(content), "2\n1 2 3\n-4.5 0.25 1e-050\n");
}

TEST(BodyFileWriting, HasSixSignificantDigits) {
  BodyFileData content;
  content.positions = {{1234567.0, 0.000012345678, -1.0 / 3.0}, {100000.0, 1000000.0, 123.4561}};
  EXPECT_EQ(written(content), "2\n1.23457e+06 1.23457e-05 -0.333333\n100000 1e+06 123.4560\n");
}

TEST(BodyFileWriting, UsesTheDecimalPointAndNoGroupingUnderEveryLocale) {
  const CommaLocale comma;
  BodyFileData content;
  content.positions = std::vector<bsVector>(1234, bsVector(0.5, 0.0, 0.0));
  content.text = korvex2::emptyBodyFileText;
  content.lines = {{1000, 1233}};
  const std::string bytes = written(content);
  EXPECT_EQ(bytes.substr(0, 13), "1234\n0.5 0 0\n");
  EXPECT_EQ(bytes.substr(bytes.size() - 12), "1\n1000 1233\n");
  const Read done = read(bytes);
  ASSERT_TRUE(done.result);
  EXPECT_EQ(done.content.positions.at(1233).x, 0.5);
}

TEST(BodyFileWriting, RefusesAPositionThatCouldNotBeReadAgain) {
  BodyFileData content;
  content.positions = {{1, 2, 3}, {4, std::numeric_limits<double>::quiet_NaN(), 6}};
  QBuffer buffer;
  ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
  EXPECT_EQ(failure(korvex2::writeBody(buffer, content)), "position 2");
}

TEST(BodyFileWriting, OfWhatWasReadWithoutMarkersStaysTheSame) {
  for (const char* bytes : {"0", "0\n", "0\n# Lines\n0\n", "0\r\nnote\r\n# Lines\n0\n"}) {
    const std::string once = written(read(bytes).content);
    const std::string twice = written(read(once).content);
    EXPECT_EQ(twice, once) << bytes;
  }
}

/// A device with room for so many bytes.
class Disk : public QIODevice {
 public:
  explicit Disk(qint64 room) : room_(room) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
  const std::string& bytes() const { return bytes_; }

 protected:
  qint64 readData(char*, qint64) override { return -1; }
  qint64 writeData(const char* data, qint64 size) override {
    const qint64 taken = std::min(size, room_ - static_cast<qint64>(bytes_.size()));
    bytes_.append(data, static_cast<std::size_t>(taken));
    return taken > 0 ? taken : -1;
  }

 private:
  qint64 room_;
  std::string bytes_;
};

TEST(BodyFileWriting, NamesThePartAtWhichTheDiskIsFull) {
  BodyFileData content;
  content.positions = {{1, 2, 3}, {4, 5, 6}};
  content.text = "\n# Lines\n";
  content.lines = {{0, 1}, {1, 0}};
  // Bytes at the end of each part: count 2, markers 7 and 13, text and number of lines 24, lines 28 and 32.
  for (int room = 0; room <= 32; ++room) {
    Disk disk(room);
    const std::string expected = room < 2    ? "marker count"
                                 : room < 7  ? "position 1"
                                 : room < 13 ? "position 2"
                                 : room < 24 ? "end"
                                 : room < 28 ? "line 1"
                                 : room < 32 ? "line 2"
                                             : "none";
    EXPECT_EQ(failure(korvex2::writeBody(disk, content)), expected) << room << " bytes of room";
    EXPECT_EQ(disk.bytes(),
              std::string("2\n1 2 3\n4 5 6\n# Lines\n2\n0 1\n1 0\n").substr(0, static_cast<std::size_t>(room)));
  }
}

}  // namespace
