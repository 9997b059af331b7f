// Body files into the database by the File menu: the operator's way, and what every refusal leaves behind.
#include <gtest/gtest.h>

#include "bodydatabase.h"
#include "bodyfilescase.h"
#include "linerecorder.h"
#include "scriptedconnection.h"

using namespace korvex2;

namespace {

const char triangle[] = "3\n0 0 0\n100 0.5 0\n0 10 -0.001\nby hand\n# Lines\n2\n0 2\n1 2\n";

}  // namespace

TEST_F(BodyFiles, TheEntriesStandInTheFileMenuAboveQuit) {
  std::vector<std::string> texts;
  for (const QAction* action : frontend->window().menuBar()->actions().constFirst()->menu()->actions()) {
    texts.push_back(action->isSeparator() ? "-" : action->text().toStdString());
  }
  EXPECT_EQ(texts, (std::vector<std::string>{"&Connect...", "Connect &again", "-", "&Import body file...",
                                             "&Export body file...", "-", "&Quit"}));
  EXPECT_TRUE(entry(*frontend, "&Import body file...")->isEnabled());
  EXPECT_TRUE(entry(*frontend, "&Export body file...")->isEnabled());
}

TEST_F(BodyFiles, TheEntriesAreDisabledWhereTheDatabaseIsOutOfReach) {
  Frontend remote(std::make_unique<ScriptedConnection>());
  EXPECT_FALSE(entry(remote, "&Import body file...")->isEnabled());
  EXPECT_FALSE(entry(remote, "&Export body file...")->isEnabled());
}

