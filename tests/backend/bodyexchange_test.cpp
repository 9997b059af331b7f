// Body files into the database and out of it: what a body takes over, what is refused, and that both ways agree.
#include "bodyexchange.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <locale>
#include <sstream>
#include <vector>

#include <sys/resource.h>

#include "bodyfileformat.h"
#include "commalocale.h"
#include "databasecopy.h"
#include "livelinereader.h"
#include "livelines.h"

using namespace korvex2;
using korvex2_test::allFiles;
using korvex2_test::readBytes;
using korvex2_test::writeBytes;

namespace {

const BodyKey cup{"standard", 1};
const BodyKey phone{"standard", 6};  // not calibrated
const BodyKey activeCup{"standard", 7};

const char triangle[] = "3\n0 0 0\n100 0.5 0\n0 10 -1e-3 \nby hand\n# Lines\n2\n0 2\n1 2\n# the end\n";

class BodyExchange : public korvex2_test::DatabaseCopy {
 protected:
  QString file(const QByteArray& bytes) {
    const QString path = temporary.filePath("given.body");
    writeBytes(path, bytes);
    return path;
  }
  Outcome take(const BodyKey& key, const QByteArray& bytes) {
    const ImportableBody body = readImportableBody(file(bytes));
    EXPECT_EQ("", body.problem.toStdString());
    return database->setGeometry(key, body.geometry);
  }
  /// Writes the body to "out.body" and returns its bytes.
  QByteArray exported(const BodyKey& key) {
    const QString path = temporary.filePath("out.body");
    EXPECT_EQ("", exportBody(*database, key, path).toStdString());
    return readBytes(path);
  }
  void change(const std::string& line) { ASSERT_EQ("korvex2 ok", ask("korvex2 " + line)) << line; }
};

/// Reads the numbers of a body file with nothing of the code that wrote it: the markers' coordinates.
std::vector<double> coordinatesIn(const QByteArray& bytes) {
  std::istringstream in(bytes.toStdString());
  in.imbue(std::locale::classic());
  std::size_t count = 0;
  in >> count;
  std::vector<double> values(3 * count);
  for (double& value : values) {
    in >> value;
  }
  EXPECT_TRUE(in) << bytes.constData();
  return values;
}

}  // namespace

TEST_F(BodyExchange, ABodyTakesTheMarkersLinesAndTextOfAFile) {
  ASSERT_TRUE(take(activeCup, triangle));
  const Body* body = database->find(activeCup);
  ASSERT_EQ(3U, body->markers.size());
  EXPECT_EQ((Vector3{{0, 0, 0}}), body->markers[0].position);
  EXPECT_EQ((Vector3{{100, 0.5, 0}}), body->markers[1].position);
  EXPECT_EQ((Vector3{{0, 10, -0.001}}), body->markers[2].position);
  for (const BodyMarker& marker : body->markers) {
    EXPECT_EQ(MarkerEmission(), marker.emission);
  }
  EXPECT_EQ((std::vector<BodyLine>{{0, 2}, {1, 2}}), body->lines);
  EXPECT_EQ(" \nby hand\n# Lines\n", body->text.toStdString());
  EXPECT_EQ("\n# the end\n", body->rest.toStdString());
  EXPECT_EQ("Cup, active markers", body->description.toStdString());
  EXPECT_EQ("tt_std", body->targetType.toStdString());
  EXPECT_EQ("korvex2 set body number_of_marker standard b07 3", ask("korvex2 get body number_of_marker standard b07"));
  EXPECT_EQ("korvex2 set body marker standard b07 m02 100 0.5 0", ask("korvex2 get body marker standard b07 m02"));
  EXPECT_EQ("korvex2 set body marker_emission standard b07 m01 0 0 0 0",
            ask("korvex2 get body marker_emission standard b07 m01"));
}

