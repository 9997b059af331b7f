// Lines that are no commands: every one gets an error, none changes or breaks anything.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "databasecopy.h"
#include "rigidtransform.h"

namespace {

using korvex2::Body;

class BadInput : public korvex2_test::DatabaseCopy {};

TEST_F(BadInput, LinesThatAreNoCommandsAreRefused) {
  const std::string before = dump();
  const auto files = korvex2_test::allFiles(folder());
  struct Case {
    std::string line;
    const char* answer;
  };
  const Case cases[] = {
      {"", "korvex2 err 2 \"a command begins with korvex2\""},
      {"   ", "korvex2 err 2 \"a command begins with korvex2\""},
      {"\n", "korvex2 err 2 \"a command begins with korvex2\""},
      {"get version", "korvex2 err 2 \"a command begins with korvex2\""},
      {"KORVEX2 get version", "korvex2 err 2 \"a command begins with korvex2\""},
      {"\"korvex2\" get version", "korvex2 err 2 \"a command begins with korvex2\""},
      {"korvex2", "korvex2 err 2 \"there is no such command\""},
      {"korvex2 fly", "korvex2 err 2 \"there is no such command\""},
      {"korvex2 \"get\" version", "korvex2 err 2 \"there is no such command\""},
      {"korvex2 tracking", "korvex2 err 2 \"there is no such command\""},
      {"korvex2 tracking pause", "korvex2 err 2 \"there is no such command\""},
      {"korvex2 tracking start now", "korvex2 err 3 \"there are too many fields\""},
      {"korvex2 get", "korvex2 err 2 \"there is no such query\""},
      {"korvex2 get Version", "korvex2 err 2 \"there is no such query\""},
      {"korvex2 get version now", "korvex2 err 3 \"there are too many fields\""},
      {"korvex2 get body desc standard", "korvex2 err 3 \"there are too few fields\""},
      {"korvex2 get body desc standard c01", "korvex2 err 4 \"a body number such as b01 is expected, not c01\""},
      {"korvex2 get body desc Standard b01", "korvex2 err 5 \"there is no body type Standard\""},
      {"korvex2 get body desc standard \"b01\"", "korvex2 err 4 \"a field is in double quotes that is no text\""},
      {"korvex2 get body type t00", "korvex2 err 5 \"there is no body type t00\""},
      {"korvex2 get body type t03", "korvex2 err 5 \"there is no body type t03\""},
      {"korvex2 get body type standard", "korvex2 err 4 \"a type number such as t01 is expected, not standard\""},
      {"korvex2 get body marker standard b01 m1x",
       "korvex2 err 4 \"a marker number such as m01 is expected, not m1x\""},
      {"korvex2 set", "korvex2 err 2 \"there is no such setting\""},
      {"korvex2 set body number_of_types 3", "korvex2 err 2 \"there is no such setting\""},
      {"korvex2 set status active mea", "korvex2 err 2 \"there is no such setting\""},
      {"korvex2 set wandgrip multiuser", "korvex2 err 3 \"there are too few fields\""},
      {"korvex2 set wandgrip multiuser Yes", "korvex2 err 4 \"yes or no is expected, not Yes\""},
      {"korvex2 set wandgrip multiuser a;b|c<d>", "korvex2 err 4 \"yes or no is expected, not a;b|c<d>\""},
      {"korvex2 set wandgrip multiuser '=/,~!", "korvex2 err 4 \"yes or no is expected, not '=/,~!\""},
      {"korvex2 set wandgrip multiuser " + std::string(4000, 'y'),
       "korvex2 err 4 \"yes or no is expected, not yyyyyyyyyyyyyyyyyyyyyyyy\""},
      {"korvex2 set body desc standard b01 \"open", "korvex2 err 1 \"a double quote is not closed\""},
      {"korvex2 set body desc standard b01 \"a\"b", "korvex2 err 1 \"a double quote ends within a field\""},
      {"korvex2 set body desc standard b01 a\"b\"", "korvex2 err 1 \"a double quote begins within a field\""},
      {"korvex2 set body desc standard b01 T\xc3\xbcr", "korvex2 err 1 \"the line has bytes that are no text\""},
      {std::string("korvex2\0 get version", 20), "korvex2 err 1 \"the line has control characters\""},
      {"korvex2 get version\nkorvex2 get version", "korvex2 err 1 \"the line has control characters\""},
      {"korvex2 get version\n\n", "korvex2 err 1 \"the line has control characters\""},
      {"korvex2 get version\r", "korvex2 err 1 \"the line has control characters\""},
      {"korvex2 get version" + std::string(131072 - 18, ' '), "korvex2 err 1 \"the line is too long\""},
      {"korvex2 get version " + std::string(3000000, 'x'), "korvex2 err 1 \"the line is too long\""},
  };
  for (const Case& wrong : cases) {
    EXPECT_EQ(wrong.answer, ask(wrong.line)) << wrong.line.substr(0, 80);
  }
  EXPECT_EQ(before, dump());
  EXPECT_EQ(files, korvex2_test::allFiles(folder()));
}

TEST_F(BadInput, LongestLineIsStillRead) {
  std::string line = "korvex2 get version";
  line += std::string(131072 - line.size(), ' ');
  EXPECT_EQ("korvex2 set version 1.20.0", ask(line));
  EXPECT_EQ("korvex2 set version 1.20.0", ask(line + "\r\n"));
  EXPECT_EQ(1, errorOf(line + " "));
}

const char* const seeds[] = {
    "korvex2 get body calibrated standard b03",
    "korvex2 get body marker standard b01 m02",
    "korvex2 get body type t01",
    "korvex2 set body marker standard b01 m02 1.000 2.000 3.000",
    "korvex2 set body marker_emission standard b07 m05 0.100 0.200 0.300 45.000",
    "korvex2 set body number_of_marker standard b01 6",
    "korvex2 set body desc standard b01 \"A cup of tea\"",
    "korvex2 set body target_type standard b02 'tt_5dof'",
    "korvex2 set body calibrated standard b03 no",
    "korvex2 set output active chmon 6dw2 yes",
    "korvex2 set wandgrip multiuser yes",
    "korvex2 set version 1.16.0",
    "korvex2 tracking start",
    "korvex2 body delete_marker standard b02 m01",
    "korvex2 body transform standard b02 1.500 -2.250 3.000 0.60000000 0.80000000 0.00000000 -0.80000000 0.60000000 "
    "0.00000000 0.00000000 0.00000000 1.00000000",
};

// Cuts, doubles, swaps and spoils pieces of a line.
class Mutator {
 public:
  explicit Mutator(unsigned seed) : random_(seed) {}

