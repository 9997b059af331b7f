// The body file: what is read, what is written, and where a wrong one is wrong.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "bodyfileformat.h"
#include "databasecopy.h"

namespace {

using korvex2::bodyFileBytes;
using korvex2::BodyFileContent;
using korvex2::BodyLine;
using korvex2::parseBodyFile;
using korvex2::Vector3;

std::string rewritten(const QByteArray& bytes) {
  const BodyFileContent content = parseBodyFile(bytes);
  EXPECT_EQ("", content.problem.toStdString());
  return bodyFileBytes(content.geometry).toStdString();
}

TEST(BodyFile, ShippedFilesAreWrittenAsTheyWereRead) {
  for (const char* name : {"cup", "phone", "quadrotor_large", "quadrotor_medium", "quadrotor_standard", "table"}) {
    const QByteArray bytes = korvex2_test::readBytes(QString(KORVEX2_SHIPPED_DATA "/bodies/%1.body").arg(name));
    EXPECT_EQ(bytes.toStdString(), rewritten(bytes)) << name;
  }
}

TEST(BodyFile, MarkersAndLinesAreRead) {
  const BodyFileContent content = parseBodyFile("3 1 2\n\n3\t4.5 -5e1 +6 \r\n 7 8 9\n# Lines\n2\n0 1 2\n0\n");
  EXPECT_EQ("", content.problem.toStdString());
  EXPECT_EQ((std::vector<Vector3>{{{1, 2, 3}}, {{4.5, -50, 6}}, {{7, 8, 9}}}), content.geometry.positions);
  EXPECT_EQ((std::vector<BodyLine>{{0, 1}, {2, 0}}), content.geometry.lines);
}

TEST(BodyFile, TextUpToTheLinesIsKept) {
  const std::string file = "2\n1 2 3\n4 5 6 # measured\n\n#Lines\n# lines\n# Lines \n \xff\x01\n# Lines\n1\n0 1\n";
  EXPECT_EQ(file, rewritten(QByteArray::fromStdString(file)));
}

TEST(BodyFile, LinesOfAFileWithCarriageReturnsAreRead) {
  const std::string file = "2\n1 2 3\n4 5 6\r\nfree\r\n# Lines\r\n1\n0 1\r\n";
  EXPECT_EQ(1U, parseBodyFile(QByteArray::fromStdString(file)).geometry.lines.size());
  EXPECT_EQ(file, rewritten(QByteArray::fromStdString(file)));
}

TEST(BodyFile, FileWithoutLinesGetsNone) {
  EXPECT_EQ("2\n1 2 3\n4 5 6\n# Lines\n0\n", rewritten("2\n1 2 3\n4 5 6"));
  EXPECT_EQ("2\n1 2 3\n4 5 6\n# Lines\n0\n", rewritten("2\n1 2 3\n4 5 6\n"));
  EXPECT_EQ("2\n1 2 3\n4 5 6\nfree\n# Lines\n0\n", rewritten("2\n1 2 3\n4 5 6\nfree"));
}

TEST(BodyFile, RewritingTwiceChangesNothingMore) {
  for (const char* bytes : {"0", "0\n", "0\n# Lines\n0\n", "2 1 2 3 4 5 6", "2 1 2 3 4 5 6x",
                            "2 1 2 3 4 5 6# Lines\n1 0 1", "2 1 2 3 4 5 6\n# Lines\n1 0 1", "2 1 2 3 4 5 6.5.5"}) {
    const std::string once = rewritten(bytes);
    EXPECT_EQ(once, rewritten(QByteArray::fromStdString(once))) << bytes;
  }
}

TEST(BodyFile, TextThatStuckToTheLastNumberDoesNotBecomePartOfIt) {
  BodyFileContent content = parseBodyFile("2 1 2 3 4 5 6.5.5\n");
  ASSERT_EQ("", content.problem.toStdString());
  content.geometry.positions[1] = {{4, 5, 6}};
  EXPECT_EQ((Vector3{{4, 5, 6}}), parseBodyFile(bodyFileBytes(content.geometry)).geometry.positions[1]);
}

TEST(BodyFile, EveryDoubleIsReadBack) {
  BodyFileContent content = parseBodyFile("2 1 2 3 4 5 6");
  const Vector3 odd = {{0.1 + 0.2, 5e-324, -123456789.12345679}};
  content.geometry.positions[0] = odd;
  EXPECT_EQ(odd, parseBodyFile(bodyFileBytes(content.geometry)).geometry.positions[0]);
}

TEST(BodyFile, WhatIsWrongIsToldWithItsLine) {
  struct Case {
    QByteArray bytes;
    int line;
    const char* problem;
  };
  const Case cases[] = {
      {"", 1, "the number of markers is expected, the file ends here"},
      {"\n\nbody\n", 3, "the number of markers is expected, found 'body'"},
      {"1\n1 2 3\n", 1, "1 is no possible number of markers"},
      {"-4\n1 2 3\n", 1, "-4 is no possible number of markers"},
      {"100\n1 2 3\n", 1, "100 is no possible number of markers, a body has at most 99"},
      {"99999999999\n", 1, "the number of markers is expected, found '99999999999'"},
      {"3\n1 2 3\n4 5\n", 4, "a coordinate of marker 2 is expected, the file ends here"},
      {"3\n1 2 3\n4 5 x\n", 3, "a coordinate of marker 2 is expected, found 'x'"},
      {"3\n1 2 3\n4 5,5 6\n", 3, "a coordinate of marker 2 is expected, found ',5'"},
      {"2\n1 2 3\n4 5 nan\n", 3, "a coordinate of marker 2 is expected, found 'nan'"},
      {"2\n1 2 1e999\n4 5 6\n", 2, "a coordinate of marker 1 is expected, found '1e999'"},
      {"2\n1 2 1e10\n4 5 6\n", 2, "a coordinate of marker 1 is out of range"},
      {"2\n1 2 3\n4 5 6\n# Lines\n", 5, "the number of lines is expected, the file ends here"},
      {"2\n1 2 3\n4 5 6\n# Lines\n-1\n", 5, "-1 is no possible number of lines"},
      {"2\n1 2 3\n4 5 6\n# Lines\n2\n0 1\n1\n", 8, "a marker index of line 2 is expected, the file ends here"},
      {"2\n1 2 3\n4 5 6\n# Lines\n1\n0 2\n", 6, "line 1 does not join two markers of the body"},
      {"2\n1 2 3\n4 5 6\n# Lines\n1\n-1 0\n", 6, "line 1 does not join two markers of the body"},
      {"2\n1 2 3\n4 5 6\n# Lines\n1\n1 1\n", 6, "line 1 does not join two markers of the body"},
      {"2\n1 2 3\n4 5 6\n# Lines\n2000000000\n0 1\n", 7, "a marker index of line 2 is expected, the file ends here"},
  };
  for (const Case& wrong : cases) {
    const BodyFileContent content = parseBodyFile(wrong.bytes);
    EXPECT_EQ(wrong.line, content.line) << wrong.bytes.constData();
    EXPECT_EQ(wrong.problem, content.problem.toStdString()) << wrong.bytes.constData();
  }
}

TEST(BodyFile, EveryTruncationIsSurvived) {
  const QByteArray whole = korvex2_test::readBytes(KORVEX2_SHIPPED_DATA "/bodies/quadrotor_standard.body");
  for (int size = 0; size < whole.size(); ++size) {
    const BodyFileContent content = parseBodyFile(whole.left(size));
    EXPECT_EQ(content.problem.isEmpty(), content.line == 0) << size;
  }
}

}  // namespace
