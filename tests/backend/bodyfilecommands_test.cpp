// Body files inside command lines: out of the database and into it.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "bodyfileformat.h"
#include "commalocale.h"
#include "databasecopy.h"

namespace {

class BodyFileCommands : public korvex2_test::DatabaseCopy {
 protected:
  QByteArray fileOf(const std::string& key) {
    const std::string head = "korvex2 set body file " + key + " ";
    const std::string answer = ask("korvex2 get body file " + key);
    EXPECT_EQ(answer.substr(0, head.size()), head) << answer;
    return QByteArray::fromBase64(QByteArray::fromStdString(answer.substr(head.size())));
  }
  std::string setFile(const std::string& key, const QByteArray& bytes) {
    return ask("korvex2 set body file " + key + " " + bytes.toBase64().toStdString());
  }

  const QByteArray four = "4\n0 0 0\n10.5 0 0\n0 20.25 0\n0 0 -3\nA word of mine\n# Lines\n2\n0 1\n2 3\n";
};

TEST_F(BodyFileCommands, GetGivesTheCurrentCoordinatesLinesAndFreeText) {
  ASSERT_EQ(setFile("standard b03", four), "korvex2 ok");
  ASSERT_EQ(ask("korvex2 body transform standard b03 100 0 0 1 0 0 0 1 0 0 0 1"), "korvex2 ok");
  EXPECT_EQ(fileOf("standard b03").toStdString(),
            "4\n100 0 0\n110.5 0 0\n100 20.25 0\n100 0 -3\nA word of mine\n# Lines\n2\n0 1\n2 3\n");
}

TEST_F(BodyFileCommands, GetGivesTheShippedFileOfABodyThatNobodyChanged) {
  const korvex2::BodyFileContent got = korvex2::parseBodyFile(fileOf("standard b01"));
  const korvex2::BodyFileContent shipped =
      korvex2::parseBodyFile(korvex2_test::readBytes(path("bodies/" + database->find({"standard", 1})->file)));
  EXPECT_EQ(got.problem, "");
  EXPECT_EQ(got.geometry.positions, shipped.geometry.positions);
  EXPECT_EQ(got.geometry.lines, shipped.geometry.lines);
  EXPECT_EQ(got.geometry.text, shipped.geometry.text);
}

TEST_F(BodyFileCommands, SetTakesMarkersLinesAndTextAndTheBodyBeginsAnew) {
  ask("korvex2 set body calibrated standard b01 no");
  ask("korvex2 set body marker_emission standard b01 m01 0 0 1 30");
  ASSERT_EQ(setFile("standard b01", four), "korvex2 ok");
  const auto check = [&] {
    EXPECT_EQ(ask("korvex2 get body number_of_marker standard b01"),
              "korvex2 set body number_of_marker standard b01 4");
    EXPECT_EQ(ask("korvex2 get body marker standard b01 m02"), "korvex2 set body marker standard b01 m02 10.5 0 0");
    EXPECT_EQ(ask("korvex2 get body marker_emission standard b01 m01"),
              "korvex2 set body marker_emission standard b01 m01 0 0 0 0");
    EXPECT_EQ(ask("korvex2 get body calibrated standard b01"), "korvex2 set body calibrated standard b01 yes");
    EXPECT_EQ(database->find({"standard", 1})->lines, (std::vector<korvex2::BodyLine>{{0, 1}, {2, 3}}));
    EXPECT_EQ(database->find({"standard", 1})->transform, korvex2::RigidTransform());
    EXPECT_EQ(fileOf("standard b01").toStdString(), four.toStdString());
  };
  check();
  open();
  EXPECT_EQ(problems(), "");
  check();
}

TEST_F(BodyFileCommands, WhatWasGotCanBeSetAndChangesNothing) {
  ASSERT_EQ(ask("korvex2 body transform standard b02 0.1 0.7 0.3333 0.6 0.8 0 -0.8 0.6 0 0 0 1"), "korvex2 ok");
  ASSERT_EQ(ask("korvex2 body transform standard b07 0.1 0.7 0.3333 0.6 0.8 0 -0.8 0.6 0 0 0 1"), "korvex2 ok");
  ASSERT_NE(database->find({"standard", 7})->transform, korvex2::RigidTransform());
  const std::string before = dump();
  const auto files = korvex2_test::allFiles(folder());
  for (const char* key : {"standard b02", "standard b07", "wandgrip b01"}) {  // b07 has emissions
    const QByteArray file = fileOf(key);
    EXPECT_EQ(setFile(key, file), "korvex2 ok") << key;
    EXPECT_EQ(fileOf(key).toStdString(), file.toStdString());
  }
  EXPECT_EQ(dump(), before);
  EXPECT_EQ(korvex2_test::allFiles(folder()), files) << "the transform among them";
  open();
  EXPECT_EQ(dump(), before);
}

TEST_F(BodyFileCommands, OfTheSameMarkersOnlyLinesAndTextAreTaken) {
  ASSERT_EQ(ask("korvex2 body transform standard b07 1 2 3 0 1 0 -1 0 0 0 0 1"), "korvex2 ok");
  const std::string before = dump();
  ASSERT_EQ(ask("korvex2 set body calibrated standard b07 no"), "korvex2 ok");
  const std::string state = ask("korvex2 get body state standard b07");
  const korvex2::RigidTransform transform = database->find({"standard", 7})->transform;
  QByteArray file = fileOf("standard b07");
  file.truncate(file.indexOf("# Lines"));
  file += "By somebody else\n# Lines\n1\n4 0\nand more\n";
  ASSERT_EQ(setFile("standard b07", file), "korvex2 ok");
  const auto check = [&] {
    EXPECT_EQ(dump(), before);
    EXPECT_EQ(ask("korvex2 get body state standard b07"), state) << "lines and text are no part of it";
    EXPECT_EQ(database->find({"standard", 7})->transform, transform);
    EXPECT_EQ(database->find({"standard", 7})->lines, (std::vector<korvex2::BodyLine>{{4, 0}}));
    EXPECT_EQ(fileOf("standard b07").toStdString(), file.toStdString());
  };
  check();
  open();
  EXPECT_EQ(problems(), "");
  check();
}

TEST_F(BodyFileCommands, OtherCoordinatesAnotherOrderOrAnotherNumberAreAMeasurement) {
  const auto lastDigit = [](QList<QByteArray>& rows) { rows[5] += "1"; };
  const auto order = [](QList<QByteArray>& rows) { rows.swapItemsAt(1, 5); };
  const auto number = [](QList<QByteArray>& rows) {
    rows[0] = "4";
    rows.removeAt(5);
  };
  for (const std::function<void(QList<QByteArray>&)>& change :
       std::vector<std::function<void(QList<QByteArray>&)>>{lastDigit, order, number}) {
    copyAgain();
    ASSERT_EQ(ask("korvex2 body transform standard b07 1 2 3 1 0 0 0 1 0 0 0 1"), "korvex2 ok");
    ASSERT_EQ(ask("korvex2 set body calibrated standard b07 no"), "korvex2 ok");
    QList<QByteArray> rows = fileOf("standard b07").split('\n');
    change(rows);
    ASSERT_EQ(setFile("standard b07", rows.join('\n')), "korvex2 ok");
    EXPECT_EQ(database->find({"standard", 7})->transform, korvex2::RigidTransform());
    EXPECT_EQ(ask("korvex2 get body marker_emission standard b07 m01"),
              "korvex2 set body marker_emission standard b07 m01 0 0 0 0");
    EXPECT_EQ(ask("korvex2 get body calibrated standard b07"), "korvex2 set body calibrated standard b07 yes");
  }
}

TEST_F(BodyFileCommands, WhatIsNoBodyFileIsRefusedWithTheReadersMessage) {
  const std::string before = dump();
  const auto files = korvex2_test::allFiles(folder());
  struct Case {
    const char* bytes;
    const char* answer;
  };
  const Case cases[] = {
      {"hello", "korvex2 err 4 \"line 1: "},
      {"", "korvex2 err 4 \"line 1: "},
      {"4\n0 0 0\n1 0 0\n0 x 0\n0 0 1\n", "korvex2 err 4 \"line 4: "},
      {"2\n0 0 0\n1 0 0\n", "korvex2 err 4 \"line "},
      {"100\n0 0 0\n", "korvex2 err 4 \"line "},
      {"3\n0 0 0\n1 0 0\n0 1e300 0\n", "korvex2 err 4 \"line 4: "},
      {"3\n0 0 0\n1 0 0\n0 1 0\n# Lines\n1\n0 3\n", "korvex2 err 4 \"line "},
  };
  for (const Case& wrong : cases) {
    const std::string answer =
        *wrong.bytes == '\0' ? ask("korvex2 set body file standard b01 ====") : setFile("standard b01", wrong.bytes);
    if (*wrong.bytes != '\0') {
      EXPECT_EQ(answer.rfind(wrong.answer, 0), 0U) << wrong.bytes << " -> " << answer;
    }
    EXPECT_EQ(answer.rfind("korvex2 err 4 ", 0), 0U) << answer;
  }
  EXPECT_EQ(dump(), before);
  EXPECT_EQ(korvex2_test::allFiles(folder()), files);
}

TEST_F(BodyFileCommands, TheReadersMessageIsItsOwn) {
  const QByteArray bytes = "4\n0 0 0\n1 0 0\n0 x 0\n0 0 1\n";
  const korvex2::BodyFileContent content = korvex2::parseBodyFile(bytes, 3);
  EXPECT_EQ(setFile("standard b01", bytes),
            "korvex2 err 4 \"line " + std::to_string(content.line) + ": " + content.problem.toStdString() + '"');
}

TEST_F(BodyFileCommands, ALenientlyWrittenFileIsReadBackWithItsTextAndWithNumbersWrittenAnew) {
  const QByteArray anyBytes("\xff\x00\x01", 3);
  ASSERT_EQ(
      setFile("standard b01", " 3 1.50 2e1\t+3\r\n0 0 0 1 1 1 mine " + anyBytes + "\r\n# Lines\r\n1 0\r\n2 theirs"),
      "korvex2 ok");
  EXPECT_EQ(fileOf("standard b01"), "3\n1.5 20 3\n0 0 0\n1 1 1 mine " + anyBytes + "\r\n# Lines\r\n1\n0 2 theirs");
  ASSERT_EQ(setFile("standard b01", "3 0 0 0 1 0 0 0 1 0\njust text"), "korvex2 ok");
  EXPECT_TRUE(database->find({"standard", 1})->lines.empty());
  EXPECT_EQ(fileOf("standard b01").toStdString(), "3\n0 0 0\n1 0 0\n0 1 0\njust text\n# Lines\n0\n");
}

TEST_F(BodyFileCommands, WhatIsNoBase64IsRefused) {
  for (const std::string bad : {"%%%%", "NAo", "NA==x", "N?==", "NA=", "\"NAo=\""}) {
    const std::string answer = ask("korvex2 set body file standard b01 " + bad);
    EXPECT_EQ(answer.rfind("korvex2 err 4 ", 0), 0U) << bad << " -> " << answer;
  }
  EXPECT_EQ(ask("korvex2 set body file standard b01"), "korvex2 err 3 \"there are too few fields\"");
  EXPECT_EQ(ask("korvex2 set body file standard b01 NAo= NAo="), "korvex2 err 3 \"there are too many fields\"");
}

TEST_F(BodyFileCommands, ALockedConfigurationGivesFilesAndTakesNone) {
  ask("korvex2 set config is_changeable no");
  EXPECT_FALSE(fileOf("standard b01").isEmpty());
  EXPECT_EQ(setFile("standard b01", four), "korvex2 err 7 \"the configuration is locked\"");
  EXPECT_EQ(setFile("standard b01", fileOf("standard b01")), "korvex2 err 7 \"the configuration is locked\"");
}

TEST_F(BodyFileCommands, ABodyWithoutMarkersHasNoFile) {
  const QByteArray catalogue = korvex2_test::readBytes(path("catalogue.json"));
  close();
  QByteArray broken = catalogue;
  broken.replace(QByteArray("\"number\": 1"), QByteArray("\"number\": 11"));
  ASSERT_NE(broken, catalogue);
  korvex2_test::writeBytes(path("catalogue.json"), broken);
  open();
  EXPECT_EQ(ask("korvex2 get body file standard b01"), "korvex2 err 8 \"the body has no markers\"");
  EXPECT_EQ(ask("korvex2 get body state standard b01"), "korvex2 set body state standard b01 af5570f5a1810b7a");
}

TEST_F(BodyFileCommands, AFileThatFindsNoRoomInALineIsNotSent) {
  QByteArray file = four;
  file.replace("A word of mine", QByteArray(99'000, 'x'));  // 132,000 in base64
  const std::string answer = setFile("standard b01", file);
  EXPECT_EQ(answer, "korvex2 err 1 \"the line is too long\"");
  const korvex2::BodyFileContent content = korvex2::parseBodyFile(file);
  ASSERT_EQ(content.problem, "");
  ASSERT_TRUE(database->setGeometry({"standard", 1}, content.geometry)) << "as an import from a file does";
  EXPECT_EQ(ask("korvex2 get body file standard b01"), "korvex2 err 8 \"the body's file is too long for one line\"");
  file = four;
  file.replace("A word of mine", QByteArray(98'000, 'x'));  // fits
  EXPECT_EQ(setFile("standard b01", file), "korvex2 ok");
  EXPECT_EQ(fileOf("standard b01").size(), file.size());
}

TEST_F(BodyFileCommands, NumbersHaveADecimalPointInEveryLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready());
  EXPECT_EQ(setFile("standard b01", four), "korvex2 ok");
  EXPECT_EQ(fileOf("standard b01").toStdString(), four.toStdString());
}

}  // namespace