TEST_F(BodyExchange, OtherBodiesOfTheSameFileAreLeftAlone) {
  const QByteArray shared = readBytes(path("bodies/cup.body"));
  ASSERT_TRUE(take(activeCup, triangle));
  EXPECT_EQ(5U, database->find(cup)->markers.size());
  EXPECT_EQ(shared, readBytes(path("bodies/cup.body")));
}

TEST_F(BodyExchange, WhatABodyTookIsHeldOverARestart) {
  change("body transform standard b07 10 20 30 0 1 0 -1 0 0 0 0 1");
  ASSERT_TRUE(take(activeCup, triangle));
  const std::string before = dump();
  open();
  EXPECT_EQ("", problems());
  EXPECT_EQ(before, dump());
  const Body* body = database->find(activeCup);
  EXPECT_TRUE(RigidTransform() == body->transform);
  EXPECT_EQ(3U, body->markers.size());
  EXPECT_EQ((std::vector<BodyLine>{{0, 2}, {1, 2}}), body->lines);
  EXPECT_EQ(triangle, exported(activeCup).replace("-0.001", "-1e-3").toStdString());
}

TEST_F(BodyExchange, TextAloneIsAChangeToo) {
  ASSERT_TRUE(take(cup, triangle));
  ASSERT_TRUE(take(cup, QByteArray(triangle).replace("by hand", "by machine").replace("# the end", "# over")));
  open();
  EXPECT_EQ(" \nby machine\n# Lines\n", database->find(cup)->text.toStdString());
  EXPECT_EQ("\n# over\n", database->find(cup)->rest.toStdString());
}

TEST_F(BodyExchange, ABodyThatWasNotCalibratedIsAfterwards) {
  ASSERT_FALSE(database->find(phone)->calibrated);
  ASSERT_TRUE(take(phone, triangle));
  open();
  EXPECT_TRUE(database->find(phone)->calibrated);
}

TEST_F(BodyExchange, FilesOfDatabasesOwnNamesDoNotPileUp) {
  const int before = allFiles(folder()).size();
  for (int n = 0; n < 5; ++n) {
    ASSERT_TRUE(take(cup, QByteArray(triangle).replace("100", QByteArray::number(100 + n))));
  }
  EXPECT_EQ(before + 1, allFiles(folder()).size());
}

// The pose of the measured coordinates is what the cameras see; a new measurement begins a new one. So the reported
// pose is the one from before any transform, and a marker stands where that pose puts the file's coordinates.
TEST_F(BodyExchange, ReportedPosesStartAnewWithTheNewMarkers) {
  const LiveLines lines;
  change("tracking start");
  change("set output active chmon 6d yes");
  const auto record = [&](int id) {
    for (const QByteArray& text : lines.frame(liveStateOf(*interpreter), 0, 1.0)) {
      const auto line = korvex2_test::LineReader::read(text);
      if (line && line->tag == "6d" && line->find(id) != nullptr) {
        return *line->find(id);
      }
    }
    ADD_FAILURE() << "no record of body " << id;
    return korvex2_test::LineRecord();
  };
  const auto measured = record(0);
  const auto other = record(1);
  change("body transform standard b01 10 20 30 0 1 0 -1 0 0 0 0 1");
  ASSERT_GT(std::abs(record(0).position[0] - measured.position[0]), 1.0);
  ASSERT_TRUE(take(cup, triangle));
  EXPECT_EQ(measured.position, record(0).position);
  EXPECT_EQ(measured.rotation, record(0).rotation);
  EXPECT_EQ(other.position, record(1).position);

  // From here on, poses and markers fit together as ever: marker 2 keeps its place when the frame moves.
  const auto place = record(0).place({100, 0.5, 0});
  change("body transform standard b01 1 2 3 0 1 0 -1 0 0 0 0 1");
  const Vector3 moved = database->find(cup)->markers[1].position;
  const auto again = record(0).place({moved[0], moved[1], moved[2]});
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(place[i], again[i], 1e-3) << "the line has three decimals of a millimetre";
  }
}

