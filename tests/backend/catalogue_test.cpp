// Catalogues and body files that are missing, cut off or wrong: what is told, and what stays usable.
#include <gtest/gtest.h>

#include <string>

#include "catalogue.h"
#include "databasecopy.h"
#include "jsonlines.h"

namespace {

using korvex2::ErrorNumber;
using korvex2_test::allFiles;
using korvex2_test::readBytes;
using korvex2_test::writeBytes;

class CatalogueTroubles : public korvex2_test::DatabaseCopy {
 protected:
  /// Opens the folder with another catalogue.
  void openWith(const QByteArray& catalogue) {
    writeBytes(path("catalogue.json"), catalogue);
    open();
  }
  /// The only problem there is, the catalogue's or body file's path cut to its last part.
  std::string theProblem() const {
    EXPECT_EQ(1, database->problems().size()) << problems();
    return database->problems().isEmpty() ? "" : database->problems()[0].section('/', -1).toStdString();
  }
  std::string get(const std::string& query) { return ask("korvex2 get " + query); }

  void expectEmptyAndSafe() {
    EXPECT_EQ("korvex2 set body number_of_types 0", get("body number_of_types"));
    EXPECT_EQ("korvex2 set wandgrip number_of_devices 0", get("wandgrip number_of_devices"));
    EXPECT_EQ("korvex2 set status active idle", get("status active"));
    EXPECT_EQ(5, errorOf("korvex2 get body number_of_bodies standard"));
    EXPECT_EQ(5, errorOf("korvex2 get body type t01"));
  }
};

TEST_F(CatalogueTroubles, MissingCatalogueIsToldAndTheDatabaseEmpty) {
  ASSERT_TRUE(QFile::remove(path("catalogue.json")));
  open();
  EXPECT_EQ("catalogue.json, line 1: the file is missing", theProblem());
  EXPECT_NE(std::string::npos, problems().find(path("catalogue.json").toStdString()));
  expectEmptyAndSafe();
}

TEST_F(CatalogueTroubles, MissingFolderIsTold) {
  database = korvex2::openDatabase(temporary.filePath("nowhere"));
  EXPECT_EQ("catalogue.json, line 1: the file is missing", theProblem());
}

TEST_F(CatalogueTroubles, FolderInPlaceOfTheCatalogueIsTold) {
  ASSERT_TRUE(QFile::remove(path("catalogue.json")));
  ASSERT_TRUE(QDir().mkpath(path("catalogue.json")));
  open();
  EXPECT_EQ("catalogue.json, line 1: this is no file of a sensible size", theProblem());
  expectEmptyAndSafe();
}

TEST_F(CatalogueTroubles, TruncatedCatalogueIsToldWithItsLine) {
  const QByteArray whole = readBytes(path("catalogue.json"));
  const int cut = whole.indexOf("\"Table\"");
  openWith(whole.left(cut));
  // "Table" stands in line 19 of the file, after 18 line ends.
  ASSERT_EQ(18, whole.left(cut).count('\n'));
  EXPECT_EQ(0U, theProblem().rfind("catalogue.json, line 19: ", 0)) << theProblem();
  expectEmptyAndSafe();
}

TEST_F(CatalogueTroubles, EveryTruncationIsSurvived) {
  const QByteArray whole = readBytes(path("catalogue.json"));
  for (int size = 0; size < whole.lastIndexOf('}'); size += 7) {
    const korvex2::Catalogue catalogue = korvex2::parseCatalogue(whole.left(size), "c");
    EXPECT_FALSE(catalogue.readable) << size;
    EXPECT_EQ(1, catalogue.problems.size()) << size;
  }
}

TEST_F(CatalogueTroubles, UnreadableCatalogueIsNeverOverwritten) {
  openWith("{\n\"types\": [],\n\"bodies\": [}\n");
  EXPECT_EQ(0U, theProblem().rfind("catalogue.json, line 3: ", 0)) << theProblem();
  const auto files = allFiles(folder());
  EXPECT_EQ("korvex2 err 10 \"the change was not saved: the catalogue could not be read\"",
            ask("korvex2 set wandgrip output_6dw yes"));
  EXPECT_EQ("korvex2 set wandgrip output_6dw no", get("wandgrip output_6dw"));
  EXPECT_EQ(files, allFiles(folder()));
}

TEST_F(CatalogueTroubles, JsonThatIsNoObjectIsTold) {
  for (const char* text : {"[]", "[1, 2]", "", "   ", "null", "\"text\"", "{", "{\"types\": nul}"}) {
    openWith(text);
    EXPECT_EQ(0U, theProblem().rfind("catalogue.json, line 1: ", 0)) << text << ": " << theProblem();
    expectEmptyAndSafe();
  }
}

TEST_F(CatalogueTroubles, DeepNestingIsSurvived) {
  openWith("{\"types\": " + QByteArray(200000, '[') + QByteArray(200000, ']') + "}");
  EXPECT_EQ(1, database->problems().size());
  expectEmptyAndSafe();
  openWith("{\"types\": [], \"bodies\": [], \"deep\": " + QByteArray(500, '[') + QByteArray(500, ']') + "}");
  EXPECT_EQ("", problems());
}

TEST_F(CatalogueTroubles, WrongSettingsAreToldWithTheirLinesAndTakeTheirDefaults) {
  openWith(R"({
  "version": [1, "20", 0],
  "config_changeable": "no",
  "tracking_available": 0,
  "wandgrip": {
    "output_6dw": 1,
    "multiuser": true,
    "multiuser_with_head": true
  },
  "types": [], "bodies": []
})");
  const QString name = path("catalogue.json");
  const QStringList expected = {
      name + ", line 2: version must be an array of three integers",
      name + ", line 3: config_changeable must be true or false",
      name + ", line 4: tracking_available must be true or false",
      name + ", line 6: output_6dw must be true or false",
      name + ", line 7: multiuser is on though it is not available",
      name + ", line 8: multiuser_with_head is on though it is not available",
  };
  EXPECT_EQ(expected.join('\n').toStdString(), problems());
  EXPECT_TRUE(korvex2::BackendSettings() == database->settings());
}