TEST_F(BodyFiles, ImportReplacesTheMarkersOfTheSelectedBody) {
  const QString file = written("part.body", triangle);
  select(0);
  importFrom([&](BodyFileDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Import body file");
    EXPECT_EQ(body(dialog)->currentText(), "Cup (Standard body 01)");
    EXPECT_EQ(body(dialog)->count(), 9);
    EXPECT_EQ(summary(dialog), "Choose a body and the file that it takes its markers from.");
    EXPECT_FALSE(confirm(dialog)->isEnabled());
    choose(dialog, file);
    EXPECT_EQ(dialog.findChild<QLineEdit*>("file")->text(), file);
    EXPECT_EQ(summary(dialog),
              "Cup (Standard body 01)\nMarkers: 5 now, 3 after the import. Lines in the file: 2.\n"
              "The coordinate system becomes that of the file; emissions are cleared.");
    EXPECT_EQ(confirm(dialog)->text(), "&Import");
    EXPECT_EQ(cell(0, 1), "5") << "nothing happens before it is confirmed";
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(ask("get body number_of_marker standard b01"), "korvex2 set body number_of_marker standard b01 3");
  EXPECT_EQ(ask("get body marker standard b01 m02"), "korvex2 set body marker standard b01 m02 100 0.5 0");
  const std::string text = "Front end: Imported into Cup (Standard body 01): " + file.toStdString();
  EXPECT_EQ(lastReport(), text) << "without the mark of a failure";
  EXPECT_EQ(statusText(), text);
  EXPECT_TRUE(QTest::qWaitFor([&] { return cell(0, 1) == "3"; }, 3000)) << "the start page";
  EXPECT_EQ(bodies()->selectedItems().value(0), bodies()->topLevelItem(0)) << "and keeps its selection";
  start();
  EXPECT_EQ(frontend->window().reports().rowCount(), 0);
  EXPECT_EQ(cell(0, 1), "3");
}

TEST_F(BodyFiles, WithoutASelectedBodyTheOperatorChoosesOne) {
  const QString file = written("part.body", triangle);
  importFrom([&](BodyFileDialog& dialog) {
    EXPECT_EQ(body(dialog)->currentIndex(), -1);
    choose(dialog, file);
    EXPECT_EQ(summary(dialog), "Choose a body and the file that it takes its markers from.");
    EXPECT_FALSE(confirm(dialog)->isEnabled());
    body(dialog)->setFocus();
    QTest::keyClick(body(dialog), Qt::Key_Down);
    QTest::keyClick(body(dialog), Qt::Key_Down);
    EXPECT_EQ(summary(dialog),
              "Table (Standard body 02)\nMarkers: 4 now, 3 after the import. Lines in the file: 2.\n"
              "The coordinate system becomes that of the file; emissions are cleared.");
    QTest::keyClick(&dialog, Qt::Key_Return);  // the default button
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(ask("get body number_of_marker standard b02"), "korvex2 set body number_of_marker standard b02 3");
  EXPECT_EQ(ask("get body number_of_marker standard b01"), "korvex2 set body number_of_marker standard b01 5");
}

TEST_F(BodyFiles, ABodyThatWasNotCalibratedIsSaidToBecomeSo) {
  const QString file = written("part.body", triangle);
  select(5);
  ASSERT_EQ(cell(5, 2), "not calibrated");
  importFrom([&](BodyFileDialog& dialog) {
    choose(dialog, file);
    EXPECT_EQ(summary(dialog),
              "Phone (Standard body 06)\nMarkers: 4 now, 3 after the import. Lines in the file: 2.\n"
              "The coordinate system becomes that of the file; emissions are cleared.\nThe body becomes calibrated.");
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  });
  EXPECT_TRUE(QTest::qWaitFor([&] { return cell(5, 2) == "calibrated" && cell(5, 1) == "3"; }, 3000));
}

TEST_F(BodyFiles, AFileThatNoBodyCanTakeIsRefusedWithItsLine) {
  QByteArray hundred = "100";
  hundred += QByteArray("\n1 2 3").repeated(100);
  const std::pair<QByteArray, QString> cases[] = {
      {"3\n1 2 3\n4 x 6\n7 8 9\n", ", line 3: a coordinate of marker 2 is expected, found 'x'"},
      {"2\n1 2 3\n4 5 6\n", ", line 1: 2 is too small a number of markers, a body has at least 3"},
      {hundred, ", line 1: 100 is no possible number of markers, a body has at most 99"},
  };
  const QString good = written("good.body", triangle);
  select(0);
  for (const auto& [content, problem] : cases) {
    const QString file = written("bad.body", content);
    importFrom([&, problem = problem](BodyFileDialog& dialog) {
      const QString text = "Body file not imported: " + file + problem;
      expectFailure("Import body file", text);
      choose(dialog, file);
      EXPECT_EQ(watch.boxes().back().icon, QMessageBox::Warning);
      EXPECT_EQ(lastReport(), "!Front end: " + text.toStdString());
      EXPECT_EQ(summary(dialog), text.toStdString());
      EXPECT_FALSE(confirm(dialog)->isEnabled());
      choose(dialog, good);
      EXPECT_TRUE(confirm(dialog)->isEnabled());
    });
  }
  EXPECT_EQ(cell(0, 1), "5");
  EXPECT_EQ(ask("get body number_of_marker standard b01"), "korvex2 set body number_of_marker standard b01 5");
  EXPECT_EQ(watch.boxes().size(), 3U);
}

TEST_F(BodyFiles, AFileThatChangedAfterItWasChosenIsCheckedAgain) {
  const QString file = written("part.body", triangle);
  select(0);
  importFrom([&](BodyFileDialog& dialog) {
    choose(dialog, file);
    written("part.body", "3\n1 2 3\n4 5");
    expectFailure("Import body file", "Body file not imported: " + file +
                                          ", line 3: a coordinate of marker 2 is expected, the file ends here");
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    EXPECT_TRUE(dialog.isVisible()) << "for another try";
    QFile::remove(file);
    expectFailure("Import body file", "Body file not imported: " + file + ", line 1: the file is missing");
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  });
  EXPECT_EQ(ask("get body number_of_marker standard b01"), "korvex2 set body number_of_marker standard b01 5");
}

TEST_F(BodyFiles, ALockedConfigurationIsToldBeforeAFileIsLookedFor) {
  ASSERT_EQ(ask("set config is_changeable no"), "korvex2 ok");
  expectFailure("Import body file", "Body file not imported: the configuration is locked");
  entry(*frontend, "&Import body file...")->trigger();
  EXPECT_EQ(lastReport(), "!Front end: Body file not imported: the configuration is locked");
  EXPECT_EQ(watch.boxes().size(), 1U);
  exportTo([&](BodyFileDialog& dialog) { EXPECT_EQ(dialog.windowTitle(), "Export body file"); });
}

TEST_F(BodyFiles, ALockThatComesWhileTheDialogIsOpenHoldsToo) {
  const QString file = written("part.body", triangle);
  select(0);
  importFrom([&](BodyFileDialog& dialog) {
    choose(dialog, file);
    ASSERT_EQ(ask("set config is_changeable no"), "korvex2 ok");
    expectFailure("Import body file", "Body file not imported: the configuration is locked");
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    EXPECT_TRUE(dialog.isVisible());
  });
  EXPECT_EQ(ask("get body number_of_marker standard b01"), "korvex2 set body number_of_marker standard b01 5");
}

TEST_F(BodyFiles, ADatabaseInUseByAnotherProgramIsNotWrittenTo) {
  frontend.reset();
  const BodyDatabase other(database());
  start();
  const QString file = written("part.body", triangle);
  select(0);
  importFrom([&](BodyFileDialog& dialog) {
    choose(dialog, file);
    const QString text = "Body file not imported: the change was not saved: the database is in use by another program";
    expectFailure("Import body file", text);
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
    EXPECT_EQ(lastReport(), "!Front end: " + text.toStdString());
  });
  EXPECT_EQ(ask("get body number_of_marker standard b01"), "korvex2 set body number_of_marker standard b01 5");
}

TEST_F(BodyFiles, ImportCanBeLeftWithoutAnyChange) {
  const QString file = written("part.body", triangle);
  const std::string catalogue = bytes(database() + "/catalogue.json");
  select(0);
  importFrom([&](BodyFileDialog& dialog) {
    choose(dialog, QString());
    EXPECT_EQ(dialog.findChild<QLineEdit*>("file")->text(), "");
    choose(dialog, file);
  });
  EXPECT_EQ(frontend->window().reports().rowCount(), 0);
  EXPECT_EQ(catalogue, bytes(database() + "/catalogue.json"));
}

TEST_F(BodyFiles, FileNamesWithMarkupAreShownAsTheyAre) {
  const QString file = written("<b>bold<b> %1 \u00e4.body", "x");
  select(0);
  importFrom([&](BodyFileDialog& dialog) {
    expectFailure("Import body file",
                  "Body file not imported: " + file + ", line 1: the number of markers is expected, found 'x'");
    choose(dialog, file);
    EXPECT_EQ(dialog.findChild<QLabel*>("summary")->textFormat(), Qt::PlainText);
  });
}

TEST_F(BodyFiles, LivePosesFollowAnImportWhileTheMeasurementRuns) {
  LineRecorder recorder;
  ASSERT_EQ(frontend->channel().register_requester("6d", &recorder), 0);
  ASSERT_EQ(ask("tracking start"), "korvex2 ok");
  // The table stands still. Its pose without its own record number: what is between "[1 1] " and the next body.
  const auto table = [&recorder] {
    const std::vector<std::string> calls = recorder.takeCalls();
    const std::string line = calls.empty() ? std::string() : calls.back();
    const std::size_t begin = line.find("[1 1] ");
    return begin == std::string::npos ? std::string() : line.substr(begin, line.find(" [2 ", begin) - begin);
  };
  std::string measured;
  ASSERT_TRUE(holdsInTime([&] { return !(measured = table()).empty(); }));
  ASSERT_EQ(ask("body transform standard b02 10 20 30 0 1 0 -1 0 0 0 0 1"), "korvex2 ok");
  ASSERT_TRUE(holdsInTime([&] {
    const std::string now = table();
    return !now.empty() && now != measured;
  }));
  const QString file = written("part.body", triangle);
  select(1);
  importFrom([&](BodyFileDialog& dialog) {
    choose(dialog, file);
    QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  });
  EXPECT_TRUE(holdsInTime([&] { return table() == measured; }));
  EXPECT_EQ(frontend->channel().unregister_requester("6d", &recorder), 0);
}

namespace {

/// Takes every file and never says so.
class ForgetfulStore : public BodyFileStore {
 public:
  QString importObstacle() const override { return {}; }
  BodyFileSummary summaryOf(const QString&) const override { return {3, 0, {}}; }
  ImportOutcome importBody(const BodyId&, const QString&) override {
    return {QStringLiteral("the backend closed the connection"), true};
  }
  QString exportBody(const BodyId&, const QString&) const override { return {}; }
};

}  // namespace

TEST_F(BodyFiles, AnImportWhoseAnswerWasLostIsToldAsWhatItIs) {
  ForgetfulStore store;
  BodySummary cup;
  cup.type = "standard";
  cup.typeDescription = "Standard body";
  cup.number = 1;
  cup.description = "Cup";
  BodyImportDialog dialog(store, {cup}, cup.id());
  QStringList told;
  QObject::connect(&dialog, &BodyFileDialog::failed, &dialog, [&told](const QString& text) { told += text; });
  QObject::connect(&dialog, &BodyFileDialog::succeeded, &dialog, [&told](const QString& text) { told += text; });
  dialog.show();
  choose(dialog, written("cup.body", triangle));
  const QString text =
      "The answer to the import was lost (the backend closed the connection): Cup (Standard body 01) may have taken "
      "the file or not. The list of bodies shows how many markers it has now; the file can be imported again.";
  expectFailure("Import body file", text);
  QTest::mouseClick(confirm(dialog), Qt::LeftButton);
  EXPECT_EQ(told, QStringList{text});
  EXPECT_TRUE(dialog.isVisible());
}