TEST_F(BodyExchange, WhatIsWrongWithAFileIsToldWithFileAndLine) {
  struct Case {
    QByteArray bytes;
    const char* problem;
  };
  const Case cases[] = {
      {"", "line 1: the number of markers is expected, the file ends here"},
      {"body\n", "line 1: the number of markers is expected, found 'body'"},
      {"\n0\n", "line 2: 0 is too small a number of markers, a body has at least 3"},
      {"1\n1 2 3\n", "line 1: 1 is too small a number of markers, a body has at least 3"},
      {"\n\n2\n1 2 3\n4 5 6\n", "line 3: 2 is too small a number of markers, a body has at least 3"},
      {"-3\n1 2 3\n", "line 1: -3 is no possible number of markers"},
      {"100\n1 2 3\n", "line 1: 100 is no possible number of markers, a body has at most 99"},
      {"3\n1 2 3\n4 5,5 6\n7 8 9", "line 3: a coordinate of marker 2 is expected, found ',5'"},
      {"3\n1 2 3\n4 5 6\n7 8", "line 4: a coordinate of marker 3 is expected, the file ends here"},
      {"3\n1 2 3\n4 5 6\n7 8 nan", "line 4: a coordinate of marker 3 is expected, found 'nan'"},
      {"3\n1 2 3\n4 5 6\n7 8 1e10", "line 4: a coordinate of marker 3 is out of range"},
      {"3\n1 2 3\n4 5 6\n7 8 9\n# Lines\n", "line 6: the number of lines is expected, the file ends here"},
      {"3\n1 2 3\n4 5 6\n7 8 9\n# Lines\n1\n0 3\n", "line 7: line 1 does not join two markers of the body"},
  };
  for (const Case& wrong : cases) {
    const QString path = file(wrong.bytes);
    EXPECT_EQ(path.toStdString() + ", " + wrong.problem, readImportableBody(path).problem.toStdString());
  }
}

TEST_F(BodyExchange, WhatIsNoFileIsNotRead) {
  const QString missing = temporary.filePath("missing.body");
  EXPECT_EQ(missing.toStdString() + ", line 1: the file is missing", readImportableBody(missing).problem.toStdString());
  for (const char* path : {"/dev/zero", "/"}) {
    EXPECT_EQ(std::string(path) + ", line 1: this is no file of a sensible size",
              readImportableBody(path).problem.toStdString());
  }
}

TEST_F(BodyExchange, ThreeAndNinetyNineMarkersAreTaken) {
  for (const int count : {3, 99}) {
    QByteArray bytes = QByteArray::number(count);
    for (int marker = 0; marker < count; ++marker) {
      bytes += '\n' + QByteArray::number(marker) + " 1 2";
    }
    ASSERT_TRUE(take(cup, bytes)) << count;
    EXPECT_EQ(static_cast<std::size_t>(count), database->find(cup)->markers.size());
  }
}

TEST_F(BodyExchange, AFileFromAnotherSystemKeepsItsLines) {
  ASSERT_TRUE(take(cup, "3\r\n0 0 0\r\n1 0 0\r\n0 1 0\r\n# Lines\r\n1\r\n0 2\r\n"));
  EXPECT_EQ((std::vector<BodyLine>{{0, 2}}), database->find(cup)->lines);
  EXPECT_EQ("3\n0 0 0\n1 0 0\n0 1 0\r\n# Lines\r\n1\n0 2\r\n", exported(cup).toStdString());
}

TEST_F(BodyExchange, NothingIsTakenWhileTheConfigurationIsLocked) {
  change("set config is_changeable no");
  const auto files = allFiles(folder());
  const std::string before = dump();
  const Outcome outcome = take(cup, triangle);
  EXPECT_EQ(ErrorNumber::Locked, outcome.number);
  EXPECT_EQ("the configuration is locked", outcome.text.toStdString());
  EXPECT_EQ(before, dump());
  EXPECT_EQ(files, allFiles(folder()));
  EXPECT_EQ(15U, coordinatesIn(exported(cup)).size()) << "giving out changes nothing";
}