TEST_F(CatalogueTroubles, CatalogueWithoutTypesOrBodiesIsTold) {
  openWith("{\n}");
  EXPECT_EQ((path("catalogue.json") + ", line 1: types must be an array of body types\n" + path("catalogue.json") +
             ", line 1: bodies must be an array of bodies")
                .toStdString(),
            problems());
  expectEmptyAndSafe();
}

TEST_F(CatalogueTroubles, EntriesWithoutUsableTypeOrNumberAreToldAndLeftOut) {
  openWith(R"({"types": [{"name": "standard", "description": "Standard body"},
  {"name": "two words"},
  {"name": "standard"},
  {"name": "wandgrip", "description": "say \"wand\""}
], "bodies": [
  {"type": "foot", "number": 1},
  {"type": "standard"},
  {"type": "standard",
   "number": 0},
  {"type": "standard", "number": 1.5},
  {"type": "standard", "number": 100},
  {"type": "standard", "number": 1e300},
  {"type": "standard", "number": "1"},
  17,
  {"type": "standard", "number": 1, "description": "Good"},
  {"type": "standard", "number": 1, "description": "Twice"}
]})");
  const QString at = path("catalogue.json") + ", line ";
  const QString number = ": a body needs a number from 1 to 99";
  const QString type = ": a body needs a type that is listed under types";
  const QString typeName = ": a body type needs a name of its own, of letters, digits and underscores";
  const QStringList expected = {
      at + "2" + typeName,
      at + "3" + typeName,
      at + "4: a description must be a text of at most 120 bytes without double quotes and control characters",
      at + "6" + type,
      at + "7" + number,
      at + "9" + number,
      at + "10" + number,
      at + "11" + number,
      at + "12" + number,
      at + "13" + number,
      at + "14" + type,
      at + "16: the body of line 15 has this number",
  };
  EXPECT_EQ(expected.join('\n').toStdString(), problems());
  EXPECT_EQ("korvex2 set body number_of_bodies standard 1", get("body number_of_bodies standard"));
  EXPECT_EQ("korvex2 set body desc standard b01 \"Good\"", get("body desc standard b01"));
  EXPECT_EQ("korvex2 set body type_desc wandgrip \"\"", get("body type_desc wandgrip"));
}