  std::string next() {
    std::string line = seeds[below(std::size(seeds))];
    for (std::size_t n = below(4); n > 0; --n) {
      mutate(line);
    }
    return line;
  }

 private:
  std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_); }

  void mutate(std::string& line) {
    static const char* const pieces[] = {" ",    "\"",         "'",    "\t",  "\n",    "-",   "+",    "e",
                                         ".",    "9999999999", "nan",  "inf", "1e400", "b99", "m00",  "%s%n",
                                         "\xff", "\xc3\xa9",   " yes", " 0",  "\\",    "/",   "\x7f", "korvex2 "};
    const std::size_t at = below(line.size() + 1);
    switch (below(6)) {
      case 0:
        line.insert(at, pieces[below(std::size(pieces))]);
        break;
      case 1:
        line.erase(at, below(8));
        break;
      case 2:
        line = line.substr(0, at);
        break;
      case 3:
        line.insert(at, 1, static_cast<char>(below(256)));
        break;
      case 4:
        if (at < line.size()) {
          line[at] = static_cast<char>(below(256));
        }
        break;
      default:
        line += line.substr(at);
        break;
    }
  }

  std::mt19937 random_;
};

void expectSound(const korvex2::BodyDatabase& database) {
  ASSERT_EQ(2U, database.types().size());
  ASSERT_EQ(7U, database.bodies("standard").size());
  ASSERT_EQ(2U, database.bodies("wandgrip").size());
  for (const char* type : {"standard", "wandgrip"}) {
    for (const Body& body : database.bodies(type)) {
      ASSERT_GE(body.markers.size(), 3U);
      ASSERT_LE(body.markers.size(), 99U);
      ASSERT_TRUE(body.transform.isRotation(2e-3));
      for (const korvex2::BodyMarker& marker : body.markers) {
        for (const double value : marker.position) {
          ASSERT_LE(std::fabs(value), korvex2::BodyDatabase::largestCoordinate);
        }
      }
      for (const korvex2::BodyLine& line : body.lines) {
        ASSERT_TRUE(line.from >= 0 && line.to >= 0 && line.from != line.to);
        ASSERT_LT(static_cast<std::size_t>(std::max(line.from, line.to)), body.markers.size());
      }
    }
  }
}

TEST_F(BadInput, ThousandsOfSpoiledLinesAreAnsweredAndLeaveASoundDatabase) {
  Mutator mutator(20240501);
  int done = 0;
  int refused = 0;
  for (int n = 0; n < 6000; ++n) {
    const std::string line = mutator.next();
    const std::string before = n % 10 == 0 ? dump() : std::string();
    const std::string answer = ask(line);
    const bool isError = answer.rfind("korvex2 err ", 0) == 0;
    ASSERT_TRUE(isError || answer == "korvex2 ok" || answer.rfind("korvex2 set ", 0) == 0) << line << " -> " << answer;
    ASSERT_EQ(std::string::npos, answer.find_first_of(std::string("\n\r\0", 3))) << line;
    ASSERT_LT(answer.size(), 400U) << line;
    if (isError) {
      ++refused;
      const std::size_t quote = answer.find('"');
      ASSERT_TRUE(answer.back() == '"' && quote < answer.size() - 1 && answer.find('"', quote + 1) == answer.size() - 1)
          << answer;
      if (n % 10 == 0) {
        ASSERT_EQ(before, dump()) << line;
      }
    } else {
      ++done;
    }
    ASSERT_NO_FATAL_FAILURE(expectSound(*database)) << line;
  }
  // The mixture must try both sides.
  EXPECT_GT(done, 500);
  EXPECT_GT(refused, 1000);
  const std::string before = dump();
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ(before, dump());
}

TEST_F(BadInput, RandomBytesAreAnswered) {
  std::mt19937 random(99);
  std::uniform_int_distribution<int> byte(0, 255);
  std::uniform_int_distribution<int> length(0, 300);
  const std::string before = dump();
  for (int n = 0; n < 3000; ++n) {
    std::string line = n % 2 == 0 ? "" : "korvex2 ";
    for (int left = length(random); left > 0; --left) {
      line += static_cast<char>(byte(random));
    }
    ASSERT_NE(0, errorOf(line));
  }
  EXPECT_EQ(before, dump());
}

}  // namespace