TEST_F(BodyExchange, GeometryThatCouldNotBeReadAgainIsRefused) {
  const std::string before = dump();
  BodyGeometry good = geometryOf(*database->find(cup));
  const auto refusal = [this](const BodyGeometry& geometry) {
    const Outcome outcome = database->setGeometry(cup, geometry);
    EXPECT_EQ(ErrorNumber::BadValue, outcome.number);
    return outcome.text.toStdString();
  };
  BodyGeometry bad = good;
  bad.positions[2][1] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ("a marker is out of range", refusal(bad));
  bad = good;
  bad.positions[4][0] = -1.1e9;
  EXPECT_EQ("a marker is out of range", refusal(bad));
  bad = good;
  bad.lines.push_back({0, 5});
  EXPECT_EQ("line 3 does not join two markers of the body", refusal(bad));
  bad = good;
  bad.positions.resize(2);
  EXPECT_EQ("2 is too small a number of markers, a body has at least 3", refusal(bad));
  bad = good;
  bad.positions.resize(100);
  EXPECT_EQ("100 is no possible number of markers, a body has at most 99", refusal(bad));
  EXPECT_EQ(before, dump());
  EXPECT_EQ(ErrorNumber::NoSuchBody, database->setGeometry({"standard", 8}, good).number);
  EXPECT_EQ(ErrorNumber::NoSuchBody, database->setGeometry({"foot", 1}, good).number);
}

TEST_F(BodyExchange, ABodyWhoseFileIsBrokenKeepsItsPlaceForRepair) {
  writeBytes(path("bodies/table.body"), "broken");
  open();
  const auto files = allFiles(folder());
  EXPECT_EQ(ErrorNumber::NotAvailable, take({"standard", 2}, triangle).number);
  EXPECT_EQ("the body has no markers",
            exportBody(*database, {"standard", 2}, temporary.filePath("out.body")).toStdString());
  EXPECT_FALSE(QFile::exists(temporary.filePath("out.body")));
  EXPECT_EQ(files, allFiles(folder()));
}

TEST_F(BodyExchange, ADiskThatFillsUpLeavesEverythingAsItWas) {
  const QString given = file(triangle);
  const QString out = temporary.filePath("out.body");
  writeBytes(out, "older");
  const auto files = allFiles(folder());
  const std::string before = dump();
  const ImportableBody body = readImportableBody(given);
  rlimit usual{};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &usual));
  const auto previous = std::signal(SIGXFSZ, SIG_IGN);
  std::vector<Outcome> outcomes;
  QString problem;
  for (const rlim_t room : {rlim_t(0), rlim_t(20), rlim_t(1000)}) {  // 1000: the body fits, the catalogue does not
    rlimit small = usual;
    small.rlim_cur = room;
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    outcomes.push_back(database->setGeometry(cup, body.geometry));
    problem = room == 20 ? exportBody(*database, cup, out) : problem;
    setrlimit(RLIMIT_FSIZE, &usual);
  }
  std::signal(SIGXFSZ, previous);
  for (const Outcome& outcome : outcomes) {
    EXPECT_EQ(ErrorNumber::NotSaved, outcome.number);
  }
  EXPECT_EQ(out.toStdString() + " could not be written: the disk did not take all of it", problem.toStdString());
  EXPECT_EQ("older", readBytes(out).toStdString());
  EXPECT_EQ(before, dump());
  EXPECT_EQ(files, allFiles(folder()));
  EXPECT_EQ((QStringList{"database", "given.body", "out.body"}),
            QDir(temporary.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name));
}

TEST_F(BodyExchange, ASecondProgramMayGiveOutButNotTake) {
  const auto second = openDatabase(folder());
  EXPECT_EQ(ErrorNumber::NotSaved, second->setGeometry(cup, readImportableBody(file(triangle)).geometry).number);
  EXPECT_EQ(5U, second->find(cup)->markers.size());
  EXPECT_EQ("", exportBody(*second, cup, temporary.filePath("out.body")).toStdString());
}