TEST_F(CatalogueTroubles, BodyWithAWrongFieldKeepsItsPlaceAndTheOthersStayUsable) {
  const QString description =
      "a description must be a text of at most 120 bytes without double quotes and control characters";
  const QString file = "file must be the plain name of a file that ends in .body";
  const QString emission = "an emission must be four numbers: x, y, z, opening angle";
  const QString transform = "transform must be twelve numbers: a position, then a rotation column by column";
  const std::vector<std::pair<QByteArray, QString>> wrong = {
      {R"("description": 5)", description},
      {R"("description": "a\nb")", description},
      {R"("target_type": "tt std")", "target_type must be a word of letters, digits and underscores"},
      {R"("target_type": null)", "target_type must be a word of letters, digits and underscores"},
      {R"("file": "../catalogue.body")", file},
      {R"("file": "/etc/passwd")", file},
      {R"("file": "cup.txt")", file},
      {R"("file": ["cup.body"])", file},
      {R"("calibrated": "yes")", "calibrated must be true or false"},
      {R"("emissions": 4)", "emissions must be an array"},
      {R"("emissions": [[1, 2, 3]])", emission},
      {R"("emissions": [[1, 2, 3, "4"]])", emission},
      {R"("emissions": [[1, 2, 3, 4e20]])", emission},
      {R"("transform": [1, 2, 3])", transform},
      {R"("transform": [0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 2])", transform},
  };
  for (const auto& [field, message] : wrong) {
    const QByteArray rest = field.startsWith("\"file\"") ? "" : R"("file": "cup.body", )";
    openWith(
        "{\"types\": [{\"name\": \"standard\"}], \"bodies\": [\n"
        "{\"type\": \"standard\", \"number\": 1, \"calibrated\": true, \"file\": \"table.body\"},\n"
        "{\"type\": \"standard\", \"number\": 2, " +
        rest + "\n" + field +
        "},\n"
        "{\"type\": \"standard\", \"number\": 3, \"calibrated\": true, \"file\": \"cup.body\"}]}");
    EXPECT_EQ("catalogue.json, line 4: " + message.toStdString(), theProblem()) << field.constData();
    EXPECT_EQ("korvex2 set body number_of_bodies standard 3", get("body number_of_bodies standard"));
    EXPECT_EQ("korvex2 set body calibrated standard b01 yes", get("body calibrated standard b01"));
    EXPECT_EQ("korvex2 set body calibrated standard b02 no", get("body calibrated standard b02"));
    EXPECT_EQ("korvex2 set body number_of_marker standard b02 0", get("body number_of_marker standard b02"));
    EXPECT_EQ(6, errorOf("korvex2 get body marker standard b02 m01"));
    EXPECT_EQ("korvex2 set body number_of_marker standard b03 5", get("body number_of_marker standard b03"));
    EXPECT_EQ("korvex2 err 8 \"the body could not be read and cannot be changed\"",
              ask("korvex2 set body number_of_marker standard b02 5"));
    // A change of another body leaves the wrong field for its owner to repair.
    ASSERT_EQ("korvex2 ok", ask("korvex2 set body desc standard b03 \"Mug\""));
    open();
    EXPECT_EQ(1, database->problems().size());
  }
}

TEST_F(CatalogueTroubles, CalibratedBodyNeedsAFileWithMarkers) {
  openWith(
      "{\"types\": [{\"name\": \"standard\"}], \"bodies\": [\n"
      "{\"type\": \"standard\", \"number\": 1, \"calibrated\": true}]}");
  EXPECT_EQ("catalogue.json, line 2: a calibrated body needs a file", theProblem());
  writeBytes(path("bodies/none.body"), "0\n# Lines\n0\n");
  openWith(
      "{\"types\": [{\"name\": \"standard\"}], \"bodies\": [\n"
      "{\"type\": \"standard\", \"number\": 1, \"calibrated\": true, \"file\": \"none.body\"}]}");
  EXPECT_EQ("catalogue.json, line 2: a calibrated body has markers", theProblem());
}

TEST_F(CatalogueTroubles, EmissionsAreOneAMarker) {
  openWith(
      "{\"types\": [{\"name\": \"standard\"}], \"bodies\": [\n"
      "{\"type\": \"standard\", \"number\": 1, \"file\": \"cup.body\", \"emissions\": [[0, 0, 1, 30]]}]}");
  EXPECT_EQ("catalogue.json, line 2: the body has 5 markers, but 1 emissions", theProblem());
}

TEST_F(CatalogueTroubles, MissingNumberIsHeldByABodyThatIsNotThere) {
  openWith(R"({"types": [{"name": "standard"}], "bodies": [
  {"type": "standard", "number": 3, "calibrated": true, "file": "cup.body", "description": "Cup"},
  {"type": "standard", "number": 1, "calibrated": true, "file": "table.body", "description": "Table"}]})");
  EXPECT_EQ("catalogue.json, line 1: there is no body with type standard and number 2", theProblem());
  EXPECT_EQ("korvex2 set body number_of_bodies standard 3", get("body number_of_bodies standard"));
  EXPECT_EQ("korvex2 set body desc standard b01 \"Table\"", get("body desc standard b01"));
  EXPECT_EQ("korvex2 set body desc standard b02 \"\"", get("body desc standard b02"));
  EXPECT_EQ("korvex2 set body target_type standard b02 'tt_std'", get("body target_type standard b02"));
  EXPECT_EQ("korvex2 set body calibrated standard b02 no", get("body calibrated standard b02"));
  EXPECT_EQ("korvex2 set body desc standard b03 \"Cup\"", get("body desc standard b03"));
  EXPECT_EQ(8, errorOf("korvex2 set body desc standard b02 \"New\""));
}