TEST_F(BodyExchange, PresentCoordinatesAreGivenOut) {
  // (x, y, z) becomes (10 - y, 20 + x, 30 + z): the columns of the rotation are sent one after the other.
  change("body transform standard b01 10 20 30 0 1 0 -1 0 0 0 0 1");
  const std::vector<double> values = coordinatesIn(exported(cup));
  ASSERT_EQ(15U, values.size());
  EXPECT_NEAR(10 - 43.2385, values[0], 1e-12);
  EXPECT_NEAR(20 - 16.4095, values[1], 1e-12);
  EXPECT_NEAR(30 - 7.37501, values[2], 1e-12);
  EXPECT_EQ((std::vector<BodyLine>{{0, 1}, {2, 3}}), parseBodyFile(exported(cup)).geometry.lines);
}

TEST_F(BodyExchange, EveryDigitSurvivesTheWayOutAndIn) {
  change("body transform standard b01 0.1 -1e-9 123456.789 0.6 0.8 0 -0.8 0.6 0 0 0 1");
  std::vector<Vector3> before;
  for (const BodyMarker& marker : database->find(cup)->markers) {
    before.push_back(marker.position);
  }
  const QByteArray bytes = exported(cup);
  ASSERT_TRUE(take(phone, bytes));
  ASSERT_EQ(before.size(), database->find(phone)->markers.size());
  const std::vector<double> values = coordinatesIn(bytes);
  for (std::size_t i = 0; i < before.size(); ++i) {
    EXPECT_EQ(before[i], database->find(phone)->markers[i].position);
    EXPECT_EQ(before[i], (Vector3{{values[3 * i], values[3 * i + 1], values[3 * i + 2]}}));
  }
  EXPECT_EQ(bytes, exported(phone));
}

TEST_F(BodyExchange, NumbersHaveADecimalPointInEveryLocale) {
  const QByteArray usual = exported(cup);
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready());
  EXPECT_EQ(usual, exported(cup));
  ASSERT_TRUE(take(phone, usual));
  EXPECT_EQ((Vector3{{-16.4095, 43.2385, -7.37501}}), database->find(phone)->markers[0].position);
}

TEST_F(BodyExchange, FilesOfTheDatabaseAreNotOverwritten) {
  const auto files = allFiles(folder());
  const QString link = temporary.filePath("link.body");
  ASSERT_TRUE(QFile::link(path("bodies/cup.body"), link));
  const QString folderLink = temporary.filePath("elsewhere");
  ASSERT_TRUE(QFile::link(path("bodies"), folderLink));
  for (const QString& inside : {path("bodies/cup.body"), path("bodies/new.body"), path("catalogue.json"),
                                path("bodies/../x.body"), link, folderLink + "/cup.body"}) {
    EXPECT_EQ(inside.toStdString() + " lies in the folder of the body database",
              exportBody(*database, {"standard", 2}, inside).toStdString());
  }
  EXPECT_EQ(files, allFiles(folder()));
  const QString beside = temporary.filePath("database.body");  // only the name begins alike
  EXPECT_EQ("", exportBody(*database, cup, beside).toStdString());
}

TEST_F(BodyExchange, WhatCannotBeGivenOutIsTold) {
  EXPECT_EQ("there is no such body", exportBody(*database, {"standard", 8}, "/tmp/x.body").toStdString());
  EXPECT_EQ("/dev/null is no file", exportBody(*database, cup, "/dev/null").toStdString());
  EXPECT_EQ(temporary.path().toStdString() + " is no file", exportBody(*database, cup, temporary.path()).toStdString());
  const QString nowhere = temporary.filePath("missing/x.body");
  const std::string problem = exportBody(*database, cup, nowhere).toStdString();
  EXPECT_EQ(0U, problem.rfind(nowhere.toStdString() + " could not be written: ", 0)) << problem;
}