TEST_F(CatalogueTroubles, BrokenBodyFilesAreToldWithTheirLinesAndTheOthersStayUsable) {
  writeBytes(path("bodies/table.body"), "4\n801.422 368.889 2.14242\n777.315 -413.341");
  writeBytes(path("bodies/quadrotor_standard.body"), "4\n1 2 3\n4 five 6\n");
  ASSERT_TRUE(QFile::remove(path("bodies/quadrotor_medium.body")));
  open();
  const QString bodies = path("bodies/");
  const QStringList expected = {
      bodies + "table.body, line 3: a coordinate of marker 2 is expected, the file ends here",
      bodies + "quadrotor_standard.body, line 3: a coordinate of marker 2 is expected, found 'five'",
      bodies + "quadrotor_medium.body, line 1: the file is missing",
  };
  EXPECT_EQ(expected.join('\n').toStdString(), problems());
  EXPECT_EQ("korvex2 set body number_of_bodies standard 7", get("body number_of_bodies standard"));
  for (const char* number : {"b02", "b03", "b04"}) {
    EXPECT_EQ(std::string("korvex2 set body calibrated standard ") + number + " no",
              get(std::string("body calibrated standard ") + number));
    EXPECT_EQ(std::string("korvex2 set body number_of_marker standard ") + number + " 0",
              get(std::string("body number_of_marker standard ") + number));
  }
  EXPECT_EQ("korvex2 set body desc standard b02 \"Table\"", get("body desc standard b02"));
  EXPECT_EQ("korvex2 set body marker standard b01 m02 41.2376 9.39587 -14.9949", get("body marker standard b01 m02"));
  EXPECT_EQ("korvex2 ok", ask("korvex2 body transform standard b01 1 2 3 1 0 0 0 1 0 0 0 1"));
  open();
  EXPECT_EQ(expected.join('\n').toStdString(), problems());
  // Once the file is whole again, so is the body.
  writeBytes(path("bodies/table.body"), readBytes(KORVEX2_SHIPPED_DATA "/bodies/table.body"));
  open();
  EXPECT_EQ("korvex2 set body calibrated standard b02 yes", get("body calibrated standard b02"));
}

TEST_F(CatalogueTroubles, FolderOrHugeFileInPlaceOfABodyFileIsTold) {
  ASSERT_TRUE(QFile::remove(path("bodies/table.body")));
  ASSERT_TRUE(QDir().mkpath(path("bodies/table.body")));
  QFile huge(path("bodies/quadrotor_standard.body"));
  ASSERT_TRUE(huge.resize(5 * 1024 * 1024));
  open();
  EXPECT_EQ((path("bodies/table.body") + ", line 1: this is no file of a sensible size\n" +
             path("bodies/quadrotor_standard.body") + ", line 1: this is no file of a sensible size")
                .toStdString(),
            problems());
}

TEST(JsonLines, ValuesAreFoundByTheirPaths) {
  const QHash<QString, int> lines = korvex2::jsonLines(
      "{\n \"a\": [1,\n  {\"b\": \"}\\\"\", \"c\":\n null}],\n \"\": {\"d\": true},\n \"e\"\n :\n 5}");
  EXPECT_EQ(1, lines.value(""));
  EXPECT_EQ(2, lines.value("a"));
  EXPECT_EQ(2, lines.value("a/0"));
  EXPECT_EQ(3, lines.value("a/1"));
  EXPECT_EQ(3, lines.value("a/1/b"));
  EXPECT_EQ(4, lines.value("a/1/c"));
  EXPECT_EQ(5, lines.value("/d"));
  EXPECT_EQ(8, lines.value("e"));
  EXPECT_EQ(0, lines.value("f"));
}

TEST(JsonLines, TextsThatAreNoJsonAreSurvived) {
  for (const char* text : {"", "\"", "\"\\", "}", "]]]]", ",,,", "{\"a", "{\"a\":", "[[[[[[[[", "{{{{\"a\":1"}) {
    korvex2::jsonLines(text);
  }
  EXPECT_EQ(2, korvex2::lineOfOffset("a\nb", 99));
  EXPECT_EQ(1, korvex2::lineOfOffset("a\nb", -5));
  EXPECT_EQ(1, korvex2::lineOfOffset("a\nb", 1));
}

}  // namespace
